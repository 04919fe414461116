#include <vexa/CameraController.h>

#include <vexa/Camera.h>

#include <vexa/draw/Scene.h>

#include "LogCapture.h"

#include <gtest/gtest.h>

#include <glm/glm.hpp>

#include <limits>
#include <memory>
#include <optional>
#include <set>
#include <tuple>
#include <vector>

using vexa::Camera;
using vexa::CameraController;

namespace {

constexpr unsigned int kLeft = CEGUI::LeftMouse;
constexpr unsigned int kRight = CEGUI::RightMouse;
constexpr unsigned int kControl = CEGUI::Control;
constexpr unsigned int kMiddle = CEGUI::MiddleMouse;

void ExpectSameView(const Camera& actual, const Camera& expected, float tolerance = 1e-5f)
{
    for (int c = 0; c < 4; ++c)
        EXPECT_LE(glm::length(actual.GetViewMatrix()[c] - expected.GetViewMatrix()[c]), tolerance)
            << "column " << c;
    EXPECT_NEAR(glm::length(actual.GetTarget() - expected.GetTarget()), 0.0f, tolerance);
}

// Four view areas side by side, 100 x 100 pixels each, with distinct views.
class CameraControllerTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        for (int i = 0; i < 4; ++i) {
            scenes.push_back(std::make_shared<vexa::draw::Scene>(glm::ivec4(100 * i, 0, 100 * (i + 1), 100)));
            cameras.push_back(std::make_shared<Camera>(scenes.back().get()));
            cameras.back()->SetTarget(glm::vec3(0.1f * static_cast<float>(i), 0.0f, 0.0f));
            controller.AddScene(scenes.back(), cameras.back());
        }
        controller.SetViewChangedCallback([this] { ++redraws; });
    }

    // An unattached camera with the same viewport and view as area `index`.
    std::unique_ptr<Camera> Reference(unsigned int index)
    {
        referenceScenes.push_back(std::make_unique<vexa::draw::Scene>(scenes[index]->GetViewport()));
        auto camera = std::make_unique<Camera>(referenceScenes.back().get());
        camera->CopyView(*cameras[index]);
        return camera;
    }

    // A whole drag in the area under `from`: press, move to `to`, release.
    void Drag(glm::vec2 from, glm::vec2 to, CEGUI::MouseButton button, unsigned int mask)
    {
        controller.InjectMouseMove(from.x, from.y);
        controller.ActivateSceneUnderMouse(button, mask);
        controller.InjectMouseMove(to.x, to.y);
        controller.DeactivateArea();
    }

    std::vector<glm::mat4> Views() const
    {
        std::vector<glm::mat4> views;
        for (const auto& camera : cameras)
            views.push_back(camera->GetViewMatrix());
        return views;
    }

    std::vector<std::shared_ptr<vexa::draw::Scene>> scenes;
    std::vector<std::shared_ptr<Camera>> cameras;
    std::vector<std::unique_ptr<vexa::draw::Scene>> referenceScenes;
    CameraController controller;
    int redraws = 0;
};

} // namespace

TEST_F(CameraControllerTest, FindsTheViewAreaUnderTheTruncatedMousePosition)
{
    const auto under = [&](double x, double y) {
        controller.InjectMouseMove(x, y);
        return controller.GetSceneUnderMouse();
    };
    EXPECT_EQ(under(99.9, 50.0), 0);
    EXPECT_EQ(under(100.0, 99.9), 1);
    EXPECT_EQ(under(-0.5, 50.0), 0); // truncates to 0
    EXPECT_EQ(under(-1.0, 50.0), -1);
    EXPECT_EQ(under(250.0, 100.0), -1); // bottom edge is exclusive
    EXPECT_EQ(under(400.0, 10.0), -1);

    // Overlapping areas: the first added wins.
    scenes[2]->SetViewport(glm::ivec4(0, 0, 300, 100));
    EXPECT_EQ(under(250.0, 10.0), 2);
    EXPECT_EQ(under(50.0, 10.0), 0);
}

