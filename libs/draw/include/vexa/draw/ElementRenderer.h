#pragma once
// Draws an indexed triangle surface with the geometry style's render modes: points, wires,
// solid with flat or per-point normals, material, normal, checker, texture, per-point colour
// and matcap shading, back-face culling and normal display. Shapes and meshes derive from it.

#include <vexa/draw/GeometryStyle.h>
#include <vexa/draw/Renderer.h>

#include <tesk/Color.h>

#include <glm/vec2.hpp>
#include <glm/vec3.hpp>

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace plor {
class Texture;
}

namespace vexa::draw {

/// CPU form of a surface. Triangles index the vertex arrays; UVs and normals are optional
/// (normals are computed when missing).
struct SurfaceData {
    std::vector<glm::vec3> positions;
    std::vector<glm::vec3> normals;
    std::vector<glm::vec2> uvs;
    std::vector<std::uint32_t> triangles; ///< three indices per face
    /// Extra line segments drawn in wire modes besides the triangle edges (pairs of indices);
    /// used where a shape's outline is not made of triangles (the camera marker's optical axis).
    std::vector<std::uint32_t> lines;
};

class ElementRenderer : public Renderer {
public:
    ElementRenderer();
    explicit ElementRenderer(SurfaceData data);
    ~ElementRenderer() override;

    bool IsCompatibileWithStyle(const Style& style) const override;
    void Render(const RenderContext& context, const Style& style) override;
    geom::TAabb<3, float> GetBoundingBox() const override { return bounds_; }
    void ReleaseGpuResources() override;

    /// Replaces the surface; indices out of range are refused with a logged message and
    /// the renderer keeps its previous surface. Missing normals (or a normal array of the
    /// wrong size) are computed from the faces, weighted by their areas; UVs of the wrong
    /// size are dropped with a warning. The wire edges are gathered here, once. Custom
    /// colours survive only when the vertex count is unchanged.
    bool SetSurface(SurfaceData data);
    /// Per-vertex colours for ColorMode::PerPoint; the size must equal the vertex count.
    bool SetCustomColors(std::span<const tesk::Color3f> colors);
    bool SetCustomColors(std::vector<tesk::Color3f>&& colors);

    std::size_t GetVertexCount() const { return vertexCount_; }
    std::size_t GetTriangleCount() const { return triangleCount_; }
    /// Distinct edges drawn in wire modes: triangle edges plus the surface's extra lines.
    std::size_t GetEdgeCount() const { return edgeCount_; }
    bool HasUvs() const { return hasUvs_; }
    bool HasCustomColors() const { return hasCustomColors_; }

    /// Unique undirected edges of `triangles` and of the index pairs in `lines`, as index
    /// pairs (smaller index first), sorted; degenerate pairs are left out.
    static std::vector<std::uint32_t> CollectEdges(std::span<const std::uint32_t> triangles,
                                                   std::span<const std::uint32_t> lines);
    /// Per-vertex normals from the faces, each face weighted by its area; a vertex without
    /// faces gets +Z.
    static std::vector<glm::vec3> ComputeNormals(std::span<const glm::vec3> positions,
                                                 std::span<const std::uint32_t> triangles);

protected:
    /// A surface checked and completed for drawing, held until the next Render hands its
    /// arrays over to the GPU buffers as they are (no further copy).
    struct PreparedSurface {
        std::vector<glm::vec3> positions;
        /// One per vertex, or empty for a set of points without faces or normals: such
        /// points are shaded as if they faced the viewer.
        std::vector<glm::vec3> normals;
        /// One per vertex or empty.
        std::vector<glm::vec2> uvs;
        /// The triangles (three indices each), then the wire edges (index pairs).
        std::vector<std::uint32_t> indices;
        std::size_t triangleIndexCount = 0;
    };

    /// Takes a surface whose indices are all in range and whose normals and UVs are empty
    /// or one per vertex (the caller has checked); `bounds` is the box of its positions.
    /// Derived renderers that build these arrays straight from their own source use it to
    /// skip the intermediate SurfaceData and the checks they have already made.
    void SetPreparedSurface(PreparedSurface&& surface, const geom::TAabb<3, float>& bounds);

    /// The colour texture of ColorMode::Texture when the style holds none (a mesh's own
    /// albedo); null falls back to the checker.
    virtual plor::Texture* GetDefaultAlbedoTexture() { return nullptr; }

    struct Gpu;
    std::unique_ptr<Gpu> gpu_;
    PreparedSurface pending_;
    bool surfaceDirty_ = false;
    std::vector<tesk::Color3f> pendingColors_;
    bool colorsDirty_ = false;
    geom::TAabb<3, float> bounds_;
    std::size_t vertexCount_ = 0;
    std::size_t triangleCount_ = 0;
    std::size_t edgeCount_ = 0;
    bool hasUvs_ = false;
    bool hasCustomColors_ = false;
};

} // namespace vexa::draw
