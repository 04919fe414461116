#include <vexa/Camera.h>

#include <vexa/draw/Scene.h>
#include <vexa/draw/VisualCamera.h>

#include "LogCapture.h"

#include "GlmNear.h"

#include <gtest/gtest.h>

#include <glm/glm.hpp>
#include <glm/gtc/quaternion.hpp>

#include <cmath>
#include <sstream>
#include <string>
#include <tuple>

using vexa::Camera;

namespace {

constexpr float kEps = 1e-5f;

using testing_support::ExpectNear;

// Window pixel (origin top-left, y down) at which `point` appears.
glm::vec2 Project(const vexa::draw::Scene& scene, const Camera& camera, const glm::vec3& point)
{
    const glm::vec4 clip = scene.GetProjectionMatrix() * camera.GetViewMatrix() * glm::vec4(point, 1.0f);
    const glm::vec2 ndc = glm::vec2(clip) / clip.w;
    const glm::vec4 v(scene.GetViewport());
    return glm::vec2(v.x + (ndc.x + 1.0f) * 0.5f * (v.z - v.x), v.y + (1.0f - ndc.y) * 0.5f * (v.w - v.y));
}

// A camera on an 800 x 600 view area, where most tests start.
class CameraTest : public ::testing::Test {
protected:
    float Distance() const { return glm::length(camera.GetPosition() - camera.GetTarget()); }

    vexa::draw::Scene scene{glm::ivec4(0, 0, 800, 600)};
    Camera camera{&scene};
};

// Angle of the view above the plane perpendicular to `axis`.
float Elevation(const Camera& camera, const glm::vec3& axis)
{
    return std::asin(glm::dot(camera.GetForward(), axis));
}

} // namespace

TEST_F(CameraTest, StartsResetAndCopiesSteerTheSameVisualCamera)
{
    EXPECT_NEAR(camera.GetRight().y, 0.0f, kEps); // upright about +y
    EXPECT_GT(camera.GetUp().y, 0.0f);
    EXPECT_EQ(camera.GetVisualCamera(), scene.GetCamera());

    Camera copy(camera);
    copy.SetTarget(glm::vec3(1.0f, 0.0f, 0.0f));
    ExpectNear(scene.GetCamera()->GetForward(), glm::normalize(glm::vec3(-1.0f, -2.0f, -2.0f)));
    EXPECT_EQ(camera.GetTarget(), glm::vec3(0.0f)); // the target is the copy's own

    camera.SetFixedRotationEnabled(true);
    camera.SetPosition(glm::vec3(0.0f, 0.0f, 5.0f));
    camera.Reset();
    EXPECT_EQ(camera.GetPosition(), glm::vec3(2.0f));
    EXPECT_FALSE(camera.IsFixedRotationEnabled());

    testing_support::LogCapture log;
    Camera detached(nullptr);
    EXPECT_FALSE(log.messages.empty());
    detached.Zoom(0.5f);
    EXPECT_NEAR(glm::length(detached.GetPosition()), std::sqrt(3.0f), kEps);
}

TEST_F(CameraTest, FixedRotationAxisIgnoresZeroAndKeepsTheCameraUpright)
{
    // Normalised; then zero, and a squared length below the limit, are ignored.
    for (const glm::vec3 axis : {glm::vec3(0.0f, 0.0f, 5.0f), glm::vec3(0.0f), glm::vec3(3e-4f, 0.0f, 0.0f)})
        camera.SetFixedRotationAxis(axis);
    EXPECT_EQ(camera.GetFixedRotationAxis(), glm::vec3(0.0f, 0.0f, 1.0f));
    // Off: the axis does not touch the view.
    ExpectNear(camera.GetRight(), glm::normalize(glm::vec3(1.0f, 0.0f, -1.0f)));

    camera.SetFixedRotationEnabled(true);
    EXPECT_NEAR(glm::dot(camera.GetRight(), glm::vec3(0.0f, 0.0f, 1.0f)), 0.0f, kEps);
    EXPECT_GT(camera.GetUp().z, 0.0f);

    // Rolled while off, straightened when switched on; switching on again changes nothing.
    camera.SetFixedRotationEnabled(false);
    camera.AlignUp(glm::vec3(1.0f, 0.0f, 0.0f));
    EXPECT_GT(std::abs(glm::dot(camera.GetRight(), glm::vec3(0.0f, 0.0f, 1.0f))), 0.1f);
    camera.SetFixedRotationEnabled(true);
    EXPECT_NEAR(glm::dot(camera.GetRight(), glm::vec3(0.0f, 0.0f, 1.0f)), 0.0f, kEps);
    const glm::mat4 upright = camera.GetViewMatrix();
    camera.SetFixedRotationEnabled(true);
    EXPECT_EQ(camera.GetViewMatrix(), upright);
}

