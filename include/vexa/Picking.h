#pragma once
// Picking: a Shift + left click in a view area asks every gadget there what lies under the
// pointer. Gadgets that can answer override Gadget::Pick; the nearest hit over all of them is
// reported to the user (the notice line at the bottom of the window and rlog::Info).

#include <vexa/Export.h>

#include <glm/mat4x4.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <string>

namespace vexa {

/// Where the user clicked and how the view area sees the world at that moment.
struct VEXA_API PickRequest {
    /// The pointer in window pixels, origin top-left.
    glm::vec2 cursor{0.0f};
    /// The view area scene's rectangle (x0, y0, x1, y1) in window pixels, origin top-left.
    glm::ivec4 viewport{0};
    /// Projection times camera view: world space to clip space.
    glm::mat4 viewProjection{1.0f};
    glm::vec3 cameraPosition{0.0f};
    /// How far from the pointer, in pixels, a drawn point still counts as under it.
    float radius = 5.0f;
};

/// What one gadget found under the pointer.
struct VEXA_API PickHit {
    /// Distance from the camera in world units; the nearest hit of all gadgets wins.
    float distance = 0.0f;
    /// One line for the user: what was hit and its values.
    std::string report;
};

} // namespace vexa
