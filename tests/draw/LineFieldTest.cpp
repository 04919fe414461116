// Line fields: the style's state block, the renderer's CPU side, and what it draws. The
// drawing tests need a display: run them under
// `xvfb-run -a -s "-noreset -screen 0 1280x1024x24" ctest ...`.

#include "GlTestSupport.h"
#include "LogCapture.h"

#include <vexa/draw/LineFieldRenderer.h>
#include <vexa/draw/LineFieldStyle.h>

#include <limits>

using namespace vexa::draw;
using namespace gl_test_support;

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr Rgba kBlack{0, 0, 0, 255};
constexpr Rgba kRed{255, 0, 0, 255};
constexpr Rgba kGreen{0, 255, 0, 255};
constexpr Rgba kBlue{0, 0, 255, 255};

/// Pixels of `colour`, with room for the blending at a line's edges.
auto Close(const Rgba& colour)
{
    return [colour](const Rgba& c) { return Near(c, colour, 40); };
}

TEST(LineFieldRendererTest, WorksWithoutContextAndDropsNonFiniteSegments)
{
    testing_support::LogCapture log;
    const std::vector<geom::LineSegment3> lines = {
        {glm::vec3(-1.0f, 0.0f, 0.0f), glm::vec3(1.0f, 2.0f, 0.0f)},
        {glm::vec3(kNaN, 0.0f, 0.0f), glm::vec3(50.0f, 50.0f, 50.0f)},
        {glm::vec3(0.0f, -3.0f, 1.0f), glm::vec3(0.5f, 0.0f, -1.0f)},
        {glm::vec3(0.0f), glm::vec3(0.0f, std::numeric_limits<float>::infinity(), 0.0f)},
    };
    auto renderer = std::make_unique<LineFieldRenderer>(lines);
    EXPECT_EQ(renderer->GetLineCount(), 2u);
    ASSERT_EQ(log.messages.size(), 1u);
    EXPECT_EQ(log.messages[0].level, rlog::Level::Warning);
    EXPECT_NE(log.messages[0].message.find("Dropped 2"), std::string::npos) << log.messages[0].message;

    // The dropped segments' far-away end points must not widen the box.
    const geom::Aabb3f box = renderer->GetBoundingBox();
    EXPECT_EQ(box.min, glm::vec3(-1.0f, -3.0f, -1.0f));
    EXPECT_EQ(box.max, glm::vec3(1.0f, 2.0f, 1.0f));

    const std::vector<tesk::Color3f> wrongCount(3);
    EXPECT_FALSE(renderer->SetLineColors(wrongCount));
    EXPECT_EQ(log.messages.size(), 2u);
    const std::vector<tesk::Color3f> forSource(4);
    EXPECT_TRUE(renderer->SetLineColors(forSource));
    const std::vector<tesk::Color3f> forKept(2);
    EXPECT_TRUE(renderer->SetLineColors(forKept));

    renderer->SetLines(std::vector<geom::LineSegment3>{});
    EXPECT_EQ(renderer->GetLineCount(), 0u);
    EXPECT_TRUE(renderer->GetBoundingBox().IsEmpty());
}

class LineFieldGlTest : public GlTest {
protected:
    Pixels Draw(LineFieldRenderer& renderer, const LineFieldStyle& style)
    {
        return DrawDirect([&] { renderer.Render(context_, style); }, kBlack);
    }

    static LineFieldStyle StyleOf(const tesk::Color3f& color, float width = 1.0f)
    {
        LineFieldStyle style;
        style.color = color;
        style.lineWidth = width;
        return style;
    }

    /// Rows of column `x` whose pixel is close to `colour`.
    static int RowsOf(const Pixels& pixels, int x, const Rgba& colour)
    {
        return pixels.Count(Close(colour), x, 0, x + 1, kSize);
    }

    RenderContext context_ = MakeContext({0.0f, 0.0f, 5.0f});
};

TEST_F(LineFieldGlTest, SegmentsCrossTheViewWithTheRequestedWidthAndAreCutAtTheNearPlane)
{
    LineFieldRenderer renderer(
        std::vector<geom::LineSegment3>{{glm::vec3(-10.0f, 0.0f, 0.0f), glm::vec3(10.0f, 0.0f, 0.0f)}});
    const LineFieldStyle thin = StyleOf({1.0f, 0.0f, 0.0f}, 1.0f);
    const Pixels thinPixels = Draw(renderer, thin);

    for (int x : {4, 64, 123}) {
        const int rows = RowsOf(thinPixels, x, kRed);
        EXPECT_GE(rows, 1) << "column " << x;
        EXPECT_LE(rows, 2) << "column " << x;
    }
    // The line lies on the middle rows of the view.
    EXPECT_GT(thinPixels.Count(Close(kRed), 0, 62, kSize, 66), kSize - 4);

    const LineFieldStyle thick = StyleOf({1.0f, 0.0f, 0.0f}, 9.0f);
    const Pixels thickPixels = Draw(renderer, thick);
    EXPECT_GE(RowsOf(thickPixels, 64, kRed), 8);
    EXPECT_LE(RowsOf(thickPixels, 64, kRed), 10);

    // A high-density screen doubles the width in framebuffer pixels.
    context_.pixelScale = 2.0f;
    const int doubled = RowsOf(Draw(renderer, thick), 64, kRed);
    EXPECT_GE(doubled, 17);
    EXPECT_LE(doubled, 19);

    // Runs below the camera from in front of it to far behind it. Projected without cutting,
    // the end behind the camera would flip to the top of the view.
    LineFieldRenderer through(
        std::vector<geom::LineSegment3>{{glm::vec3(0.0f, -1.0f, 0.0f), glm::vec3(0.0f, -1.0f, 50.0f)}});
    const Pixels cut = Draw(through, StyleOf({1.0f, 0.0f, 0.0f}, 3.0f));
    EXPECT_GT(cut.Count(Close(kRed), 0, 70, kSize, kSize), 20);
    EXPECT_EQ(cut.Count(Close(kRed), 0, 0, kSize, 60), 0);
}

