#include <vexa/draw/ProjectionParams.h>

#include "LogCapture.h"

#include "GlmNear.h"

#include <gtest/gtest.h>

#include <glm/ext/matrix_clip_space.hpp>
#include <glm/ext/matrix_projection.hpp>
#include <glm/ext/matrix_transform.hpp>
#include <glm/glm.hpp>

#include <cmath>
#include <limits>
#include <numbers>

using namespace vexa::draw;

namespace {

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

TEST(ProjectionParams, PerspectiveAndFieldsOfViewStayConsistent)
{
    const ProjectionParams params = MakeProjectionParams(0.8f, 0.5f, 40.0f, {100, 50, 900, 450});
    EXPECT_EQ(params.ViewportWidth(), 800);
    EXPECT_EQ(params.projection, glm::perspective(0.8f, 2.0f, 0.5f, 40.0f));
    // tan(45 deg) * sqrt(3) = tan(60 deg).
    EXPECT_NEAR(FovXFromFovY(kPi / 2.0f, std::sqrt(3.0f)), 2.0f * kPi / 3.0f, 1e-5f);
    EXPECT_FLOAT_EQ(params.fovX, FovXFromFovY(0.8f, 2.0f));
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
            const glm::vec3 expected = glm::unProject(glm::vec3(pixel.x, 600.0f - pixel.y, 0.5f * depth + 0.5f),
                                                      view, projection, glm::vec4(0, 0, 800, 600));
            const glm::vec3 actual = UnprojectScreenPoint(pixel, depth, projection, view, viewport);
            EXPECT_TRUE(Near(actual, expected, 1e-3f * (1.0f + glm::length(expected))))
                << "pixel " << pixel.x << ", " << pixel.y << " depth " << depth;
        }
    }

    // The centre pixel on the near plane is straight ahead at the near distance, and pixels are
    // measured from the viewport's own corner.
    const glm::vec3 forward = glm::normalize(glm::vec3(0, 0.5f, 0) - eye);
    EXPECT_TRUE(Near(UnprojectScreenPoint({400, 300}, -1.0f, projection, view, viewport), eye + 0.1f * forward,
                     1e-4f));
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
    ASSERT_EQ(log.messages.size(), 2u);
    EXPECT_EQ(log.messages[1].label, "vexa::draw::UnprojectScreenPoint");
}
