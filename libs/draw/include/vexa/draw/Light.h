#pragma once
#include <tesk/Color.h>

#include <glm/vec3.hpp>

namespace vexa::draw {

/// A directional light. Scenes share lights through shared pointers, so one change shows
/// in every view.
struct Light {
    /// Direction the light travels. With `cameraRelative` it is given in view space
    /// (a headlight-like rig that follows the camera), otherwise in world space.
    glm::vec3 direction{-0.35f, -0.6f, -0.7f};
    tesk::Color3f color{1.0f, 1.0f, 1.0f};
    float intensity = 0.85f;
    bool cameraRelative = true;
};

} // namespace vexa::draw
