#pragma once
#include <vexa/draw/ElementRenderer.h>
#include <vexa/draw/GeometryName.h>

namespace vexa::draw {

/// A built-in shape, generated on the CPU at construction (no GL needed). Sizes and
/// placement of each shape are listed with GeometryName.
class GeometryRenderer : public ElementRenderer {
public:
    /// An unknown name is logged and drawn as a box.
    explicit GeometryRenderer(GeometryName name);
    GeometryName GetGeometryName() const { return name_; }

    /// The surface of a built-in shape (also used by tests and the gallery): positions,
    /// normals and UVs for every vertex, counter-clockwise triangles seen from outside.
    /// An unknown name gives an empty surface (logged).
    static SurfaceData MakeSurface(GeometryName name);

    /// Also rebuilds the shape on the CPU, so the next Render draws it again.
    void ReleaseGpuResources() override;

private:
    GeometryName name_;
};

} // namespace vexa::draw
