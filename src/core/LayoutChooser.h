#pragma once
// The layout chooser: a dimmed full-window overlay with one tile per view layout ("Single
// View", "Dual Split", "B Split", "Quad Split"), each sketching its split. Tab shows and hides
// it; a click on a tile reports the layout, a click beside the tiles closes it.

#include "core/Looks.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace CEGUI {
class Window;
}

namespace vexa {

class LayoutChooser {
public:
    /// `onChosen` receives the layout number (1..4) of a clicked tile, after the chooser closed.
    explicit LayoutChooser(std::function<void(std::uint8_t)> onChosen);
    ~LayoutChooser();
    LayoutChooser(const LayoutChooser&) = delete;
    LayoutChooser& operator=(const LayoutChooser&) = delete;

    /// Shows the chooser over `root` (built on first use), or hides it when it is shown.
    void Toggle(CEGUI::Window* root);
    void Hide();
    bool IsShown() const;
    /// Keeps the chooser above windows added after it (new view areas).
    void BringToFront();
    /// The overlay once it was first shown; null before.
    CEGUI::Window* GetWindow() const { return window_; }

    /// The view areas of layout 1..4; none for any other number.
    static std::vector<ViewareaLook> MakeLayout(std::uint8_t layout);

    /// The chooser as CEGUI layout text: the dimmed "over-background" panel holding the four
    /// tiles "layout0".."layout3" (IDs 1..4), each with its sketch and caption.
    static std::string MakeLayoutText();

private:
    CEGUI::Window* Build();

    std::function<void(std::uint8_t)> onChosen_;
    CEGUI::Window* window_ = nullptr;
};

} // namespace vexa