TEST_F(CameraTest, ZoomNeverReachesTheTarget)
{
    camera.SetTarget(glm::vec3(1.0f, 0.0f, 0.0f));
    const glm::vec3 forward = camera.GetForward();
    // The factors in and out are CameraControllerTest's (the wheel); here the closest distance.
    camera.Zoom(1.0f);
    EXPECT_NEAR(Distance(), 0.0002f, 1e-7f);
    camera.Zoom(0.5f);
    EXPECT_NEAR(Distance(), 0.0002f, 1e-7f);
    camera.Zoom(-1.0f);
    camera.Zoom(7.0f);
    EXPECT_NEAR(Distance(), 0.0002f, 1e-7f);
    ExpectNear(camera.GetForward(), forward, 1e-3f);
}

TEST_F(CameraTest, FixedRotationTurnsAboutTheAxisAndStopsShortOfThePole)
{
    const glm::vec3 axis(0.0f, 1.0f, 0.0f);
    camera.SetFixedRotationEnabled(true);
    // A horizontal drag turns about the axis by 0.005 rad per pixel (which way the orbit goes
    // is the e2e CameraGestures').
    camera.ScreenRotate(glm::vec2(0.0f), glm::vec2(100.0f, 0.0f));
    ExpectNear(camera.GetPosition(), glm::angleAxis(-0.5f, axis) * glm::vec3(2.0f), 1e-4f);
    const float distance = glm::length(camera.GetPosition());

    for (int i = 0; i < 100; ++i)
        camera.ScreenRotate(glm::vec2(0.0f, 0.0f), glm::vec2(0.0f, -10.0f)); // upwards, 0.05 rad each
    const float elevation = Elevation(camera, axis);
    EXPECT_GT(elevation, 1.5f);
    EXPECT_LE(elevation, 1.5607964f);
    EXPECT_NEAR(glm::dot(camera.GetRight(), axis), 0.0f, kEps);

    const glm::vec3 beforeTurn = camera.GetPosition();
    camera.ScreenRotate(glm::vec2(0.0f, 0.0f), glm::vec2(50.0f, -10.0f));
    EXPECT_GT(glm::length(camera.GetPosition() - beforeTurn), 1e-4f);
    EXPECT_NEAR(Elevation(camera, axis), elevation, 1e-4f);
    EXPECT_NEAR(glm::length(camera.GetPosition()), distance, 1e-4f); // after 101 orbits

    for (int i = 0; i < 100; ++i)
        camera.ScreenRotate(glm::vec2(0.0f, 0.0f), glm::vec2(0.0f, 10.0f));
    EXPECT_LT(Elevation(camera, axis), -1.5f);
    EXPECT_GE(Elevation(camera, axis), -1.5607964f);

    // Roll would break the upright view, so it is refused.
    const glm::mat4 view = camera.GetViewMatrix();
    camera.ScreenRoll(glm::vec2(500.0f, 300.0f), glm::vec2(400.0f, 400.0f));
    EXPECT_EQ(camera.GetViewMatrix(), view);
}

