// e2e-host: a host program as a user of the library writes one, for the end-to-end cases.
// It shows a point cloud, reports on standard output every key the library hands it and every
// log message, and once the window is closed calls every public function once more before
// Terminate, which must all be harmless by then.
//
//   e2e-host [--look FILE] [--second]
//
// Output lines: "keydown <key> <shift><control><alt><super>", "keyup ...", "[LEVEL] label:
// message" for rlog, "after-close <function> <result>" and the markers of HostScene.h.

#include "HostScene.h"

#include <vexa/vexa.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace e2e::host;

// Standard output goes to a file the test reads while we run: every line must be out at once.
void Print(const std::string& line)
{
    std::fputs((line + "\n").c_str(), stdout);
    std::fflush(stdout);
}

std::string Mods(const vexa::ModKeys& mods)
{
    std::string bits;
    for (bool held : {mods.shift, mods.control, mods.alt, mods.super})
        bits += held ? '1' : '0';
    return bits;
}

void AddBall(std::vector<glm::vec3>& points, std::vector<tesk::Color3f>& colors, std::mt19937& random,
             const glm::vec3& centre, const tesk::Color3f& color, int count)
{
    std::uniform_real_distribution<float> unit(-1.0f, 1.0f);
    for (int n = 0; n < count;) {
        const glm::vec3 p(unit(random), unit(random), unit(random));
        if (glm::dot(p, p) > 1.0f)
            continue;
        points.push_back(centre + 0.08f * p);
        colors.push_back(color);
        ++n;
    }
}

std::shared_ptr<vexa::modules::PointCloudResource> MakeResource(const char* name, tesk::PointCloud cloud,
                                                                std::vector<tesk::Color3f> colors)
{
    cloud.AddColorProperty("RGB", std::move(colors));
    auto resource = std::make_shared<vexa::modules::PointCloudResource>(name, cloud);
    resource->SetPreferredColorSource(vexa::modules::PointCloudGadget::Colors);
    return resource;
}

std::shared_ptr<vexa::modules::PointCloudResource> MakeCloud()
{
    std::mt19937 random(11);
    std::vector<glm::vec3> points;
    std::vector<tesk::Color3f> colors;
    AddBall(points, colors, random, {1, 0, 0}, {1, 0, 0}, kPointsPerBall);
    AddBall(points, colors, random, {0, 1, 0}, {0, 1, 0}, kPointsPerBall);
    AddBall(points, colors, random, {0, 0, 1}, {0, 0, 1}, kPointsPerBall);
    AddBall(points, colors, random, {0, 0, 0}, {1, 1, 1}, kPointsPerBall);
    // The marker sits inside the array, so that a reported index is not first or last by luck.
    points.insert(points.begin() + kMarkerIndex, glm::vec3(kMarkerX, kMarkerY, kMarkerZ));
    colors.insert(colors.begin() + kMarkerIndex, tesk::Color3f(1, 0, 1));
    std::vector<float> tags(points.size(), 0.0f);
    tags[kMarkerIndex] = kMarkerTag;
    tesk::PointCloud cloud(std::move(points));
    cloud.AddFloatProperty("Tag", std::move(tags));
    return MakeResource(kCloudName, std::move(cloud), std::move(colors));
}

std::shared_ptr<vexa::modules::PointCloudResource> MakeSecondCloud()
{
    std::mt19937 random(13);
    std::vector<glm::vec3> points;
    std::vector<tesk::Color3f> colors;
    AddBall(points, colors, random, {0, 1, 1}, {1, 1, 0}, kPointsPerBall);
    return MakeResource(kSecondName, tesk::PointCloud(std::move(points)), std::move(colors));
}

const char* Result(bool value)
{
    return value ? "true" : "false";
}

