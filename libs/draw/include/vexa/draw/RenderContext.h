#pragma once
// What a renderer needs to draw one instance: matrices, viewport, lights and the shared GL
// programs. Built once per scene per frame by the render system.

#include <vexa/draw/Light.h>

#include <glm/mat4x4.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <cstddef>
#include <memory>
#include <vector>

namespace plor {
class ProgramList;
class Texture;
} // namespace plor

namespace vexa::draw {

class Scene;
class RenderSystem;

struct RenderContext {
    const Scene* scene = nullptr;
    RenderSystem* system = nullptr;
    plor::ProgramList* programs = nullptr;

    glm::mat4 view{1.0f};
    glm::mat4 projection{1.0f};
    glm::mat4 viewProjection{1.0f};
    glm::vec3 cameraPosition{0.0f};
    glm::vec3 cameraForward{0.0f, 0.0f, -1.0f};
    glm::vec3 cameraUp{0.0f, 1.0f, 0.0f};
    float nearPlane = 0.01f;
    float farPlane = 100.0f;

    /// The scene's rectangle in window pixels (x0, y0, x1, y1), origin top-left.
    glm::ivec4 viewport{0};
    /// The same rectangle in framebuffer pixels as glViewport takes it (x, y, width, height).
    glm::ivec4 glViewport{0};
    glm::ivec2 framebufferSize{0};
    /// Framebuffer pixels per window pixel (1 except on high-density screens).
    float pixelScale = 1.0f;

    /// Lights resolved to world-space directions (camera-relative ones already turned).
    std::vector<Light> lights;

    /// Points a point cloud may draw in this frame (0: all). Set while the camera moves, so
    /// that frames keep coming at an interactive rate.
    std::size_t pointBudget = 0;

    /// Shared textures: a black-and-white checker for UV display.
    plor::Texture* checkerTexture = nullptr;
};

} // namespace vexa::draw
