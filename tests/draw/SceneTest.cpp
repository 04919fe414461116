// Scenes (instances, clipping planes, projection, bounds, grid settings) and the projection
// helpers they build on; no GL needed.

#include <vexa/draw/ProjectionParams.h>
#include <vexa/draw/Renderer.h>
#include <vexa/draw/Scene.h>
#include <vexa/draw/Style.h>

#include "GlmNear.h"
#include "LogCapture.h"

#include <gtest/gtest.h>

#include <glm/ext/matrix_clip_space.hpp>
#include <glm/ext/matrix_projection.hpp>
#include <glm/ext/matrix_transform.hpp>
#include <glm/glm.hpp>
#include <glm/gtc/quaternion.hpp>

#include <cmath>
#include <limits>
#include <memory>
#include <numbers>

using namespace vexa::draw;

namespace {

class OtherStyle : public Style {};

/// Draws nothing; accepts only the base style and reports a fixed box.
class BoxRenderer : public Renderer {
public:
    explicit BoxRenderer(geom::TAabb<3, float> box = {}) : box_(box) {}
    bool IsCompatibileWithStyle(const Style& style) const override
    {
        return dynamic_cast<const OtherStyle*>(&style) == nullptr;
    }
    void Render(const RenderContext&, const Style&) override {}
    geom::TAabb<3, float> GetBoundingBox() const override { return box_; }

private:
    geom::TAabb<3, float> box_;
};

constexpr float kPi = std::numbers::pi_v<float>;

using testing_support::Near;

bool IsFinite(const glm::mat4& m)
{
    for (int c = 0; c < 4; ++c)
        for (int r = 0; r < 4; ++r)
            if (!std::isfinite(m[c][r]))
                return false;
    return true;
}

} // namespace

TEST(SceneTest, HandlesCountUpAreNeverReusedAndUnfitInstancesGetNone)
{
    Scene scene;
    auto renderer = std::make_shared<BoxRenderer>();
    const int first = scene.AddInstance(renderer, std::make_shared<Style>());
    const int second = scene.AddInstance(renderer, std::make_shared<Style>(), InstanceFlags::Hidden);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 2);

    EXPECT_TRUE(scene.RemoveInstance(second));
    EXPECT_FALSE(scene.RemoveInstance(second));
    EXPECT_FALSE(scene.HasInstance(second));
    EXPECT_TRUE(scene.HasInstance(first));
    // A freed handle must not come back: gadgets may still hold the old one.
    EXPECT_EQ(scene.AddInstance(renderer, std::make_shared<Style>()), 3);
    EXPECT_EQ(scene.GetInstanceCount(), 2u);
    EXPECT_EQ(scene.GetInstances()[0].handle, 1);
    EXPECT_EQ(scene.GetInstances()[1].handle, 3);

    // Missing or unfit instances are refused with a logged failure and use up no handle.
    testing_support::LogCapture log;
    EXPECT_EQ(scene.AddInstance(nullptr, std::make_shared<Style>()), 0);
    EXPECT_EQ(scene.AddInstance(renderer, nullptr), 0);
    EXPECT_EQ(scene.AddInstance(renderer, std::make_shared<OtherStyle>()), 0);
    EXPECT_EQ(log.messages.size(), 3u);
    EXPECT_EQ(scene.AddInstance(renderer, std::make_shared<Style>()), 4);
}

