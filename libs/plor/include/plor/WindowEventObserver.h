#pragma once
// Receivers of a window's input and window-state events. Observers register with an event
// mask so that, for example, a window-placement tracker sees only window events.

#include <string>
#include <vector>

namespace plor {

/// Groups of events an observer subscribes to; combine with |. 15 is everything.
enum EventMask : unsigned {
    kMouseEvents = 1,  ///< move, button down/up, wheel
    kKeyEvents = 2,    ///< key down/up, characters
    kWindowEvents = 4, ///< refresh, framebuffer resize, move, resize, iconify
    kDropEvents = 8,   ///< files dropped on the window
    kAllEvents = 15
};

/// Mouse buttons carry the window system's codes (left 0, right 1, middle 2).
enum class MouseButton : int { Left = 0, Right = 1, Middle = 2, Button4 = 3, Button5 = 4 };

/// Modifier keys held during a key or mouse-button event.
struct Modifiers {
    bool shift = false;
    bool control = false;
    bool alt = false;
    bool super = false;

    /// From the window system's modifier bit field (shift 1, control 2, alt 4, super 8).
    static Modifiers FromBits(int bits);
    int ToBits() const;
    bool operator==(const Modifiers&) const = default;
};

class WindowEventObserver {
public:
    virtual ~WindowEventObserver() = default;

    // Mouse positions are in window coordinates (pixels, origin top-left).
    virtual void OnMouseMove(float /*x*/, float /*y*/) {}
    virtual void OnMouseDown(MouseButton /*button*/, const Modifiers& /*mods*/) {}
    virtual void OnMouseUp(MouseButton /*button*/, const Modifiers& /*mods*/) {}
    virtual void OnMouseWheel(float /*dx*/, float /*dy*/) {}

    /// `key` is the window system's key code (Tab is 258); `repeat` marks auto-repeat.
    virtual void OnKeyDown(int /*key*/, const Modifiers& /*mods*/, bool /*repeat*/) {}
    virtual void OnKeyUp(int /*key*/, const Modifiers& /*mods*/) {}
    /// A typed character (Unicode code point), for text entry.
    virtual void OnChar(unsigned int /*codepoint*/) {}

    virtual void OnFilesDropped(const std::vector<std::string>& /*paths*/) {}

    virtual void OnWindowRefresh() {}
    virtual void OnFramebufferResized(int /*width*/, int /*height*/) {}
    virtual void OnWindowMoved(int /*x*/, int /*y*/) {}
    virtual void OnWindowResized(int /*width*/, int /*height*/) {}
    virtual void OnWindowIconified(bool /*iconified*/) {}
};

} // namespace plor
