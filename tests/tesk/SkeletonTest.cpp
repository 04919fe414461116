#include "../common/LogCapture.h"

#include <tesk/Skeleton.h>
#include <tesk/SkeletonAction.h>

#include "GlmNear.h"
#include <glm/gtc/constants.hpp>

#include <gtest/gtest.h>

using tesk::Skeleton;
using tesk::SkeletonAction;
using tesk::SkeletonPose;

namespace {

glm::vec3 Origin(const glm::mat4& m)
{
    return glm::vec3(m[3]);
}

using testing_support::ExpectNear;

const glm::vec3 zAxis(0, 0, 1);

// Root at (1, 0, 0) turned 90 degrees about z; its child sits 2 units along the parent's x.
Skeleton Chain()
{
    Skeleton skeleton;
    skeleton.AddJoint("root", -1, {1, 0, 0}, glm::angleAxis(glm::half_pi<float>(), zAxis));
    skeleton.AddJoint("tip", 0, {2, 0, 0});
    return skeleton;
}

} // namespace

TEST(Skeleton, ChildInheritsItsParentsTransform)
{
    const Skeleton skeleton = Chain();
    const std::vector<glm::mat4> world = skeleton.GetRestPose().ComputeGlobal(skeleton);
    ASSERT_EQ(world.size(), 2u);
    ExpectNear(Origin(world[0]), {1, 0, 0});
    ExpectNear(Origin(world[1]), {1, 2, 0}); // the parent's turn carries x onto y
    ExpectNear(glm::vec3(world[1][0]), {0, 1, 0});

    // Turning the root back makes the chain straight.
    SkeletonPose pose = skeleton.GetRestPose();
    ASSERT_TRUE(pose.SetJoint(0, {1, 0, 0}, glm::quat(1, 0, 0, 0)));
    ExpectNear(Origin(pose.ComputeGlobal(skeleton)[1]), {3, 0, 0});

    testing_support::LogCapture log;
    EXPECT_TRUE(SkeletonPose(3).ComputeGlobal(skeleton).empty());
    EXPECT_EQ(log.messages.size(), 1u);
}

TEST(Skeleton, JointsNeedAnEarlierParentAndAUniqueName)
{
    Skeleton skeleton = Chain();
    testing_support::LogCapture log;
    EXPECT_EQ(skeleton.AddJoint("ahead", 5), -1);
    EXPECT_TRUE(
        log.Contains("Joint \"ahead\" names parent 5, but only joints 0..1 exist; parents must be added "
                     "before their children",
                     "tesk::Skeleton::AddJoint"));
    EXPECT_EQ(skeleton.AddJoint("self", 2), -1); // its own index
    EXPECT_EQ(skeleton.AddJoint("tip", 0), -1);
    EXPECT_EQ(skeleton.AddJoint("bad", 0, {0, 0, 0}, glm::quat(0, 0, 0, 0)), -1);
    EXPECT_EQ(skeleton.JointCount(), 2u);
    EXPECT_EQ(log.messages.size(), 4u);

    EXPECT_EQ(skeleton.AddJoint("finger", 1), 2);
    EXPECT_EQ(skeleton.FindJoint("finger"), 2);
    EXPECT_EQ(skeleton.FindJoint("nobody"), -1);
}

TEST(SkeletonAction, InterpolatesBetweenKeyframesAndClampsOutside)
{
    const Skeleton skeleton = Chain();
    SkeletonPose start(2);
    SkeletonPose end(2);
    end.SetJoint(0, {1, 4, 0}, glm::angleAxis(glm::half_pi<float>(), zAxis));

    SkeletonAction action("wave");
    ASSERT_TRUE(action.AddKeyframe(3.0f, end));
    ASSERT_TRUE(action.AddKeyframe(1.0f, start)); // out of order on purpose
    EXPECT_EQ(action.GetDuration(), 2.0f);

    const tesk::JointTransform mid = action.PoseAt(2.0f, skeleton).GetJoint(0);
    ExpectNear(mid.translation, {0.5f, 2, 0});
    ExpectNear(glm::axis(mid.rotation), zAxis);
    EXPECT_NEAR(glm::angle(mid.rotation), glm::quarter_pi<float>(), 1e-5f);

    EXPECT_EQ(action.PoseAt(-10.0f, skeleton), start);
    EXPECT_EQ(action.PoseAt(std::numeric_limits<float>::quiet_NaN(), skeleton), start);
    EXPECT_EQ(action.PoseAt(99.0f, skeleton), end);

    // Rotations take the short way even when the keys' quaternions lie on opposite sides.
    SkeletonAction flip;
    SkeletonPose a(2);
    SkeletonPose b(2);
    a.SetJoint(0, {}, glm::angleAxis(glm::radians(170.0f), zAxis));
    b.SetJoint(0, {}, glm::angleAxis(glm::radians(-170.0f), zAxis)); // dot(a, b) < 0
    flip.AddKeyframe(0.0f, a);
    flip.AddKeyframe(1.0f, b);
    const glm::quat half = flip.PoseAt(0.5f, skeleton).GetJoint(0).rotation;
    EXPECT_NEAR(std::abs(glm::dot(half, glm::angleAxis(glm::pi<float>(), zAxis))), 1.0f, 1e-5f);

    testing_support::LogCapture log;
    EXPECT_FALSE(action.AddKeyframe(4.0f, SkeletonPose(3)));
    EXPECT_EQ(action.KeyframeCount(), 2u);
    EXPECT_EQ(SkeletonAction().PoseAt(1.0f, skeleton), skeleton.GetRestPose());
    EXPECT_EQ(log.messages.size(), 2u);
}
