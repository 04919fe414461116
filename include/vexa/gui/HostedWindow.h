#pragma once
// A row that holds a window the caller made and still owns (a host's own panel): the row
// shows it at its height and lets go of it, undamaged, when the panel is dropped.

#include <vexa/Export.h>
#include <vexa/gui/TElement.h>

namespace vexa::gui {

class VEXA_API HostedWindow : public TElement<HostedWindow> {
public:
    /// `row` is the generated row, `window` the caller's window inside it.
    HostedWindow(CEGUI::Window* row, CEGUI::Window* window);
    HostedWindow(const HostedWindow& other);
    HostedWindow(HostedWindow&& other) noexcept;
    ~HostedWindow() override;

    CEGUI::Window* GetWidget() const { return window_; }

private:
    CEGUI::Window* window_ = nullptr;
};

} // namespace vexa::gui
