#pragma once
// A named animation of a skeleton: poses keyed by time. Between two keyframes joint
// rotations are interpolated along the shortest arc (slerp) and translations linearly;
// outside the keyed range the first or last pose holds.

#include "tesk/SkeletonPose.h"

#include <cstddef>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace tesk {

class Skeleton;

struct SkeletonKeyframe {
    float time = 0.0f;
    SkeletonPose pose;
};

class SkeletonAction {
public:
    SkeletonAction() = default;
    explicit SkeletonAction(std::string name);

    const std::string& GetName() const { return name_; }
    void SetName(std::string name) { name_ = std::move(name); }

    /// Inserts the keyframe after every keyframe whose time is not greater (so equal times
    /// keep the order they were added in). False (logged, nothing added) for a non-finite
    /// time or a pose whose joint count differs from the keyframes already present.
    bool AddKeyframe(float time, SkeletonPose pose);
    void Clear() { keyframes_.clear(); }

    std::size_t KeyframeCount() const { return keyframes_.size(); }
    bool Empty() const { return keyframes_.empty(); }
    std::span<const SkeletonKeyframe> GetKeyframes() const { return keyframes_; }
    /// Joint count of the keyframes; 0 without keyframes.
    std::size_t JointCount() const;

    /// Time range of the keyframes (both 0 without keyframes), e.g. for a time slider.
    float GetStartTime() const;
    float GetEndTime() const;
    float GetDuration() const { return GetEndTime() - GetStartTime(); }

    /// The pose at `time`, clamped to the keyed range (NaN counts as the start). The rest
    /// pose of `skeleton` (logged) when there are no keyframes or they do not fit it.
    SkeletonPose PoseAt(float time, const Skeleton& skeleton) const;
    /// As above into a caller-kept pose, so per-frame playback does not allocate.
    bool PoseAt(float time, const Skeleton& skeleton, SkeletonPose& pose) const;

private:
    std::string name_;
    std::vector<SkeletonKeyframe> keyframes_;
};

} // namespace tesk
