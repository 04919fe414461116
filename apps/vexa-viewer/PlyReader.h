#pragma once
// Reads PLY files (ascii, binary little endian or binary big endian) as a mesh or as a point
// cloud.
//
// Vertices: positions from x y z (any numeric type; far coordinates are shifted, see
// CoordinateShift), normals from nx ny nz or normal_x normal_y normal_z, colours from
// red/green/blue, diffuse_red... or r/g/b into the colour property "RGB" (alpha dropped),
// texture coordinates from s t, u v, texture_u texture_v or texture_s texture_t, and every
// other scalar vertex property as a float property under its PLY name.
// Faces: the "face" element's vertex_indices (or vertex_index) list, any count and index
// type, polygons fanned into triangles. Faces referring to missing vertices are skipped with
// one warning. Other elements (edges, materials...) are stepped over.

#include <tesk/Mesh.h>
#include <tesk/PointCloud.h>

#include <string>
#include <string_view>

namespace vexa::viewer {

/// On failure returns false, leaves `mesh` unchanged, logs and sets `error` to one line naming
/// the file and the line (header, ascii body) or byte offset (binary body) where reading failed.
/// A file without faces gives a mesh without faces.
bool ReadPly(const std::string& path, tesk::Mesh& mesh, std::string& error);

/// The vertices only: faces are not read at all.
bool ReadPly(const std::string& path, tesk::PointCloud& cloud, std::string& error);

/// The same for a file already in memory; `name` starts the error message in place of the
/// file name.
bool ReadPlyFromMemory(std::string_view bytes, const std::string& name, tesk::Mesh& mesh, std::string& error);
bool ReadPlyFromMemory(std::string_view bytes, const std::string& name, tesk::PointCloud& cloud,
                       std::string& error);

} // namespace vexa::viewer
