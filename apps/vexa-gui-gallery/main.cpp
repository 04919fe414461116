// Builds one generated sidebar panel holding every kind of GUI row, with rows shown and
// hidden by their conditions, and draws it in the DarkVexa look into a PNG.
//
//   vexa-gui-gallery --out gui.png [--assets DIR]

#include <vexa/GuiGenerator.h>
#include <vexa/gui/Elements.h>

#include <nubo/GuiSystem.h>
#include <nubo/Placement.h>

#include <plor/Framebuffer.h>
#include <plor/Window.h>

#include <tesk/ColorMap.h>
#include <tesk/Image.h>

#include <CEGUI/CEGUI.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

constexpr int kWidth = 760;
constexpr int kHeight = 900;

struct Settings {
    bool lighting = true;
    bool advanced = false;
    bool metallic = false;
    int pointSize = 4;
    float opacity = 0.8f;
    int quality = 3;
    float shininess = 32.0f;
    int colorMap = 1;
    int renderMode = 3;
};

CEGUI::Window* CreateSidebar(CEGUI::Window* root, const char* name, float x, const char* title)
{
    auto& windows = CEGUI::WindowManager::getSingleton();
    CEGUI::Window* frame = windows.createWindow("DarkVexa/Panel", name);
    nubo::SetPosition(frame, 0.0f, x, 0.0f, 16.0f);
    nubo::SetSize(frame, 0.0f, 360.0f, 1.0f, -32.0f);
    root->addChild(frame);

    CEGUI::Window* header = windows.createWindow("DarkVexa/PanelHeader", std::string(name) + "_header");
    nubo::SetPosition(header, 0.0f, 0.0f, 0.0f, 0.0f);
    nubo::SetSize(header, 1.0f, 0.0f, 0.0f, 24.0f);
    frame->addChild(header);
    CEGUI::Window* caption = windows.createWindow("DarkVexa/Label", std::string(name) + "_title");
    caption->setText(title);
    caption->setProperty("Font", "InriaSans-12-Normal");
    caption->setProperty("HorzFormatting", "LeftAligned");
    nubo::SetPosition(caption, 0.0f, 8.0f, 0.0f, 0.0f);
    nubo::SetSize(caption, 1.0f, -16.0f, 1.0f, 0.0f);
    header->addChild(caption);

    CEGUI::Window* rows = windows.createWindow("DarkVexa/ArrayPanel", std::string(name) + "_rows");
    nubo::SetPosition(rows, 0.0f, 0.0f, 0.0f, 28.0f);
    nubo::SetSize(rows, 1.0f, 0.0f, 0.0f, 10.0f);
    frame->addChild(rows);
    return rows;
}

/// Every row kind the generator offers, in the order a gadget would use them.
void FillRows(vexa::GuiGenerator& gen, Settings& s, bool showAdvanced)
{
    s.advanced = showAdvanced;
    gen.AddLabel("Point count: 1 234 567");
    gen.AddLabel("Point space: TESK Camera");
    gen.AddSeparator();
    gen.AddDroplist("Render mode")
        ->AddItems({{"Points", 0}, {"Wires", 1}, {"Points & Wires", 2}, {"Solid", 3}, {"Solid & Wires", 4}})
        ->SetLink(&s.renderMode);
    gen.AddNumericInt("Point size")->SetMinMax(1, 20)->SetLink(&s.pointSize);
    gen.AddSlidingFloat("Opacity")->SetLink(&s.opacity);
    gen.AddSlidingInt("Quality")->SetMinMax(1, 8)->SetLink(&s.quality);
    gen.AddCheckbox("Use lighting")->SetLink(&s.lighting);
    gen.AddNumericFloat("Shininess")
        ->SetMinMax(1.0f, 512.0f)
        ->SetLink(&s.shininess)
        ->SetConditionBool(&s.lighting, vexa::BoolFunc::IfTrue);
    gen.AddSeparator();
    gen.AddCheckbox("Advanced options")->SetLink(&s.advanced);
    gen.PanelBegin()->SetConditionBool(&s.advanced, vexa::BoolFunc::IfTrue);
    gen.AddLabel("Shown while \"Advanced options\" is ticked");
    gen.AddCheckbox("Metallic")->SetLink(&s.metallic);
    gen.AddDroplist("Color map")
        ->AddItems({{"Gray scale", 5},
                    {"Rainbow", 0},
                    {"Blue To Red", 2},
                    {"Red To Green", 3},
                    {"Thermal", 1},
                    {"Colorful", 6},
                    {"Scattered", 4}})
        ->SetLink(&s.colorMap);
    gen.PanelEnd();
    gen.AddLabel("Hidden while \"Advanced options\" is ticked")
        ->SetConditionBool(&s.advanced, vexa::BoolFunc::IfFalse);
    gen.AddSeparator();
    gen.AddLabel("Channels");
    auto* channels = gen.AddCheckboxList();
    const char* names[] = {"Red", "Green", "Blue", "Alpha"};
    const tesk::Color3f colors[] = {
        {0.9f, 0.25f, 0.25f}, {0.3f, 0.8f, 0.35f}, {0.3f, 0.5f, 0.95f}, {0.8f, 0.8f, 0.8f}};
    for (int i = 0; i < 4; ++i) {
        const auto id = channels->AddItem(names[i], i != 3);
        channels->SetItemColor(id, colors[i]);
    }
    gen.AddButton("Focus camera");
    gen.TestElementConditions();
}

} // namespace

