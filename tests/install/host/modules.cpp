// A host outside the tree that shows one of each content kind through the installed package
// (a skeleton, an image, a graph and a panel of its own) and checks a screenshot for each.
// Usage: vexa-modules-host WORK_DIR
#include <vexa/vexa.h>

#include <CEGUI/CEGUI.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

const char* const kLook =
    R"({"vexa": {"version": "1.0", "width": 900, "height": 700, "background": "202020", "views": [
  {"position": "0, 0; 0, 0", "size": "0.5, 0; 0.5, 0", "sidebar-visible": false, "units": [{"id": "SkeletonResource:Arm"}]},
  {"position": "0.5, 0; 0, 0", "size": "0.5, 0; 0.5, 0", "sidebar-visible": false, "units": [{"id": "ImageResource:Swatch"}]},
  {"position": "0, 0; 0.5, 0", "size": "0.5, 0; 0.5, 0", "sidebar-visible": false, "units": [{"id": "GraphResource:Rise"}]},
  {"position": "0.5, 0; 0.5, 0", "size": "0.5, 0; 0.5, 0", "sidebar-visible": true, "units": [{"id": "GuiDataUnit:Tools"}]}]}})";

const char* const kLayout = R"(<?xml version="1.0" encoding="UTF-8"?>
<GUILayout version="4">
  <Window type="DefaultWindow" name="Tools">
    <Property name="Area" value="{{0,0},{0,0},{1,0},{0,40}}" />
    <Window type="DarkVexa/PushButton" name="Ping">
      <Property name="Area" value="{{0,0},{0,4},{1,0},{0,30}}" />
      <Property name="Text" value="Ping" />
    </Window>
  </Window>
</GUILayout>)";

struct Quadrant {
    std::uint32_t x0, y0, x1, y1;
};

// Pixels of `image` inside `q` whose colour passes `test` (channels 0..1).
template <class Test>
int Count(const tesk::Image& image, const Quadrant& q, Test test)
{
    int n = 0;
    for (std::uint32_t y = q.y0; y < q.y1 && y < image.GetHeight(); ++y)
        for (std::uint32_t x = q.x0; x < q.x1 && x < image.GetWidth(); ++x)
            n += test(image.At(x, y, 0), image.At(x, y, 1), image.At(x, y, 2)) ? 1 : 0;
    return n;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
        return 64;
    const std::filesystem::path work = argv[1];
    std::filesystem::remove_all(work);
    std::filesystem::create_directories(work);
    std::ofstream(work / "look.json") << kLook;
    vexa::SetAssetDirectory(VEXA_ASSET_DIR);
    vexa::SetIntermediateDirectory((work / "state").string());
    if (!vexa::Initialize((work / "look.json").string()))
        return 10;
    for (unsigned char view = 0; view < 4; ++view)
        vexa::SetAxesVisible(view, false);

    // An arm of three joints that waves.
    tesk::Skeleton arm;
    arm.AddJoint("shoulder", -1);
    arm.AddJoint("elbow", 0, {0.0f, 0.6f, 0.0f});
    arm.AddJoint("hand", 1, {0.0f, 0.5f, 0.0f});
    tesk::SkeletonAction wave("wave");
    tesk::SkeletonPose bent = arm.GetRestPose();
    bent.SetJoint(1, {0.0f, 0.6f, 0.0f}, glm::angleAxis(0.8f, glm::vec3(0.0f, 0.0f, 1.0f)));
    wave.AddKeyframe(0.0f, arm.GetRestPose());
    wave.AddKeyframe(1.0f, bent);
    const auto skeleton = vexa::modules::AddSkeleton("Arm", arm, wave);

    // A magenta swatch.
    std::vector<std::uint8_t> pixels;
    for (int i = 0; i < 64 * 64; ++i)
        pixels.insert(pixels.end(), {230, 40, 220, 255});
    vexa::modules::AddImage("Swatch", tesk::Image(64, 64, 4, std::move(pixels)));

    auto graph = std::make_shared<vexa::modules::GraphResource>("Rise");
    graph->SetData(std::vector<float>{0.0f, 1.0f, 3.0f, 4.0f, 7.0f, 9.0f});
    vexa::AddResource(graph);

    auto tools = std::make_shared<vexa::modules::GuiResource>("Tools");
    if (!tools->Setup(kLayout))
        return 11;
    vexa::AddResource(tools);
    vexa::FocusCamera(skeleton->GetId());
    for (int i = 0; i < 5; ++i)
        vexa::Update();

    const std::string shot = (work / "modules.png").string();
    tesk::Image image;
    if (!vexa::SaveScreenshot(shot) || !image.LoadPng(shot))
        return 12;
    const std::uint32_t w = image.GetWidth(), h = image.GetHeight();
    const Quadrant topLeft{0, 0, w / 2, h / 2}, topRight{w / 2, 0, w, h / 2}, bottomLeft{0, h / 2, w / 2, h};
    const int bones = Count(image, topLeft, [](float r, float g, float b) { return r + g + b > 0.9f; });
    const int swatch =
        Count(image, topRight, [](float r, float g, float b) { return r > 0.8f && g < 0.3f && b > 0.7f; });
    const int line =
        Count(image, bottomLeft, [](float r, float g, float b) { return b > 0.8f && g > 0.5f && r < 0.4f; });
    std::printf("modules: skeleton %d, image %d, graph %d pixels\n", bones, swatch, line);
    if (bones < 200 || swatch < 20000 || line < 100)
        return 13;

    // The host's panel is in the bottom right view area's sidebar, on screen and drawn.
    CEGUI::Window* ping = tools->GetWindow("Ping");
    if (ping == nullptr || !ping->isEffectiveVisible())
        return 14;
    const CEGUI::Rectf rect = ping->getUnclippedOuterRect().get();
    const Quadrant button{static_cast<std::uint32_t>(rect.left()), static_cast<std::uint32_t>(rect.top()),
                          static_cast<std::uint32_t>(rect.right()),
                          static_cast<std::uint32_t>(rect.bottom())};
    std::printf("modules: the panel's button at %g,%g..%g,%g\n", rect.left(), rect.top(), rect.right(),
                rect.bottom());
    if (rect.left() < w / 2.0f || rect.top() < h / 2.0f || rect.right() > w || rect.bottom() > h ||
        Count(image, button, [](float r, float g, float b) { return r + g + b > 0.6f; }) < 50)
        return 15;
    vexa::Terminate();
    std::printf("modules: a skeleton, an image, a graph and a host panel were shown\n");
    return 0;
}
