#include "gui/GuiViewareaOptions.h"

#include "core/EngineServices.h"
#include "core/Viewarea.h"

#include <vexa/Camera.h>

#include <vexa/draw/Scene.h>

#include <nubo/Combobox.h>

#include <runa/BasisDefinition.h>
#include <runa/rlog.h>

#include <CEGUI/CEGUI.h>

#include <exception>

namespace vexa {

namespace {

constexpr const char* kLayout = R"(<?xml version="1.0" encoding="UTF-8"?>
<GUILayout version="4">
    <Window type="DarkVexa/Panel" name="Panel">
        <Property name="Area" value="{{0,0},{0,0},{0,400},{0,175}}" />
        <Property name="AlwaysOnTop" value="true" />
        <Property name="RiseOnClickEnabled" value="false" />
        <Property name="MaxSize" value="{{1,0},{1,0}}" />
        <Property name="BorderColour" value="FF555555" />
        <Window type="DarkVexa/Label" name="lab_viewopt">
            <Property name="Area" value="{{0,5},{0,5},{0.5,-10},{0,27}}" />
            <Property name="Text" value="View options" />
            <Property name="Font" value="InriaSans-10-Bold" />
            <Property name="BackgroundVisible" value="true" />
        </Window>
        <Window type="DarkVexa/Label" name="lab_cameraopt">
            <Property name="Area" value="{{0.5,10},{0,5},{1,-10},{0,27}}" />
            <Property name="Text" value="Camera options" />
            <Property name="Font" value="InriaSans-10-Bold" />
            <Property name="BackgroundVisible" value="true" />
        </Window>
        <Window type="DarkVexa/SeparatorVer" name="SeparatorVer">
            <Property name="Area" value="{{0.5,-5},{0,0},{0.5,4},{1,0}}" />
        </Window>
        <Window type="DarkVexa/Checkbox" name="check_drawaxes">
            <Property name="Area" value="{{0,20},{0,46},{0,173},{0,66}}" />
            <Property name="Text" value="Draw global axes" />
        </Window>
        <Window type="DarkVexa/Label" name="lab_groundgrid">
            <Property name="Area" value="{{0,19},{0,80},{0,58},{0,100}}" />
            <Property name="Text" value="Grid" />
            <Property name="HorzFormatting" value="LeftAligned" />
        </Window>
        <Window type="DarkVexa/Combobox" name="combo_ground">
            <Property name="Area" value="{{0,77},{0,78},{0,172},{0,103}}" />
            <Property name="ReadOnly" value="true" />
        </Window>
        <Window type="DarkVexa/Label" name="lab_groundgrid_units">
            <Property name="Area" value="{{0,18},{0,114},{0,105},{0,134}}" />
            <Property name="Text" value="Grid cell units" />
            <Property name="HorzFormatting" value="LeftAligned" />
        </Window>
        <Window type="DarkVexa/Spinner" name="spin_gridunits">
            <Property name="Area" value="{{0,115},{0,113},{0,175},{0,135}}" />
            <Property name="CurrentValue" value="1" />
            <Property name="StepSize" value="0.1" />
            <Property name="MinimumValue" value="0" />
            <Property name="TextInputMode" value="FloatingPoint" />
        </Window>
        <Window type="DarkVexa/Label" name="lab_cameramode">
            <Property name="Area" value="{{0.5,20},{0,49},{0.5,57},{0,69}}" />
            <Property name="Text" value="Mode" />
            <Property name="HorzFormatting" value="LeftAligned" />
        </Window>
        <Window type="DarkVexa/Combobox" name="combo_cameramode">
            <Property name="Area" value="{{0.5,65},{0,46},{0.5,177},{0,70}}" />
            <Property name="ReadOnly" value="true" />
        </Window>
        <Window type="DarkVexa/Label" name="lab_orbitaxis2">
            <Property name="Area" value="{{0.5,20},{0,77},{0.5,176},{0,100}}" />
            <Property name="Text" value="Near / Far clipping planes" />
            <Property name="HorzFormatting" value="LeftAligned" />
        </Window>
        <Window type="DarkVexa/Spinner" name="spin_projnear">
            <Property name="Area" value="{{0.5,20},{0,100},{0.5,95},{0,122}}" />
            <Property name="CurrentValue" value="10" />
            <Property name="MinimumValue" value="0" />
            <Property name="MaximumValue" value="1e+009" />
            <Property name="TextInputMode" value="FloatingPoint" />
        </Window>
        <Window type="DarkVexa/Spinner" name="spin_projfar">
            <Property name="Area" value="{{0.5,110},{0,100},{0.5,180},{0,122}}" />
            <Property name="Text" value="0" />
            <Property name="MinimumValue" value="0" />
            <Property name="MaximumValue" value="1e+009" />
            <Property name="TextInputMode" value="FloatingPoint" />
        </Window>
        <Window type="DarkVexa/PushButton" name="btn_cam_reset">
            <Property name="Area" value="{{0.5,20},{0,135},{0.5,180},{0,160}}" />
            <Property name="Text" value="Reset camera view" />
        </Window>
    </Window>
</GUILayout>
)";

// An optional minus, digits, an optional point, digits: what a person types on the way to a
// number, so that "-" or "2." are not refused half-typed.
constexpr const char* kNumberPattern = "-?\\d*\\.?\\d*";

constexpr int kModeCount = 7;

CEGUI::Spinner* SpinnerOf(CEGUI::Window* root, const char* name)
{
    return static_cast<CEGUI::Spinner*>(root->getChild(name));
}

} // namespace