TEST_F(CameraControllerTest, PressStartsOnlyTheExactBindingsOverAViewArea)
{
    // Outside every area nothing starts and later moves change no camera.
    controller.InjectMouseMove(450.0, 50.0);
    controller.ActivateSceneUnderMouse(CEGUI::LeftButton, kLeft);
    EXPECT_EQ(controller.GetDragMode(), CameraController::kDragNone);
    const auto views = Views();
    controller.InjectMouseMove(380.0, 20.0);
    EXPECT_EQ(Views(), views);
    EXPECT_FALSE(controller.DeactivateArea().has_value());

    const std::tuple<CEGUI::MouseButton, unsigned int, std::uint32_t> cases[] = {
        // Each binding's drag: e2e CameraGestures.
        {CEGUI::LeftButton, kLeft | kControl, CameraController::kDragRoll},
        {CEGUI::LeftButton, kLeft | CEGUI::Alt, CameraController::kDragNone}, // a key more than bound
        {CEGUI::MiddleButton, kLeft, CameraController::kDragNone},            // another button than bound
    };
    controller.InjectMouseMove(250.0, 50.0);
    for (const auto& [button, mask, mode] : cases) {
        controller.ActivateSceneUnderMouse(button, mask);
        EXPECT_EQ(controller.GetDragMode(), mode) << "button " << button << " mask " << mask;
        EXPECT_EQ(controller.DeactivateArea(),
                  mode != CameraController::kDragNone ? std::optional<unsigned int>(2u) : std::nullopt);
        EXPECT_FALSE(controller.GetActiveIndex().has_value());
    }

    // A drag in progress is not replaced by another press.
    controller.ActivateSceneUnderMouse(CEGUI::LeftButton, kLeft);
    controller.InjectMouseMove(50.0, 50.0);
    controller.ActivateSceneUnderMouse(CEGUI::RightButton, kRight);
    EXPECT_EQ(controller.GetDragMode(), CameraController::kDragRotate);
    EXPECT_EQ(controller.GetActiveIndex(), std::optional<unsigned int>(2u));
    EXPECT_EQ(controller.DeactivateArea(), std::optional<unsigned int>(2u));

    // While the GUI holds the mouse firmly, no drag starts.
    controller.SetMouseCaptureLevel(2);
    controller.ActivateSceneUnderMouse(CEGUI::LeftButton, kLeft);
    EXPECT_EQ(controller.GetDragMode(), CameraController::kDragNone);
    controller.SetMouseCaptureLevel(1);
    controller.ActivateSceneUnderMouse(CEGUI::LeftButton, kLeft);
    EXPECT_EQ(controller.GetDragMode(), CameraController::kDragRotate);
    EXPECT_EQ(controller.GetActiveIndex(), std::optional<unsigned int>(0u));
}

TEST_F(CameraControllerTest, DragSteersOnlyTheActiveCameraAndRotationIsScaled)
{
    controller.SetMouseSensitivity(1.0f); // factor 1.8
    {
        testing_support::LogCapture log;
        controller.SetMouseSensitivity(std::numeric_limits<float>::quiet_NaN()); // refused: 1.8 stays
        EXPECT_EQ(log.messages.size(), 1u);
    }
    EXPECT_NEAR(controller.GetCameraSensitivity(), 1.0f, 1e-6f);
    const auto rotated = Reference(1);
    rotated->ScreenRotate(1.8f * glm::vec2(150.0f, 50.0f), 1.8f * glm::vec2(160.0f, 55.0f));
    rotated->ScreenRotate(1.8f * glm::vec2(160.0f, 55.0f), 1.8f * glm::vec2(215.0f, 40.0f));

    const auto views = Views();
    controller.InjectMouseMove(150.0, 50.0);
    controller.ActivateSceneUnderMouse(CEGUI::LeftButton, kLeft);
    redraws = 0;
    controller.InjectMouseMove(160.0, 55.0);
    controller.InjectMouseMove(215.0, 40.0); // over area 2 now, but the drag belongs to area 1
    EXPECT_GT(redraws, 0);
    ExpectSameView(*cameras[1], *rotated);
    EXPECT_EQ(cameras[0]->GetViewMatrix(), views[0]);
    EXPECT_EQ(cameras[2]->GetViewMatrix(), views[2]);
    EXPECT_EQ(controller.DeactivateArea(), std::optional<unsigned int>(1u));
    const glm::mat4 afterDrag = cameras[1]->GetViewMatrix();
    controller.InjectMouseMove(190.0, 10.0);
    EXPECT_EQ(cameras[1]->GetViewMatrix(), afterDrag);
}

