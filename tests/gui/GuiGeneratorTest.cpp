#include "GuiTestSupport.h"

#include "core/Notifications.h"

#include <vexa/GuiGenerator.h>

#include <nubo/ArrayPanel.h>
#include <nubo/Combobox.h>

#include <CEGUI/CEGUI.h>

#include <glm/glm.hpp>

#include <iterator>
#include <tuple>
#include <utility>

using namespace vexa;
using gui_test::Height;
using gui_test::PanelTest;

namespace {

float Top(const CEGUI::Window* window)
{
    return window->getPosition().d_y.d_offset;
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

TEST_F(GuiGeneratorTest, RowsAreNumberedAndHoldTheWidgetOfTheirKindWithItsCaption)
{
    GuiGenerator gen(panel_);
    auto* root = dynamic_cast<nubo::ArrayPanel*>(panel_);
    ASSERT_NE(root, nullptr);
    EXPECT_FALSE(root->IsAutoUpdateLayoutEnabled()) << "the layout waits until all rows are built";

    // Every kind: its widget type and caption, on the widget or (labelled) beside it.
    using Made = std::pair<unsigned int, CEGUI::Window*>;
    const auto of = [](auto* e) {
        return e == nullptr ? Made(~0u, nullptr) : Made(e->GetId(), e->GetWidget());
    };
    const std::tuple<Made, const char*, const char*, bool> kinds[] = {
        {of(gen.AddLabel("Hello")), "DarkVexa/Label", "Hello", false},
        {of(gen.AddButton("Reset view")), "DarkVexa/PushButton", "Reset view", false},
        {of(gen.AddCheckbox("Show axes")), "DarkVexa/Checkbox", "Show axes", false},
        {of(gen.AddNumericFloat("Point size")), "DarkVexa/Spinner", "Point size", true},
        {of(gen.AddDroplist("Color map")), "DarkVexa/Combobox", "Color map", true},
        {of(gen.AddSeparator()), "DarkVexa/SeparatorHor", nullptr, false},
        {of(gen.AddCheckboxList()), "DarkVexa/ArrayPanel", nullptr, false},
        {of(gen.AddSlidingInt("Size")), "DarkVexa/Slider", "Size", true},
        {of(gen.AddSlidingFloat("Alpha")), "DarkVexa/Slider", "Alpha", true},
        {of(gen.AddNumericInt("Count")), "DarkVexa/Spinner", "Count", true},
    };
    ASSERT_EQ(panel_->getChildCount(), std::size(kinds));
    for (unsigned int n = 0; n < std::size(kinds); ++n) {
        const auto& [made, type, text, labelled] = kinds[n];
        SCOPED_TRACE(type);
        ASSERT_NE(made.second, nullptr);
        EXPECT_EQ(made.first, n);
        CEGUI::Window* row = gui_test::Row(panel_, static_cast<int>(n));
        EXPECT_EQ(row->getID(), n);
        EXPECT_EQ(made.second->getType(), type);
        // The drop list sits in a holder so that its open list can hang below the row.
        CEGUI::Window* control = row->getChild("dynamic_control");
        EXPECT_EQ(n == 4 ? control->getChild("combo_element") : control, made.second);
        if (text != nullptr) {
            EXPECT_EQ((labelled ? row->getChild("dynamic_label") : made.second)->getText(), text);
        }
    }
}

TEST_F(GuiGeneratorTest, GroupsContinueTheNumberingAndDoNotNest)
{
    GuiGenerator gen(panel_);
    gen.AddButton("Before");
    gui::Panel* group = gen.PanelBegin();
    ASSERT_NE(group, nullptr);
    EXPECT_EQ(group->GetId(), 1u);
    EXPECT_EQ(panel_->getChild("generated_element_1/dynamic_control"), group->GetWidget());

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

TEST_F(GuiGeneratorTest, HiddenRowsCollapseButKeepTheirSpacingAndGroupsShrinkWithThem)
{
    // Panel and group: 10 px padding, 2 px after every row; buttons 26 px, labels 20 px.
    GuiGenerator gen(panel_);
    bool expert = true, showSecond = true;
    gen.AddButton("Always");
    gen.AddCheckbox("Simple mode only")->SetConditionBool(&expert, BoolFunc::IfFalse);
    gui::Panel* group = gen.PanelBegin();
    gen.AddButton("First");
    gen.AddButton("Second")->SetConditionBool(&showSecond, BoolFunc::IfTrue);
    gen.PanelEnd();
    gen.AddLabel("Below");
    const auto row = [&](int n) { return gui_test::Row(panel_, n); };

    gen.TestElementConditions();
    EXPECT_EQ(glm::vec2(Height(row(1)), Top(row(2))), glm::vec2(0.0f, 10.0f + 28.0f + 2.0f));
    EXPECT_FLOAT_EQ(Height(row(2)), 10.0f + 28.0f + 28.0f + 10.0f);
    EXPECT_FLOAT_EQ(Top(row(5)), 40.0f + 76.0f + 2.0f);

    expert = showSecond = false;
    gen.TestElementConditions();
    EXPECT_EQ(glm::vec2(Height(row(1)), Top(row(2))), glm::vec2(26.0f, 66.0f));
    EXPECT_FLOAT_EQ(Height(row(2)), 10.0f + 28.0f + 2.0f + 10.0f);
    EXPECT_FLOAT_EQ(Top(row(5)), 66.0f + 50.0f + 2.0f);

    // A hidden group hides all its rows.
    group->SetConditionFunc([] { return false; });
    gen.TestElementConditions();
    EXPECT_FLOAT_EQ(Height(row(2)), 0.0f);
    EXPECT_FLOAT_EQ(Top(row(5)), 66.0f + 2.0f);
    EXPECT_FLOAT_EQ(Height(panel_), 10.0f + 28.0f + 28.0f + 2.0f + 22.0f + 10.0f);
}

TEST_F(GuiGeneratorTest, ResourceGeneratorReportsChangesAndRetestsOnceAutoTestIsOn)
{
    GuiChangeObserver observer;
    bool details = false;
    const auto build = [&](GuiGenerator& gen) {
        gui::Checkbox* toggle = gen.AddCheckbox("Details")->SetLink(&details);
        gen.AddButton("Detail")->SetConditionBool(&details, BoolFunc::IfTrue);
        gen.TestElementConditions();
        return toggle;
    };
    // Without a resource, the generator neither reports nor re-tests: only its owner does.
    {
        GuiGenerator gen(panel_);
        gui::Checkbox* toggle = build(gen);
        gen.SetAutoTestConditionsEnabled(true);
        toggle->GetWidget()->setSelected(true);
        EXPECT_TRUE(observer.ids.empty());
        EXPECT_FLOAT_EQ(Height(panel_->getChild("generated_element_1")), 0.0f);
    }
    Renew();

    details = false;
    const ResourceId id("scans/left", "PointCloudResource");
    GuiGenerator gen(id, panel_);
    gui::Checkbox* toggle = build(gen);
    CEGUI::Window* detailRow = panel_->getChild("generated_element_1");
    ASSERT_FLOAT_EQ(Height(detailRow), 0.0f);

    toggle->GetWidget()->setSelected(true);
    EXPECT_TRUE(observer.ids.empty()) << "auto-testing is still off";
    EXPECT_FLOAT_EQ(Height(detailRow), 0.0f);

    gen.SetAutoTestConditionsEnabled(true);
    EXPECT_TRUE(static_cast<nubo::ArrayPanel*>(panel_)->IsAutoUpdateLayoutEnabled());
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
