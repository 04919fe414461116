#pragma once
// Placement helpers: a coordinate is a relative part (fraction of the parent) plus pixels.

#include <string>

namespace CEGUI {
class Window;
}

namespace nubo {

void SetPosition(CEGUI::Window* window, float relativeX, float pixelsX, float relativeY, float pixelsY);
void SetSize(CEGUI::Window* window, float relativeWidth, float pixelsWidth, float relativeHeight,
             float pixelsHeight);

/// Colour schemes of a push button.
enum class PushButtonTheme {
    Default,  ///< grey
    Accent,   ///< blue, for the main action
    Positive, ///< green (the layout chooser's hover and pushed colours)
    Danger,   ///< red, for removal
    Flat      ///< no background until hovered (toolbar icons)
};
/// Sets the button's colour properties for `theme`. Ignored for null or non-button windows.
void SetTheme(PushButtonTheme theme, CEGUI::Window* button);

} // namespace nubo
