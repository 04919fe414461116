#pragma once

#include <glm/glm.hpp>

namespace geom {

/// The points p with dot(normal, p) + offset = 0. The normal is unit length, so the signed
/// distance is positive on the side the normal points to.
struct Plane3 {
    glm::vec3 normal = glm::vec3(0.0f, 0.0f, 1.0f);
    float offset = 0.0f;

    Plane3() = default;
    Plane3(const glm::vec3& unitNormal, float planeOffset) : normal(unitNormal), offset(planeOffset) {}

    static Plane3 FromPointAndNormal(const glm::vec3& point, const glm::vec3& unitNormal)
    {
        return Plane3(unitNormal, -glm::dot(unitNormal, point));
    }

    float SignedDistance(const glm::vec3& point) const { return glm::dot(normal, point) + offset; }

    bool operator==(const Plane3&) const = default;
};

} // namespace geom

namespace tesk {
namespace geom = ::geom;
}
