#include "core/Viewarea.h"
#include "gui/GuiViewareaOptions.h"

#include <vexa/Camera.h>
#include <vexa/draw/Scene.h>

#include <nubo/Combobox.h>

#include "FakeEngine.h"
#include "GuiTestSupport.h"

#include <CEGUI/CEGUI.h>

#include <cmath>

namespace {

using testing_support::FakeEngine;

TEST(Viewarea, SidebarAndToolbarFollowTheLook)
{
    FakeEngine engine;
    vexa::Viewarea area(0, gui_test::Root());
    std::vector<bool> changes;
    area.SetSidebarVisibilityCallback([&](bool visible) { changes.push_back(visible); });
    CEGUI::Window* sidebar = area.GetChild("sidebar");
    CEGUI::Window* toggle = area.GetChild("btn_toggle_sidebar");

    vexa::ViewareaLook look;
    look.sidebarEnabled = false;
    look.sidebarVisible = true;
    area.ApplyLook(look);
    EXPECT_FALSE(sidebar->isVisible());
    EXPECT_FALSE(toggle->isVisible());
    EXPECT_EQ(changes, std::vector<bool>{false});
    // The look takes the user's toggle away; the host may still show the sidebar.
    area.SetSidebarVisible(true);
    EXPECT_TRUE(sidebar->isVisible());
    EXPECT_FALSE(toggle->isVisible());
    EXPECT_EQ(changes, (std::vector<bool>{false, true}));
    area.SetSidebarVisible(false);
    changes.clear();

    look.sidebarEnabled = true;
    look.cameraAnimatorEnabled = false;
    look.settingsEnabled = false;
    area.ApplyLook(look);
    EXPECT_TRUE(sidebar->isVisible());
    EXPECT_TRUE(toggle->isVisible());
    EXPECT_FALSE(area.GetChild("sidebar/toolbar")->isVisible());

    gui_test::Click(toggle);
    EXPECT_FALSE(sidebar->isVisible());
    EXPECT_EQ(changes, (std::vector<bool>{true, false}));

    look.settingsEnabled = true;
    area.ApplyLook(look);
    EXPECT_TRUE(area.GetChild("sidebar/toolbar")->isVisible());
    EXPECT_FALSE(area.GetChild("sidebar/toolbar/toggle_video")->isVisible());
    EXPECT_TRUE(area.GetChild("sidebar/toolbar/toggle_options")->isVisible());
}

class ViewareaOptionsTest : public testing::Test {
protected:
    void SetUp() override
    {
        area_.ApplyLook(vexa::ViewareaLook{});
        options_ = area_.GetViewOptions();
        ASSERT_NE(options_, nullptr);
        popup_ = options_->GetWindow();
        engine_.viewareaMarks = 0;
    }

    nubo::Combobox* Combo(const char* name) const
    {
        return static_cast<nubo::Combobox*>(popup_->getChild(name));
    }
    CEGUI::Spinner* Spinner(const char* name) const
    {
        return static_cast<CEGUI::Spinner*>(popup_->getChild(name));
    }

    FakeEngine engine_;
    vexa::Viewarea area_{0, gui_test::Root()};
    vexa::GuiViewareaOptions* options_ = nullptr;
    CEGUI::Window* popup_ = nullptr;
};

TEST_F(ViewareaOptionsTest, CameraModesSetTheFixedAxisAndOrbitKeepsIt)
{
    vexa::Camera& camera = *area_.GetCamera();
    options_->Open();
    gui_test::Choose(Combo("combo_cameramode"), 4); // "Orbit Neg Y"
    EXPECT_TRUE(camera.IsFixedRotationEnabled());
    const glm::vec3 axis = camera.GetFixedRotationAxis();
    EXPECT_EQ(axis, glm::vec3(0, -1, 0));
    EXPECT_TRUE(std::signbit(axis.x) && std::signbit(axis.z));
    EXPECT_EQ(engine_.viewareaMarks, 1);

    gui_test::Choose(Combo("combo_cameramode"), 0); // "Orbit"
    EXPECT_FALSE(camera.IsFixedRotationEnabled());
    EXPECT_EQ(camera.GetFixedRotationAxis(), glm::vec3(0, -1, 0));

    // Refresh finds the item by the axis, whoever set it.
    camera.SetFixedRotationEnabled(true);
    camera.SetFixedRotationAxis({0, 0, 1});
    options_->Refresh();
    EXPECT_EQ(Combo("combo_cameramode")->getText(), "Orbit Pos Z");
    camera.SetFixedRotationAxis({1, 1, 0});
    options_->Refresh();
    EXPECT_EQ(Combo("combo_cameramode")->getText(), "");
    EXPECT_EQ(engine_.viewareaMarks, 2);

    EXPECT_TRUE(std::signbit(vexa::GuiViewareaOptions::ModeAxis(6).y));
    EXPECT_EQ(vexa::GuiViewareaOptions::ModeAxis(7), glm::vec3(0));
}

TEST_F(ViewareaOptionsTest, ControlsChangeTheViewAreaAndRefreshChangesNothing)
{
    vexa::draw::Scene& scene = *area_.GetScene();
    options_->Open();
    gui_test::Choose(Combo("combo_ground"), 3);
    EXPECT_EQ(scene.GetGridMode(), vexa::draw::GridMode::ZX);
    Spinner("spin_gridunits")->setCurrentValue(2.5);
    EXPECT_FLOAT_EQ(scene.GetGridUnits(), 2.5f);
    Spinner("spin_projfar")->setCurrentValue(500.0);
    EXPECT_FLOAT_EQ(scene.GetFar(), 500.0f);
    Spinner("spin_projnear")->setCurrentValue(0.5);
    EXPECT_FLOAT_EQ(scene.GetNear(), 0.5f);
    const bool axes = area_.IsAxesVisible();
    static_cast<CEGUI::ToggleButton*>(popup_->getChild("check_drawaxes"))->setSelected(!axes);
    EXPECT_EQ(area_.IsAxesVisible(), !axes);
    const int marks = engine_.viewareaMarks;
    EXPECT_EQ(marks, 5);

    area_.GetCamera()->SetPosition({5, 1, 0});
    gui_test::Click(popup_->getChild("btn_cam_reset"));
    EXPECT_EQ(area_.GetCamera()->GetPosition(), glm::vec3(2.0f));

    // The view area changes behind the pop-up's back: a refresh shows it and changes nothing.
    scene.SetGridMode(vexa::draw::GridMode::None);
    scene.SetGridUnits(4.0f);
    options_->Refresh();
    EXPECT_EQ(Combo("combo_ground")->getText(), "None");
    EXPECT_FLOAT_EQ(static_cast<float>(Spinner("spin_gridunits")->getCurrentValue()), 4.0f);
    EXPECT_EQ(scene.GetGridMode(), vexa::draw::GridMode::None);
    EXPECT_EQ(engine_.viewareaMarks, marks + 1);
}

} // namespace
