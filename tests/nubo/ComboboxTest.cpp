#include "GuiTestEnvironment.h"

#include <nubo/Combobox.h>

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

    combo->ClearItems();
    EXPECT_EQ(combo->GetItemCount(), 0u);
    EXPECT_EQ(combo->GetSelectedValue(), std::nullopt);
    EXPECT_EQ(combo->getText(), "");
    combo->AddItem("Again");
    EXPECT_TRUE(combo->SelectByValue(0)) << "indexing restarts after clearing";

    // Items with the same text keep their own values; text is UTF-8.
    combo->AddItem("Ünïcode ✓", 1);
    combo->AddItem("Ünïcode ✓", 2);
    ASSERT_TRUE(combo->SelectByValue(2));
    EXPECT_EQ(combo->GetSelectedValue(), 2);
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

} // namespace
