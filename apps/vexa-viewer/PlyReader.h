#pragma once
// Reads the vertices of a PLY file (ascii, binary little endian or binary big endian) into a
// point cloud. Positions come from x y z, normals from nx ny nz, colours from red/green/blue
// (or diffuse_red... or r/g/b) into the colour property "RGB", and every other scalar vertex
// property becomes a float property under its PLY name. Other elements (faces, edges...) are
// stepped over; alpha and list properties of vertices are dropped.

#include <tesk/PointCloud.h>

#include <string>
#include <string_view>

namespace vexa::viewer {

/// On failure returns false, leaves `cloud` unchanged, logs and sets `error` to one line naming
/// the file and the line (header, ascii body) or byte offset (binary body) where reading failed.
bool ReadPly(const std::string& path, tesk::PointCloud& cloud, std::string& error);

/// The same for a file already in memory; `name` starts the error message in place of the
/// file name.
bool ReadPlyFromMemory(std::string_view bytes, const std::string& name, tesk::PointCloud& cloud,
                       std::string& error);

} // namespace vexa::viewer
