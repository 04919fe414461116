#include "GuiTestSupport.h"
#include "LogCapture.h"

#include "core/Notifications.h"

#include <vexa/GuiGenerator.h>

#include <nubo/ArrayPanel.h>
#include <nubo/Combobox.h>

#include <CEGUI/WindowManager.h>
#include <CEGUI/widgets/PushButton.h>
#include <CEGUI/widgets/Slider.h>
#include <CEGUI/widgets/Spinner.h>
#include <CEGUI/widgets/ToggleButton.h>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

using namespace vexa;
using gui_test::PanelTest;

namespace {

CEGUI::USize PixelSize(float relativeWidth, float pixelsWidth, float pixelsHeight)
{
    return CEGUI::USize(CEGUI::UDim(relativeWidth, pixelsWidth), CEGUI::UDim(0.0f, pixelsHeight));
}

float Top(const CEGUI::Window* window)
{
    return window->getPosition().d_y.d_offset;
}

float Height(const CEGUI::Window* window)
{
    return window->getPixelSize().d_height;
}

/// Records every "GUI of a resource changed" notification of the engine.
class GuiChangeObserver {
public:
    GuiChangeObserver()
    {
        GetNotifications().Subscribe(this, kResourceGuiChanged, [this](const void* data) {
            ids.push_back(*static_cast<const ResourceId*>(data));
        });
    }
    ~GuiChangeObserver() { GetNotifications().Unsubscribe(this); }

    std::vector<ResourceId> ids;
};

using GuiGeneratorTest = PanelTest;

} // namespace

TEST_F(GuiGeneratorTest, RowsAreNamedNumberedAndSizedByKind)
{
    GuiGenerator gen(panel_);
    auto* root = dynamic_cast<nubo::ArrayPanel*>(panel_);
    ASSERT_NE(root, nullptr);
    EXPECT_FALSE(root->IsAutoUpdateLayoutEnabled()) << "the layout waits until all rows are built";
    EXPECT_FLOAT_EQ(root->GetPadding(), 10.0f);
    EXPECT_FLOAT_EQ(root->GetElementSpacing(), 2.0f);

    gui::Label* label = gen.AddLabel("Hello");
    ASSERT_NE(label, nullptr);
    EXPECT_EQ(label->GetId(), 0u);
    CEGUI::Window* row = panel_->getChild("generated_element_0");
    EXPECT_EQ(row->getType(), "DefaultWindow");
    EXPECT_EQ(row->getID(), 0u);
    EXPECT_TRUE(row->isMouseInputPropagationEnabled());
    EXPECT_EQ(row->getSize(), PixelSize(1.0f, -20.0f, 20.0f));
    CEGUI::Window* control = row->getChild("dynamic_control");
    EXPECT_EQ(control, label->GetWidget());
    EXPECT_EQ(control->getType(), "DarkVexa/Label");
    EXPECT_EQ(control->getID(), 0u);
    EXPECT_TRUE(control->isMouseInputPropagationEnabled());
    EXPECT_EQ(control->getSize(), PixelSize(1.0f, 0.0f, 20.0f));
    EXPECT_EQ(label->Get(), "Hello");
    EXPECT_EQ(control->getProperty("HorzFormatting"), "LeftAligned");
    EXPECT_TRUE(control->isDisabled());

    gui::Button* button = gen.AddButton("Reset view");
    EXPECT_EQ(button->GetId(), 1u);
    EXPECT_EQ(panel_->getChild("generated_element_1")->getSize(), PixelSize(1.0f, -20.0f, 26.0f));
    EXPECT_EQ(button->GetWidget()->getType(), "DarkVexa/PushButton");
    EXPECT_EQ(button->GetCaption(), "Reset view");

    gui::Checkbox* checkbox = gen.AddCheckbox("Show axes");
    EXPECT_EQ(checkbox->GetWidget()->getType(), "DarkVexa/Checkbox");
    EXPECT_EQ(checkbox->GetWidget()->getSize(), PixelSize(0.5f, 15.0f, 26.0f));
    EXPECT_EQ(checkbox->GetWidget()->getText(), "Show axes");

    gui::NumericFloat* numeric = gen.AddNumericFloat("Point size");
    ASSERT_NE(numeric, nullptr);
    CEGUI::Window* numericRow = panel_->getChild("generated_element_3");
    EXPECT_EQ(numeric->GetWidget(), numericRow->getChild("dynamic_control"));
    EXPECT_EQ(numeric->GetWidget()->getType(), "DarkVexa/Spinner");
    EXPECT_EQ(numeric->GetWidget()->getPosition(), CEGUI::UVector2(CEGUI::UDim(0.5f, 0.0f), CEGUI::UDim(0.0f, 0.0f)));
    EXPECT_EQ(numeric->GetWidget()->getSize(), PixelSize(0.5f, 0.0f, 26.0f));
    CEGUI::Window* numericLabel = numericRow->getChild("dynamic_label");
    EXPECT_EQ(numericLabel->getType(), "DarkVexa/Label");
    EXPECT_EQ(numericLabel->getText(), "Point size");
    EXPECT_EQ(numericLabel->getPosition(), CEGUI::UVector2(CEGUI::UDim(0.0f, 0.0f), CEGUI::UDim(0.0f, 0.0f)));
    EXPECT_EQ(numericLabel->getSize(), PixelSize(0.5f, 0.0f, 26.0f));
    EXPECT_EQ(numericLabel->getProperty("HorzFormatting"), "LeftAligned");

    gui::Droplist* droplist = gen.AddDroplist("Color map");
    ASSERT_NE(droplist, nullptr);
    EXPECT_EQ(droplist->GetId(), 4u);
    CEGUI::Window* holder = panel_->getChild("generated_element_4/dynamic_control");
    EXPECT_EQ(holder->getType(), "DefaultWindow");
    EXPECT_EQ(holder->getSize(), PixelSize(0.5f, 0.0f, 26.0f));
    EXPECT_EQ(holder->getChild("combo_element"), droplist->GetWidget());
    EXPECT_EQ(droplist->GetWidget()->getType(), "DarkVexa/Combobox");
    EXPECT_EQ(droplist->GetWidget()->getSize(), PixelSize(1.0f, 0.0f, 50.0f));
    EXPECT_EQ(panel_->getChild("generated_element_4/dynamic_label")->getText(), "Color map");

    gui::Separator* separator = gen.AddSeparator();
    EXPECT_EQ(separator->GetWidget()->getType(), "DarkVexa/SeparatorHor");
    EXPECT_EQ(panel_->getChild("generated_element_5")->getSize(), PixelSize(1.0f, -20.0f, 15.0f));

    gui::CheckboxList* list = gen.AddCheckboxList();
    EXPECT_EQ(list->GetWidget()->getType(), "DarkVexa/ArrayPanel");
    EXPECT_EQ(panel_->getChild("generated_element_6")->getSize(), PixelSize(1.0f, -20.0f, 0.0f));

    EXPECT_EQ(gen.AddSlidingInt("Size")->GetWidget()->getType(), "DarkVexa/Slider");
    EXPECT_EQ(gen.AddSlidingFloat("Alpha")->GetWidget()->getType(), "DarkVexa/Slider");
    gui::NumericInt* count = gen.AddNumericInt("Count");
    ASSERT_NE(count, nullptr);
    EXPECT_EQ(count->GetId(), 9u);
    EXPECT_EQ(panel_->getChild("generated_element_9/dynamic_label")->getText(), "Count");
    EXPECT_EQ(panel_->getChildCount(), 10u);
}

