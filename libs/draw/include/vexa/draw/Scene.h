#pragma once
// One view's content: a camera, a projection, lights, helpers (axes, ground grid) and the
// instances drawn in it. A scene is plain data and may be built with no GL context; the
// render system draws it.

#include <vexa/draw/Light.h>
#include <vexa/draw/ProjectionParams.h>
#include <vexa/draw/VisualCamera.h>

#include <tesk/geom/Aabb.h>

#include <glm/vec4.hpp>

#include <cstdint>
#include <memory>
#include <vector>

namespace vexa::draw {

class Renderer;
class Style;

/// Plane of the ground grid; values are stored in settings files.
struct GridMode {
    enum : int { None = 0, XY = 1, YZ = 2, ZX = 3 };
};

/// Flags of an instance (combine with |).
struct InstanceFlags {
    enum : std::uint8_t {
        None = 0,
        NoDepthTest = 1, ///< drawn over everything else in its pass
        Hidden = 2,      ///< kept in the scene but not drawn
    };
};

class Scene {
public:
    /// `viewport` is (x0, y0, x1, y1) in window pixels, origin top-left.
    explicit Scene(const glm::ivec4& viewport = glm::ivec4(0));
    ~Scene();
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    /// Adds an instance and returns its handle (1, 2, ...; never reused). Returns 0 and logs
    /// when the renderer or style is missing or the style does not fit the renderer.
    int AddInstance(const std::shared_ptr<Renderer>& renderer, const std::shared_ptr<Style>& style,
                    std::uint8_t flags = InstanceFlags::None);
    /// False when no instance has that handle.
    bool RemoveInstance(int handle);
    bool HasInstance(int handle) const;
    std::size_t GetInstanceCount() const { return instances_.size(); }
    void SetInstanceFlags(int handle, std::uint8_t flags);

    void SetViewport(const glm::ivec4& viewport);
    const glm::ivec4& GetViewport() const { return viewport_; }
    int GetViewportWidth() const { return viewport_.z - viewport_.x; }
    int GetViewportHeight() const { return viewport_.w - viewport_.y; }

    VisualCamera* GetCamera() { return &camera_; }
    const VisualCamera* GetCamera() const { return &camera_; }

    /// Vertical field of view in radians (default 45 degrees).
    void SetFovY(float radians);
    float GetFovY() const { return fovY_; }
    /// Horizontal field of view from the vertical one and the viewport's aspect.
    float GetFovX() const;
    /// Near is clamped to at least 1e-5 and below far; far must exceed near (else far = near * 10).
    void SetNearFar(float nearPlane, float farPlane);
    void SetNear(float nearPlane) { SetNearFar(nearPlane, farPlane_); }
    void SetFar(float farPlane) { SetNearFar(nearPlane_, farPlane); }
    float GetNear() const { return nearPlane_; }
    float GetFar() const { return farPlane_; }
    glm::mat4 GetProjectionMatrix() const;
    ProjectionParams GetProjectionParams() const;

    void SetLights(std::vector<std::shared_ptr<Light>> lights) { lights_ = std::move(lights); }
    const std::vector<std::shared_ptr<Light>>& GetLights() const { return lights_; }

    void SetAxesVisible(bool visible) { axesVisible_ = visible; }
    bool IsAxesVisible() const { return axesVisible_; }
    /// GridMode value; anything else is taken as None.
    void SetGridMode(int mode);
    int GetGridMode() const { return gridMode_; }
    /// Cell size of the ground grid; values <= 0 or non-finite are ignored.
    void SetGridUnits(float units);
    float GetGridUnits() const { return gridUnits_; }

    /// Union of the visible instances' boxes, in world space.
    geom::TAabb<3, float> ComputeBoundingBox() const;

    struct Instance {
        int handle = 0;
        std::shared_ptr<Renderer> renderer;
        std::shared_ptr<Style> style;
        std::uint8_t flags = 0;
    };
    const std::vector<Instance>& GetInstances() const { return instances_; }

private:
    std::vector<Instance> instances_;
    int nextHandle_ = 1;
    glm::ivec4 viewport_;
    VisualCamera camera_;
    float fovY_;
    float nearPlane_ = 0.001f;
    float farPlane_ = 20.0f;
    std::vector<std::shared_ptr<Light>> lights_;
    bool axesVisible_ = true;
    int gridMode_ = GridMode::None;
    float gridUnits_ = 1.0f;
};

} // namespace vexa::draw
