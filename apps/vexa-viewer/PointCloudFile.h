#pragma once
// Opens a point cloud file by its extension, for the files a user names on the command line or
// drops on the window.

#include "PlyReader.h"
#include "TextCloudReader.h"

#include <tesk/PointCloud.h>

#include <string>

namespace vexa::viewer {

/// .ply reads as PLY; .xyz .pts .txt .csv .asc as text (either case). Any other extension
/// fails with "<file>: unsupported file type ...". On failure returns false, leaves `cloud`
/// unchanged, logs and sets `error` to a one-line message.
bool ReadPointCloudFile(const std::string& path, tesk::PointCloud& cloud, std::string& error);

/// True when ReadPointCloudFile knows the extension of `path`.
bool IsPointCloudFile(const std::string& path);

} // namespace vexa::viewer