int main(int argc, char** argv)
{
    std::string out;
    std::string assets = VEXA_SOURCE_ASSET_DIR;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        if (arg == "--out" && i + 1 < argc)
            out = argv[++i];
        else if (arg == "--assets" && i + 1 < argc) {
            assets = argv[++i];
            if (!assets.empty() && assets.back() != '/')
                assets += '/';
        } else {
            std::fprintf(stderr, "usage: vexa-gui-gallery --out FILE.png [--assets DIR]\n");
            return 2;
        }
    }
    if (out.empty()) {
        std::fprintf(stderr, "usage: vexa-gui-gallery --out FILE.png [--assets DIR]\n");
        return 2;
    }

    plor::WindowParams params;
    params.width = kWidth;
    params.height = kHeight;
    params.visible = false;
    params.caption = "vexa-gui-gallery";
    auto window = plor::Window::Create(params);
    if (!window) {
        std::fprintf(stderr,
                     "vexa-gui-gallery: no OpenGL window could be opened; without a display run it as\n"
                     "  xvfb-run -a vexa-gui-gallery --out gui.png\n");
        return 1;
    }
    window->MakeContextCurrent();

    nubo::GuiSystem gui;
    if (!gui.Initialize(window, assets + "resources/")) {
        std::fprintf(stderr, "vexa-gui-gallery: the GUI could not start (see the log above)\n");
        return 1;
    }
    gui.NotifyDisplaySizeChanged(kWidth, kHeight);

    // A backdrop like the 3D view behind a sidebar.
    CEGUI::Window* backdrop =
        CEGUI::WindowManager::getSingleton().createWindow("DarkVexa/ColorRect", "backdrop");
    backdrop->setProperty("Colour", "FF3D3D3D");
    nubo::SetSize(backdrop, 1.0f, 0.0f, 1.0f, 0.0f);
    backdrop->setMousePassThroughEnabled(true);
    gui.GetRoot()->addChild(backdrop);

    Settings collapsed;
    Settings expanded;
    vexa::GuiGenerator left(CreateSidebar(gui.GetRoot(), "left", 16.0f, "Advanced off: rows collapse"));
    FillRows(left, collapsed, false);
    vexa::GuiGenerator right(CreateSidebar(gui.GetRoot(), "right", 384.0f, "Advanced on: rows shown"));
    FillRows(right, expanded, true);

    gui.InjectTime(0.1f);
    gui.Draw();

    const std::vector<std::uint8_t> pixels = plor::ReadPixelsRgba(0, 0, kWidth, kHeight);
    const tesk::Image image(kWidth, kHeight, 4, std::span<const std::uint8_t>(pixels));
    if (!image.SavePng(out)) {
        std::fprintf(stderr, "vexa-gui-gallery: could not write %s\n", out.c_str());
        return 1;
    }
    std::printf("vexa-gui-gallery: %dx%d written to %s\n", kWidth, kHeight, out.c_str());
    return 0;
}
