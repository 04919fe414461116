#pragma once
// The notice: one short line at the bottom middle of the window (a screenshot was saved, the
// shaders were reloaded, what a pick hit) that stays for a few seconds and fades out over its
// last 2.5 seconds. It never takes the mouse.

#include <string>

namespace CEGUI {
class Window;
}

namespace vexa {

class Notice {
public:
    Notice() = default;
    ~Notice();
    Notice(const Notice&) = delete;
    Notice& operator=(const Notice&) = delete;

    /// Shows `text` for `seconds` over `root`, replacing what was shown. Without a GUI (`root`
    /// null) only the countdown runs.
    void Show(CEGUI::Window* root, const std::string& text, float seconds);
    /// Runs the countdown; true when the picture changed (faded a step or disappeared).
    bool Advance(float dt);
    /// Seconds until the notice is gone; 0 when none is shown.
    float GetCountdown() const { return countdown_; }
    CEGUI::Window* GetWindow() const { return window_; }

private:
    CEGUI::Window* window_ = nullptr;
    float countdown_ = 0.0f;
};

} // namespace vexa
