#pragma once
// Draws a point cloud with a PointCloudStyle: round point sprites in the material colour,
// per-point colours or normal colours, lit (as small discs facing along their normals) when
// the cloud has normals, with optional back-face culling and normal lines.
//
// Memory: the constructor copies the positions (and normals) once, contiguously, into the
// pending vertex buffers; the first Render uploads them and frees the CPU copies, so from
// then on the renderer holds only counts and bounds while the GPU holds the points. A camera
// move therefore draws without uploading anything. Per-point colours are kept on the CPU
// only until their upload, as bytes (3 a point), whatever form they came in.
//
// Detail: when the render context carries a point budget (the camera is moving), the cloud
// draws an evenly spread subset of about that many points, the same one every frame, through
// an index list (ShuffledOrder) made the first time it is needed.
//
// Points with a non-finite coordinate stay in the buffers (so per-point colours keep their
// indices) and are dropped by the vertex shader; the bounding box skips them.
//
// Picking reads the positions where they are at that moment: the pending copy before the
// first Render, the vertex buffer mapped for reading after it, so no second copy is kept
// for it.

#include <vexa/draw/PointCloudStyle.h>
#include <vexa/draw/Renderer.h>

#include <tesk/Color.h>
#include <tesk/PointCloud.h>

#include <glm/mat4x4.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace plor {
class OwnedBytes;
}

namespace vexa::draw {

class PointCloudRenderer : public Renderer {
public:
    /// An empty cloud (draws nothing).
    PointCloudRenderer();
    /// Copies the positions and normals of `cloud`; its properties are not read (their owner
    /// turns them into colours and calls SetColors). No GL context needed. An empty cloud,
    /// or one with non-finite points, is accepted with a warning.
    explicit PointCloudRenderer(const tesk::PointCloud& cloud);
    ~PointCloudRenderer() override;

    /// One colour per point, used by ColorMode::PerPoint. Any other size is refused (logged)
    /// and the previous colours stay. Only the colour buffer is uploaded again (in place when
    /// colours were set before).
    bool SetColors(std::span<const tesk::Color3f> colors);
    bool SetColors(std::span<const tesk::Color3b> colors);
    /// Same, taking a byte array over without a copy.
    bool SetColors(std::vector<tesk::Color3b>&& colors);
    /// Back to the material colour in ColorMode::PerPoint.
    void ClearColors();

    std::size_t GetPointCount() const { return pointCount_; }
    /// Points with a NaN or infinite coordinate (kept in the count, never drawn).
    std::size_t GetNonFiniteCount() const { return nonFiniteCount_; }
    bool HasNormals() const { return hasNormals_; }
    bool HasColors() const { return hasColors_; }

    /// True while some data still waits on the CPU for its upload at the next Render.
    bool HasPendingData() const;
    /// Bytes of point data held on the CPU: the pending buffers before the first Render (or
    /// after SetColors), 0 once everything is on the GPU.
    std::size_t GetCpuDataBytes() const;

    /// The point drawn under `cursor` (see PickPoint): `clipFromPoints` is projection x view x
    /// the style's transform, `viewport` the scene's (x0, y0, x1, y1) and `cursor` the pointer,
    /// both in window pixels from the top-left corner. Writes the point's position (as given
    /// to the renderer) to `position` when asked. After the first Render it reads the vertex
    /// buffer, so the context must be current. An empty or released renderer finds nothing.
    std::optional<std::size_t> Pick(const glm::mat4& clipFromPoints, const glm::ivec4& viewport,
                                    glm::vec2 cursor, float radius, glm::vec3* position = nullptr) const;

    bool IsCompatibileWithStyle(const Style& style) const override;
    void Render(const RenderContext& context, const Style& style) override;
    /// Points the last Render drew: all of them, or the subset a point budget allowed.
    std::size_t GetDrawnCount() const { return drawnCount_; }
    /// Box of the finite points in model space; empty when there is none.
    geom::TAabb<3, float> GetBoundingBox() const override { return bounds_; }
    /// Frees the GPU buffers. The points were dropped from the CPU at upload, so the renderer
    /// draws nothing afterwards: build a new one from the cloud.
    void ReleaseGpuResources() override;

private:
    struct Gpu;
    /// How many points to draw under `budget` (0: all), filling the runs when it is a subset.
    std::size_t PlanDraw(std::size_t budget);
    void DrawPoints(std::size_t drawn);
    void StoreColors(std::unique_ptr<plor::OwnedBytes> colors);

    std::unique_ptr<Gpu> gpu_;
    std::size_t drawnCount_ = 0;
    std::size_t pointCount_ = 0;
    std::size_t nonFiniteCount_ = 0;
    bool hasNormals_ = false;
    bool hasColors_ = false;
    bool released_ = false;
    geom::TAabb<3, float> bounds_;
};

} // namespace vexa::draw
