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
// - Numbers with a decimal comma ("1,5;2,25;3,0" or "1,5 2,25 3,0") are recognised from the
//   first data lines; ';', spaces and tabs then separate the values.
// - A data line of more than 1024 values fails the file.
// Colours are stored as the colour property "RGB", scaled to 0..1. Coordinates are read as
// doubles and go through CoordinateShift, so far-away data keeps its millimetres.
//
// Some extensions fix what the columns hold, where the content alone would be ambiguous
// (see TextLayout). A line of column names still wins over them.

#include <tesk/PointCloud.h>

#include <string>
#include <string_view>

namespace vexa::viewer {

enum class TextLayout {
    /// Decided by the content, as described above.
    Columns,
    /// .pts: "x y z intensity [r g b]" after the optional count line. Intensity becomes the
    /// float property "Intensity"; six columns read as "x y z r g b".
    Pts,
    /// .xyzn: "x y z nx ny nz".
    XyzNormals,
    /// .xyzrgb: "x y z r g b", colours as bytes 0..255 or fractions 0..1.
    XyzColors,
};

/// The layout an extension implies (.pts .xyzn .xyzrgb, any case); Columns for the others.
TextLayout TextLayoutForPath(const std::string& path);

/// On failure returns false, leaves `cloud` unchanged, logs and sets `error` to one line naming
/// the file and the line where reading failed. Without a layout, TextLayoutForPath(path).
bool ReadTextCloud(const std::string& path, tesk::PointCloud& cloud, std::string& error);
bool ReadTextCloud(const std::string& path, tesk::PointCloud& cloud, std::string& error, TextLayout layout);

/// The same for text already in memory; `name` starts the error message.
bool ReadTextCloudFromMemory(std::string_view text, const std::string& name, tesk::PointCloud& cloud,
                             std::string& error, TextLayout layout = TextLayout::Columns);

} // namespace vexa::viewer
