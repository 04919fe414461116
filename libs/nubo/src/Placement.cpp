#include <nubo/Placement.h>

#include <runa/rlog.h>

#include <CEGUI/Window.h>
#include <CEGUI/widgets/PushButton.h>

#include <string>
#include <utility>

namespace nubo {

namespace {

struct ButtonColours {
    const char* normal;
    const char* hover;
    const char* pushed;
    const char* text;
};

// Default repeats the DarkVexa/PushButton look's own colours, so that a button can go back
// to it; Flat uses the look's translucent flat-button highlights over no background.
bool ThemeColours(PushButtonTheme theme, ButtonColours& colours)
{
    switch (theme) {
    case PushButtonTheme::Default:
        colours = {"FF4A4D50", "FF5C6064", "FF3A6EA5", "FFE6E6E6"};
        return true;
    case PushButtonTheme::Accent:
        colours = {"FF4A90D9", "FF63A4E8", "FF3A6EA5", "FFFFFFFF"};
        return true;
    case PushButtonTheme::Positive:
        colours = {"FF1E8E4A", "FF11B252", "FF16DF67", "FFFFFFFF"};
        return true;
    case PushButtonTheme::Danger:
        colours = {"FFB03A3A", "FFCC4747", "FF8E2C2C", "FFFFFFFF"};
        return true;
    case PushButtonTheme::Flat:
        colours = {"00000000", "2CFFFFFF", "50FFFFFF", "FFE6E6E6"};
        return true;
    }
    return false;
}

} // namespace

void SetPosition(CEGUI::Window* window, float relativeX, float pixelsX, float relativeY, float pixelsY)
{
    if (!window) {
        rlog::Warn("No window to place", "nubo::SetPosition");
        return;
    }
    window->setPosition(CEGUI::UVector2(CEGUI::UDim(relativeX, pixelsX), CEGUI::UDim(relativeY, pixelsY)));
}

void SetSize(CEGUI::Window* window, float relativeWidth, float pixelsWidth, float relativeHeight,
             float pixelsHeight)
{
    if (!window) {
        rlog::Warn("No window to size", "nubo::SetSize");
        return;
    }
    window->setSize(
        CEGUI::USize(CEGUI::UDim(relativeWidth, pixelsWidth), CEGUI::UDim(relativeHeight, pixelsHeight)));
}

void SetTheme(PushButtonTheme theme, CEGUI::Window* button)
{
    if (!dynamic_cast<CEGUI::PushButton*>(button))
        return;
    ButtonColours colours{};
    if (!ThemeColours(theme, colours)) {
        rlog::Warn("Unknown push button theme " + std::to_string(static_cast<int>(theme)), "nubo::SetTheme");
        return;
    }
    const std::pair<const char*, const char*> properties[] = {{"NormalColour", colours.normal},
                                                              {"HoverColour", colours.hover},
                                                              {"PushedColour", colours.pushed},
                                                              {"TextColour", colours.text}};
    for (const auto& [name, value] : properties) {
        if (!button->isPropertyPresent(name)) {
            rlog::Warn("Button \"" + std::string(button->getNamePath().c_str()) + "\" of type \"" +
                           button->getType().c_str() + "\" has no property \"" + name + "\"",
                       "nubo::SetTheme");
            continue;
        }
        button->setProperty(name, value);
    }
    button->invalidate();
}

} // namespace nubo