glm::vec3 GuiViewareaOptions::ModeAxis(int mode)
{
    // The modes run +X, -X, +Y, -Y, +Z, -Z; the axis codes +X, +Y, +Z, -X, -Y, -Z.
    if (mode < 1 || mode >= kModeCount)
        return glm::vec3(0.0f);
    return runa::AxisVector(static_cast<std::uint8_t>((mode - 1) / 2 + (mode - 1) % 2 * 3));
}

GuiViewareaOptions::GuiViewareaOptions(Viewarea& area, CEGUI::Window* parent) : area_(area)
{
    CEGUI::WindowManager& windows = CEGUI::WindowManager::getSingleton();
    try {
        window_ = windows.loadLayoutFromString(kLayout);
    } catch (const std::exception& e) {
        rlog::Fail(std::string("Can not build the view options: ") + e.what(),
                   "vexa::GuiViewareaOptions::GuiViewareaOptions");
        return;
    }
    window_->hide();
    // Over the view area's camera button, which it opens from, so that the pointer starts
    // inside it and leaving closes it.
    window_->setPosition(CEGUI::UVector2(CEGUI::UDim(0, 6), CEGUI::UDim(0, 6)));
    if (parent != nullptr)
        parent->addChild(window_);

    ground_ = static_cast<nubo::Combobox*>(window_->getChild("combo_ground"));
    cameraMode_ = static_cast<nubo::Combobox*>(window_->getChild("combo_cameramode"));
    ground_->AddItem("None", draw::GridMode::None);
    ground_->AddItem("Plane XY", draw::GridMode::XY);
    ground_->AddItem("Plane YZ", draw::GridMode::YZ);
    ground_->AddItem("Plane ZX", draw::GridMode::ZX);
    for (const char* mode :
         {"Orbit", "Orbit Pos X", "Orbit Neg X", "Orbit Pos Y", "Orbit Neg Y", "Orbit Pos Z", "Orbit Neg Z"})
        cameraMode_->AddItem(mode);
    for (nubo::Combobox* combo : {ground_, cameraMode_}) {
        CEGUI::Scrollbar* bar = combo->getDropList()->getVertScrollbar();
        bar->getIncreaseButton()->hide();
        bar->getDecreaseButton()->hide();
    }
    for (const char* name : {"spin_gridunits", "spin_projnear", "spin_projfar"})
        static_cast<CEGUI::Editbox*>(SpinnerOf(window_, name)->getChild(CEGUI::Spinner::EditboxName))
            ->setValidationString(kNumberPattern);

    const auto on = [this](const char* child, const CEGUI::String& event,
                           void (GuiViewareaOptions::*handler)()) {
        window_->getChild(child)->subscribeEvent(event, [this, handler](const CEGUI::EventArgs&) {
            if (updating_) {
                (this->*handler)();
                // The controls show what the view area made of the change (clamped values).
                Refresh();
            }
            return true;
        });
    };
    on("combo_ground", CEGUI::Combobox::EventListSelectionAccepted, &GuiViewareaOptions::OnGround);
    on("combo_cameramode", CEGUI::Combobox::EventListSelectionAccepted, &GuiViewareaOptions::OnCameraMode);
    on("check_drawaxes", CEGUI::ToggleButton::EventSelectStateChanged, &GuiViewareaOptions::OnDrawAxes);
    on("spin_gridunits", CEGUI::Spinner::EventValueChanged, &GuiViewareaOptions::OnGridUnits);
    on("spin_projnear", CEGUI::Spinner::EventValueChanged, &GuiViewareaOptions::OnNear);
    on("spin_projfar", CEGUI::Spinner::EventValueChanged, &GuiViewareaOptions::OnFar);
    on("btn_cam_reset", CEGUI::PushButton::EventClicked, &GuiViewareaOptions::OnReset);
    window_->subscribeEvent(CEGUI::Window::EventMouseLeavesArea, [this](const CEGUI::EventArgs&) {
        // A drop list hangs below the pop-up; moving into it is not leaving.
        for (nubo::Combobox* combo : {ground_, cameraMode_})
            if (combo->isDropDownListVisible())
                return true;
        Close();
        return true;
    });
    Refresh();
}

