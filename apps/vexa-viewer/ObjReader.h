#pragma once
// Reads OBJ meshes: v (with optional w, or with an "r g b" vertex colour
// stored as the colour property "RGB"), vt, vn and f in every index form (v, v/vt, v//vn,
// v/vt/vn, negative indices counting back from the last vertex), polygons fanned into
// triangles. Positions, texture coordinates and normals are indexed separately in OBJ; a
// vertex is made for each distinct combination the faces use, unless every face uses the
// same number for all three. Groups, objects, smoothing groups, lines and free-form
// statements are skipped. The material of the first usemtl (or the only one in the file)
// is read from the mtllib beside the file: Kd, Ks, Ns, Pm and map_Kd.

#include <tesk/Mesh.h>

#include <string>
#include <string_view>

namespace vexa::viewer {

/// On failure returns false, leaves `mesh` unchanged, logs and sets `error` to one line naming
/// the file and line. A missing or broken material library only warns.
bool ReadObj(const std::string& path, tesk::Mesh& mesh, std::string& error);

/// The same for text in memory; `name` starts messages, and material libraries are looked
/// for in `folder` (none are read when it is empty).
bool ReadObjFromMemory(std::string_view text, const std::string& name, const std::string& folder,
                       tesk::Mesh& mesh, std::string& error);

} // namespace vexa::viewer
