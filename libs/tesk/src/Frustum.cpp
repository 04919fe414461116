#include "tesk/Frustum.h"

#include <cmath>

namespace tesk {
namespace {

struct Basis {
    glm::vec3 forward;
    glm::vec3 right;
    glm::vec3 up;
};

bool IsUsable(const glm::vec3& v)
{
    const float lengthSquared = glm::dot(v, v);
    return std::isfinite(lengthSquared) && lengthSquared > 1e-12f;
}

Basis MakeBasis(const glm::vec3& direction, const glm::vec3& up)
{
    Basis b;
    b.forward = IsUsable(direction) ? glm::normalize(direction) : glm::vec3(0.0f, 0.0f, -1.0f);
    glm::vec3 right = glm::cross(b.forward, up);
    if (!IsUsable(right)) {
        // Looking along the up vector: any perpendicular gives a valid, if arbitrarily
        // rolled, frustum. Cross with the axis least aligned with forward.
        const glm::vec3 a = glm::abs(b.forward);
        const glm::vec3 axis = (a.x <= a.y && a.x <= a.z) ? glm::vec3(1, 0, 0)
                               : (a.y <= a.z)             ? glm::vec3(0, 1, 0)
                                                          : glm::vec3(0, 0, 1);
        right = glm::cross(b.forward, axis);
    }
    b.right = glm::normalize(right);
    b.up = glm::cross(b.right, b.forward);
    return b;
}

} // namespace

Frustum::Frustum(const glm::vec3& eye, const glm::vec3& viewDirection, const glm::vec3& upVector,
                 float nearPlane, float farPlane, float horizontalFov, float verticalFov)
    : position(eye), direction(viewDirection), up(upVector), nearDistance(nearPlane), farDistance(farPlane),
      fovX(horizontalFov), fovY(verticalFov)
{
}

glm::vec3 Frustum::GetForward() const
{
    return MakeBasis(direction, up).forward;
}

glm::vec3 Frustum::GetRight() const
{
    return MakeBasis(direction, up).right;
}

glm::vec3 Frustum::GetOrthogonalUp() const
{
    return MakeBasis(direction, up).up;
}

std::array<glm::vec3, 8> Frustum::GetCorners() const
{
    const Basis b = MakeBasis(direction, up);
    const float tanX = std::tan(fovX * 0.5f);
    const float tanY = std::tan(fovY * 0.5f);

    std::array<glm::vec3, 8> corners;
    const float distances[2] = {nearDistance, farDistance};
    for (int i = 0; i < 2; ++i) {
        const float d = distances[i];
        const glm::vec3 center = position + b.forward * d;
        const glm::vec3 x = b.right * (d * tanX);
        const glm::vec3 y = b.up * (d * tanY);
        corners[4 * i + 0] = center - x - y;
        corners[4 * i + 1] = center + x - y;
        corners[4 * i + 2] = center + x + y;
        corners[4 * i + 3] = center - x + y;
    }
    return corners;
}

std::array<geom::Plane3, 6> Frustum::GetPlanes() const
{
    const Basis b = MakeBasis(direction, up);
    // A side plane contains the eye and one edge. Its inward normal is the side's outward
    // axis turned towards the view direction by the half angle.
    const float cx = std::cos(fovX * 0.5f), sx = std::sin(fovX * 0.5f);
    const float cy = std::cos(fovY * 0.5f), sy = std::sin(fovY * 0.5f);

    std::array<geom::Plane3, 6> planes;
    planes[Near] = geom::Plane3::FromPointAndNormal(position + b.forward * nearDistance, b.forward);
    planes[Far] = geom::Plane3::FromPointAndNormal(position + b.forward * farDistance, -b.forward);
    planes[Left] = geom::Plane3::FromPointAndNormal(position, b.right * cx + b.forward * sx);
    planes[Right] = geom::Plane3::FromPointAndNormal(position, -b.right * cx + b.forward * sx);
    planes[Bottom] = geom::Plane3::FromPointAndNormal(position, b.up * cy + b.forward * sy);
    planes[Top] = geom::Plane3::FromPointAndNormal(position, -b.up * cy + b.forward * sy);
    return planes;
}

bool Frustum::Contains(const glm::vec3& point) const
{
    return Contains(GetPlanes(), point);
}

bool Frustum::Contains(const std::array<geom::Plane3, 6>& planes, const glm::vec3& point)
{
    // Tolerance scaled to the point so that corners computed in float still count as inside.
    const float tolerance = 1e-5f * (1.0f + glm::length(point));
    for (const geom::Plane3& plane : planes)
        if (!(plane.SignedDistance(point) >= -tolerance)) // NaN is outside
            return false;
    return true;
}

geom::TAabb<3, float> Frustum::GetBoundingBox() const
{
    const auto corners = GetCorners();
    return geom::TAabb<3, float>::FromPoints(corners);
}

} // namespace tesk
