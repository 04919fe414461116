#include "core/LayoutChooser.h"

#include <runa/rlog.h>

#include <CEGUI/CEGUI.h>

#include <sstream>
#include <string>
#include <utility>

namespace vexa {

namespace {

constexpr const char* kChooserName = "over-background";
constexpr const char* kCaptions[] = {"Single View", "Dual Split", "B Split", "Quad Split"};

// The tiles stand side by side in the middle of the window, sized to fit the smallest window a
// look gives (640 px wide).
constexpr float kTileWidth = 136.0f;
constexpr float kTileHeight = 124.0f;
constexpr float kTileGap = 16.0f;
constexpr float kSketchInset = 14.0f;
constexpr float kSketchHeight = 76.0f;
constexpr float kSketchGap = 2.0f;

ViewareaLook MakeArea(float x, float y, float width, float height)
{
    ViewareaLook look;
    look.position = {{x, 0.0f}, {y, 0.0f}};
    look.size = {{width, 0.0f}, {height, 0.0f}};
    return look;
}

} // namespace

LayoutChooser::LayoutChooser(std::function<void(std::uint8_t)> onChosen) : onChosen_(std::move(onChosen)) {}

LayoutChooser::~LayoutChooser()
{
    if (window_ != nullptr && CEGUI::WindowManager::getSingletonPtr() != nullptr)
        CEGUI::WindowManager::getSingleton().destroyWindow(window_);
}

bool LayoutChooser::IsShown() const
{
    return window_ != nullptr && window_->getParent() != nullptr;
}

void LayoutChooser::Hide()
{
    if (IsShown())
        window_->getParent()->removeChild(window_);
}

void LayoutChooser::BringToFront()
{
    if (IsShown())
        window_->moveToFront();
}

void LayoutChooser::Toggle(CEGUI::Window* root)
{
    if (IsShown()) {
        Hide();
        return;
    }
    if (root == nullptr)
        return;
    if (window_ == nullptr)
        window_ = Build();
    if (window_ == nullptr)
        return;
    root->addChild(window_);
    window_->moveToFront();
}

std::vector<ViewareaLook> LayoutChooser::MakeLayout(std::uint8_t layout)
{
    switch (layout) {
    case 1:
        return {MakeArea(0.0f, 0.0f, 1.0f, 1.0f)};
    case 2:
        return {MakeArea(0.0f, 0.0f, 0.5f, 1.0f), MakeArea(0.5f, 0.0f, 0.5f, 1.0f)};
    case 3:
        return {MakeArea(0.0f, 0.0f, 0.5f, 1.0f), MakeArea(0.5f, 0.0f, 0.5f, 0.5f),
                MakeArea(0.5f, 0.5f, 0.5f, 0.5f)};
    case 4:
        return {MakeArea(0.0f, 0.0f, 0.5f, 0.5f), MakeArea(0.5f, 0.0f, 0.5f, 0.5f),
                MakeArea(0.0f, 0.5f, 0.5f, 0.5f), MakeArea(0.5f, 0.5f, 0.5f, 0.5f)};
    default:
        return {};
    }
}

CEGUI::Window* LayoutChooser::Build()
{
    CEGUI::WindowManager& windows = CEGUI::WindowManager::getSingleton();
    CEGUI::Window* chooser = nullptr;
    try {
        chooser = windows.loadLayoutFromString(MakeLayoutText());
        // Only clicks on the dimmed background arrive here; the tiles handle their own.
        chooser->subscribeEvent(CEGUI::Window::EventMouseClick, [this](const CEGUI::EventArgs&) {
            Hide();
            return true;
        });
        for (int i = 0; i < 4; ++i) {
            CEGUI::Window* tile = chooser->getChild("layout" + std::to_string(i));
            const auto layout = static_cast<std::uint8_t>(tile->getID());
            tile->subscribeEvent(CEGUI::PushButton::EventClicked, [this, layout](const CEGUI::EventArgs&) {
                Hide();
                if (onChosen_)
                    onChosen_(layout);
                return true;
            });
        }
    } catch (const CEGUI::Exception& e) {
        rlog::Fail(std::string("The layout chooser could not be built: ") + e.what(),
                   "vexa::LayoutChooser::Build");
        if (chooser != nullptr)
            windows.destroyWindow(chooser);
        return nullptr;
    }
    return chooser;
}

std::string LayoutChooser::MakeLayoutText()
{
    std::ostringstream text;
    const auto property = [&text](const char* indent, const char* name, const std::string& value) {
        text << indent << "<Property name=\"" << name << "\" value=\"" << value << "\" />\n";
    };
    const auto dim = [](float scale, float offset) {
        std::ostringstream d;
        d << '{' << scale << ',' << offset << '}';
        return d.str();
    };
    const auto area = [&](float l, float lo, float t, float to, float r, float ro, float b, float bo) {
        return '{' + dim(l, lo) + ',' + dim(t, to) + ',' + dim(r, ro) + ',' + dim(b, bo) + '}';
    };

    text << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<GUILayout version=\"4\">\n";
    text << "<Window type=\"DarkVexa/ColorRect\" name=\"" << kChooserName << "\">\n";
    property("  ", "Area", area(0, 0, 0, 0, 1, 0, 1, 0));
    property("  ", "AlwaysOnTop", "true");
    property("  ", "MousePassThroughEnabled", "false");
    property("  ", "Colour", "AA000000");
    const float rowWidth = 4.0f * kTileWidth + 3.0f * kTileGap;
    for (int i = 0; i < 4; ++i) {
        const float left = -rowWidth / 2.0f + static_cast<float>(i) * (kTileWidth + kTileGap);
        text << "  <Window type=\"DarkVexa/PushButton\" name=\"layout" << i << "\">\n";
        property("    ", "ID", std::to_string(i + 1));
        property(
            "    ", "Area",
            area(0.5f, left, 0.5f, -kTileHeight / 2.0f, 0.5f, left + kTileWidth, 0.5f, kTileHeight / 2.0f));
        property("    ", "NormalColour", "00000000");
        property("    ", "BorderColour", "55FFFFFF");
        property("    ", "HoverColour", "FF11B252");
        property("    ", "PushedColour", "FF16DF67");
        property("    ", "TooltipText", std::string("Split the window as &quot;") + kCaptions[i] + "&quot;");
        // The sketch: one translucent panel per view area of the layout, in the same places,
        // inside a rectangle of the tile inset at the sides and of fixed height at the top.
        int part = 0;
        for (const ViewareaLook& view : MakeLayout(static_cast<std::uint8_t>(i + 1))) {
            const float x0 = view.position.x.relative;
            const float y0 = view.position.y.relative;
            const float x1 = x0 + view.size.width.relative;
            const float y1 = y0 + view.size.height.relative;
            const auto sketchX = [](float relative, float pad) {
                return std::pair{relative, kSketchInset + pad - relative * 2.0f * kSketchInset};
            };
            const auto sketchY = [](float relative, float pad) {
                return std::pair{0.0f, kSketchInset + pad + relative * kSketchHeight};
            };
            const auto [l, lo] = sketchX(x0, kSketchGap);
            const auto [t, to] = sketchY(y0, kSketchGap);
            const auto [r, ro] = sketchX(x1, -kSketchGap);
            const auto [b, bo] = sketchY(y1, -kSketchGap);
            text << "    <Window type=\"DarkVexa/ColorRect\" name=\"area" << part++ << "\">\n";
            property("      ", "Area", area(l, lo, t, to, r, ro, b, bo));
            property("      ", "Colour", "55FFFFFF");
            property("      ", "MousePassThroughEnabled", "true");
            text << "    </Window>\n";
        }
        text << "    <Window type=\"DarkVexa/Label\" name=\"caption\">\n";
        property("      ", "Area", area(0, 0, 0, kSketchInset + kSketchHeight + 4.0f, 1, 0, 1, -4.0f));
        property("      ", "Font", "InriaSans-12-Normal");
        property("      ", "Text", kCaptions[i]);
        property("      ", "MousePassThroughEnabled", "true");
        text << "    </Window>\n  </Window>\n";
    }
    text << "</Window>\n</GUILayout>\n";
    return text.str();
}

} // namespace vexa