TEST_F(CameraTest, ScreenMoveKeepsTheTargetUnderThePointer)
{
    // The second pass has a near plane 100 times closer, which magnifies any rounding in the pan.
    for (const float nearPlane : {0.001f, 1e-5f}) {
        SCOPED_TRACE(nearPlane);
        // At the window's corner the target follows the pointer to the pixel; elsewhere the pan
        // keeps the pointer's direction but falls a little short of it.
        for (const glm::ivec4 viewport : {glm::ivec4(0, 0, 800, 600), glm::ivec4(300, 50, 1100, 650)}) {
            const bool atCorner = viewport.x == 0;
            scene.SetViewport(viewport);
            scene.SetNearFar(nearPlane, 1000.0f);
            camera.Reset();
            camera.SetTarget(glm::vec3(0.3f, -0.2f, 0.1f));
            const glm::vec3 oldTarget = camera.GetTarget();
            const glm::vec3 oldForward = camera.GetForward();
            const glm::vec2 middle((viewport.x + viewport.z) / 2.0f, (viewport.y + viewport.w) / 2.0f);

            const glm::vec2 from = Project(scene, camera, oldTarget);
            ExpectNear(from, middle, 1e-2f);
            const glm::vec2 drag(37.0f, -21.0f);
            camera.ScreenMove(from, from + drag);

            const glm::vec2 moved = Project(scene, camera, oldTarget) - from;
            if (atCorner)
                ExpectNear(moved, drag, 1e-2f);
            EXPECT_NEAR(std::atan2(moved.y, moved.x), std::atan2(drag.y, drag.x), 1e-3f);
            EXPECT_GT(glm::length(moved), 0.85f * glm::length(drag));
            EXPECT_LE(glm::length(moved), glm::length(drag) + 1e-2f);
            ExpectNear(camera.GetForward(), oldForward);
            // The target moved with the camera, so it is still in the middle of the view.
            ExpectNear(Project(scene, camera, camera.GetTarget()), middle, 1e-2f);
        }
    }
}

TEST_F(CameraTest, PosesAndFrustum)
{
    scene.SetViewport(glm::ivec4(0, 0, 800, 400));
    scene.SetNearFar(0.5f, 50.0f);
    camera.SetFixedRotationEnabled(true);
    const Camera::Pose pose(glm::vec3(1.0f, 2.0f, 3.0f), glm::vec3(1.0f, 2.0f, 8.0f),
                            glm::vec3(1.0f, 1.0f, 0.0f));
    camera.SetPose(pose);
    EXPECT_FALSE(camera.IsFixedRotationEnabled());
    EXPECT_EQ(camera.GetTarget(), pose.target);
    for (int c = 0; c < 4; ++c)
        ExpectNear(glm::vec3(camera.GetViewMatrix()[c]), glm::vec3(pose.GetViewMatrix()[c]));
    const Camera::Pose back = camera.GetPose();
    EXPECT_EQ(back.target, pose.target);
    ExpectNear(back.up, glm::normalize(glm::vec3(1.0f, 1.0f, 0.0f)));

    const tesk::Frustum frustum = camera.ComputeViewFrustum();
    EXPECT_EQ(frustum.position, pose.position);
    ExpectNear(frustum.direction, glm::vec3(0.0f, 0.0f, -1.0f));
    ExpectNear(frustum.up, back.up);
    EXPECT_EQ(std::make_tuple(frustum.nearDistance, frustum.farDistance), std::make_tuple(0.5f, 50.0f));
    EXPECT_GT(frustum.fovX, frustum.fovY);
}

