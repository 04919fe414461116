#pragma once
// A joint hierarchy as the viewer keeps it: the skeleton, its rest pose, the pose the host set
// last and, optionally, one animation. The resource draws nothing itself: every view area's
// SkeletonGadget owns its own renderer, because each view area may show another posing choice.
//
// Hosts stream poses with SetPose. Gadgets that follow the host ("Realtime") compare the pose
// change counter with the one they applied last, so an unchanged pose costs them nothing.

#include <vexa/Export.h>
#include <vexa/Resource.h>

#include <tesk/Skeleton.h>
#include <tesk/SkeletonAction.h>
#include <tesk/SkeletonPose.h>

#include <cstdint>
#include <memory>
#include <string>

namespace vexa::modules {

class VEXA_API SkeletonResource : public Resource {
public:
    /// Shows `skeleton` (copied) under `name` in its rest pose; resource type "SkeletonResource".
    SkeletonResource(const std::string& name, const tesk::Skeleton& skeleton);
    /// As above, with `action` (copied) to play. An action without keyframes or one that
    /// animates another number of joints is left out with a warning: the skeleton still shows.
    SkeletonResource(const std::string& name, const tesk::Skeleton& skeleton,
                     const tesk::SkeletonAction& action);

    std::shared_ptr<Gadget> CreateGadget() override;

    const tesk::Skeleton& GetSkeleton() const { return skeleton_; }
    /// The action to play; null without one.
    const tesk::SkeletonAction* GetAction() const { return action_.get(); }
    /// The pose the host set last; the rest pose until it sets one.
    const tesk::SkeletonPose& GetPose() const { return pose_; }
    const tesk::SkeletonPose& GetRestPose() const { return restPose_; }

    /// Replaces the current pose and asks for a redraw. False (warned, the current pose kept)
    /// when `pose` does not hold one transform per joint. Allocates nothing for a fitting pose.
    bool SetPose(const tesk::SkeletonPose& pose);
    /// Grows by one with every accepted SetPose.
    std::uint64_t GetPoseChangeCount() const { return poseChanges_; }

private:
    tesk::Skeleton skeleton_;
    tesk::SkeletonPose restPose_;
    tesk::SkeletonPose pose_;
    std::unique_ptr<tesk::SkeletonAction> action_;
    std::uint64_t poseChanges_ = 0;
};

/// Makes a resource of `skeleton` under `name` and, when the library is running, shows it (or
/// replaces the listed one with that name).
VEXA_API std::shared_ptr<SkeletonResource> AddSkeleton(const std::string& name,
                                                       const tesk::Skeleton& skeleton);
/// As above, with an action that the skeleton's gadgets play in a loop by default.
VEXA_API std::shared_ptr<SkeletonResource>
AddSkeleton(const std::string& name, const tesk::Skeleton& skeleton, const tesk::SkeletonAction& action);

} // namespace vexa::modules
