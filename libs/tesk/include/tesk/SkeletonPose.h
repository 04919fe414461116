#pragma once
// Local transforms of every joint of a skeleton at one moment. A pose replaces the rest
// transforms (it is not an offset from them), so the rest pose is itself a SkeletonPose.

#include <glm/gtc/quaternion.hpp>
#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>

#include <cstddef>
#include <span>
#include <vector>

namespace tesk {

class Skeleton;

struct JointTransform {
    glm::vec3 translation{0.0f, 0.0f, 0.0f};
    glm::quat rotation{1.0f, 0.0f, 0.0f, 0.0f};

    /// translate(translation) * rotate(rotation).
    glm::mat4 ToMatrix() const;

    bool operator==(const JointTransform&) const = default;
};

class SkeletonPose {
public:
    SkeletonPose() = default;
    /// `jointCount` identity transforms.
    explicit SkeletonPose(std::size_t jointCount);
    explicit SkeletonPose(std::vector<JointTransform> joints);

    std::size_t JointCount() const { return joints_.size(); }
    std::span<const JointTransform> GetJoints() const { return joints_; }
    std::span<JointTransform> GetMutableJoints() { return joints_; }

    /// False (logged, unchanged) for an index out of range, a non-finite translation or a
    /// zero / non-finite rotation; the rotation is stored normalised.
    bool SetJoint(std::size_t index, const glm::vec3& translation, const glm::quat& rotation);
    /// Identity when `index` is out of range.
    JointTransform GetJoint(std::size_t index) const;

    /// World matrix of every joint: the parent's world matrix times the joint's local one.
    /// Empty (logged) when the pose does not have one transform per joint of `skeleton`.
    std::vector<glm::mat4> ComputeGlobal(const Skeleton& skeleton) const;
    /// As above, into a caller-kept vector so that per-frame updates do not allocate.
    bool ComputeGlobal(const Skeleton& skeleton, std::vector<glm::mat4>& world) const;

    bool operator==(const SkeletonPose&) const = default;

private:
    std::vector<JointTransform> joints_;
};

} // namespace tesk
