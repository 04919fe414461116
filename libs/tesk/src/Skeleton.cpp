#include "tesk/Skeleton.h"

#include <runa/rlog.h>

#include <cmath>
#include <utility>

namespace tesk {

int Skeleton::AddJoint(std::string name, int parent, const glm::vec3& translation, const glm::quat& rotation)
{
    const char* label = "tesk::Skeleton::AddJoint";
    const int index = static_cast<int>(joints_.size());
    if (parent < -1 || parent >= index) {
        rlog::Fail("Joint \"" + name + "\" names parent " + std::to_string(parent) + ", but only joints 0.." +
                       std::to_string(index - 1) + " exist; parents must be added before their children",
                   label);
        return -1;
    }
    if (FindJoint(name) >= 0) {
        rlog::Fail("A joint named \"" + name + "\" already exists", label);
        return -1;
    }
    if (!std::isfinite(translation.x) || !std::isfinite(translation.y) || !std::isfinite(translation.z)) {
        rlog::Fail("Joint \"" + name + "\" has a non-finite translation", label);
        return -1;
    }
    const float length = glm::length(rotation);
    if (!(length > 0.0f) || !std::isfinite(length)) {
        rlog::Fail("Joint \"" + name + "\" has a zero or non-finite rotation quaternion", label);
        return -1;
    }
    joints_.push_back(Joint{std::move(name), parent, translation, rotation / length});
    return index;
}

const Joint* Skeleton::GetJoint(std::size_t index) const
{
    return index < joints_.size() ? &joints_[index] : nullptr;
}

int Skeleton::FindJoint(std::string_view name) const
{
    for (std::size_t i = 0; i < joints_.size(); ++i)
        if (joints_[i].name == name)
            return static_cast<int>(i);
    return -1;
}

SkeletonPose Skeleton::GetRestPose() const
{
    std::vector<JointTransform> transforms;
    transforms.reserve(joints_.size());
    for (const Joint& joint : joints_)
        transforms.push_back(JointTransform{joint.restTranslation, joint.restRotation});
    return SkeletonPose(std::move(transforms));
}

} // namespace tesk
