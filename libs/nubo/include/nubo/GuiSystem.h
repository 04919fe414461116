#pragma once
// The GUI over CEGUI: bootstraps CEGUI's OpenGL 3 renderer on a plor::Window (or its null
// renderer for tests), loads the DarkVexa scheme and the Inria Sans fonts from the resource
// folder, feeds it the window's input and time, and draws it.
//
// This is the only place that starts a CEGUI renderer. CEGUI's OpenGL header brings GLEW,
// which must never meet glbinding in one translation unit: keep GL out of this header.

#include <CEGUI/InputEvent.h>

#include <memory>
#include <string>

namespace CEGUI {
class Window;
class GUIContext;
} // namespace CEGUI

namespace plor {
class Window;
}

namespace nubo {

class GuiSystem {
public:
    GuiSystem();
    ~GuiSystem();
    GuiSystem(const GuiSystem&) = delete;
    GuiSystem& operator=(const GuiSystem&) = delete;

    /// Starts CEGUI with its OpenGL 3 renderer on `window` (its context is made current for
    /// the call if it is not). `resourceDirectory` holds the scheme, looknfeel, imagesets,
    /// fonts and layouts. Returns false, with the reason (such as the missing file) in the
    /// log, when it cannot start; CEGUI being a process-wide singleton, that includes another
    /// GuiSystem still running.
    bool Initialize(const std::shared_ptr<plor::Window>& window, const std::string& resourceDirectory);
    /// Starts CEGUI with its null renderer (no display, no GL): widgets, layouts and events
    /// work, nothing is drawn. `width` x `height` is the size of the pretend display.
    bool InitializeHeadless(const std::string& resourceDirectory, int width = 1280, int height = 800);
    /// Destroys every window and the renderer. Called by the destructor.
    void Terminate();
    bool IsInitialized() const;

    /// The root window of the default GUI context (a full-size "DefaultWindow").
    CEGUI::Window* GetRoot() const;
    CEGUI::GUIContext* GetContext() const;

    // Input in window pixels; each returns true when the GUI used the event, so that the
    // caller does not pass it on to the 3D views. Mouse events over the bare root window
    // count as unused, unless a GUI window holds the input (a drag, an open drop-down list);
    // such an unused press also takes the keyboard focus from the GUI.
    bool InjectMouseMove(float x, float y);
    bool InjectMouseDown(CEGUI::MouseButton button);
    bool InjectMouseUp(CEGUI::MouseButton button);
    bool InjectMouseWheel(float delta);
    /// Keys come as CEGUI's scan codes; the caller translates the window's codes.
    bool InjectKeyDown(CEGUI::Key::Scan key);
    bool InjectKeyUp(CEGUI::Key::Scan key);
    bool InjectChar(unsigned int codepoint);
    /// True while a text field (an edit box, also inside a spinner) has the keyboard, so that
    /// typed letters are text and not shortcuts.
    bool IsTypingText() const;
    /// True when the mouse is over a GUI window other than the root (the 3D views should
    /// not start a drag there).
    bool IsMouseOverGui() const;

    /// Advances animations, tooltips and auto-repeat by `seconds`.
    void InjectTime(float seconds);
    /// The framebuffer / display size changed.
    void NotifyDisplaySizeChanged(int width, int height);

    /// True when something in the GUI changed since the last Draw.
    bool IsDirty() const;
    void MarkDirty();
    /// Draws the GUI over what is in the bound framebuffer (the window's context is made
    /// current if it is not). Afterwards the GL enable flags are as before, but CEGUI's vertex
    /// array, array buffer and texture stay bound and the blend function and scissor box are
    /// CEGUI's: later GL code must bind and set what it uses.
    void Draw();

private:
    struct State;
    bool CapturedBeforehand() const;
    bool UsedByGui(bool handled, bool captured) const;
    /// Scrolls the scrollable pane around the pointer by `delta` notches unless a widget that
    /// uses the wheel is in between; whether it did.
    bool ScrollPaneUnderMouse(float delta);

    std::unique_ptr<State> state_;
};

/// The directory CEGUI's resource groups point at, "" before initialisation.
const std::string& GetResourceDirectory();

} // namespace nubo
