#pragma once
#include <vexa/draw/GraphStyle.h>
#include <vexa/draw/Renderer.h>

#include <glm/vec2.hpp>

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace vexa::draw {

/// A 2D line graph of points, scaled to fill its view (screen pass): the polyline through the
/// points in their order, optional round markers, a frame, the zero axes when they fall inside
/// the range, and min / max labels of both axes.
///
/// Each axis spans the data's min..max plus 5% on both sides; a constant series gets a
/// range of one unit centred on its value. Points with a non-finite coordinate are left out
/// (logged) and break the line where they were, like missing samples.
class GraphRenderer : public Renderer {
public:
    GraphRenderer();
    explicit GraphRenderer(std::span<const glm::vec2> points);
    ~GraphRenderer() override;

    /// Replaces the points (uploaded at the next Render).
    void SetPoints(std::span<const glm::vec2> points);
    void SetPoints(const std::vector<glm::vec2>& points) { SetPoints(std::span<const glm::vec2>(points)); }

    /// Points kept (finite ones).
    std::size_t GetPointCount() const { return pointCount_; }
    /// Bounds of the kept points; both zero when there are none.
    glm::vec2 GetDataMin() const { return dataMin_; }
    glm::vec2 GetDataMax() const { return dataMax_; }
    /// The range each axis shows (data bounds with the margin, or the unit range).
    glm::dvec2 GetRangeMin() const { return rangeMin_; }
    glm::dvec2 GetRangeMax() const { return rangeMax_; }

    bool IsCompatibileWithStyle(const Style& style) const override;
    void Render(const RenderContext& context, const Style& style) override;
    RenderPass GetPass() const override { return RenderPass::Screen; }
    /// Also forgets the points (the vertex buffers held the only copy).
    void ReleaseGpuResources() override;

private:
    /// The vertex arrays (points in the unit square of the ranges; frame and axis segments),
    /// holding their CPU copies until the first Render, and the cached uniform locations.
    struct Gpu;
    /// Consecutive finite points drawn as one line strip.
    struct Run {
        std::uint32_t first;
        std::uint32_t count;
    };
    void BuildDecoration();
    void PrintLabels(const RenderContext& context, const GraphStyle& style, const glm::vec4& plot) const;

    std::unique_ptr<Gpu> gpu_;
    std::vector<Run> runs_;
    std::size_t pointCount_ = 0;
    /// Frame segments come first in the decoration array, then up to two zero axes.
    std::size_t axisVertexCount_ = 0;
    glm::vec2 dataMin_{0.0f};
    glm::vec2 dataMax_{0.0f};
    glm::dvec2 rangeMin_{0.0};
    glm::dvec2 rangeMax_{1.0};
    /// Formatted once per data set so that drawing them allocates nothing.
    std::string xMinLabel_;
    std::string xMaxLabel_;
    std::string yMinLabel_;
    std::string yMaxLabel_;
};

} // namespace vexa::draw
