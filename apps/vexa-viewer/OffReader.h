#pragma once
// Reads OFF meshes as the common tools write them: the keyword "OFF" with optional
// prefixes ST (texture coordinates), C (vertex colours) and N (normals), the vertex, face
// and edge counts (also on the keyword's own line), vertices "x y z [nx ny nz] [r g b [a]]
// [s t]" and faces "n i0 ... i(n-1) [colour]", fanned into triangles. Colours written as
// integers are 0..255, as decimals 0..1; they become the colour property "RGB". '#' starts a
// comment anywhere.

#include <tesk/Mesh.h>

#include <string>
#include <string_view>

namespace vexa::viewer {

/// On failure returns false, leaves `mesh` unchanged, logs and sets `error` to one line naming
/// the file and the line where reading failed.
bool ReadOff(const std::string& path, tesk::Mesh& mesh, std::string& error);

/// The same for text in memory; `name` starts the error message.
bool ReadOffFromMemory(std::string_view text, const std::string& name, tesk::Mesh& mesh, std::string& error);

} // namespace vexa::viewer
