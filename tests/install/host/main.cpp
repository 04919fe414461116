// A host program outside the source tree, built against the installed package.
#include <vexa/vexa.h>

#include <nlohmann/json.hpp>

#include <cstdio>
#include <filesystem>
#include <vector>

int main()
{
    const vexa::ResourceId id("PointCloudResource:scans/left");
    if (id.GetNameWithoutPath() != "left" || !id.IsValid())
        return 1;

    nlohmann::json json;
    runa::SpaceDefinition::TivraCamera.WriteJson(json);
    if (json["up"] != "-0.000000, -1.000000, -0.000000")
        return 2;

    const std::vector<float> xyz = {0, 0, 0, 1, 2, 3};
    tesk::PointCloud cloud(xyz.data(), xyz.size() / 3);
    const std::vector<float> intensity = {0.5f, 1.0f};
    if (!cloud.AddFloatProperty("intensity", intensity) || cloud.Size() != 2)
        return 3;

    if (!std::filesystem::exists(std::filesystem::path(VEXA_ASSET_DIR) / "shaders/core/lines.vert"))
        return 4;

    std::printf("host: %s, %zu points, assets at %s\n", id.ToString().c_str(), cloud.Size(), VEXA_ASSET_DIR);
    return 0;
}
