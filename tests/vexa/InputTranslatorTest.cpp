// The window's buttons, keys and modifiers as each consumer receives them. The camera cases
// feed the translation into a real controller: the bindings only work when both agree.

#include "core/InputTranslator.h"

#include <vexa/Camera.h>
#include <vexa/CameraController.h>

#include <vexa/draw/Scene.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using vexa::CameraController;
using vexa::InputTranslator;

plor::Modifiers Mods(bool shift, bool control, bool alt = false, bool super = false)
{
    plor::Modifiers mods;
    mods.shift = shift;
    mods.control = control;
    mods.alt = alt;
    mods.super = super;
    return mods;
}

class TranslatedDragTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        scene = std::make_shared<vexa::draw::Scene>(glm::ivec4(0, 0, 200, 200));
        camera = std::make_shared<vexa::Camera>(scene.get());
        controller.AddScene(scene, camera);
        controller.InjectMouseMove(100.0, 100.0);
    }

    /// The drag mode that a press with `held` buttons already down starts.
    std::uint32_t ModeOfPress(plor::MouseButton button, const plor::Modifiers& mods,
                              const std::vector<plor::MouseButton>& held = {})
    {
        for (plor::MouseButton other : held)
            translator.Press(other, {});
        const vexa::TranslatedButton press = translator.Press(button, mods);
        controller.ActivateSceneUnderMouse(press.guiButton, press.systemKeys);
        const std::uint32_t mode = controller.GetDragMode();
        controller.DeactivateArea();
        translator.Release(button, mods);
        for (plor::MouseButton other : held)
            translator.Release(other, {});
        return mode;
    }

    std::shared_ptr<vexa::draw::Scene> scene;
    std::shared_ptr<vexa::Camera> camera;
    CameraController controller;
    InputTranslator translator;
};

} // namespace

TEST_F(TranslatedDragTest, EachGestureStartsItsOwnDragAndNoOtherStartsOne)
{
    using B = plor::MouseButton;
    EXPECT_EQ(ModeOfPress(B::Left, {}), CameraController::kDragRotate);
    EXPECT_EQ(ModeOfPress(B::Middle, {}), CameraController::kDragMove);
    EXPECT_EQ(ModeOfPress(B::Left, Mods(false, true)), CameraController::kDragRoll);
    EXPECT_EQ(ModeOfPress(B::Right, {}), CameraController::kDragDolly);

    EXPECT_EQ(ModeOfPress(B::Left, Mods(true, false)), CameraController::kDragNone) << "Shift + left is for picking";
    EXPECT_EQ(ModeOfPress(B::Left, Mods(false, false, true)), CameraController::kDragNone) << "Alt + left";
    EXPECT_EQ(ModeOfPress(B::Right, Mods(false, true)), CameraController::kDragNone) << "Control + right";
    EXPECT_EQ(ModeOfPress(B::Left, {}, {B::Middle}), CameraController::kDragNone) << "a second button joins nothing";
    EXPECT_EQ(ModeOfPress(B::Button4, {}), CameraController::kDragNone);

    // Releases were seen: the plain gestures work again afterwards.
    EXPECT_EQ(ModeOfPress(B::Left, {}), CameraController::kDragRotate);
}

TEST(InputTranslator, ButtonsCarryWhatIsHeldAndEveryConsumerGetsItsOwnForm)
{
    InputTranslator translator;
    const vexa::TranslatedButton middle = translator.Press(plor::MouseButton::Middle, {});
    EXPECT_EQ(middle.guiButton, CEGUI::MiddleButton);
    EXPECT_EQ(middle.button, vexa::MouseButton::Middle);
    EXPECT_EQ(middle.systemKeys, static_cast<unsigned int>(CEGUI::MiddleMouse));

    const vexa::TranslatedButton left = translator.Press(plor::MouseButton::Left, Mods(true, true, true, true));
    EXPECT_EQ(left.systemKeys, static_cast<unsigned int>(CEGUI::MiddleMouse | CEGUI::LeftMouse | CEGUI::Shift |
                                                         CEGUI::Control | CEGUI::Alt))
        << "super has no system key";
    const vexa::ModKeys all{.shift = true, .control = true, .alt = true, .super = true};
    EXPECT_EQ(left.mods, all);

    const vexa::TranslatedButton up = translator.Release(plor::MouseButton::Middle, {});
    EXPECT_EQ(up.systemKeys, static_cast<unsigned int>(CEGUI::LeftMouse)) << "the released button is no longer held";
    translator.ReleaseAll();
    EXPECT_EQ(translator.GetHeldButtons(), 0u);
    EXPECT_EQ(translator.Press(plor::MouseButton::Right, {}).button, vexa::MouseButton::Right);
}

TEST(InputTranslator, KeysKeepTheirCodeForTheHostAndGetTheGuisScanCode)
{
    InputTranslator translator;
    struct Case {
        int windowKey;
        vexa::Key key;
        CEGUI::Key::Scan scan;
    };
    // Window codes as the window system numbers them: letters are ASCII, Tab 258, F12 301.
    const Case cases[] = {
        {82, vexa::Key::R, CEGUI::Key::R},
        {48, vexa::Key::Num0, CEGUI::Key::Zero},
        {57, vexa::Key::Num9, CEGUI::Key::Nine},
        {258, vexa::Key::Tab, CEGUI::Key::Tab},
        {259, vexa::Key::Backspace, CEGUI::Key::Backspace},
        {257, vexa::Key::Enter, CEGUI::Key::Return},
        {263, vexa::Key::Left, CEGUI::Key::ArrowLeft},
        {301, vexa::Key::F12, CEGUI::Key::F12},
        {329, vexa::Key::Kp9, CEGUI::Key::Numpad9},
        {335, vexa::Key::KpEnter, CEGUI::Key::NumpadEnter},
        {340, vexa::Key::LeftShift, CEGUI::Key::LeftShift},
        {-1, vexa::Key::Unknown, CEGUI::Key::Unknown},
        {-7, vexa::Key::Unknown, CEGUI::Key::Unknown},
        // Keys the GUI has no code for still reach the host with their own value.
        {302, static_cast<vexa::Key>(302), CEGUI::Key::Unknown},
    };
    for (const Case& c : cases)
    {
        const vexa::TranslatedKey typed = translator.TranslateKey(c.windowKey, Mods(false, true));
        EXPECT_EQ(typed.key, c.key) << c.windowKey;
        EXPECT_EQ(typed.scan, c.scan) << c.windowKey;
        EXPECT_TRUE(typed.mods.control && !typed.mods.shift) << c.windowKey;
    }
}