// After the window was closed the library must take every call without harm; each call and
// what it returned is printed so that the test can tell where a host would have crashed.
void CallEverythingOnceMore(const std::shared_ptr<vexa::modules::PointCloudResource>& cloud)
{
    const auto step = [](const char* name, const auto& call) {
        call();
        Print(std::string("after-close ") + name + " done");
    };
    Print(std::string("after-close IsOpen ") + Result(vexa::IsOpen()));
    step("Update", [] { vexa::Update(); });
    step("AddResource", [] { vexa::AddResource(MakeSecondCloud()); });
    vexa::Update();
    Print(std::string("after-close IsOpen-after-Update ") + Result(vexa::IsOpen()));
    step("SetAxesVisible", [] { vexa::SetAxesVisible(0, false); });
    Print(std::string("after-close IsAxesVisible ") + Result(vexa::IsAxesVisible(0)));
    step("SetSidebarVisible", [] { vexa::SetSidebarVisible(0, false); });
    Print("after-close GetActiveResources " + std::to_string(vexa::GetActiveResources().size()));
    const tesk::Color3b background = vexa::GetBackgroundColor();
    Print("after-close GetBackgroundColor " + std::to_string(background.r) + "," +
          std::to_string(background.g) + "," + std::to_string(background.b));
    step("FocusCamera", [&] { vexa::FocusCamera(cloud->GetId()); });
    const bool saved = vexa::SaveScreenshot("after-close.png");
    Print(std::string("after-close SaveScreenshot ") + Result(saved) + " file " +
          Result(std::filesystem::exists("after-close.png")));
    step("RemoveResourcesWithPrefix", [] { vexa::RemoveResourcesWithPrefix("E2E/"); });
    step("RemoveAllResources", [] { vexa::RemoveAllResources(); });
    step("callbacks", [] {
        vexa::SetKeyDownCallback({});
        vexa::SetKeyUpCallback({});
        vexa::SetFileDropCallback({});
    });
    step("directories", [] {
        vexa::SetIntermediateDirectory("./vexa-after-close");
        vexa::SetAssetDirectory(VEXA_DEFAULT_ASSET_DIR);
    });
    Print(std::string("after-close Initialize ") + Result(vexa::Initialize()));
    Print(std::string("after-close Initialize-with-look ") + Result(vexa::Initialize("")));
    Print("after-close GetVersion " + vexa::GetVersion().ToString());
    vexa::Update();
    Print(std::string("after-close IsOpen-at-end ") + Result(vexa::IsOpen()));
}

} // namespace

int main(int argc, char** argv)
{
    std::string look;
    bool second = false;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--look" && i + 1 < argc)
            look = argv[++i];
        else if (argument == "--second")
            second = true;
        else {
            Print("host: unknown argument " + argument);
            return 2;
        }
    }

    rlog::SetSink([](rlog::Level level, const std::string& message, const std::string& label) {
        Print(std::string("[") + rlog::LevelName(level) + "] " + label + ": " + message);
    });
    vexa::SetMessageBoxHandler([](const std::string& caption, const std::string& text, vexa::MessageIcon) {
        Print("messagebox " + caption + ": " + text);
    });
    vexa::SetAssetDirectory(VEXA_DEFAULT_ASSET_DIR);
    if (!vexa::Initialize(look)) {
        Print("host: Initialize failed");
        return 1;
    }
    vexa::SetKeyDownCallback([](const vexa::Key& key, const vexa::ModKeys& mods) {
        Print("keydown " + std::to_string(static_cast<int>(key)) + " " + Mods(mods));
    });
    vexa::SetKeyUpCallback([](const vexa::Key& key, const vexa::ModKeys& mods) {
        Print("keyup " + std::to_string(static_cast<int>(key)) + " " + Mods(mods));
    });

    const auto cloud = MakeCloud();
    vexa::AddResource(cloud);
    if (second)
        vexa::AddResource(MakeSecondCloud());
    vexa::FocusCamera(cloud->GetId());
    Print(kReadyLine);

    while (vexa::IsOpen()) {
        vexa::Update();
        std::this_thread::sleep_for(std::chrono::milliseconds(4));
    }
    Print(kLoopEndedLine);

    CallEverythingOnceMore(cloud);
    vexa::Terminate();
    Print(kDoneLine);
    return 0;
}
