#include "GuiTestEnvironment.h"

#include <nubo/ArrayPanel.h>

#include <LogCapture.h>

#include <gtest/gtest.h>

namespace {

using nubo::ArrayPanel;
using nubo_test::ScopedWindow;

/// A full-width row as the GUI generator makes them: x left at 0, width 100% - 20 px.
CEGUI::Window* AddRow(CEGUI::Window* panel, float height)
{
    CEGUI::Window* row = CEGUI::WindowManager::getSingleton().createWindow("DefaultWindow");
    row->setSize(CEGUI::USize(CEGUI::UDim(1.0f, -20.0f), CEGUI::UDim(0.0f, height)));
    panel->addChild(row);
    return row;
}

float Y(const CEGUI::Window* window)
{
    EXPECT_EQ(window->getPosition().d_y.d_scale, 0.0f);
    return window->getPosition().d_y.d_offset;
}

float Height(const CEGUI::Window* window)
{
    EXPECT_EQ(window->getSize().d_height.d_scale, 0.0f);
    return window->getSize().d_height.d_offset;
}

TEST(ArrayPanel, StacksChildrenWithPaddingAndSpacingAfterEveryChildAndKeepsCreatorsX)
{
    ScopedWindow holder(ArrayPanel::WidgetTypeName);
    auto* panel = holder.As<ArrayPanel>();
    ASSERT_NE(panel, nullptr);
    panel->SetPadding(10.0f);
    panel->SetElementSpacing(2.0f);

    CEGUI::Window* first = AddRow(panel, 20.0f);
    CEGUI::Window* hidden = AddRow(panel, 0.0f);
    CEGUI::Window* third = AddRow(panel, 26.0f);

    // A zero-height child takes no space but keeps its spacing; the last one has its spacing too.
    EXPECT_EQ(Y(first), 10.0f);
    EXPECT_EQ(Y(hidden), 32.0f);
    EXPECT_EQ(Y(third), 34.0f);
    EXPECT_EQ(Height(panel), 10.0f + 20.0f + 2.0f + 0.0f + 2.0f + 26.0f + 2.0f + 10.0f);
    EXPECT_EQ(panel->GetContentHeight(), 72.0f);
    EXPECT_EQ(first->getPosition().d_x, CEGUI::UDim(0.0f, 10.0f));
    EXPECT_EQ(first->getSize().d_width, CEGUI::UDim(1.0f, -20.0f)) << "widths are the creator's";
    // A row the creator placed keeps its x; the others follow the padding.
    third->setXPosition(CEGUI::UDim(0.5f, 3.0f));
    panel->SetPadding(4.0f);
    EXPECT_EQ(first->getPosition().d_x, CEGUI::UDim(0.0f, 4.0f));
    EXPECT_EQ(third->getPosition().d_x, CEGUI::UDim(0.5f, 3.0f));
    EXPECT_EQ(Y(third), 4.0f + 20.0f + 2.0f + 2.0f);

    // Showing the collapsed row pushes the rows below it down at once; removing a row closes its gap.
    hidden->setHeight(CEGUI::UDim(0.0f, 15.0f));
    EXPECT_EQ(Y(third), 4.0f + 20.0f + 2.0f + 15.0f + 2.0f);
    panel->removeChild(first);
    CEGUI::WindowManager::getSingleton().destroyWindow(first);
    EXPECT_EQ(Y(hidden), 4.0f);
    EXPECT_EQ(Height(panel), 4.0f + 15.0f + 2.0f + 26.0f + 2.0f + 4.0f);
}

TEST(ArrayPanel, NestedPanelGrowsItsParent)
{
    ScopedWindow holder(ArrayPanel::WidgetTypeName);
    auto* outer = holder.As<ArrayPanel>();
    outer->SetPadding(10.0f);
    outer->SetElementSpacing(2.0f);
    auto* inner = static_cast<ArrayPanel*>(
        CEGUI::WindowManager::getSingleton().createWindow(ArrayPanel::WidgetTypeName));
    inner->SetPadding(5.0f);
    inner->SetElementSpacing(1.0f);
    outer->addChild(inner);
    CEGUI::Window* below = AddRow(outer, 26.0f);
    EXPECT_EQ(Height(inner), 10.0f) << "an empty panel is its padding twice";
    EXPECT_EQ(Y(below), 10.0f + 10.0f + 2.0f);

    AddRow(inner, 20.0f);
    AddRow(inner, 20.0f);
    EXPECT_EQ(Height(inner), 5.0f + 21.0f + 21.0f + 5.0f);
    EXPECT_EQ(Y(below), 10.0f + 52.0f + 2.0f);
    EXPECT_EQ(Height(outer), 10.0f + 52.0f + 2.0f + 26.0f + 2.0f + 10.0f);

    // A paused inner panel still tells its parent when it is laid out explicitly.
    inner->SetAutoUpdateLayoutEnabled(false);
    AddRow(inner, 30.0f);
    EXPECT_EQ(Y(below), 64.0f);
    inner->UpdateLayout();
    EXPECT_EQ(Height(inner), 83.0f);
    EXPECT_EQ(Y(below), 10.0f + 83.0f + 2.0f);

    // Sizing a nested panel from outside makes room in the parent too.
    inner->setHeight(CEGUI::UDim(0.0f, 40.0f));
    EXPECT_EQ(Y(below), 10.0f + 40.0f + 2.0f);
}

TEST(ArrayPanel, PausedLayoutWaitsForUpdateLayout)
{
    ScopedWindow holder(ArrayPanel::WidgetTypeName);
    auto* panel = holder.As<ArrayPanel>();
    panel->SetAutoUpdateLayoutEnabled(false);
    panel->SetPadding(10.0f);
    panel->SetElementSpacing(2.0f);
    const CEGUI::UDim heightBefore = panel->getSize().d_height;

    CEGUI::Window* first = AddRow(panel, 20.0f);
    CEGUI::Window* second = AddRow(panel, 26.0f);
    EXPECT_EQ(Y(second), 0.0f);
    EXPECT_EQ(panel->getSize().d_height, heightBefore);
    EXPECT_EQ(panel->GetContentHeight(), 70.0f) << "the content height is known before the layout runs";

    panel->UpdateLayout();
    EXPECT_EQ(Y(first), 10.0f);
    EXPECT_EQ(Y(second), 32.0f);
    EXPECT_EQ(Height(panel), 70.0f);

    // Still paused: a resized row waits; switching automatic layout on catches up.
    first->setHeight(CEGUI::UDim(0.0f, 0.0f));
    EXPECT_EQ(Y(second), 32.0f);
    panel->SetAutoUpdateLayoutEnabled(true);
    EXPECT_EQ(Y(second), 12.0f);
    EXPECT_EQ(Height(panel), 50.0f);
}

TEST(ArrayPanel, RejectsNegativeLengthsAndKeepsTheOldOnes)
{
    testing_support::LogCapture log;
    ScopedWindow holder(ArrayPanel::WidgetTypeName);
    auto* panel = holder.As<ArrayPanel>();
    panel->SetPadding(10.0f);
    panel->SetElementSpacing(2.0f);
    panel->SetPadding(-1.0f);
    panel->SetElementSpacing(-3.0f);
    EXPECT_EQ(panel->GetPadding(), 10.0f);
    EXPECT_EQ(panel->GetElementSpacing(), 2.0f);
    ASSERT_EQ(log.messages.size(), 2u);
    EXPECT_EQ(log.messages[0].label, "nubo::ArrayPanel::SetPadding");
    EXPECT_EQ(log.messages[1].label, "nubo::ArrayPanel::SetElementSpacing");
}

TEST(ArrayPanel, LayoutsSetItThroughTheSchemeAndProperties)
{
    const char* layout = R"(<?xml version="1.0" ?>
<GUILayout version="4">
    <Window type="DarkVexa/ArrayPanel" name="panel">
        <Property name="AutoUpdateLayout" value="false" />
        <Property name="Padding" value="10" />
        <Property name="ElementSpacing" value="2" />
        <Window type="DarkVexa/Label" name="a"><Property name="Size" value="{{1,-20},{0,20}}" /></Window>
        <Window type="DarkVexa/Label" name="b"><Property name="Size" value="{{1,-20},{0,26}}" /></Window>
    </Window>
</GUILayout>)";
    CEGUI::Window* loaded = CEGUI::WindowManager::getSingleton().loadLayoutFromString(layout);
    nubo_test::SharedGui().GetRoot()->addChild(loaded);
    auto* panel = dynamic_cast<ArrayPanel*>(loaded);
    ASSERT_NE(panel, nullptr);
    EXPECT_FALSE(panel->IsAutoUpdateLayoutEnabled());
    EXPECT_EQ(panel->getProperty("Padding"), "10");
    panel->SetAutoUpdateLayoutEnabled(true);
    EXPECT_EQ(Y(panel->getChild("b")), 32.0f);
    EXPECT_EQ(Height(panel), 70.0f);
    CEGUI::WindowManager::getSingleton().destroyWindow(loaded);
}

} // namespace
