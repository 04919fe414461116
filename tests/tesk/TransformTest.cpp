#include <tesk/Transform.h>

#include "GlmNear.h"

#include <gtest/gtest.h>

#include "../common/LogCapture.h"

#include <cmath>

namespace {

constexpr float kPi = 3.14159265358979f;

using testing_support::ExpectNear;

// q and -q are the same rotation.
void ExpectSameRotation(const glm::quat& actual, const glm::quat& expected)
{
    const float sign = glm::dot(actual, expected) < 0.0f ? -1.0f : 1.0f;
    EXPECT_NEAR(actual.w, sign * expected.w, 1e-5f);
    EXPECT_NEAR(actual.x, sign * expected.x, 1e-5f);
    EXPECT_NEAR(actual.y, sign * expected.y, 1e-5f);
    EXPECT_NEAR(actual.z, sign * expected.z, 1e-5f);
}

TEST(TransformTest, InverseUndoesTheMatrix)
{
    // The order of scale, rotation and translation is checked through a scene's bounding box
    // (SceneTest); here, that the point and inverse functions agree with the matrix.
    const tesk::Transform t({10.0f, 0.0f, 0.0f}, glm::angleAxis(kPi / 2.0f, glm::vec3(0, 0, 1)), {2, 3, 4});
    const glm::vec3 q(0.3f, -2.0f, 5.0f);
    ExpectNear(t.TransformPoint(q), glm::vec3(t.GetMatrix() * glm::vec4(q, 1.0f)));
    ExpectNear(t.InverseTransformPoint(t.TransformPoint(q)), q);
    ExpectNear(glm::vec3(t.GetInverseMatrix() * glm::vec4(t.TransformPoint(q), 1.0f)), q);
}

TEST(TransformTest, DegenerateInputIsContained)
{
    testing_support::LogCapture log;
    tesk::Transform t({1, 2, 3}, glm::angleAxis(1.0f, glm::vec3(0, 1, 0)));
    const glm::quat before = t.GetRotation();
    t.SetRotation(glm::quat(0.0f, 0.0f, 0.0f, 0.0f));
    EXPECT_EQ(t.GetRotation(), before);
    EXPECT_FALSE(log.messages.empty());

    // A rotation handed in unnormalised must not scale the object.
    t.SetRotation(glm::quat(2.0f, 0.0f, 0.0f, 0.0f));
    ExpectNear(t.TransformDirection({1, 0, 0}), {1, 0, 0});

    // A flattened axis maps back to 0 rather than infinity.
    t.SetScale({1.0f, 0.0f, 1.0f});
    const glm::vec3 back = t.InverseTransformPoint({4, 5, 6});
    EXPECT_TRUE(std::isfinite(back.y));
    EXPECT_EQ(back.y, 0.0f);
}

TEST(TransformTest, QuatFromBasisCoversEveryBranch)
{
    EXPECT_EQ(tesk::QuatFromBasis(glm::mat3(1.0f)), glm::quat(1.0f, 0.0f, 0.0f, 0.0f));

    // 90 degrees keeps w largest; half turns make x, y or z the largest component.
    const glm::quat cases[] = {
        glm::angleAxis(kPi / 2.0f, glm::vec3(1, 0, 0)),
        glm::angleAxis(kPi, glm::vec3(1, 0, 0)),
        glm::angleAxis(kPi, glm::vec3(0, 1, 0)),
        glm::angleAxis(kPi, glm::vec3(0, 0, 1)),
        glm::angleAxis(2.5f, glm::normalize(glm::vec3(1, 2, -3))),
    };
    for (const glm::quat& expected : cases) {
        const glm::mat3 basis = glm::mat3_cast(expected);
        const glm::quat q = tesk::QuatFromBasis(basis);
        ExpectSameRotation(q, expected);
        EXPECT_NEAR(glm::length(q), 1.0f, 1e-6f);
    }

    // A basis whose columns are the camera's right, up and backward vectors.
    const glm::mat3 lookingAlongX(glm::vec3(0, 0, -1), glm::vec3(0, 1, 0), glm::vec3(1, 0, 0));
    ExpectNear(tesk::QuatFromBasis(lookingAlongX) * glm::vec3(0, 0, -1), {-1, 0, 0});

    // A scaled basis gives its rotation only.
    ExpectSameRotation(tesk::QuatFromBasis(glm::mat3_cast(cases[4]) * 3.0f), cases[4]);
}

} // namespace
