#include "core/LayoutChooser.h"

#include <runa/rlog.h>

#include <CEGUI/CEGUI.h>

#include <string>

namespace vexa {

namespace {

constexpr const char* kChooserName = "vexa_layout_chooser";
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

CEGUI::URect Rect(CEGUI::UDim left, CEGUI::UDim top, CEGUI::UDim right, CEGUI::UDim bottom)
{
    return CEGUI::URect(left, top, right, bottom);
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
    if (IsShown())
    {
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
    switch (layout)
    {
    case 1: return {MakeArea(0.0f, 0.0f, 1.0f, 1.0f)};
    case 2: return {MakeArea(0.0f, 0.0f, 0.5f, 1.0f), MakeArea(0.5f, 0.0f, 0.5f, 1.0f)};
    case 3:
        return {MakeArea(0.0f, 0.0f, 0.5f, 1.0f), MakeArea(0.5f, 0.0f, 0.5f, 0.5f), MakeArea(0.5f, 0.5f, 0.5f, 0.5f)};
    case 4:
        return {MakeArea(0.0f, 0.0f, 0.5f, 0.5f), MakeArea(0.5f, 0.0f, 0.5f, 0.5f), MakeArea(0.0f, 0.5f, 0.5f, 0.5f),
                MakeArea(0.5f, 0.5f, 0.5f, 0.5f)};
    default: return {};
    }
}

CEGUI::Window* LayoutChooser::Build()
{
    using CEGUI::UDim;
    CEGUI::WindowManager& windows = CEGUI::WindowManager::getSingleton();
    CEGUI::Window* chooser = nullptr;
    try
    {
        chooser = windows.createWindow("DarkVexa/ColorRect", kChooserName);
        chooser->setArea(Rect(UDim(0, 0), UDim(0, 0), UDim(1, 0), UDim(1, 0)));
        chooser->setAlwaysOnTop(true);
        chooser->setMousePassThroughEnabled(false);
        chooser->setProperty("Colour", "AA000000");
        // Only clicks on the dimmed background arrive here; the tiles handle their own.
        chooser->subscribeEvent(CEGUI::Window::EventMouseClick, [this](const CEGUI::EventArgs&) {
            Hide();
            return true;
        });

        const float rowWidth = 4.0f * kTileWidth + 3.0f * kTileGap;
        CEGUI::Window* title = windows.createWindow("DarkVexa/Label", "title");
        title->setArea(Rect(UDim(0.5f, -rowWidth / 2.0f), UDim(0.5f, -kTileHeight / 2.0f - 40.0f),
                            UDim(0.5f, rowWidth / 2.0f), UDim(0.5f, -kTileHeight / 2.0f - 12.0f)));
        title->setFont("InriaSans-12-Normal");
        title->setText("Choose a view layout  (Tab closes)");
        title->setMousePassThroughEnabled(true);
        chooser->addChild(title);

        for (int i = 0; i < 4; ++i)
        {
            const auto layout = static_cast<std::uint8_t>(i + 1);
            CEGUI::Window* tile = windows.createWindow("DarkVexa/PushButton", "layout" + std::to_string(i));
            tile->setID(static_cast<CEGUI::uint>(layout));
            const float left = -rowWidth / 2.0f + static_cast<float>(i) * (kTileWidth + kTileGap);
            tile->setArea(Rect(UDim(0.5f, left), UDim(0.5f, -kTileHeight / 2.0f), UDim(0.5f, left + kTileWidth),
                               UDim(0.5f, kTileHeight / 2.0f)));
            tile->setProperty("NormalColour", "00000000");
            tile->setProperty("BorderColour", "55FFFFFF");
            tile->setProperty("HoverColour", "FF11B252");
            tile->setProperty("PushedColour", "FF16DF67");
            tile->setTooltipText(std::string("Split the window as \"") + kCaptions[i] + "\"");
            tile->subscribeEvent(CEGUI::PushButton::EventClicked, [this, layout](const CEGUI::EventArgs&) {
                Hide();
                if (onChosen_)
                    onChosen_(layout);
                return true;
            });

            // The sketch: one translucent panel per view area of the layout, in the same places.
            int part = 0;
            for (const ViewareaLook& area : MakeLayout(layout))
            {
                CEGUI::Window* panel = windows.createWindow("DarkVexa/ColorRect", "area" + std::to_string(part++));
                const float x0 = area.position.x.relative;
                const float y0 = area.position.y.relative;
                const float x1 = x0 + area.size.width.relative;
                const float y1 = y0 + area.size.height.relative;
                // Inside a sketch rectangle of the tile: inset on the sides, fixed height on top.
                const auto sketchX = [](float relative, float pad) {
                    return UDim(relative, kSketchInset + pad - relative * 2.0f * kSketchInset);
                };
                const auto sketchY = [](float relative, float pad) {
                    return UDim(0.0f, kSketchInset + pad + relative * kSketchHeight);
                };
                panel->setArea(Rect(sketchX(x0, kSketchGap), sketchY(y0, kSketchGap), sketchX(x1, -kSketchGap),
                                    sketchY(y1, -kSketchGap)));
                panel->setProperty("Colour", "55FFFFFF");
                panel->setMousePassThroughEnabled(true);
                tile->addChild(panel);
            }

            CEGUI::Window* caption = windows.createWindow("DarkVexa/Label", "caption");
            caption->setArea(Rect(UDim(0, 0), UDim(0, kSketchInset + kSketchHeight + 4.0f), UDim(1, 0), UDim(1, -4.0f)));
            caption->setFont("InriaSans-12-Normal");
            caption->setText(kCaptions[i]);
            caption->setMousePassThroughEnabled(true);
            tile->addChild(caption);
            chooser->addChild(tile);
        }
    }
    catch (const CEGUI::Exception& e)
    {
        rlog::Fail(std::string("The layout chooser could not be built: ") + e.what(), "vexa::LayoutChooser::Build");
        if (chooser != nullptr)
            windows.destroyWindow(chooser);
        return nullptr;
    }
    return chooser;
}

} // namespace vexa
