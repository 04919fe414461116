#include "GuiTestEnvironment.h"

#include <nubo/Combobox.h>

#include <CEGUI/widgets/ComboDropList.h>
#include <CEGUI/widgets/ListboxTextItem.h>
#include <gtest/gtest.h>

namespace {

using nubo::Combobox;
using nubo_test::ScopedWindow;

TEST(Combobox, ItemsCarryValuesIndependentOfTheirPosition)
{
    ScopedWindow holder("DarkVexa/Combobox");
    auto* combo = holder.As<Combobox>();
    ASSERT_NE(combo, nullptr);

    combo->AddItem("Low", 10);
    combo->AddItem("High", -5);
    combo->AddItem("Indexed"); // the third item: value 2
    EXPECT_EQ(combo->GetSelectedValue(), std::nullopt);
    EXPECT_EQ(combo->GetSelectedText(), "");

    EXPECT_TRUE(combo->SelectByValue(-5));
    EXPECT_EQ(combo->GetSelectedValue(), -5);
    EXPECT_EQ(combo->GetSelectedText(), "High");
    EXPECT_EQ(combo->getText(), "High") << "the edit box shows the selection";

    EXPECT_FALSE(combo->SelectByValue(99));
    EXPECT_EQ(combo->GetSelectedValue(), -5) << "an unknown value leaves the selection";

    EXPECT_TRUE(combo->SelectByValue(2));
    EXPECT_EQ(combo->GetSelectedText(), "Indexed");
    EXPECT_EQ(combo->getDropList()->getSelectedCount(), 1u);

    combo->ClearItems();
    EXPECT_EQ(combo->GetItemCount(), 0u);
    EXPECT_EQ(combo->GetSelectedValue(), std::nullopt);
    EXPECT_EQ(combo->getText(), "");
    combo->AddItem("Again");
    EXPECT_TRUE(combo->SelectByValue(0)) << "indexing restarts after clearing";

    // Items with the same text keep their own values.
    combo->AddItem("Same", 1);
    combo->AddItem("Same", 2);
    combo->AddItem("Ünïcode ✓", 3);
    ASSERT_TRUE(combo->SelectByValue(2));
    EXPECT_EQ(combo->GetSelectedValue(), 2);
    ASSERT_TRUE(combo->SelectByValue(3));
    EXPECT_EQ(combo->GetSelectedText(), "Ünïcode ✓");
}

TEST(Combobox, ItemLookFollowsItsProperties)
{
    ScopedWindow holder("DarkVexa/Combobox");
    auto* combo = holder.As<Combobox>();
    combo->AddItem("Before");
    combo->setProperty("ItemTextColour", "FF112233");
    combo->setProperty("ItemSelectionColour", "FF445566");
    combo->AddItem("After");
    for (std::size_t i = 0; i < 2; ++i) {
        const auto* item = dynamic_cast<const CEGUI::ListboxTextItem*>(combo->getListboxItemFromIndex(i));
        ASSERT_NE(item, nullptr);
        EXPECT_EQ(item->getTextColours().d_top_left, CEGUI::Colour(0xFF112233)) << i;
        EXPECT_EQ(item->getSelectionColours().d_top_left, CEGUI::Colour(0xFF445566)) << i;
        EXPECT_NE(item->getSelectionBrushImage(), nullptr) << "the look's fill image marks the selection";
    }
}

TEST(Combobox, UserPicksAnItemWithTheMouse)
{
    nubo::GuiSystem& gui = nubo_test::SharedGui();
    ScopedWindow holder("DarkVexa/Combobox");
    auto* combo = holder.As<Combobox>();
    nubo_test::Place(combo, 100, 100, 160, 150);
    combo->AddItem("Zero", 7);
    combo->AddItem("One", 8);
    int accepted = 0;
    combo->subscribeEvent(CEGUI::Combobox::EventListSelectionAccepted, [&accepted](const CEGUI::EventArgs&) {
        ++accepted;
        return true;
    });

    // Open the list on the edit box, then click the second item.
    gui.InjectMouseMove(150.0f, 112.0f);
    gui.InjectMouseDown(CEGUI::LeftButton);
    gui.InjectMouseUp(CEGUI::LeftButton);
    ASSERT_TRUE(combo->isDropDownListVisible());
    const CEGUI::Rectf list = combo->getDropList()->getUnclippedOuterRect().get();
    const CEGUI::ListboxItem* second = combo->getListboxItemFromIndex(1);
    const float itemHeight = second->getPixelSize().d_height;
    gui.InjectMouseMove(list.left() + 20.0f, list.top() + 2.0f + itemHeight * 1.5f);
    gui.InjectMouseDown(CEGUI::LeftButton);
    gui.InjectMouseUp(CEGUI::LeftButton);

    EXPECT_EQ(accepted, 1);
    EXPECT_EQ(combo->GetSelectedValue(), 8);
    EXPECT_EQ(combo->getText(), "One");
    EXPECT_FALSE(combo->isDropDownListVisible());
}

} // namespace
