#pragma once
// Opens a model file by its extension, for the files a user names on the command line or
// drops on the window. Meshes and point clouds come back the same way: a point cloud is a
// mesh without faces, which the viewer shows as its vertices.

#include <tesk/Mesh.h>

#include <string>
#include <string_view>
#include <vector>

namespace vexa::viewer {

/// Reads .ply .obj .stl .off .pcd and the text clouds .xyz .xyzn .xyzrgb .pts .txt .csv .asc
/// (extension in any case). Any other extension fails with "<file>: unsupported file type ...".
/// On failure returns false, leaves `model` unchanged, logs and sets `error` to one line.
bool ReadModelFile(const std::string& path, tesk::Mesh& model, std::string& error);

/// True when ReadModelFile knows the extension of `path`.
bool IsModelFile(const std::string& path);

/// The extensions ReadModelFile knows, lower case with their dot, meshes first.
const std::vector<std::string_view>& ModelFileExtensions();

/// "'.ply', '.obj', ... or '.asc'", for help texts and messages.
std::string ModelFileExtensionList();

} // namespace vexa::viewer
