// A host program outside the source tree, built against the installed package.
#include <vexa/vexa.h>

#include <nlohmann/json.hpp>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

// Clearly red pixels in the middle fifth of the picture.
int CountRedInTheMiddle(const std::string& png)
{
    tesk::Image image;
    if (!image.LoadPng(png))
        return -1;
    const std::uint32_t w = image.GetWidth();
    const std::uint32_t h = image.GetHeight();
    int red = 0;
    for (std::uint32_t y = h * 2 / 5; y < h * 3 / 5; ++y)
        for (std::uint32_t x = w * 2 / 5; x < w * 3 / 5; ++x)
            if (image.At(x, y, 0) > 0.35f && image.At(x, y, 1) < 0.15f && image.At(x, y, 2) < 0.15f)
                ++red;
    return red;
}

// A debug box drawn through the installed package shows in a screenshot.
int CheckDebugBox()
{
    const std::filesystem::path work = std::filesystem::temp_directory_path() / "vexa-install-host";
    std::filesystem::remove_all(work);
    vexa::SetAssetDirectory(VEXA_ASSET_DIR);
    vexa::SetIntermediateDirectory(work.string());
    if (!vexa::Initialize())
        return 10;
    vexa::SetSidebarVisible(0, false);
    vexa::Debug().DrawBox({{-0.5f, -0.5f, -0.5f}, {0.5f, 0.5f, 0.5f}}, {1.0f, 0.0f, 0.0f}, 0.5f);
    vexa::Update();
    // How long it stays is the debugger's own (DebuggerTest).
    const std::string shown = (work / "box.png").string();
    if (!vexa::SaveScreenshot(shown) || CountRedInTheMiddle(shown) < 500)
        return 11;
    vexa::Terminate();
    std::printf("host: the debug box showed\n");
    return 0;
}

} // namespace

int main()
{
    // Before Initialize there is no debugger: the host gets an exception, not a crash.
    try {
        vexa::Debug();
        return 5;
    } catch (const std::runtime_error& e) {
        if (std::string(e.what()) != "Can not return vexa::Debugger. Have you initialized VEXA?")
            return 6;
    }

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
    // The window needs a display (the test command provides one under Xvfb).
    if (const char* display = std::getenv("DISPLAY"); display == nullptr || *display == '\0') {
        std::printf("host: no display, the window checks are skipped\n");
        return 0;
    }
    return CheckDebugBox();
}
