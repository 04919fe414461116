#include "ModelFile.h"

#include "FileBytes.h"
#include "ObjReader.h"
#include "OffReader.h"
#include "PcdReader.h"
#include "PlyReader.h"
#include "StlReader.h"
#include "TextCloudReader.h"
#include "TextScan.h"

#include <runa/rlog.h>

#include <algorithm>
#include <filesystem>

namespace vexa::viewer {

namespace {

enum class Kind { Unknown, Ply, Obj, Stl, Off, Pcd, Text };

struct Entry {
    std::string_view extension;
    Kind kind;
};

constexpr Entry Entries[] = {
    {".ply", Kind::Ply},  {".obj", Kind::Obj},  {".stl", Kind::Stl},   {".off", Kind::Off},
    {".pcd", Kind::Pcd},  {".xyz", Kind::Text}, {".xyzn", Kind::Text}, {".xyzrgb", Kind::Text},
    {".pts", Kind::Text}, {".txt", Kind::Text}, {".csv", Kind::Text},  {".asc", Kind::Text},
};

Kind KindOf(const std::string& path)
{
    const std::string extension = LowerExtension(path);
    for (const Entry& entry : Entries)
        if (entry.extension == extension)
            return entry.kind;
    return Kind::Unknown;
}

/// Point cloud readers fill the vertices of a fresh mesh, so a failure leaves `model` alone.
template <typename Reader>
bool ReadCloud(const std::string& path, tesk::Mesh& model, std::string& error, Reader read)
{
    tesk::Mesh mesh;
    if (!read(path, mesh.GetVertices(), error))
        return false;
    model = std::move(mesh);
    return true;
}

} // namespace

const std::vector<std::string_view>& ModelFileExtensions()
{
    static const std::vector<std::string_view> extensions = [] {
        std::vector<std::string_view> list;
        for (const Entry& entry : Entries)
            list.push_back(entry.extension);
        return list;
    }();
    return extensions;
}

std::string ModelFileExtensionList()
{
    const auto& extensions = ModelFileExtensions();
    std::string list;
    for (std::size_t i = 0; i < extensions.size(); ++i) {
        if (i > 0)
            list += i + 1 == extensions.size() ? " or " : ", ";
        list += extensions[i];
    }
    return list;
}

bool IsModelFile(const std::string& path)
{
    return KindOf(path) != Kind::Unknown;
}

bool ReadModelFile(const std::string& path, tesk::Mesh& model, std::string& error)
{
    switch (KindOf(path)) {
    case Kind::Ply:
        return ReadPly(path, model, error);
    case Kind::Obj:
        return ReadObj(path, model, error);
    case Kind::Stl:
        return ReadStl(path, model, error);
    case Kind::Off:
        return ReadOff(path, model, error);
    case Kind::Pcd:
        return ReadCloud(path, model, error,
                         [](const std::string& p, tesk::PointCloud& cloud, std::string& e) {
                             return ReadPcd(p, cloud, e);
                         });
    case Kind::Text:
        return ReadCloud(path, model, error,
                         [](const std::string& p, tesk::PointCloud& cloud, std::string& e) {
                             return ReadTextCloud(p, cloud, e);
                         });
    case Kind::Unknown:
        break;
    }
    const std::string extension = std::filesystem::path(path).extension().string();
    error = DisplayName(path) + ": unsupported file type" +
            (extension.empty() ? std::string(" (no extension)") : " '" + extension + "'") + "; expected " +
            ModelFileExtensionList();
    rlog::Fail(error, "vexa::viewer::ReadModelFile");
    return false;
}

} // namespace vexa::viewer