GuiViewareaOptions::~GuiViewareaOptions()
{
    if (window_ == nullptr || CEGUI::WindowManager::getSingletonPtr() == nullptr)
        return;
    CEGUI::WindowManager& windows = CEGUI::WindowManager::getSingleton();
    if (windows.isAlive(window_))
        windows.destroyWindow(window_);
}

void GuiViewareaOptions::Open()
{
    if (window_ == nullptr)
        return;
    Refresh();
    window_->show();
    window_->moveToFront();
    GetEngineServices().RequestRedraw();
}

void GuiViewareaOptions::Close()
{
    if (window_ == nullptr || !window_->isVisible())
        return;
    window_->hide();
    GetEngineServices().RequestRedraw();
    if (closeCallback_)
        closeCallback_();
}

bool GuiViewareaOptions::IsOpen() const
{
    return window_ != nullptr && window_->isVisible();
}

void GuiViewareaOptions::Refresh()
{
    if (window_ == nullptr)
        return;
    const draw::Scene* scene = area_.GetScene();
    const Camera* camera = area_.GetCamera();
    updating_ = false;
    ground_->SelectByValue(scene->GetGridMode());
    int mode = 0;
    if (camera->IsFixedRotationEnabled()) {
        mode = -1;
        for (int row = 1; row < kModeCount && mode < 0; ++row)
            if (ModeAxis(row) == camera->GetFixedRotationAxis())
                mode = row;
    }
    if (!cameraMode_->SelectByValue(mode)) {
        // An axis of the host's own that no item names.
        cameraMode_->clearAllSelections();
        cameraMode_->setText("");
    }
    static_cast<CEGUI::ToggleButton*>(window_->getChild("check_drawaxes"))
        ->setSelected(area_.IsAxesVisible());
    SpinnerOf(window_, "spin_gridunits")->setCurrentValue(scene->GetGridUnits());
    SpinnerOf(window_, "spin_projnear")->setCurrentValue(scene->GetNear());
    SpinnerOf(window_, "spin_projfar")->setCurrentValue(scene->GetFar());
    updating_ = true;
}

void GuiViewareaOptions::Changed() const
{
    GetEngineServices().MarkViewareasDirty();
    GetEngineServices().RequestRedraw();
}

void GuiViewareaOptions::OnGround()
{
    if (const std::optional<int> plane = ground_->GetSelectedValue()) {
        area_.GetScene()->SetGridMode(*plane);
        Changed();
    }
}

void GuiViewareaOptions::OnCameraMode()
{
    const std::optional<int> mode = cameraMode_->GetSelectedValue();
    Camera* camera = area_.GetCamera();
    if (mode && *mode != 0) {
        // Switching on turns the camera upright; the new axis then turns it again if needed.
        camera->SetFixedRotationEnabled(true);
        camera->SetFixedRotationAxis(ModeAxis(*mode));
        Changed();
    } else if (mode) {
        // The axis stays stored for the next time fixed orbiting is chosen.
        camera->SetFixedRotationEnabled(false);
        Changed();
    }
}

void GuiViewareaOptions::OnDrawAxes()
{
    area_.SetAxesVisible(
        static_cast<CEGUI::ToggleButton*>(window_->getChild("check_drawaxes"))->isSelected());
    Changed();
}

void GuiViewareaOptions::OnGridUnits()
{
    area_.GetScene()->SetGridUnits(
        static_cast<float>(SpinnerOf(window_, "spin_gridunits")->getCurrentValue()));
    Changed();
}

void GuiViewareaOptions::OnNear()
{
    area_.GetScene()->SetNear(static_cast<float>(SpinnerOf(window_, "spin_projnear")->getCurrentValue()));
    Changed();
}

void GuiViewareaOptions::OnFar()
{
    area_.GetScene()->SetFar(static_cast<float>(SpinnerOf(window_, "spin_projfar")->getCurrentValue()));
    Changed();
}

void GuiViewareaOptions::OnReset()
{
    area_.GetCamera()->Reset();
    Changed();
}

} // namespace vexa
