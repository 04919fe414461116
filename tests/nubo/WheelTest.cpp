// The wheel over a column of panels scrolls the column, whatever part of a panel the pointer
// is on, while widgets that use the wheel themselves keep it.

#include "GuiTestEnvironment.h"

#include <CEGUI/widgets/ScrollablePane.h>
#include <CEGUI/widgets/Scrollbar.h>
#include <CEGUI/widgets/Slider.h>
#include <gtest/gtest.h>

TEST(Wheel, ScrollsThePaneUnderThePointerUnlessAWidgetUsesIt)
{
    nubo::GuiSystem& gui = nubo_test::SharedGui();
    nubo_test::ScopedWindow window("DarkVexa/ScrollablePane");
    auto* pane = static_cast<CEGUI::ScrollablePane*>(window.get());
    pane->setArea(CEGUI::UVector2(CEGUI::UDim(0, 100), CEGUI::UDim(0, 100)),
                  CEGUI::USize(CEGUI::UDim(0, 200), CEGUI::UDim(0, 200)));
    // A panel as the sidebar holds them: a plain window around a label, both taller than the
    // pane.
    CEGUI::WindowManager& windows = CEGUI::WindowManager::getSingleton();
    CEGUI::Window* panel = windows.createWindow("DefaultWindow");
    panel->setArea(CEGUI::UVector2(CEGUI::UDim(0, 0), CEGUI::UDim(0, 0)),
                   CEGUI::USize(CEGUI::UDim(0, 180), CEGUI::UDim(0, 900)));
    pane->addChild(panel);
    CEGUI::Window* label = windows.createWindow("DarkVexa/Label");
    label->setArea(CEGUI::UVector2(CEGUI::UDim(0, 0), CEGUI::UDim(0, 0)),
                   CEGUI::USize(CEGUI::UDim(1, 0), CEGUI::UDim(1, 0)));
    panel->addChild(label);
    CEGUI::Window* slider = windows.createWindow("DarkVexa/Slider");
    slider->setArea(CEGUI::UVector2(CEGUI::UDim(0, 0), CEGUI::UDim(0, 0)),
                    CEGUI::USize(CEGUI::UDim(0, 180), CEGUI::UDim(0, 20)));
    label->addChild(slider);
    CEGUI::Scrollbar* bar = pane->getVertScrollbar();

    gui.InjectMouseMove(150.0f, 250.0f);
    EXPECT_TRUE(gui.InjectMouseWheel(-2.0f));
    const float scrolled = bar->getScrollPosition();
    EXPECT_GT(scrolled, 0.0f) << "the wheel over a label left the pane where it was";
    gui.InjectMouseWheel(1.0f);
    EXPECT_LT(bar->getScrollPosition(), scrolled) << "the wheel up does not scroll back";

    bar->setScrollPosition(0.0f);
    gui.InjectMouseMove(150.0f, 110.0f);
    gui.InjectMouseWheel(-2.0f);
    EXPECT_EQ(bar->getScrollPosition(), 0.0f) << "the slider's wheel scrolled the pane";
}