TEST(SceneTest, ClippingPlanesAndGridSettingsStayUsable)
{
    Scene scene;
    scene.SetNearFar(0.0f, 10.0f);
    EXPECT_FLOAT_EQ(scene.GetNear(), 1e-5f);
    EXPECT_FLOAT_EQ(scene.GetFar(), 10.0f);

    scene.SetNearFar(5.0f, 2.0f);
    EXPECT_FLOAT_EQ(scene.GetNear(), 5.0f);
    EXPECT_FLOAT_EQ(scene.GetFar(), 50.0f);

    scene.SetFar(std::numeric_limits<float>::quiet_NaN());
    EXPECT_FLOAT_EQ(scene.GetFar(), 50.0f);

    scene.SetNear(0.5f);
    EXPECT_FLOAT_EQ(scene.GetNear(), 0.5f);
    EXPECT_FLOAT_EQ(scene.GetFar(), 50.0f);

    EXPECT_TRUE(IsFinite(scene.GetProjectionMatrix()));

    // Grid settings reject nonsense.
    testing_support::LogCapture log;
    scene.SetGridMode(GridMode::ZX);
    scene.SetGridMode(4);
    EXPECT_EQ(scene.GetGridMode(), GridMode::None);

    scene.SetGridUnits(0.25f);
    scene.SetGridUnits(0.0f);
    scene.SetGridUnits(std::numeric_limits<float>::infinity());
    EXPECT_FLOAT_EQ(scene.GetGridUnits(), 0.25f);
    EXPECT_EQ(log.messages.size(), 3u);
}

TEST(SceneTest, ProjectionFollowsTheViewportAspect)
{
    const float fovY = kPi / 3.0f;
    Scene scene(glm::ivec4(10, 20, 210, 120)); // 200 x 100
    scene.SetFovY(fovY);
    scene.SetNearFar(0.1f, 50.0f);
    // The matrix itself is MakeProjectionParams' (below).
    EXPECT_FLOAT_EQ(scene.GetFovX(), FovXFromFovY(fovY, 2.0f));

    // A view that is not laid out yet still gets a square projection.
    testing_support::LogCapture log;
    scene.SetViewport(glm::ivec4(0));
    EXPECT_FLOAT_EQ(scene.GetFovX(), fovY);
    scene.SetFovY(0.0f);
    scene.SetFovY(4.0f);
    EXPECT_FLOAT_EQ(scene.GetFovY(), fovY);
    scene.SetViewport(glm::ivec4(50, 0, 10, 10));
    EXPECT_EQ(scene.GetViewport(), glm::ivec4(0));
    EXPECT_EQ(log.messages.size(), 3u);
}

TEST(SceneTest, BoundingBoxUsesTheStyleTransformAndSkipsHiddenContent)
{
    Scene scene;
    EXPECT_TRUE(scene.ComputeBoundingBox().IsEmpty());

    auto style = std::make_shared<Style>();
    // Rotated a quarter turn about Z, stretched along the box's own X, then moved.
    style->transform = tesk::Transform({10.0f, 0.0f, 0.0f}, glm::angleAxis(kPi / 2.0f, glm::vec3(0, 0, 1)),
                                       {3.0f, 1.0f, 1.0f});
    scene.AddInstance(std::make_shared<BoxRenderer>(geom::TAabb<3, float>({-1, -1, -1}, {1, 1, 1})), style);

    const auto box = scene.ComputeBoundingBox();
    EXPECT_NEAR(box.min.x, 9.0f, 1e-5f);
    EXPECT_NEAR(box.max.x, 11.0f, 1e-5f);
    EXPECT_NEAR(box.min.y, -3.0f, 1e-5f);
    EXPECT_NEAR(box.max.y, 3.0f, 1e-5f);
    EXPECT_NEAR(box.min.z, -1.0f, 1e-5f);

    // Content without bounds, hidden instances and invisible styles do not stretch the box.
    scene.AddInstance(std::make_shared<BoxRenderer>(), std::make_shared<Style>());
    scene.AddInstance(std::make_shared<BoxRenderer>(geom::TAabb<3, float>({50, 50, 50}, {60, 60, 60})),
                      std::make_shared<Style>(), InstanceFlags::Hidden);
    auto invisible = std::make_shared<Style>();
    invisible->visible = false;
    scene.AddInstance(std::make_shared<BoxRenderer>(geom::TAabb<3, float>({-90, -90, -90}, {-80, -80, -80})),
                      invisible);
    EXPECT_EQ(scene.ComputeBoundingBox(), box);
}

