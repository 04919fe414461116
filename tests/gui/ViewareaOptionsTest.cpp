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

    nubo::Combobox* Combo(const char* name) const { return static_cast<nubo::Combobox*>(popup_->getChild(name)); }
    CEGUI::Spinner* Spinner(const char* name) const { return static_cast<CEGUI::Spinner*>(popup_->getChild(name)); }
    std::vector<std::string> Items(const char* name) const
    {
        std::vector<std::string> texts;
        for (std::size_t i = 0; i < Combo(name)->getItemCount(); ++i)
            texts.emplace_back(Combo(name)->getListboxItemFromIndex(i)->getText().c_str());
        return texts;
    }
    void MouseTo(float x, float y)
    {
        CEGUI::System::getSingleton().getDefaultGUIContext().injectMousePosition(x, y);
    }

    FakeEngine engine_;
    vexa::Viewarea area_{0, gui_test::Root()};
    vexa::GuiViewareaOptions* options_ = nullptr;
    CEGUI::Window* popup_ = nullptr;
};

TEST_F(ViewareaOptionsTest, LayoutHoldsTheNamedControlsWithFilledListsAndPointerLeavingClosesItOnce)
{
    EXPECT_FALSE(options_->IsOpen());
    EXPECT_TRUE(popup_->isAlwaysOnTop());
    EXPECT_FALSE(popup_->isRiseOnClickEnabled());
    // The controls' names and kinds are what the other cases drive.
    EXPECT_EQ(Items("combo_ground"), (std::vector<std::string>{"None", "Plane XY", "Plane YZ", "Plane ZX"}));
    EXPECT_EQ(Items("combo_cameramode"), (std::vector<std::string>{"Orbit", "Orbit Pos X", "Orbit Neg X", "Orbit Pos Y",
                                                                  "Orbit Neg Y", "Orbit Pos Z", "Orbit Neg Z"}));
    for (const char* name : {"spin_gridunits", "spin_projnear", "spin_projfar"})
    {
        auto* field = static_cast<CEGUI::Editbox*>(Spinner(name)->getChild(CEGUI::Spinner::EditboxName));
        EXPECT_EQ(field->getValidationString(), "-?\\d*\\.?\\d*") << name;
    }

    // The camera button of the view area opens it, showing the current state.
    area_.GetScene()->SetGridMode(vexa::draw::GridMode::YZ);
    gui_test::Click(area_.GetChild("btn_viewarea_options"));
    EXPECT_TRUE(options_->IsOpen());
    EXPECT_EQ(Combo("combo_ground")->getText(), "Plane YZ");
    EXPECT_EQ(engine_.viewareaMarks, 0) << "showing the state is no change of it";

    // The pointer leaving closes it, once.
    int closed = 0;
    options_->SetCloseCallback([&] { ++closed; });
    options_->Open();
    MouseTo(100, 100); // over the pop-up
    MouseTo(150, 120);
    EXPECT_TRUE(options_->IsOpen());
    EXPECT_EQ(closed, 0);
    MouseTo(700, 500);
    EXPECT_FALSE(options_->IsOpen());
    EXPECT_EQ(closed, 1);
    MouseTo(100, 100);
    MouseTo(700, 500);
    EXPECT_EQ(closed, 1) << "a hidden pop-up does not close again";
}

TEST_F(ViewareaOptionsTest, CameraModesSetTheFixedAxisAndOrbitKeepsIt)
{
    vexa::Camera& camera = *area_.GetCamera();
    options_->Open();
    gui_test::Choose(Combo("combo_cameramode"), 4); // "Orbit Neg Y"
    EXPECT_TRUE(camera.IsFixedRotationEnabled());
    const glm::vec3 axis = camera.GetFixedRotationAxis();
    EXPECT_EQ(axis, glm::vec3(0, -1, 0));
    EXPECT_TRUE(std::signbit(axis.x));
    EXPECT_TRUE(std::signbit(axis.z));
    EXPECT_EQ(Combo("combo_cameramode")->getText(), "Orbit Neg Y");
    EXPECT_EQ(engine_.viewareaMarks, 1);

    gui_test::Choose(Combo("combo_cameramode"), 0); // "Orbit"
    EXPECT_FALSE(camera.IsFixedRotationEnabled());
    EXPECT_EQ(camera.GetFixedRotationAxis(), glm::vec3(0, -1, 0));
    EXPECT_EQ(Combo("combo_cameramode")->getText(), "Orbit");

    // Refresh finds the item by the axis, whoever set it.
    camera.SetFixedRotationEnabled(true);
    camera.SetFixedRotationAxis({0, 0, 1});
    options_->Refresh();
    EXPECT_EQ(Combo("combo_cameramode")->getText(), "Orbit Pos Z");
    camera.SetFixedRotationAxis({1, 1, 0});
    options_->Refresh();
    EXPECT_EQ(Combo("combo_cameramode")->getText(), "");
    EXPECT_EQ(engine_.viewareaMarks, 2);

    EXPECT_EQ(vexa::GuiViewareaOptions::ModeAxis(2), glm::vec3(-1, 0, 0));
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
