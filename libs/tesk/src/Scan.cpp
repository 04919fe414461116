#include "tesk/Scan.h"

#include <runa/rlog.h>

#include <glm/geometric.hpp>
#include <glm/matrix.hpp>

#include <cmath>
#include <utility>

namespace tesk {
namespace {

bool IsFinite(const glm::vec3& v)
{
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

std::string Describe(const glm::vec3& v)
{
    return "(" + std::to_string(v.x) + ", " + std::to_string(v.y) + ", " + std::to_string(v.z) + ")";
}

} // namespace

Scan::Scan(PointCloud points) : points_(std::move(points)) {}

bool Scan::SetCameraParams(const ScanCameraParams& params)
{
    const char* label = "tesk::Scan::SetCameraParams";
    if (!(params.depthScale > 0.0f) || !std::isfinite(params.depthScale)) {
        rlog::Fail("Depth scale must be positive and finite, got " + std::to_string(params.depthScale),
                   label);
        return false;
    }
    if (!std::isfinite(params.minRange) || !std::isfinite(params.maxRange) || params.minRange < 0.0f ||
        params.maxRange < 0.0f || (params.maxRange > 0.0f && params.maxRange < params.minRange)) {
        rlog::Fail("Invalid working range " + std::to_string(params.minRange) + ".." +
                       std::to_string(params.maxRange),
                   label);
        return false;
    }
    cameraParams_ = params;
    return true;
}

bool Scan::SetCameraPosition(const glm::vec3& position)
{
    if (!IsFinite(position)) {
        rlog::Fail("Camera position " + Describe(position) + " is not finite",
                   "tesk::Scan::SetCameraPosition");
        return false;
    }
    cameraPosition_ = position;
    return true;
}

bool Scan::SetCameraUp(const glm::vec3& up)
{
    const float length = glm::length(up);
    if (!IsFinite(up) || !(length > 0.0f) || !std::isfinite(length)) {
        rlog::Fail("Camera up " + Describe(up) + " has no direction", "tesk::Scan::SetCameraUp");
        return false;
    }
    cameraUp_ = up / length;
    return true;
}

bool Scan::SetCameraBasis(const glm::mat3& basis)
{
    constexpr float tolerance = 1e-3f;
    // Comparing B^T B with the identity checks unit length and orthogonality in one go;
    // NaN entries fail every comparison and are refused with it.
    const glm::mat3 gram = glm::transpose(basis) * basis;
    bool orthonormal = true;
    for (int c = 0; c < 3; ++c)
        for (int r = 0; r < 3; ++r)
            if (!(std::abs(gram[c][r] - (c == r ? 1.0f : 0.0f)) <= tolerance))
                orthonormal = false;
    if (!orthonormal) {
        rlog::Fail("Camera basis columns " + Describe(basis[0]) + ", " + Describe(basis[1]) + ", " +
                       Describe(basis[2]) + " are not orthonormal",
                   "tesk::Scan::SetCameraBasis");
        return false;
    }
    if (glm::determinant(basis) < 0.0f) {
        rlog::Fail("Camera basis is a reflection (determinant -1), not a rotation",
                   "tesk::Scan::SetCameraBasis");
        return false;
    }
    cameraBasis_ = basis;
    return true;
}

glm::vec3 Scan::GetViewDirection() const
{
    return cameraBasis_ * basisDefinition_.GetForwardVector();
}

} // namespace tesk
