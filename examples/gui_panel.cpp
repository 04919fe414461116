// A host's own panel in the sidebar: a CEGUI layout whose button and label the host wires up
// itself. "Add a ring" puts another ring of points into the scene, "Clear" takes them away.
// `gui_panel --frames N` stops early.

#include <vexa/vexa.h>

#include <CEGUI/CEGUI.h>

#include <cmath>
#include <cstdlib>
#include <string>

namespace {

// The viewer's widget looks ("DarkVexa/...") make the panel match the sidebar. The root is as
// wide as the panel and 96 pixels tall.
const char* const kLayout = R"(<?xml version="1.0" encoding="UTF-8"?>
<GUILayout version="4">
  <Window type="DefaultWindow" name="Rings">
    <Property name="Area" value="{{0,0},{0,0},{1,0},{0,96}}" />
    <Window type="DarkVexa/Label" name="Count">
      <Property name="Area" value="{{0,0},{0,0},{1,0},{0,20}}" />
      <Property name="HorzFormatting" value="LeftAligned" />
    </Window>
    <Window type="DarkVexa/PushButton" name="Add">
      <Property name="Area" value="{{0,0},{0,28},{1,0},{0,54}}" />
      <Property name="Text" value="Add a ring" />
    </Window>
    <Window type="DarkVexa/PushButton" name="Clear">
      <Property name="Area" value="{{0,0},{0,62},{1,0},{0,88}}" />
      <Property name="Text" value="Clear" />
    </Window>
  </Window>
</GUILayout>)";

// Ring n: a little higher, wider and warmer than the one before.
void AddRing(int n)
{
    std::vector<glm::vec3> points;
    std::vector<tesk::Color3f> colors;
    const float radius = 0.4f + 0.15f * static_cast<float>(n);
    for (int i = 0; i < 3000; ++i) {
        const float a = 6.2831853f * static_cast<float>(i) / 3000.0f;
        points.emplace_back(radius * std::cos(a), 0.1f * static_cast<float>(n), radius * std::sin(a));
        colors.emplace_back(1.0f, 0.9f - 0.12f * static_cast<float>(n % 7), 0.2f);
    }
    tesk::PointCloud cloud(std::move(points));
    cloud.AddColorProperty("RGB", std::move(colors));
    auto ring = std::make_shared<vexa::modules::PointCloudResource>("Rings/" + std::to_string(n), cloud);
    ring->SetPreferredColorSource(vexa::modules::PointCloudGadget::Colors);
    vexa::AddResource(ring);
}

} // namespace

int main(int argc, char** argv)
{
    const long frames =
        argc == 3 && std::string(argv[1]) == "--frames" ? std::strtol(argv[2], nullptr, 10) : -1;
    vexa::SetAssetDirectory(VEXA_DEFAULT_ASSET_DIR);
    if (!vexa::Initialize())
        return 1;

    // Set up after Initialize: the layout is made of the running GUI's widgets.
    auto panel = std::make_shared<vexa::modules::GuiResource>("Controls");
    if (!panel->Setup(kLayout))
        return 1;
    vexa::AddResource(panel);

    int rings = 1;
    AddRing(rings);
    CEGUI::Window* count = panel->GetWindow("Count");
    count->setText("Rings: 1");
    panel->GetWindow("Add")->subscribeEvent(CEGUI::PushButton::EventClicked, [&](const CEGUI::EventArgs&) {
        AddRing(++rings);
        count->setText("Rings: " + std::to_string(rings));
        return true;
    });
    panel->GetWindow("Clear")->subscribeEvent(CEGUI::PushButton::EventClicked, [&](const CEGUI::EventArgs&) {
        vexa::RemoveResourcesWithPrefix("Rings/");
        rings = 0;
        count->setText("Rings: 0");
        return true;
    });
    vexa::FrameBox({-1.5f, 0.0f, -1.5f}, {1.5f, 1.0f, 1.5f});

    for (long frame = 0; vexa::IsOpen() && (frames < 0 || frame < frames); ++frame)
        vexa::Update();
    vexa::Terminate();
}
