#pragma once
// The viewing volume of a perspective camera, used to cull content and to draw what another
// camera sees. Field-of-view angles are full angles in radians.

#include "tesk/geom/Aabb.h"
#include "tesk/geom/Plane.h"

#include <glm/glm.hpp>

#include <array>

namespace tesk {

struct Frustum {
    /// Order of GetCorners(): the near rectangle, then the far one, each counter-clockwise
    /// as seen from the camera starting at the bottom left.
    enum Corner : int {
        NearBottomLeft,
        NearBottomRight,
        NearTopRight,
        NearTopLeft,
        FarBottomLeft,
        FarBottomRight,
        FarTopRight,
        FarTopLeft,
    };
    /// Order of GetPlanes(). Every plane's normal points into the volume.
    enum Side : int { Near, Far, Left, Right, Bottom, Top };

    glm::vec3 position = glm::vec3(0.0f);
    glm::vec3 direction = glm::vec3(0.0f, 0.0f, -1.0f);
    glm::vec3 up = glm::vec3(0.0f, 1.0f, 0.0f);
    // Not called near/far: those are macros in some platform headers.
    float nearDistance = 0.1f;
    float farDistance = 100.0f;
    float fovX = glm::radians(60.0f);
    float fovY = glm::radians(45.0f);

    Frustum() = default;
    Frustum(const glm::vec3& eye, const glm::vec3& viewDirection, const glm::vec3& upVector, float nearPlane,
            float farPlane, float horizontalFov, float verticalFov);

    /// Unit view direction. A zero or non-finite direction is taken as -z.
    glm::vec3 GetForward() const;
    /// Unit vector to the right of the view: forward x up. When up is parallel to the
    /// direction, some perpendicular is chosen so the frustum stays usable.
    glm::vec3 GetRight() const;
    /// `up` made perpendicular to the direction and unit length.
    glm::vec3 GetOrthogonalUp() const;

    std::array<glm::vec3, 8> GetCorners() const;
    std::array<geom::Plane3, 6> GetPlanes() const;

    /// Points on the boundary count as inside.
    bool Contains(const glm::vec3& point) const;
    /// For testing many points: compute the planes once with GetPlanes().
    static bool Contains(const std::array<geom::Plane3, 6>& planes, const glm::vec3& point);

    /// Box around the eight corners.
    geom::TAabb<3, float> GetBoundingBox() const;
};

} // namespace tesk
