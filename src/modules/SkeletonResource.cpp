#include <vexa/modules/SkeletonResource.h>

#include "modules/AddNew.h"

#include <vexa/modules/SkeletonGadget.h>

#include <runa/rlog.h>

namespace vexa::modules {

SkeletonResource::SkeletonResource(const std::string& name, const tesk::Skeleton& skeleton)
    : Resource(name, "SkeletonResource"), skeleton_(skeleton), restPose_(skeleton.GetRestPose()),
      pose_(restPose_)
{
}

SkeletonResource::SkeletonResource(const std::string& name, const tesk::Skeleton& skeleton,
                                   const tesk::SkeletonAction& action)
    : SkeletonResource(name, skeleton)
{
    // Checked once here: an unfit action would otherwise warn on every frame it is played.
    if (action.Empty())
        rlog::Warn(id.ToString() + " - action \"" + action.GetName() +
                       "\" has no keyframes; showing the skeleton "
                       "without it",
                   "vexa::modules::SkeletonResource");
    else if (action.JointCount() != skeleton_.JointCount())
        rlog::Warn(id.ToString() + " - action \"" + action.GetName() + "\" animates " +
                       std::to_string(action.JointCount()) + " joints but the skeleton has " +
                       std::to_string(skeleton_.JointCount()) + "; showing the skeleton without it",
                   "vexa::modules::SkeletonResource");
    else
        action_ = std::make_unique<tesk::SkeletonAction>(action);
}

std::shared_ptr<Gadget> SkeletonResource::CreateGadget()
{
    return std::make_shared<SkeletonGadget>(this);
}

bool SkeletonResource::SetPose(const tesk::SkeletonPose& pose)
{
    if (pose.JointCount() != skeleton_.JointCount()) {
        rlog::Warn(id.ToString() + " - the pose has " + std::to_string(pose.JointCount()) +
                       " joints but the skeleton has " + std::to_string(skeleton_.JointCount()) +
                       "; keeping the current pose",
                   "vexa::modules::SkeletonResource::SetPose");
        return false;
    }
    // Same size: the copy reuses the pose's storage.
    pose_ = pose;
    ++poseChanges_;
    DrawOnNextUpdate();
    return true;
}

std::shared_ptr<SkeletonResource> AddSkeleton(const std::string& name, const tesk::Skeleton& skeleton)
{
    return AddNew<SkeletonResource>(name, skeleton);
}

std::shared_ptr<SkeletonResource> AddSkeleton(const std::string& name, const tesk::Skeleton& skeleton,
                                              const tesk::SkeletonAction& action)
{
    return AddNew<SkeletonResource>(name, skeleton, action);
}

} // namespace vexa::modules