TEST_F(LineFieldGlTest, OnTopDrawsOverNearerContent)
{
    // A very wide blue segment nearer to the camera stands in for a filled quad.
    LineFieldRenderer occluder(
        std::vector<geom::LineSegment3>{{glm::vec3(0.0f, -1.0f, 2.0f), glm::vec3(0.0f, 1.0f, 2.0f)}});
    const LineFieldStyle occluderStyle = StyleOf({0.0f, 0.0f, 1.0f}, 40.0f);
    LineFieldRenderer line(
        std::vector<geom::LineSegment3>{{glm::vec3(-10.0f, 0.0f, 0.0f), glm::vec3(10.0f, 0.0f, 0.0f)}});
    LineFieldStyle lineStyle = StyleOf({1.0f, 0.0f, 0.0f}, 3.0f);
    const auto drawBoth = [&] {
        occluder.Render(context_, occluderStyle);
        line.Render(context_, lineStyle);
    };

    Pixels pixels = DrawDirect(drawBoth, kBlack);
    EXPECT_TRUE(Looks(pixels.At(64, 64), kBlue));
    EXPECT_TRUE(Looks(pixels.At(10, 64), kRed, 40));

    lineStyle.onTop = true;
    pixels = DrawDirect(drawBoth, kBlack);
    EXPECT_TRUE(Looks(pixels.At(64, 64), kRed, 40));
    EXPECT_TRUE(Looks(pixels.At(64, 40), kBlue));
    // Drawing on top must not leave depth testing off for the content drawn after it.
    EXPECT_TRUE(gl::glIsEnabled(gl::GL_DEPTH_TEST) == gl::GL_TRUE);
}

TEST_F(LineFieldGlTest, SegmentColoursFollowTheStyleSwitch)
{
    testing_support::LogCapture log;
    LineFieldRenderer renderer(std::vector<geom::LineSegment3>{
        {glm::vec3(-10.0f, 1.0f, 0.0f), glm::vec3(10.0f, 1.0f, 0.0f)},
        {glm::vec3(kNaN, 0.0f, 0.0f), glm::vec3(1.0f, 0.0f, 0.0f)},
        {glm::vec3(-10.0f, -1.0f, 0.0f), glm::vec3(10.0f, -1.0f, 0.0f)},
    });
    // Colours given for the list as passed, including the dropped segment.
    const std::vector<tesk::Color3f> colors = {{0.0f, 1.0f, 0.0f}, {1.0f, 1.0f, 1.0f}, {0.0f, 0.0f, 1.0f}};
    ASSERT_TRUE(renderer.SetLineColors(colors));

    LineFieldStyle style = StyleOf({1.0f, 0.0f, 0.0f}, 5.0f);
    Pixels pixels = Draw(renderer, style);
    // y = +1 projects above the middle, y = -1 below it.
    EXPECT_GE(RowsOf(pixels, 64, kGreen), 4);
    EXPECT_GE(RowsOf(pixels, 64, kBlue), 4);
    EXPECT_EQ(RowsOf(pixels, 64, kRed), 0);
    EXPECT_EQ(pixels.Count(Close(kGreen), 0, kMid, kSize, kSize), 0);
    EXPECT_EQ(pixels.Count(Close(kBlue), 0, 0, kSize, kMid), 0);
    EXPECT_EQ(RowsOf(pixels, 64, Rgba{255, 255, 255, 255}), 0) << "the dropped segment's colour was used";

    style.useSegmentColors = false;
    pixels = Draw(renderer, style);
    EXPECT_GE(RowsOf(pixels, 64, kRed), 8);
    EXPECT_EQ(RowsOf(pixels, 64, kGreen), 0);

    // New segments forget the old colours.
    style.useSegmentColors = true;
    renderer.SetLines(
        std::vector<geom::LineSegment3>{{glm::vec3(-10.0f, 0.0f, 0.0f), glm::vec3(10.0f, 0.0f, 0.0f)}});
    pixels = Draw(renderer, style);
    EXPECT_GE(RowsOf(pixels, 64, kRed), 4);
    EXPECT_EQ(RowsOf(pixels, 64, kGreen) + RowsOf(pixels, 64, kBlue), 0);

    // An empty list or a hidden style draws nothing.
    renderer.SetLines(std::vector<geom::LineSegment3>{});
    EXPECT_EQ(Draw(renderer, style).CountDifferent(kBlack), 0);
    renderer.SetLines(
        std::vector<geom::LineSegment3>{{glm::vec3(-10.0f, 0.0f, 0.0f), glm::vec3(10.0f, 0.0f, 0.0f)}});
    style.visible = false;
    EXPECT_EQ(Draw(renderer, style).CountDifferent(kBlack), 0);
}

} // namespace
