#pragma once
// The scene helpers every view offers: the global axes, a small axis gizmo in the viewport's
// bottom-left corner, and the ground grid in one of the coordinate planes. Internal to the
// render system, which draws them once per scene after the opaque content.

#include <plor/ArrayObject.h>

#include <glm/mat4x4.hpp>

namespace vexa::draw {

struct RenderContext;

class HelperRenderer {
public:
    /// Grid half extent in cells: the grid spans this many cells each way from the origin.
    static constexpr int kGridHalfCells = 20;

    HelperRenderer();
    ~HelperRenderer();
    HelperRenderer(const HelperRenderer&) = delete;
    HelperRenderer& operator=(const HelperRenderer&) = delete;

    /// Draws the grid and the axes of `context.scene` as the scene asks for them.
    void Render(const RenderContext& context);

    /// Maps the grid's own XY plane (in cells) onto the scene's grid plane and cell size.
    static glm::mat4 GridModelMatrix(int gridMode, float units);

    void ReleaseGpuResources();

private:
    void RenderGrid(const RenderContext& context, int gridMode, float units);
    void RenderAxes(const RenderContext& context);
    void RenderGizmo(const RenderContext& context);

    plor::ArrayObject grid_;
    plor::ArrayObject axes_;
};

} // namespace vexa::draw
