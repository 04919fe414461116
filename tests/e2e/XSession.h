#pragma once
// A private X server for one test and a connection to it that acts as the person at the
// desk: it finds a program's top-level window, moves the pointer, presses buttons and keys
// through the XTEST extension (so the program receives ordinary device events), reads the
// window's pixels and asks the window to close as a window manager does.
//
// Every test gets its own server, so two tests run side by side never share a pointer or a
// keyboard focus. Coordinates are window pixels, origin at the window's top-left corner.

#include "ChildProcess.h"
#include "Picture.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

struct _XDisplay;

namespace e2e {

enum class Button : unsigned int { Left = 1, Middle = 2, Right = 3, WheelUp = 4, WheelDown = 5 };

class XSession {
public:
    /// Starts Xvfb (a 1280 x 900 screen) on a free display, its messages going to `serverLog`,
    /// and connects to it. Throws std::runtime_error when either fails.
    explicit XSession(const std::string& serverLog);
    ~XSession();
    XSession(const XSession&) = delete;
    XSession& operator=(const XSession&) = delete;

    /// ":N", for the DISPLAY variable of the programs started on this server.
    const std::string& DisplayName() const { return displayName_; }

    /// Waits for a mapped top-level window of process `pid` and makes it the target of all
    /// following calls. False after `timeout`.
    bool AttachToWindowOf(pid_t pid, std::chrono::milliseconds timeout);
    /// The window's size; the position is its place on the screen.
    Rect WindowArea();

    /// The window's pixels as they are on the screen now; empty when it cannot be read.
    Picture Grab();

    void MoveTo(int x, int y);
    void Press(Button button);
    void Release(Button button);
    /// Moves there, then presses and releases without moving.
    void Click(Button button, int x, int y);
    /// Two clicks in quick succession (an edit box selects the word under the pointer).
    void DoubleClick(Button button, int x, int y);
    /// Presses `button` at `from`, moves to `to` in `steps` even steps and releases there,
    /// holding the modifier keys (keysym names such as "Control_L") all along.
    void Drag(Button button, Point from, Point to, const std::vector<std::string>& modifiers = {},
              int steps = 16);
    /// `clicks` wheel notches at the pointer: positive away from the user (up), negative down.
    void Wheel(int clicks);

    /// Keys by keysym name ("Tab", "F12", "r", "9", "BackSpace", "Return", "Shift_L").
    void KeyDown(const std::string& keysym);
    void KeyUp(const std::string& keysym);
    void Tap(const std::string& keysym);
    /// Whether the server repeats this key while it is held (so a test that holds it really
    /// produces repeats).
    bool RepeatsWhenHeld(const std::string& keysym);

    /// Sends the window a WM_PROTOCOLS / WM_DELETE_WINDOW client message, as a window
    /// manager does when the user clicks the close box.
    void RequestClose();

    /// Leaves time between events, so that the program sees them as separate ones.
    static void Pause(std::chrono::milliseconds duration);

private:
    unsigned int Keycode(const std::string& keysym);
    /// Sends the queued requests and leaves the gap between two events.
    void Flush();
    void MoveOnScreen(int x, int y);

    std::unique_ptr<ChildProcess> server_;
    std::string displayName_;
    _XDisplay* display_ = nullptr;
    unsigned long window_ = 0;
    int originX_ = 0;
    int originY_ = 0;
};

} // namespace e2e
