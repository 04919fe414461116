#include "tesk/SkeletonPose.h"

#include "tesk/Skeleton.h"

#include <runa/rlog.h>

#include <glm/gtc/matrix_transform.hpp>

#include <cmath>
#include <utility>

namespace tesk {

glm::mat4 JointTransform::ToMatrix() const
{
    glm::mat4 m = glm::mat4_cast(rotation);
    m[3] = glm::vec4(translation, 1.0f);
    return m;
}

SkeletonPose::SkeletonPose(std::size_t jointCount) : joints_(jointCount) {}

SkeletonPose::SkeletonPose(std::vector<JointTransform> joints) : joints_(std::move(joints)) {}

bool SkeletonPose::SetJoint(std::size_t index, const glm::vec3& translation, const glm::quat& rotation)
{
    const char* label = "tesk::SkeletonPose::SetJoint";
    if (index >= joints_.size()) {
        rlog::Fail("Joint " + std::to_string(index) + " is out of range; the pose has " +
                       std::to_string(joints_.size()) + " joints",
                   label);
        return false;
    }
    if (!std::isfinite(translation.x) || !std::isfinite(translation.y) || !std::isfinite(translation.z)) {
        rlog::Fail("Joint " + std::to_string(index) + " gets a non-finite translation", label);
        return false;
    }
    const float length = glm::length(rotation);
    if (!(length > 0.0f) || !std::isfinite(length)) {
        rlog::Fail("Joint " + std::to_string(index) + " gets a zero or non-finite rotation quaternion",
                   label);
        return false;
    }
    joints_[index] = JointTransform{translation, rotation / length};
    return true;
}

JointTransform SkeletonPose::GetJoint(std::size_t index) const
{
    return index < joints_.size() ? joints_[index] : JointTransform{};
}

std::vector<glm::mat4> SkeletonPose::ComputeGlobal(const Skeleton& skeleton) const
{
    std::vector<glm::mat4> world;
    ComputeGlobal(skeleton, world);
    return world;
}

bool SkeletonPose::ComputeGlobal(const Skeleton& skeleton, std::vector<glm::mat4>& world) const
{
    if (joints_.size() != skeleton.JointCount()) {
        rlog::Fail("The pose has " + std::to_string(joints_.size()) + " joints but the skeleton has " +
                       std::to_string(skeleton.JointCount()),
                   "tesk::SkeletonPose::ComputeGlobal");
        world.clear();
        return false;
    }
    const std::span<const Joint> joints = skeleton.GetJoints();
    world.resize(joints.size());
    // Parents precede children (Skeleton::AddJoint guarantees it), so a parent's world
    // matrix is always ready when its children need it.
    for (std::size_t i = 0; i < joints.size(); ++i) {
        const glm::mat4 local = joints_[i].ToMatrix();
        const int parent = joints[i].parent;
        world[i] = parent < 0 ? local : world[static_cast<std::size_t>(parent)] * local;
    }
    return true;
}

} // namespace tesk
