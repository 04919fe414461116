#pragma once
// Reads point cloud files of the PCD format (versions 0.6 and 0.7): DATA ascii, binary and
// binary_compressed (LZF). Positions from x y z, normals from normal_x normal_y normal_z,
// packed rgb / rgba into the colour property "RGB", and every other field as float data.

#include <tesk/PointCloud.h>

#include <string>
#include <string_view>

namespace vexa::viewer {

/// On failure returns false, leaves `cloud` unchanged, logs and sets `error` to one line naming
/// the file and the line (header, ascii body) or byte offset (binary body) where reading failed.
bool ReadPcd(const std::string& path, tesk::PointCloud& cloud, std::string& error);

/// The same for a file already in memory; `name` starts the error message.
bool ReadPcdFromMemory(std::string_view bytes, const std::string& name, tesk::PointCloud& cloud,
                       std::string& error);

} // namespace vexa::viewer