TEST(ProjectionParams, PerspectiveAndFieldsOfViewStayConsistent)
{
    const ProjectionParams params = MakeProjectionParams(0.8f, 0.5f, 40.0f, {100, 50, 900, 450});
    EXPECT_EQ(params.projection, glm::perspective(0.8f, 2.0f, 0.5f, 40.0f));
    // tan(45 deg) * sqrt(3) = tan(60 deg).
    EXPECT_NEAR(FovXFromFovY(kPi / 2.0f, std::sqrt(3.0f)), 2.0f * kPi / 3.0f, 1e-5f);
    EXPECT_FLOAT_EQ(ViewportAspect({10, 10, 5, 20}), 1.0f); // not laid out yet

    const float nan = std::numeric_limits<float>::quiet_NaN();
    const glm::vec4 unusable[] = {{kPi, 1, 0.1f, 10}, {nan, 1, 0.1f, 10}, {1, 0, 0.1f, 10},
                                  {1, nan, 0.1f, 10}, {1, 1, 0, 10},      {1, 1, 5, 5}};
    for (const glm::vec4& u : unusable) {
        testing_support::LogCapture log;
        EXPECT_TRUE(IsFinite(MakePerspective(u[0], u[1], u[2], u[3])));
        EXPECT_EQ(log.messages.size(), 1u);
    }
}

TEST(ProjectionParams, UnprojectAgreesWithGlmUnProject)
{
    const glm::mat4 projection = glm::perspective(0.9f, 800.0f / 600.0f, 0.1f, 100.0f);
    const glm::vec3 eye(3, 2, 5);
    const glm::mat4 view = glm::lookAt(eye, glm::vec3(0, 0.5f, 0), glm::vec3(0, 1, 0));
    const glm::ivec4 viewport(0, 0, 800, 600);
    const glm::vec2 pixels[] = {{0, 0}, {400, 300}, {799, 1}, {123.5f, 456.25f}};
    for (const glm::vec2& pixel : pixels) {
        for (float depth : {-1.0f, 0.0f, 0.9f}) {
            // glm counts rows from the bottom and takes window depth in 0..1.
            const glm::vec3 expected =
                glm::unProject(glm::vec3(pixel.x, 600.0f - pixel.y, 0.5f * depth + 0.5f), view, projection,
                               glm::vec4(0, 0, 800, 600));
            const glm::vec3 actual = UnprojectScreenPoint(pixel, depth, projection, view, viewport);
            EXPECT_TRUE(Near(actual, expected, 1e-3f * (1.0f + glm::length(expected))))
                << "pixel " << pixel.x << ", " << pixel.y << " depth " << depth;
        }
    }

    // Pixels are measured from the viewport's own corner.
    EXPECT_TRUE(Near(UnprojectScreenPoint({523.5f, 506.25f}, 0.0f, projection, view, {100, 50, 900, 650}),
                     UnprojectScreenPoint({423.5f, 456.25f}, 0.0f, projection, view, viewport), 1e-4f));
}

TEST(ProjectionParams, UnprojectStaysFiniteOnDegenerateInput)
{
    const glm::mat4 projection = glm::perspective(0.9f, 1.0f, 0.1f, 100.0f);
    const glm::mat4 view(1.0f);
    testing_support::LogCapture log;

    // An empty viewport has only its centre.
    const glm::vec3 centre = UnprojectScreenPoint({0, 0}, -1.0f, projection, view, glm::ivec4(0));
    EXPECT_TRUE(Near(centre, {0, 0, -0.1f}, 1e-5f));
    ASSERT_EQ(log.messages.size(), 1u);

    EXPECT_EQ(UnprojectScreenPoint({5, 5}, 0.0f, glm::mat4(0.0f), view, {0, 0, 10, 10}), glm::vec3(0.0f));
    EXPECT_EQ(log.messages.size(), 2u);
}
