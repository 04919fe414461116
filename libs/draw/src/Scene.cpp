#include "vexa/draw/Scene.h"

#include "vexa/draw/Renderer.h"
#include "vexa/draw/Style.h"

#include <runa/rlog.h>

#include <glm/glm.hpp>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>

namespace vexa::draw {

namespace {

constexpr float kMinNear = 1e-5f;

} // namespace

Scene::Scene(const glm::ivec4& viewport) : viewport_(0), fovY_(std::numbers::pi_v<float> / 4.0f)
{
    SetViewport(viewport);
}

Scene::~Scene() = default;

int Scene::AddInstance(const std::shared_ptr<Renderer>& renderer, const std::shared_ptr<Style>& style,
                       std::uint8_t flags)
{
    static const std::string label = "vexa::draw::Scene::AddInstance";
    if (!renderer) {
        rlog::Fail("Cannot add an instance without a renderer", label);
        return 0;
    }
    if (!style) {
        rlog::Fail("Cannot add an instance without a style", label);
        return 0;
    }
    if (!renderer->IsCompatibileWithStyle(*style)) {
        rlog::Fail("The style does not fit the renderer; the instance is not added", label);
        return 0;
    }
    const int handle = nextHandle_++;
    instances_.push_back({handle, renderer, style, flags});
    return handle;
}

bool Scene::RemoveInstance(int handle)
{
    const auto found = std::find_if(instances_.begin(), instances_.end(),
                                    [handle](const Instance& instance) { return instance.handle == handle; });
    if (found == instances_.end())
        return false;
    // Erase keeps the drawing order of the others.
    instances_.erase(found);
    return true;
}

bool Scene::HasInstance(int handle) const
{
    return std::any_of(instances_.begin(), instances_.end(),
                       [handle](const Instance& instance) { return instance.handle == handle; });
}

void Scene::SetInstanceFlags(int handle, std::uint8_t flags)
{
    for (Instance& instance : instances_) {
        if (instance.handle == handle) {
            instance.flags = flags;
            return;
        }
    }
    rlog::Warn("No instance with handle " + std::to_string(handle), "vexa::draw::Scene::SetInstanceFlags");
}

void Scene::SetViewport(const glm::ivec4& viewport)
{
    if (viewport.z < viewport.x || viewport.w < viewport.y) {
        rlog::Warn("Viewport (" + std::to_string(viewport.x) + ", " + std::to_string(viewport.y) + ", " +
                       std::to_string(viewport.z) + ", " + std::to_string(viewport.w) +
                       ") ends before it starts; keeping the previous one",
                   "vexa::draw::Scene::SetViewport");
        return;
    }
    viewport_ = viewport;
}

void Scene::SetFovY(float radians)
{
    if (!(radians > 0.0f && radians < std::numbers::pi_v<float>)) {
        rlog::Warn("Field of view " + std::to_string(radians) + " rad is outside (0, pi); keeping " +
                       std::to_string(fovY_),
                   "vexa::draw::Scene::SetFovY");
        return;
    }
    fovY_ = radians;
}

float Scene::GetFovX() const
{
    return FovXFromFovY(fovY_, ViewportAspect(viewport_));
}

void Scene::SetNearFar(float nearPlane, float farPlane)
{
    if (!std::isfinite(nearPlane)) {
        rlog::Warn("Near plane " + std::to_string(nearPlane) + " is not finite; keeping " +
                       std::to_string(nearPlane_),
                   "vexa::draw::Scene::SetNearFar");
        nearPlane = nearPlane_;
    }
    // A near plane at zero would throw away all depth precision. It is clamped without a
    // message because the GUI's spinners reach 0 routinely.
    nearPlane = std::max(nearPlane, kMinNear);
    if (!(farPlane > nearPlane) || !std::isfinite(farPlane))
        farPlane = nearPlane * 10.0f;
    nearPlane_ = nearPlane;
    farPlane_ = farPlane;
}

glm::mat4 Scene::GetProjectionMatrix() const
{
    return MakePerspective(fovY_, ViewportAspect(viewport_), nearPlane_, farPlane_);
}

ProjectionParams Scene::GetProjectionParams() const
{
    return MakeProjectionParams(fovY_, nearPlane_, farPlane_, viewport_);
}

void Scene::SetGridMode(int mode)
{
    if (mode < GridMode::None || mode > GridMode::ZX) {
        rlog::Warn("Unknown grid plane " + std::to_string(mode) + "; the grid is switched off",
                   "vexa::draw::Scene::SetGridMode");
        mode = GridMode::None;
    }
    gridMode_ = mode;
}

void Scene::SetGridUnits(float units)
{
    if (!(units > 0.0f) || !std::isfinite(units)) {
        rlog::Warn("Grid cell size " + std::to_string(units) + " is not a positive number; keeping " +
                       std::to_string(gridUnits_),
                   "vexa::draw::Scene::SetGridUnits");
        return;
    }
    gridUnits_ = units;
}

geom::TAabb<3, float> Scene::ComputeBoundingBox() const
{
    geom::TAabb<3, float> box;
    for (const Instance& instance : instances_) {
        if ((instance.flags & InstanceFlags::Hidden) != 0 || !instance.style->visible)
            continue;
        const geom::TAabb<3, float> local = instance.renderer->GetBoundingBox();
        if (local.IsEmpty())
            continue;
        const glm::mat4 model = instance.style->transform.GetMatrix();
        // A rotated box's corners bound the rotated content; its axis-aligned hull is what
        // camera framing needs.
        for (int corner = 0; corner < 8; ++corner) {
            const glm::vec3 point((corner & 1) ? local.max.x : local.min.x,
                                  (corner & 2) ? local.max.y : local.min.y,
                                  (corner & 4) ? local.max.z : local.min.z);
            box.Extend(glm::vec3(model * glm::vec4(point, 1.0f)));
        }
    }
    return box;
}

} // namespace vexa::draw