TEST_F(CameraControllerTest, GroupedCamerasFollowOnceAndStopWhenUngrouped)
{
    controller.SetCameraGroup({0, 2});
    ExpectSameView(*cameras[2], *cameras[0]); // brought in step with the smallest index
    EXPECT_EQ(controller.GetCameraGroup(), (std::set<unsigned int>{0, 2}));

    // A camera outside the group moves alone.
    const auto views = Views();
    cameras[1]->Zoom(0.5f);
    EXPECT_EQ(cameras[0]->GetViewMatrix(), views[0]);
    EXPECT_EQ(cameras[2]->GetViewMatrix(), views[2]);

    // Dragging a member carries the others along, target and fixed rotation included.
    cameras[2]->SetFixedRotationAxis(glm::vec3(0.0f, 0.0f, 1.0f));
    cameras[2]->SetFixedRotationEnabled(true);
    Drag(glm::vec2(250.0f, 50.0f), glm::vec2(270.0f, 40.0f), CEGUI::MiddleButton, kMiddle);
    ExpectSameView(*cameras[0], *cameras[2], 0.0f);
    EXPECT_TRUE(cameras[0]->IsFixedRotationEnabled());
    EXPECT_EQ(cameras[0]->GetFixedRotationAxis(), glm::vec3(0.0f, 0.0f, 1.0f));
    EXPECT_EQ(cameras[3]->GetViewMatrix(), views[3]);

    // Joining takes the smallest member's view at once.
    controller.SetCameraGroup({3, 1});
    ExpectSameView(*cameras[3], *cameras[1], 0.0f);

    // Three cameras: one change reaches each member exactly once.
    controller.SetCameraGroup({0, 1, 2});
    redraws = 0;
    cameras[1]->Zoom(0.25f); // a single change of camera 1
    EXPECT_EQ(redraws, 3);
    ExpectSameView(*cameras[0], *cameras[1], 0.0f);
    ExpectSameView(*cameras[2], *cameras[1], 0.0f);

    // Out of the group, cameras go their own way again.
    controller.SetCameraGroup({});
    const glm::mat4 first = cameras[0]->GetViewMatrix();
    cameras[2]->Zoom(0.5f);
    EXPECT_EQ(cameras[0]->GetViewMatrix(), first);

    // Members without a view area are skipped (and reported) instead of crashing.
    testing_support::LogCapture log;
    controller.SetCameraGroup({2, 9});
    EXPECT_EQ(log.messages.size(), 1u);
    cameras[2]->Zoom(0.5f);
}

TEST_F(CameraControllerTest, RemovedAreasStopReportingAndEndTheirDrag)
{
    controller.SetCameraGroup({0, 3});
    controller.InjectMouseMove(350.0, 50.0);
    controller.ActivateSceneUnderMouse(CEGUI::LeftButton, kLeft);
    EXPECT_EQ(controller.GetActiveIndex(), std::optional<unsigned int>(3u));

    controller.RemoveScenes(1);
    EXPECT_EQ(controller.GetSceneCount(), 3u);
    EXPECT_EQ(controller.GetDragMode(), CameraController::kDragNone);
    EXPECT_FALSE(controller.GetActiveIndex().has_value());
    EXPECT_FALSE(controller.DeactivateArea().has_value());

    redraws = 0;
    const glm::mat4 first = cameras[0]->GetViewMatrix();
    cameras[3]->Zoom(0.5f); // the removed area's camera is no longer watched
    EXPECT_EQ(redraws, 0);
    EXPECT_EQ(cameras[0]->GetViewMatrix(), first);

    testing_support::LogCapture log;
    controller.RemoveScenes(5);
    EXPECT_EQ(controller.GetSceneCount(), 0u);
    EXPECT_EQ(log.messages.size(), 1u);
    cameras[0]->Zoom(0.5f);
    EXPECT_EQ(redraws, 0);

    controller.AddScene(nullptr, cameras[0]);
    EXPECT_EQ(controller.GetSceneCount(), 0u);
    controller.AddScene(scenes[1], cameras[1]);
    EXPECT_EQ(controller.GetSceneCount(), 1u);
    // The wheel zooms the camera under the mouse, two notches to 0.8 of the distance.
    const float distance = glm::length(cameras[1]->GetPosition() - cameras[1]->GetTarget());
    controller.InjectMouseMove(150.0, 50.0);
    EXPECT_EQ(controller.ZoomSceneUnderMouse(2.0f), std::optional<unsigned int>(0u));
    EXPECT_NEAR(glm::length(cameras[1]->GetPosition() - cameras[1]->GetTarget()), 0.8f * distance, 1e-5f);
}