TEST_F(GuiGeneratorTest, GroupsContinueTheNumberingAndDoNotNest)
{
    GuiGenerator gen(panel_);
    gen.AddButton("Before");
    gui::Panel* group = gen.PanelBegin();
    ASSERT_NE(group, nullptr);
    EXPECT_EQ(group->GetId(), 1u);
    EXPECT_EQ(panel_->getChild("generated_element_1/dynamic_control"), group->GetWidget());
    EXPECT_FLOAT_EQ(group->GetWidget()->GetPadding(), 10.0f);
    EXPECT_FLOAT_EQ(group->GetWidget()->GetElementSpacing(), 2.0f);

    {
        testing_support::LogCapture log;
        EXPECT_EQ(gen.PanelBegin(), nullptr);
    }
    gui::Checkbox* inside = gen.AddCheckbox("Inside");
    EXPECT_EQ(inside->GetId(), 2u) << "the refused group took no number";
    EXPECT_TRUE(group->GetWidget()->isChild("generated_element_2"));
    EXPECT_FALSE(panel_->isChild("generated_element_2"));

    gen.PanelEnd();
    gen.PanelEnd(); // nothing open: nothing happens
    gen.AddLabel("After");
    EXPECT_TRUE(panel_->isChild("generated_element_3"));

    gui::Panel* second = gen.PanelBegin();
    ASSERT_NE(second, nullptr) << "a closed group does not block the next one";
    EXPECT_EQ(second->GetId(), 4u);
}

TEST_F(GuiGeneratorTest, HiddenRowsCollapseButKeepTheirSpacing)
{
    GuiGenerator gen(panel_);
    bool expert = true;
    gen.AddButton("Always");
    gen.AddCheckbox("Simple mode only")->SetConditionBool(&expert, BoolFunc::IfFalse);
    gen.AddSeparator();
    CEGUI::Window* rows[] = {panel_->getChild("generated_element_0"), panel_->getChild("generated_element_1"),
                             panel_->getChild("generated_element_2")};

    gen.TestElementConditions();
    EXPECT_FLOAT_EQ(Height(rows[0]), 26.0f);
    EXPECT_FLOAT_EQ(Height(rows[1]), 0.0f);
    EXPECT_FLOAT_EQ(Height(rows[2]), 15.0f);
    EXPECT_FLOAT_EQ(Top(rows[0]), 10.0f);
    EXPECT_FLOAT_EQ(Top(rows[1]), 38.0f);
    EXPECT_FLOAT_EQ(Top(rows[2]), 40.0f) << "a collapsed row still takes its 2 px of spacing";
    EXPECT_FLOAT_EQ(Height(panel_), 10.0f + 28.0f + 2.0f + 17.0f + 10.0f);

    expert = false;
    gen.TestElementConditions();
    EXPECT_FLOAT_EQ(Height(rows[1]), 26.0f);
    EXPECT_FLOAT_EQ(Top(rows[2]), 66.0f);
}

