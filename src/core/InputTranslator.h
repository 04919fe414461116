#pragma once
// The one place where the window's input becomes what the rest of the library works with.
// The window reports the window system's key codes, buttons and modifier flags; view areas,
// gadgets and the host's callbacks take the library's Key, MouseButton and ModKeys, while the
// GUI and the camera controller take CEGUI's button and system-key mask. Every consumer gets
// its own form from here, so none of them reinterprets another's codes.
//
// The system-key mask describes everything held at the moment of the event, the pressed
// button included, as CEGUI reports it in its own mouse events: a plain left press is
// LeftMouse (0x1), Control + left is 0x9, a left press while the middle button is held is
// 0x11. That is why the translator keeps track of the buttons that are down.

#include <vexa/Input.h>

#include <plor/WindowEventObserver.h>

#include <CEGUI/InputEvent.h>

namespace vexa {

struct TranslatedButton {
    MouseButton button = MouseButton::Left;
    ModKeys mods;
    CEGUI::MouseButton guiButton = CEGUI::NoButton;
    /// CEGUI::SystemKey flags held at the event; on a press the pressed button's own flag is
    /// set, on a release it is already cleared.
    unsigned int systemKeys = 0;
};

struct TranslatedKey {
    Key key = Key::Unknown;
    ModKeys mods;
    /// CEGUI::Key::Unknown for keys the GUI has no code for.
    CEGUI::Key::Scan scan = CEGUI::Key::Unknown;
};

class InputTranslator {
public:
    TranslatedButton Press(plor::MouseButton button, const plor::Modifiers& mods);
    TranslatedButton Release(plor::MouseButton button, const plor::Modifiers& mods);
    /// `windowKey` is the window system's key code as the window reports it.
    TranslatedKey TranslateKey(int windowKey, const plor::Modifiers& mods) const;
    static ModKeys TranslateMods(const plor::Modifiers& mods);

    /// CEGUI::SystemKey flags of the mouse buttons currently down.
    unsigned int GetHeldButtons() const { return heldButtons_; }
    /// Forgets every held button, for when the window can no longer tell us about releases.
    void ReleaseAll() { heldButtons_ = 0; }

private:
    TranslatedButton Translate(plor::MouseButton button, const plor::Modifiers& mods) const;

    unsigned int heldButtons_ = 0;
};

} // namespace vexa
