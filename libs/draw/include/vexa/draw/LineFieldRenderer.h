#pragma once
#include <vexa/draw/LineFieldStyle.h>
#include <vexa/draw/Renderer.h>

#include <tesk/Color.h>
#include <tesk/geom/LineSegment.h>

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace vexa::draw {

/// Line segments in world space (debug lines, normals, frusta). Lines wider than the driver
/// allows are drawn as screen-facing quads so every width works in a core context.
class LineFieldRenderer : public Renderer {
public:
    LineFieldRenderer();
    explicit LineFieldRenderer(std::span<const geom::LineSegment3> lines);
    ~LineFieldRenderer() override;

    /// Replaces the segments (uploaded at the next Render). Segments with a non-finite
    /// endpoint are dropped with a warning.
    void SetLines(std::span<const geom::LineSegment3> lines);
    void SetLines(const std::vector<geom::LineSegment3>& lines)
    {
        SetLines(std::span<const geom::LineSegment3>(lines));
    }
    /// Optional colour per segment; cleared by SetLines. Size must equal the segment count
    /// (either as given to SetLines or after non-finite segments were dropped).
    bool SetLineColors(std::span<const tesk::Color3f> colors);
    std::size_t GetLineCount() const { return lineCount_; }

    bool IsCompatibileWithStyle(const Style& style) const override;
    void Render(const RenderContext& context, const Style& style) override;
    geom::TAabb<3, float> GetBoundingBox() const override { return bounds_; }
    RenderPass GetPass() const override { return RenderPass::Overlay; }
    void ReleaseGpuResources() override;

private:
    /// The vertex array (which holds the CPU copy until the first Render uploads it) and the
    /// program's cached uniform locations.
    struct Gpu;
    std::unique_ptr<Gpu> gpu_;
    /// For each kept segment its index in the list given to SetLines; empty when none was
    /// dropped. Lets SetLineColors take colours for the list as the caller knows it.
    std::vector<std::uint32_t> keptIndices_;
    std::size_t sourceCount_ = 0;
    std::size_t lineCount_ = 0;
    bool hasColors_ = false;
    geom::TAabb<3, float> bounds_;
};

} // namespace vexa::draw
