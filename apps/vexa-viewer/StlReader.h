#pragma once
// Reads STL meshes, ASCII ("solid ... facet normal ... vertex ...") or binary (80-byte header,
// triangle count, 50-byte records). A binary file whose header happens to start with "solid"
// is recognised by its size. STL repeats every corner in each triangle; identical corners
// (same bits) are merged into one vertex so the mesh is compact and shades smoothly. The
// facet normals are not kept: the renderer computes vertex normals from the faces.

#include <tesk/Mesh.h>

#include <string>
#include <string_view>

namespace vexa::viewer {

/// On failure returns false, leaves `mesh` unchanged, logs and sets `error` to one line naming
/// the file and the line (ASCII) or byte offset (binary) where reading failed.
bool ReadStl(const std::string& path, tesk::Mesh& mesh, std::string& error);

/// The same for a file already in memory; `name` starts the error message.
bool ReadStlFromMemory(std::string_view bytes, const std::string& name, tesk::Mesh& mesh, std::string& error);

} // namespace vexa::viewer
