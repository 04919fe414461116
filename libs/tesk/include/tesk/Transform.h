#pragma once
// Placement of an object in its parent space: scale first, then rotate, then translate.

#include <glm/glm.hpp>
#include <glm/gtc/quaternion.hpp>

namespace tesk {

/// Unit quaternion of a rotation given by its basis (the columns are the rotated x, y and z
/// axes). Uses the numerically stable branch: whichever of w, x, y, z is largest is taken
/// from the trace or a diagonal element and the others follow from it. The axes are
/// normalised first, so a scaled basis gives its rotation; the result has unit length.
glm::quat QuatFromBasis(const glm::mat3& basis);

class Transform {
public:
    Transform() = default;
    Transform(const glm::vec3& position, const glm::quat& rotation, const glm::vec3& scale = glm::vec3(1.0f));

    const glm::vec3& GetPosition() const { return position_; }
    void SetPosition(const glm::vec3& position) { position_ = position; }

    const glm::quat& GetRotation() const { return rotation_; }
    /// Stored normalised. A zero or non-finite quaternion is refused with a warning.
    void SetRotation(const glm::quat& rotation);
    /// Rotation of a basis matrix, see QuatFromBasis.
    void SetRotationFromBasis(const glm::mat3& basis);

    const glm::vec3& GetScale() const { return scale_; }
    void SetScale(const glm::vec3& scale) { scale_ = scale; }
    void SetUniformScale(float scale) { scale_ = glm::vec3(scale); }

    /// T * R * S.
    glm::mat4 GetMatrix() const;
    /// Inverse of GetMatrix(); axes with zero scale collapse to 0 instead of infinity.
    glm::mat4 GetInverseMatrix() const;

    glm::vec3 TransformPoint(const glm::vec3& point) const;
    /// Applies rotation and scale only.
    glm::vec3 TransformDirection(const glm::vec3& direction) const;
    /// Maps a point of the parent space back into the object's own space.
    glm::vec3 InverseTransformPoint(const glm::vec3& point) const;

    bool operator==(const Transform&) const = default;

private:
    glm::vec3 position_ = glm::vec3(0.0f);
    glm::quat rotation_ = glm::quat(1.0f, 0.0f, 0.0f, 0.0f);
    glm::vec3 scale_ = glm::vec3(1.0f);
};

} // namespace tesk
