#pragma once
// A renderer owns the GPU form of one piece of content and draws it with a style. Renderers
// are built between frames with no GL context: they keep their data on the CPU and upload it
// at the first Render (or after their data changed), then drop the CPU copy they no longer
// need.

#include <tesk/geom/Aabb.h>

namespace vexa::draw {

class Style;
struct RenderContext;

/// When an instance is drawn within a scene's frame.
enum class RenderPass {
    Opaque,  ///< depth-tested 3D content
    Overlay, ///< 3D helpers drawn after the content
    Screen   ///< 2D content in viewport pixels (images, graphs), drawn last
};

class Renderer {
public:
    Renderer() = default;
    virtual ~Renderer() = default;
    Renderer(const Renderer&) = delete;
    Renderer& operator=(const Renderer&) = delete;

    /// Whether `style` is the style type this renderer draws with. A scene refuses
    /// instances whose style does not fit.
    virtual bool IsCompatibileWithStyle(const Style& style) const = 0;

    /// Draws with the context current. Must not allocate once the GPU objects exist.
    virtual void Render(const RenderContext& context, const Style& style) = 0;

    /// Bounds of the content in model space; an invalid box when unknown or empty.
    virtual geom::TAabb<3, float> GetBoundingBox() const { return {}; }

    virtual RenderPass GetPass() const { return RenderPass::Opaque; }

    /// Frees GPU objects (deferred when no context is current); the next Render
    /// re-uploads if the CPU data is still there.
    virtual void ReleaseGpuResources() {}
};

} // namespace vexa::draw
