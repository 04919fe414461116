#include "PointCloudFile.h"

#include "FileBytes.h"

#include <runa/rlog.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <string_view>

namespace vexa::viewer {

namespace {

enum class Kind { Unknown, Ply, Text };

std::string LowerExtension(const std::string& path)
{
    std::string extension = std::filesystem::path(path).extension().string();
    for (char& c : extension)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return extension;
}

Kind KindOf(const std::string& path)
{
    static constexpr std::array<std::string_view, 5> TextExtensions = {".xyz", ".pts", ".txt", ".csv", ".asc"};
    const std::string extension = LowerExtension(path);
    if (extension == ".ply")
        return Kind::Ply;
    if (std::find(TextExtensions.begin(), TextExtensions.end(), extension) != TextExtensions.end())
        return Kind::Text;
    return Kind::Unknown;
}

} // namespace

bool IsPointCloudFile(const std::string& path)
{
    return KindOf(path) != Kind::Unknown;
}

bool ReadPointCloudFile(const std::string& path, tesk::PointCloud& cloud, std::string& error)
{
    switch (KindOf(path)) {
    case Kind::Ply:
        return ReadPly(path, cloud, error);
    case Kind::Text:
        return ReadTextCloud(path, cloud, error);
    case Kind::Unknown:
        break;
    }
    const std::string extension = std::filesystem::path(path).extension().string();
    error = DisplayName(path) + ": unsupported file type" +
            (extension.empty() ? std::string(" (no extension)") : " '" + extension + "'") +
            "; expected .ply, .xyz, .pts, .txt, .csv or .asc";
    rlog::Fail(error, "vexa::viewer::ReadPointCloudFile");
    return false;
}

} // namespace vexa::viewer
