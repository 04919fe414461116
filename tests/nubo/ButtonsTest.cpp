// Quick clicks as a person makes them: two presses in a row are two clicks, not one click
// and a double-click that a button ignores.

#include "GuiTestEnvironment.h"

#include <nubo/Buttons.h>

#include <gtest/gtest.h>

TEST(Buttons, EveryPressOfAQuickSeriesCounts)
{
    nubo::GuiSystem& gui = nubo_test::SharedGui();
    float top = 200.0f;
    for (const char* type : {"DarkVexa/PushButton", "DarkVexa/Checkbox"}) {
        nubo_test::ScopedWindow window(type);
        top += 100.0f;
        nubo_test::Place(window.get(), 200, top, 120, 24);
        int clicks = 0;
        window->subscribeEvent(CEGUI::PushButton::EventClicked, [&clicks](const CEGUI::EventArgs&) {
            ++clicks;
            return true;
        });
        auto* toggle = dynamic_cast<CEGUI::ToggleButton*>(window.get());
        gui.InjectMouseMove(210.0f, top + 10.0f);
        const int presses = toggle != nullptr ? 2 : 3;
        for (int i = 0; i < presses; ++i) {
            gui.InjectMouseDown(CEGUI::LeftButton);
            gui.InjectMouseUp(CEGUI::LeftButton);
        }
        if (toggle != nullptr)
            EXPECT_FALSE(toggle->isSelected()) << "a quick pair of clicks left the check box ticked";
        else
            EXPECT_EQ(clicks, 3) << type;
    }
}
