#include "GuiTestSupport.h"

#include "core/Notifications.h"

#include <vexa/GuiGenerator.h>

#include <nubo/ArrayPanel.h>

#include <CEGUI/CEGUI.h>

using namespace vexa;
using gui_test::Height;
using gui_test::PanelTest;

namespace {

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
