#include "tesk/SkeletonAction.h"

#include "tesk/Skeleton.h"

#include <runa/rlog.h>

#include <glm/gtc/quaternion.hpp>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tesk {

SkeletonAction::SkeletonAction(std::string name) : name_(std::move(name)) {}

bool SkeletonAction::AddKeyframe(float time, SkeletonPose pose)
{
    const char* label = "tesk::SkeletonAction::AddKeyframe";
    if (!std::isfinite(time)) {
        rlog::Fail("Keyframe time " + std::to_string(time) + " is not finite", label);
        return false;
    }
    if (!keyframes_.empty() && pose.JointCount() != JointCount()) {
        rlog::Fail("Keyframe at " + std::to_string(time) + " has " + std::to_string(pose.JointCount()) +
                       " joints but the action's keyframes have " + std::to_string(JointCount()),
                   label);
        return false;
    }
    const auto at = std::upper_bound(keyframes_.begin(), keyframes_.end(), time,
                                     [](float t, const SkeletonKeyframe& k) { return t < k.time; });
    keyframes_.insert(at, SkeletonKeyframe{time, std::move(pose)});
    return true;
}

std::size_t SkeletonAction::JointCount() const
{
    return keyframes_.empty() ? 0 : keyframes_.front().pose.JointCount();
}

float SkeletonAction::GetStartTime() const
{
    return keyframes_.empty() ? 0.0f : keyframes_.front().time;
}

float SkeletonAction::GetEndTime() const
{
    return keyframes_.empty() ? 0.0f : keyframes_.back().time;
}

SkeletonPose SkeletonAction::PoseAt(float time, const Skeleton& skeleton) const
{
    SkeletonPose pose;
    PoseAt(time, skeleton, pose);
    return pose;
}

bool SkeletonAction::PoseAt(float time, const Skeleton& skeleton, SkeletonPose& pose) const
{
    const char* label = "tesk::SkeletonAction::PoseAt";
    if (keyframes_.empty()) {
        rlog::Warn("Action \"" + name_ + "\" has no keyframes; using the rest pose", label);
        pose = skeleton.GetRestPose();
        return false;
    }
    if (JointCount() != skeleton.JointCount()) {
        rlog::Fail("Action \"" + name_ + "\" animates " + std::to_string(JointCount()) +
                       " joints but the skeleton has " + std::to_string(skeleton.JointCount()) +
                       "; using the rest pose",
                   label);
        pose = skeleton.GetRestPose();
        return false;
    }

    if (!(time > keyframes_.front().time)) { // also NaN
        pose = keyframes_.front().pose;
        return true;
    }
    if (time >= keyframes_.back().time) {
        pose = keyframes_.back().pose;
        return true;
    }
    // First keyframe later than `time`; it has a predecessor because time > the first time.
    const auto next = std::upper_bound(keyframes_.begin(), keyframes_.end(), time,
                                       [](float t, const SkeletonKeyframe& k) { return t < k.time; });
    const auto previous = next - 1;
    const float span = next->time - previous->time; // > 0: previous->time <= time < next->time
    const float a = (time - previous->time) / span;

    const std::span<const JointTransform> from = previous->pose.GetJoints();
    const std::span<const JointTransform> to = next->pose.GetJoints();
    if (pose.JointCount() != from.size())
        pose = SkeletonPose(from.size());
    const std::span<JointTransform> blended = pose.GetMutableJoints();
    for (std::size_t i = 0; i < from.size(); ++i) {
        blended[i].translation = glm::mix(from[i].translation, to[i].translation, a);
        blended[i].rotation = glm::normalize(glm::slerp(from[i].rotation, to[i].rotation, a));
    }
    return true;
}

} // namespace tesk
