#include "tesk/Transform.h"

#include <runa/rlog.h>

#include <cmath>

namespace tesk {
namespace {

// Zero scale makes the matrix singular; a collapsed axis maps everything onto 0 instead of
// spreading infinities through whatever uses the result.
glm::vec3 SafeReciprocal(const glm::vec3& v)
{
    glm::vec3 r;
    for (int i = 0; i < 3; ++i)
        r[i] = v[i] != 0.0f ? 1.0f / v[i] : 0.0f;
    return r;
}

} // namespace

glm::quat QuatFromBasis(const glm::mat3& basis)
{
    // The formula assumes unit axes; a scaled basis (a marker drawn larger, say) would
    // otherwise give a different rotation, not just a longer quaternion.
    glm::mat3 m = basis;
    for (int c = 0; c < 3; ++c) {
        const float length = glm::length(m[c]);
        if (length > 0.0f)
            m[c] /= length;
    }
    // m[column][row]: columns are the images of the x, y and z axes.
    const float fourWSquaredMinus1 = m[0][0] + m[1][1] + m[2][2];
    const float fourXSquaredMinus1 = m[0][0] - m[1][1] - m[2][2];
    const float fourYSquaredMinus1 = m[1][1] - m[0][0] - m[2][2];
    const float fourZSquaredMinus1 = m[2][2] - m[0][0] - m[1][1];

    int biggestIndex = 0;
    float biggest = fourWSquaredMinus1;
    if (fourXSquaredMinus1 > biggest) {
        biggest = fourXSquaredMinus1;
        biggestIndex = 1;
    }
    if (fourYSquaredMinus1 > biggest) {
        biggest = fourYSquaredMinus1;
        biggestIndex = 2;
    }
    if (fourZSquaredMinus1 > biggest) {
        biggest = fourZSquaredMinus1;
        biggestIndex = 3;
    }

    const float biggestValue = std::sqrt(biggest + 1.0f) * 0.5f;
    const float mult = 0.25f / biggestValue;

    glm::quat q;
    switch (biggestIndex) {
    case 0:
        q = glm::quat(biggestValue, (m[1][2] - m[2][1]) * mult, (m[2][0] - m[0][2]) * mult,
                      (m[0][1] - m[1][0]) * mult);
        break;
    case 1:
        q = glm::quat((m[1][2] - m[2][1]) * mult, biggestValue, (m[0][1] + m[1][0]) * mult,
                      (m[2][0] + m[0][2]) * mult);
        break;
    case 2:
        q = glm::quat((m[2][0] - m[0][2]) * mult, (m[0][1] + m[1][0]) * mult, biggestValue,
                      (m[1][2] + m[2][1]) * mult);
        break;
    default:
        q = glm::quat((m[0][1] - m[1][0]) * mult, (m[2][0] + m[0][2]) * mult, (m[1][2] + m[2][1]) * mult,
                      biggestValue);
        break;
    }
    // A slightly skewed basis gives a quaternion of the wrong length; a rotation must be
    // unit length or mat3_cast would scale as well.
    const float length = glm::length(q);
    return length > 0.0f ? q / length : glm::quat(1.0f, 0.0f, 0.0f, 0.0f);
}

Transform::Transform(const glm::vec3& position, const glm::quat& rotation, const glm::vec3& scale)
    : position_(position), scale_(scale)
{
    SetRotation(rotation);
}

void Transform::SetRotation(const glm::quat& rotation)
{
    const float length = glm::length(rotation);
    if (!std::isfinite(length) || length <= 0.0f) {
        rlog::Warn("Rotation quaternion has no direction; the previous rotation is kept.",
                   "tesk::Transform::SetRotation");
        return;
    }
    rotation_ = rotation / length;
}

void Transform::SetRotationFromBasis(const glm::mat3& basis)
{
    SetRotation(QuatFromBasis(basis));
}

glm::mat4 Transform::GetMatrix() const
{
    // Built directly rather than as three matrix products: the columns of R scaled by S,
    // with the translation in the last column.
    const glm::mat3 r = glm::mat3_cast(rotation_);
    glm::mat4 m(1.0f);
    for (int c = 0; c < 3; ++c)
        m[c] = glm::vec4(r[c] * scale_[c], 0.0f);
    m[3] = glm::vec4(position_, 1.0f);
    return m;
}

glm::mat4 Transform::GetInverseMatrix() const
{
    // (T R S)^-1 = S^-1 R^T T^-1: rows of R^T scaled by 1/S.
    const glm::mat3 rt = glm::transpose(glm::mat3_cast(rotation_));
    const glm::vec3 inv = SafeReciprocal(scale_);
    glm::mat3 upper;
    for (int c = 0; c < 3; ++c)
        upper[c] = rt[c] * inv;
    glm::mat4 m(upper);
    m[3] = glm::vec4(-(upper * position_), 1.0f);
    return m;
}

glm::vec3 Transform::TransformPoint(const glm::vec3& point) const
{
    return position_ + rotation_ * (scale_ * point);
}

glm::vec3 Transform::TransformDirection(const glm::vec3& direction) const
{
    return rotation_ * (scale_ * direction);
}

glm::vec3 Transform::InverseTransformPoint(const glm::vec3& point) const
{
    return SafeReciprocal(scale_) * (glm::conjugate(rotation_) * (point - position_));
}

} // namespace tesk