TEST_F(GuiGeneratorTest, AGroupShrinksWithItsHiddenRowsAndHidesThemAll)
{
    GuiGenerator gen(panel_);
    bool showSecond = true;
    gui::Panel* group = gen.PanelBegin();
    gen.AddButton("First");
    gen.AddButton("Second")->SetConditionBool(&showSecond, BoolFunc::IfTrue);
    gen.PanelEnd();
    gen.AddLabel("Below");
    CEGUI::Window* groupRow = panel_->getChild("generated_element_0");
    CEGUI::Window* below = panel_->getChild("generated_element_3");

    gen.TestElementConditions();
    EXPECT_FLOAT_EQ(Height(groupRow), 10.0f + 28.0f + 28.0f + 10.0f);
    EXPECT_FLOAT_EQ(Top(below), 10.0f + 76.0f + 2.0f);

    showSecond = false;
    gen.TestElementConditions();
    EXPECT_FLOAT_EQ(Height(groupRow), 10.0f + 28.0f + 2.0f + 10.0f);
    EXPECT_FLOAT_EQ(Top(below), 10.0f + 50.0f + 2.0f);

    group->SetConditionFunc([] { return false; });
    gen.TestElementConditions();
    EXPECT_FLOAT_EQ(Height(groupRow), 0.0f);
    EXPECT_FLOAT_EQ(Top(below), 12.0f);
}

TEST_F(GuiGeneratorTest, ResourceGeneratorReportsChangesAndRetestsOnceAutoTestIsOn)
{
    GuiChangeObserver observer;
    const ResourceId id("scans/left", "PointCloudResource");
    GuiGenerator gen(id, panel_);
    bool details = false;
    gui::Checkbox* toggle = gen.AddCheckbox("Details")->SetLink(&details);
    gen.AddButton("Detail")->SetConditionBool(&details, BoolFunc::IfTrue);
    CEGUI::Window* detailRow = panel_->getChild("generated_element_1");
    gen.TestElementConditions();
    ASSERT_FLOAT_EQ(Height(detailRow), 0.0f);

    toggle->GetWidget()->setSelected(true);
    EXPECT_TRUE(details);
    EXPECT_TRUE(observer.ids.empty()) << "auto-testing is still off";
    EXPECT_FLOAT_EQ(Height(detailRow), 0.0f);

    gen.SetAutoTestConditionsEnabled(true);
    auto* root = dynamic_cast<nubo::ArrayPanel*>(panel_);
    ASSERT_NE(root, nullptr);
    EXPECT_TRUE(root->IsAutoUpdateLayoutEnabled());
    toggle->GetWidget()->setSelected(false);
    toggle->GetWidget()->setSelected(true);
    ASSERT_EQ(observer.ids.size(), 2u);
    EXPECT_EQ(observer.ids[1], id);
    EXPECT_FLOAT_EQ(Height(detailRow), 26.0f) << "the change re-tested the conditions";

    gen.SetAutoTestConditionsEnabled(false);
    toggle->GetWidget()->setSelected(false);
    EXPECT_EQ(observer.ids.size(), 2u);
    EXPECT_FLOAT_EQ(Height(detailRow), 26.0f);
}

TEST_F(GuiGeneratorTest, GeneratorWithoutResourceNeitherReportsNorRetests)
{
    GuiChangeObserver observer;
    GuiGenerator gen(panel_);
    bool details = false;
    gui::Checkbox* toggle = gen.AddCheckbox("Details")->SetLink(&details);
    gen.AddButton("Detail")->SetConditionBool(&details, BoolFunc::IfTrue);
    gen.TestElementConditions();
    gen.SetAutoTestConditionsEnabled(true);

    toggle->GetWidget()->setSelected(true);
    EXPECT_TRUE(details);
    EXPECT_TRUE(observer.ids.empty());
    EXPECT_FLOAT_EQ(Height(panel_->getChild("generated_element_1")), 0.0f) << "only its owner re-tests";
}

TEST_F(GuiGeneratorTest, GeneratorWithoutPanelLogsAndAddsNothing)
{
    testing_support::LogCapture log;
    GuiGenerator gen(nullptr);
    EXPECT_TRUE(log.Contains("No panel window given, no rows can be added", "vexa::GuiGenerator::Construct"));
    EXPECT_EQ(gen.AddLabel("Lost"), nullptr);
    EXPECT_EQ(gen.PanelBegin(), nullptr);
    gen.TestElementConditions();
    gen.SetAutoTestConditionsEnabled(true);
}
