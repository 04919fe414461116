#pragma once
// A joint hierarchy with a rest pose. Joints are stored parents first, so one pass from the
// front computes every world transform; AddJoint enforces that order.

#include "tesk/SkeletonPose.h"

#include <glm/gtc/quaternion.hpp>
#include <glm/vec3.hpp>

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tesk {

struct Joint {
    std::string name;
    /// Index of the parent joint, always below this joint's own index; -1 for a root.
    int parent = -1;
    /// Rest transform relative to the parent (or to the skeleton for a root).
    glm::vec3 restTranslation{0.0f, 0.0f, 0.0f};
    glm::quat restRotation{1.0f, 0.0f, 0.0f, 0.0f};
};

class Skeleton {
public:
    /// Appends a joint and returns its index, or -1 (logged, nothing added) when the parent
    /// is neither -1 nor an existing joint, the name is already taken, the translation is not
    /// finite or the rotation is not a usable quaternion. The rotation is stored normalised.
    int AddJoint(std::string name, int parent, const glm::vec3& translation = glm::vec3(0.0f),
                 const glm::quat& rotation = glm::quat(1.0f, 0.0f, 0.0f, 0.0f));

    std::size_t JointCount() const { return joints_.size(); }
    bool Empty() const { return joints_.empty(); }
    std::span<const Joint> GetJoints() const { return joints_; }
    /// Null when `index` is out of range.
    const Joint* GetJoint(std::size_t index) const;
    /// Index of the joint with that name, or -1.
    int FindJoint(std::string_view name) const;

    /// Every joint at its rest transform.
    SkeletonPose GetRestPose() const;

    void Clear() { joints_.clear(); }

private:
    std::vector<Joint> joints_;
};

} // namespace tesk
