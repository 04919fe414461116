#include "GuiTestEnvironment.h"

#include <nubo/Placement.h>

#include <LogCapture.h>

#include <gtest/gtest.h>

namespace {

using nubo_test::ScopedWindow;

// Positions and sizes are checked where the viewer's rows are laid out with them (gui tier).
TEST(Placement, NoWindowIsRefusedWithAWord)
{
    testing_support::LogCapture log;
    nubo::SetPosition(nullptr, 0, 0, 0, 0);
    nubo::SetSize(nullptr, 0, 0, 0, 0);
    EXPECT_EQ(log.messages.size(), 2u);
}

TEST(Placement, ThemesRecolourButtonsAndDefaultRestoresTheLook)
{
    ScopedWindow fresh("DarkVexa/PushButton");
    ScopedWindow button("DarkVexa/PushButton");
    const char* names[] = {"NormalColour", "HoverColour", "PushedColour", "TextColour"};

    for (const auto theme :
         {nubo::PushButtonTheme::Accent, nubo::PushButtonTheme::Positive, nubo::PushButtonTheme::Flat}) {
        nubo::SetTheme(theme, button.get());
        EXPECT_NE(button->getProperty("NormalColour"), fresh->getProperty("NormalColour")) << int(theme);
    }
    nubo::SetTheme(nubo::PushButtonTheme::Default, button.get());
    for (const char* name : names)
        EXPECT_EQ(button->getProperty(name), fresh->getProperty(name)) << name;

    // Not a button: left alone, silently.
    testing_support::LogCapture log;
    ScopedWindow label("DarkVexa/Label");
    const CEGUI::String before = label->getProperty("TextColour");
    nubo::SetTheme(nubo::PushButtonTheme::Danger, label.get());
    nubo::SetTheme(nubo::PushButtonTheme::Danger, nullptr);
    EXPECT_EQ(label->getProperty("TextColour"), before);
    EXPECT_TRUE(log.messages.empty());
}

} // namespace
