#pragma once
// Reads plain-text point lists (XYZ, PTS, CSV and the like): one point per line,
// "x y z [r g b] [values...]", fields separated by spaces, tabs, commas or semicolons.
//
// - Blank lines and lines starting with '#' or '//' are skipped.
// - A first line holding one integer (the PTS point count) is skipped.
// - A first line of names ("x,y,z,red,green,blue,intensity") names the columns: x/y/z find the
//   position columns (else the first three), nx/ny/nz the normals, r/g/b or red/green/blue the
//   colours, and every other column becomes a float property under its name.
// - Without names, columns 4..6 are colours when the first data line holds integers 0..255
//   there; the remaining columns become float properties "Value 1", "Value 2"...
// Colours are stored as the colour property "RGB", scaled to 0..1.

#include <tesk/PointCloud.h>

#include <string>
#include <string_view>

namespace vexa::viewer {

/// On failure returns false, leaves `cloud` unchanged, logs and sets `error` to one line naming
/// the file and the line where reading failed.
bool ReadTextCloud(const std::string& path, tesk::PointCloud& cloud, std::string& error);

/// The same for text already in memory; `name` starts the error message.
bool ReadTextCloudFromMemory(std::string_view text, const std::string& name, tesk::PointCloud& cloud,
                             std::string& error);

} // namespace vexa::viewer