TEST_F(CameraTest, InterpolateIsLinearWithSphericalUpAndCubicRunsThroughTheMiddlePoses)
{
    const Camera::Pose a(glm::vec3(0.0f), glm::vec3(0.0f, 0.0f, 10.0f), glm::vec3(0.0f, 1.0f, 0.0f));
    const Camera::Pose b(glm::vec3(2.0f, 4.0f, 6.0f), glm::vec3(10.0f, 0.0f, 10.0f),
                         glm::vec3(1.0f, 0.0f, 0.0f));

    const Camera::Pose start = vexa::Interpolate(a, b, 0.0f);
    EXPECT_EQ(std::tie(start.target, start.position), std::tie(a.target, a.position));
    ExpectNear(start.up, a.up);

    const Camera::Pose middle = vexa::Interpolate(a, b, 0.5f);
    ExpectNear(middle.target, glm::vec3(1.0f, 2.0f, 3.0f));
    ExpectNear(middle.position, glm::vec3(5.0f, 0.0f, 10.0f));
    ExpectNear(middle.up, glm::vec3(std::sqrt(0.5f), std::sqrt(0.5f), 0.0f));

    ExpectNear(vexa::Interpolate(a, b, 1.0f).up, b.up);

    // Equal ups (within a float epsilon) are passed through untouched, even when not unit length.
    Camera::Pose c = a;
    c.up = glm::vec3(0.0f, 0.25f, 0.0f);
    Camera::Pose d = b;
    d.up = glm::vec3(0.0f, 0.25f + 1e-7f, 0.0f);
    ASSERT_NE(c.up, d.up);
    EXPECT_EQ(vexa::Interpolate(c, d, 0.3f).up, c.up);

    // Opposite ups have no arc; the result stays finite.
    d.up = glm::vec3(0.0f, -1.0f, 0.0f);
    c.up = glm::vec3(0.0f, 1.0f, 0.0f);
    const glm::vec3 flipped = vexa::Interpolate(c, d, 0.25f).up;
    EXPECT_TRUE(std::isfinite(flipped.x) && std::isfinite(flipped.y) && std::isfinite(flipped.z));

    // The cubic form runs from the second to the third pose.
    auto pose = [](float x) {
        return Camera::Pose(glm::vec3(x, 0.0f, 0.0f), glm::vec3(0.0f, x, 0.0f), glm::vec3(0.0f, 0.0f, x));
    };
    const Camera::Pose p0 = pose(0.0f), p1 = pose(0.0f), p2 = pose(1.0f), p3 = pose(3.0f);

    // Each pose is x along one axis of each vector, so one vector of the three x values says it all.
    const auto xs = [](const Camera::Pose& p) { return glm::vec3(p.target.x, p.position.y, p.up.z); };
    EXPECT_EQ(xs(vexa::InterpolateCubic(p0, p1, p2, p3, 0.0f)), xs(p1));
    ExpectNear(xs(vexa::InterpolateCubic(p0, p1, p2, p3, 1.0f)), xs(p2));
    // 0.5 (1.125 p2 - 0.125 p3) at t = 0.5.
    ExpectNear(xs(vexa::InterpolateCubic(p0, p1, p2, p3, 0.5f)), glm::vec3(0.375f));
}

TEST_F(CameraTest, StreamRoundTripAndBrokenRecords)
{
    camera.SetPose(
        Camera::Pose(glm::vec3(1.0f, 0.0f, -1.0f), glm::vec3(3.0f, 4.0f, 5.0f), glm::vec3(1.0f, 0.0f, 0.0f)));
    camera.SetFixedRotationAxis(glm::vec3(0.0f, 0.0f, 2.0f));

    std::stringstream stream;
    ASSERT_TRUE(camera.WriteToStream(stream));
    std::string bytes = stream.str();
    ASSERT_EQ(bytes.size(), 32u + 12u + 1u + 12u);
    EXPECT_EQ(bytes[44], '\0'); // fixed rotation flag

    // Flip the flag in the record: it is restored as stored, without straightening the view.
    bytes[44] = '\1';
    vexa::draw::Scene otherScene(glm::ivec4(0, 0, 800, 600));
    Camera restored(&otherScene);
    std::istringstream in(bytes);
    ASSERT_TRUE(restored.ReadFromStream(in));
    EXPECT_EQ(restored.GetTarget(), camera.GetTarget());
    EXPECT_EQ(restored.GetViewMatrix(), camera.GetViewMatrix());
    EXPECT_TRUE(restored.IsFixedRotationEnabled());
    EXPECT_EQ(restored.GetFixedRotationAxis(), glm::vec3(0.0f, 0.0f, 1.0f));

    // A truncated or empty record changes nothing.
    Camera untouched(&otherScene);
    untouched.Reset();
    testing_support::LogCapture log;
    for (const std::string& record : {bytes.substr(0, 50), std::string()}) {
        std::istringstream broken(record);
        EXPECT_FALSE(untouched.ReadFromStream(broken));
        EXPECT_FALSE(log.messages.empty());
        EXPECT_EQ(untouched.GetPosition(), glm::vec3(2.0f)); // not even the view stored before the cut
        EXPECT_EQ(untouched.GetTarget(), glm::vec3(0.0f));
        EXPECT_FALSE(untouched.IsFixedRotationEnabled());
    }
}
