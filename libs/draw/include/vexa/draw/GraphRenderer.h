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
/// the range, and on both axes ticks at round values with faint grid lines and labels.
///
/// Each axis spans the data's min..max plus 5% on both sides; a constant series gets a
/// range of one unit centred on its value. Points with a non-finite coordinate are left out
/// and break the line where they were: that is how a host marks missing samples, so a live
/// graph with gaps does not fill the log.
class GraphRenderer : public Renderer {
public:
    /// The ticks of one axis: `count` values first, first + step, ... inside the shown range.
    struct AxisTicks {
        double first = 0.0;
        double step = 0.0;
        int count = 0;

        double At(int index) const { return first + step * index; }
        bool operator==(const AxisTicks&) const = default;
    };
    /// Most ticks on one axis.
    static constexpr int kMaxTicks = 7;
    /// Window pixels wanted between neighbouring ticks of the x and y axes (x labels are wider).
    static constexpr float kTickSpacingX = 80.0f;
    static constexpr float kTickSpacingY = 50.0f;

    /// Ticks for an axis showing low..high over `pixels` window pixels: a step of 1, 2 or 5
    /// times a power of ten giving about pixels / spacing ticks (2 to kMaxTicks), each at a
    /// whole multiple of the step. None for an empty or non-finite range or no pixels.
    static AxisTicks ChooseTicks(double low, double high, float pixels, float spacing);
    /// `value` (one of `ticks`) with just the digits the step needs ("0.25", "-3", "1500");
    /// axes reaching 1e6 or with steps below 1e-4 use exponents ("1e+06", "2.5e-05").
    static std::string FormatTick(double value, const AxisTicks& ticks);

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
    /// Ticks, labels and decoration for a plot of `plotSize` window pixels.
    void LayOutTicks(const glm::vec2& plotSize);
    void BuildDecoration(const glm::vec2& plotSize);
    void PrintLabels(const RenderContext& context, const GraphStyle& style, const glm::vec4& plot) const;

    std::unique_ptr<Gpu> gpu_;
    std::vector<Run> runs_;
    std::size_t pointCount_ = 0;
    /// The decoration array holds the grid lines, then the frame with its tick marks, then up
    /// to two zero axes.
    std::size_t gridVertexCount_ = 0;
    std::size_t frameVertexCount_ = 0;
    std::size_t axisVertexCount_ = 0;
    glm::vec2 dataMin_{0.0f};
    glm::vec2 dataMax_{0.0f};
    glm::dvec2 rangeMin_{0.0};
    glm::dvec2 rangeMax_{1.0};
    /// The plot size (window pixels) the ticks were laid out for; negative when the data
    /// changed since.
    glm::vec2 laidOutFor_{-1.0f};
    AxisTicks xTicks_;
    AxisTicks yTicks_;
    /// Formatted when the data or the plot size changes, so that drawing them allocates nothing.
    std::vector<std::string> xLabels_;
    std::vector<std::string> yLabels_;
};

} // namespace vexa::draw
