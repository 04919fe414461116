#include "vexa/draw/ProjectionParams.h"

#include <runa/rlog.h>

#include <glm/ext/matrix_clip_space.hpp>
#include <glm/glm.hpp>

#include <cmath>
#include <numbers>
#include <string>

namespace vexa::draw {

namespace {

constexpr float kDefaultFovY = std::numbers::pi_v<float> / 4.0f;
constexpr float kDefaultNear = 0.001f;
constexpr float kDefaultFar = 20.0f;

bool IsFinite(const glm::vec3& v)
{
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

} // namespace

glm::mat4 MakePerspective(float fovY, float aspect, float nearPlane, float farPlane)
{
    static const std::string label = "vexa::draw::MakePerspective";
    if (!(fovY > 0.0f && fovY < std::numbers::pi_v<float>)) {
        rlog::Warn("Field of view " + std::to_string(fovY) + " rad is outside (0, pi); using 45 degrees",
                   label);
        fovY = kDefaultFovY;
    }
    if (!(aspect > 0.0f && std::isfinite(aspect))) {
        rlog::Warn("Aspect ratio " + std::to_string(aspect) + " is not positive; using 1", label);
        aspect = 1.0f;
    }
    // Written so that NaN fails too.
    if (!(nearPlane > 0.0f && farPlane > nearPlane && std::isfinite(farPlane))) {
        rlog::Warn("Clipping planes " + std::to_string(nearPlane) + ", " + std::to_string(farPlane) +
                       " do not satisfy 0 < near < far; using 0.001 and 20",
                   label);
        nearPlane = kDefaultNear;
        farPlane = kDefaultFar;
    }
    return glm::perspectiveRH_NO(fovY, aspect, nearPlane, farPlane);
}

float FovXFromFovY(float fovY, float aspect)
{
    return 2.0f * std::atan(std::tan(0.5f * fovY) * aspect);
}

float ViewportAspect(const glm::ivec4& viewport)
{
    const int width = viewport.z - viewport.x;
    const int height = viewport.w - viewport.y;
    if (width <= 0 || height <= 0)
        return 1.0f;
    return static_cast<float>(width) / static_cast<float>(height);
}

glm::vec3 UnprojectScreenPoint(const glm::vec2& screen, float ndcDepth, const glm::mat4& projection,
                               const glm::mat4& view, const glm::ivec4& viewport)
{
    static const std::string label = "vexa::draw::UnprojectScreenPoint";
    const int width = viewport.z - viewport.x;
    const int height = viewport.w - viewport.y;
    glm::vec4 ndc(0.0f, 0.0f, ndcDepth, 1.0f);
    if (width > 0 && height > 0) {
        const float x = screen.x - static_cast<float>(viewport.x);
        const float y = screen.y - static_cast<float>(viewport.y);
        ndc.x = 2.0f * x / static_cast<float>(width) - 1.0f;
        ndc.y = -(2.0f * y / static_cast<float>(height) - 1.0f);
    } else {
        rlog::Warn("Empty viewport " + std::to_string(width) + " x " + std::to_string(height) +
                       "; unprojecting its centre",
                   label);
    }
    const glm::vec4 world = glm::inverse(projection * view) * ndc;
    const glm::vec3 point = glm::vec3(world) / world.w;
    if (world.w == 0.0f || !IsFinite(point)) {
        rlog::Warn("Projection and view do not form an invertible transform", label);
        return glm::vec3(0.0f);
    }
    return point;
}

ProjectionParams MakeProjectionParams(float fovY, float nearPlane, float farPlane, const glm::ivec4& viewport)
{
    ProjectionParams params;
    const float aspect = ViewportAspect(viewport);
    params.fovY = fovY;
    params.fovX = FovXFromFovY(fovY, aspect);
    params.nearPlane = nearPlane;
    params.farPlane = farPlane;
    params.viewport = viewport;
    params.projection = MakePerspective(fovY, aspect, nearPlane, farPlane);
    return params;
}

} // namespace vexa::draw
