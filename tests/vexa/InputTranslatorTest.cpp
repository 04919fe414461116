// The window's buttons, keys and modifiers as each consumer receives them. That the translated
// presses start the right drags is proven on the real viewer by the e2e camera gestures.

#include "core/InputTranslator.h"

#include <gtest/gtest.h>

#include <tuple>

namespace {

using vexa::InputTranslator;

plor::Modifiers Mods(bool shift, bool control, bool alt = false, bool super = false)
{
    plor::Modifiers mods;
    mods.shift = shift;
    mods.control = control;
    mods.alt = alt;
    mods.super = super;
    return mods;
}

} // namespace

TEST(InputTranslator, ButtonsCarryWhatIsHeldAndEveryConsumerGetsItsOwnForm)
{
    InputTranslator translator;
    const vexa::TranslatedButton middle = translator.Press(plor::MouseButton::Middle, {});
    EXPECT_EQ(middle.guiButton, CEGUI::MiddleButton);
    EXPECT_EQ(middle.button, vexa::MouseButton::Middle);
    EXPECT_EQ(middle.systemKeys, static_cast<unsigned int>(CEGUI::MiddleMouse));

    const vexa::TranslatedButton left =
        translator.Press(plor::MouseButton::Left, Mods(true, true, true, true));
    EXPECT_EQ(left.systemKeys, static_cast<unsigned int>(CEGUI::MiddleMouse | CEGUI::LeftMouse |
                                                         CEGUI::Shift | CEGUI::Control | CEGUI::Alt))
        << "super has no system key";
    const vexa::ModKeys all{.shift = true, .control = true, .alt = true, .super = true};
    EXPECT_EQ(left.mods, all);

    const vexa::TranslatedButton up = translator.Release(plor::MouseButton::Middle, {});
    EXPECT_EQ(up.systemKeys, static_cast<unsigned int>(CEGUI::LeftMouse))
        << "the released button is no longer held";
    translator.ReleaseAll();
    EXPECT_EQ(translator.GetHeldButtons(), 0u);
    const vexa::TranslatedButton right = translator.Press(plor::MouseButton::Right, {});
    EXPECT_EQ(right.button, vexa::MouseButton::Right);
    EXPECT_EQ(right.guiButton, CEGUI::RightButton);
    EXPECT_EQ(right.systemKeys, static_cast<unsigned int>(CEGUI::RightMouse));
    EXPECT_EQ(translator.Press(plor::MouseButton::Button4, {}).guiButton, CEGUI::X1Button);
}

TEST(InputTranslator, KeysKeepTheirCodeForTheHostAndGetTheGuisScanCode)
{
    InputTranslator translator;
    // {window code, key, scan}; window codes as the window system numbers them: letters are
    // ASCII, Tab 258, F12 301.
    const std::tuple<int, vexa::Key, CEGUI::Key::Scan> cases[] = {
        {82, vexa::Key::R, CEGUI::Key::R},
        {57, vexa::Key::Num9, CEGUI::Key::Nine},
        {258, vexa::Key::Tab, CEGUI::Key::Tab},
        {301, vexa::Key::F12, CEGUI::Key::F12},
        {329, vexa::Key::Kp9, CEGUI::Key::Numpad9},
        {335, vexa::Key::KpEnter, CEGUI::Key::NumpadEnter},
        {340, vexa::Key::LeftShift, CEGUI::Key::LeftShift},
        {-1, vexa::Key::Unknown, CEGUI::Key::Unknown},
        // Keys the GUI has no code for still reach the host with their own value.
        {302, static_cast<vexa::Key>(302), CEGUI::Key::Unknown},
    };
    for (const auto& [windowKey, key, scan] : cases) {
        const vexa::TranslatedKey typed = translator.TranslateKey(windowKey, Mods(false, true));
        EXPECT_EQ(std::make_tuple(typed.key, typed.scan), std::make_tuple(key, scan)) << windowKey;
        EXPECT_TRUE(typed.mods.control && !typed.mods.shift) << windowKey;
    }
}
