#include "GuiTestSupport.h"

#include "core/Notifications.h"

#include <vexa/GuiGenerator.h>

#include <nubo/ArrayPanel.h>
#include <nubo/Combobox.h>

#include <CEGUI/WindowManager.h>
#include <CEGUI/widgets/PushButton.h>
#include <CEGUI/widgets/Slider.h>
#include <CEGUI/widgets/Spinner.h>
#include <CEGUI/widgets/ToggleButton.h>

#include <glm/glm.hpp>

#include <iterator>
#include <utility>

using namespace vexa;
using gui_test::Height;
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
    // Padding (10 px) and spacing (2 px), of the panel and of a group, show in the row
    // positions of the hiding cases below.

    // Every kind: its widget type, row height and text, on the widget or (labelled) beside it.
    struct Kind {
        std::pair<unsigned int, CEGUI::Window*> element; // id and widget
        const char* type;
        float rowHeight;
        const char* text;
        bool labelled;
    };
    const auto of = [](auto* element) {
        return element == nullptr ? std::pair<unsigned int, CEGUI::Window*>(~0u, nullptr)
                                  : std::pair<unsigned int, CEGUI::Window*>(element->GetId(), element->GetWidget());
    };
    const Kind kinds[] = {
        {of(gen.AddLabel("Hello")), "DarkVexa/Label", 20.0f, "Hello", false},
        {of(gen.AddButton("Reset view")), "DarkVexa/PushButton", 26.0f, "Reset view", false},
        {of(gen.AddCheckbox("Show axes")), "DarkVexa/Checkbox", 26.0f, "Show axes", false},
        {of(gen.AddNumericFloat("Point size")), "DarkVexa/Spinner", 26.0f, "Point size", true},
        {of(gen.AddDroplist("Color map")), "DarkVexa/Combobox", 26.0f, "Color map", true},
        {of(gen.AddSeparator()), "DarkVexa/SeparatorHor", 15.0f, nullptr, false},
        {of(gen.AddCheckboxList()), "DarkVexa/ArrayPanel", 0.0f, nullptr, false},
        {of(gen.AddSlidingInt("Size")), "DarkVexa/Slider", 26.0f, "Size", true},
        {of(gen.AddSlidingFloat("Alpha")), "DarkVexa/Slider", 26.0f, "Alpha", true},
        {of(gen.AddNumericInt("Count")), "DarkVexa/Spinner", 26.0f, "Count", true},
    };
    ASSERT_EQ(panel_->getChildCount(), std::size(kinds));
    const auto control = [&](unsigned int n) { return panel_->getChild("generated_element_" + std::to_string(n) + "/dynamic_control"); };
    for (unsigned int n = 0; n < std::size(kinds); ++n) {
        const Kind& kind = kinds[n];
        SCOPED_TRACE(kind.type);
        ASSERT_NE(kind.element.second, nullptr);
        EXPECT_EQ(kind.element.first, n);
        CEGUI::Window* row = panel_->getChild("generated_element_" + std::to_string(n));
        EXPECT_EQ(row->getType(), "DefaultWindow");
        EXPECT_EQ(row->getID(), n);
        EXPECT_TRUE(row->isMouseInputPropagationEnabled());
        EXPECT_EQ(row->getSize(), PixelSize(1.0f, -20.0f, kind.rowHeight));
        EXPECT_EQ(kind.element.second->getType(), kind.type);
        // The drop list sits in a holder so that its open list can hang below the row.
        EXPECT_EQ(n == 4 ? control(n)->getChild("combo_element") : control(n), kind.element.second);
        if (kind.labelled) {
            CEGUI::Window* label = row->getChild("dynamic_label");
            EXPECT_EQ(label->getText(), kind.text);
            EXPECT_EQ(label->getType(), "DarkVexa/Label");
        } else if (kind.text != nullptr) {
            EXPECT_EQ(kind.element.second->getText(), kind.text);
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
    {
        GuiGenerator gen(panel_);
        bool expert = true;
        gen.AddButton("Always");
        gen.AddCheckbox("Simple mode only")->SetConditionBool(&expert, BoolFunc::IfFalse);
        gen.AddSeparator();
        CEGUI::Window* rows[] = {panel_->getChild("generated_element_0"), panel_->getChild("generated_element_1"),
                                 panel_->getChild("generated_element_2")};

        gen.TestElementConditions();
        EXPECT_EQ(glm::vec3(Height(rows[0]), Height(rows[1]), Height(rows[2])), glm::vec3(26.0f, 0.0f, 15.0f));
        // A collapsed row still takes its 2 px of spacing.
        EXPECT_EQ(glm::vec3(Top(rows[0]), Top(rows[1]), Top(rows[2])), glm::vec3(10.0f, 38.0f, 40.0f));
        EXPECT_FLOAT_EQ(Height(panel_), 10.0f + 28.0f + 2.0f + 17.0f + 10.0f);

        expert = false;
        gen.TestElementConditions();
        EXPECT_FLOAT_EQ(Height(rows[1]), 26.0f);
        EXPECT_FLOAT_EQ(Top(rows[2]), 66.0f);
    }

    // A group shrinks with its hidden rows and, hidden itself, hides them all.
    Renew();
    GuiGenerator groups(panel_);
    bool showSecond = true;
    gui::Panel* group = groups.PanelBegin();
    groups.AddButton("First");
    groups.AddButton("Second")->SetConditionBool(&showSecond, BoolFunc::IfTrue);
    groups.PanelEnd();
    groups.AddLabel("Below");
    CEGUI::Window* groupRow = panel_->getChild("generated_element_0");
    CEGUI::Window* below = panel_->getChild("generated_element_3");

    groups.TestElementConditions();
    EXPECT_FLOAT_EQ(Height(groupRow), 10.0f + 28.0f + 28.0f + 10.0f);
    EXPECT_FLOAT_EQ(Top(below), 10.0f + 76.0f + 2.0f);

    showSecond = false;
    groups.TestElementConditions();
    EXPECT_FLOAT_EQ(Height(groupRow), 10.0f + 28.0f + 2.0f + 10.0f);
    EXPECT_FLOAT_EQ(Top(below), 10.0f + 50.0f + 2.0f);

    group->SetConditionFunc([] { return false; });
    groups.TestElementConditions();
    EXPECT_FLOAT_EQ(Height(groupRow), 0.0f);
    EXPECT_FLOAT_EQ(Top(below), 12.0f);
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
        EXPECT_TRUE(details);
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
