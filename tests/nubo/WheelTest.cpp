// The wheel over a column of panels scrolls the column, whatever part of a panel the pointer
// is on, while widgets that use the wheel themselves keep it.

#include "GuiTestEnvironment.h"

#include <CEGUI/widgets/ScrollablePane.h>
#include <CEGUI/widgets/Scrollbar.h>
#include <CEGUI/widgets/Slider.h>
#include <gtest/gtest.h>

// That the wheel over a panel's text scrolls the column (and back) is seen end to end.
TEST(Wheel, AWidgetThatUsesTheWheelKeepsItFromThePane)
{
    nubo::GuiSystem& gui = nubo_test::SharedGui();
    nubo_test::ScopedWindow window("DarkVexa/ScrollablePane");
    auto* pane = static_cast<CEGUI::ScrollablePane*>(window.get());
    nubo_test::Place(pane, 100, 100, 200, 200);
    // A panel as the sidebar holds them: a plain window around a label, taller than the pane.
    CEGUI::WindowManager& windows = CEGUI::WindowManager::getSingleton();
    CEGUI::Window* panel = windows.createWindow("DefaultWindow");
    nubo_test::Place(panel, 0, 0, 180, 900);
    pane->addChild(panel);
    CEGUI::Window* label = windows.createWindow("DarkVexa/Label");
    nubo_test::Place(label, 0, 0, 180, 900);
    panel->addChild(label);
    CEGUI::Window* slider = windows.createWindow("DarkVexa/Slider");
    nubo_test::Place(slider, 0, 0, 180, 20);
    label->addChild(slider);

    gui.InjectMouseMove(150.0f, 250.0f);
    gui.InjectMouseWheel(-2.0f);
    ASSERT_GT(pane->getVertScrollbar()->getScrollPosition(), 0.0f) << "the pane does not scroll at all";
    pane->getVertScrollbar()->setScrollPosition(0.0f);
    gui.InjectMouseMove(150.0f, 110.0f);
    gui.InjectMouseWheel(-2.0f);
    EXPECT_EQ(pane->getVertScrollbar()->getScrollPosition(), 0.0f) << "the slider's wheel scrolled the pane";
}
