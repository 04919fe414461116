#pragma once
// The projection of one view: fields of view, clipping planes, the viewport and the matrix
// built from them, plus the helpers that map between window pixels and world space.
// Everything here is plain math and runs with no GL context.

#include <glm/mat4x4.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

namespace vexa::draw {

/// Right-handed perspective projection with clip depth -1..1 (the OpenGL convention, as
/// glm::perspective builds it). Unusable arguments are replaced, with a warning, so the result
/// is always finite: a field of view outside (0, pi) becomes 45 degrees, an aspect that is not
/// positive becomes 1, and planes that do not satisfy 0 < near < far become 0.001 and 20.
glm::mat4 MakePerspective(float fovY, float aspect, float nearPlane, float farPlane);

/// Horizontal field of view of a view `aspect` (width / height) times as wide as it is high:
/// 2 atan(tan(fovY / 2) aspect). Radians in and out.
float FovXFromFovY(float fovY, float aspect);

/// Width / height of a viewport (x0, y0, x1, y1); 1 for an empty viewport, so that a view
/// that has not been laid out yet still gets a usable projection.
float ViewportAspect(const glm::ivec4& viewport);

/// The world point seen at window pixel `screen` (origin top-left, y down) at normalised device
/// depth `ndcDepth` (-1 near plane, 1 far plane). The pixel is taken relative to the viewport's
/// top-left corner (x0, y0) and mapped to NDC as (2 x / w - 1, -(2 y / h - 1), ndcDepth), then
/// transformed by inverse(projection * view) and divided by w. For a viewport at the window's
/// origin this is glm::unProject with the y axis flipped. An empty viewport maps every pixel to
/// the viewport centre (logged); a singular transform gives (0, 0, 0) (logged).
glm::vec3 UnprojectScreenPoint(const glm::vec2& screen, float ndcDepth, const glm::mat4& projection,
                               const glm::mat4& view, const glm::ivec4& viewport);

/// Snapshot of a view's projection. Plain data: whoever fills it keeps the fields consistent
/// (MakeProjectionParams does).
struct ProjectionParams {
    /// Vertical and horizontal fields of view, radians.
    float fovY = 0.7853981633974483f;
    float fovX = 0.7853981633974483f;
    /// Distances of the clipping planes from the camera.
    float nearPlane = 0.001f;
    float farPlane = 20.0f;
    /// (x0, y0, x1, y1) in window pixels, origin top-left; x1 and y1 are exclusive.
    glm::ivec4 viewport{0};
    glm::mat4 projection = MakePerspective(fovY, 1.0f, nearPlane, farPlane);

    int ViewportWidth() const { return viewport.z - viewport.x; }
    int ViewportHeight() const { return viewport.w - viewport.y; }
    float Aspect() const { return ViewportAspect(viewport); }
};

/// Fills every field consistently: fovX and the matrix follow from fovY and the viewport's
/// aspect. The planes are stored as given; the matrix uses MakePerspective's replacements
/// when they are unusable.
ProjectionParams MakeProjectionParams(float fovY, float nearPlane, float farPlane,
                                      const glm::ivec4& viewport);

} // namespace vexa::draw
