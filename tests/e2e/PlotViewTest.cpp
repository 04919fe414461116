// Pictures and plots as a person meets them: an image file opened in the viewer and mirrored
// from its panel, and the image_graph example's live graph climbing across its view area.

#include "ViewerCase.h"

#include <stb/stb_image_write.h>

#include <algorithm>
#include <vector>

namespace e2e {
namespace {

bool IsRed(Rgb c)
{
    return c.r > 180 && c.g < 70 && c.b < 70;
}
bool IsBlue(Rgb c)
{
    return c.b > 180 && c.r < 70 && c.g < 70;
}
/// The graph style's line colour (0.25, 0.65, 1.0).
bool IsGraphLine(Rgb c)
{
    return Near(c, {64, 166, 255}, 40);
}

/// Writes a 64 x 32 PNG, red on the left half and blue on the right.
bool WriteHalves(const fs::path& file)
{
    std::vector<unsigned char> rgb(64 * 32 * 3, 0);
    for (int y = 0; y < 32; ++y)
        for (int x = 0; x < 64; ++x)
            rgb[static_cast<std::size_t>((y * 64 + x) * 3 + (x < 32 ? 0 : 2))] = 255;
    return stbi_write_png(file.c_str(), 64, 32, 3, rgb.data(), 64 * 3) != 0;
}

class PlotView : public ViewerCase {
protected:
    /// Opens `file` in the viewer and waits for both halves to be drawn.
    Picture OpenHalves(const fs::path& file)
    {
        if (!LaunchViewer({file.string()}))
            return {};
        return WaitForWindow(
            [&](const Picture& p) {
                return FindBlob(p, layout.RenderArea(), IsRed).count > 5000 &&
                       FindBlob(p, layout.RenderArea(), IsBlue).count > 5000;
            },
            "opened");
    }
    /// How far right of the blue half's middle the red half's middle lies (window pixels).
    double RedRightOfBlue(const Picture& p) const
    {
        return FindBlob(p, layout.RenderArea(), IsRed).centroid.x - FindBlob(p, layout.RenderArea(), IsBlue).centroid.x;
    }
};

TEST_F(PlotView, TickingMirrorXInThePanelSwapsTheHalvesOfAnOpenedPng)
{
    const fs::path file = CaseDirectory() / "halves.png";
    ASSERT_TRUE(WriteHalves(file));
    const Picture opened = OpenHalves(file);
    ASSERT_FALSE(opened.Empty()) << "the picture did not appear; output:\n" << Output();
    EXPECT_LT(RedRightOfBlue(opened), -100.0) << "red should be on the left";

    const std::vector<PanelHeader> headers = FindPanelHeaders(opened, layout);
    ASSERT_EQ(headers.size(), 1u) << "expected the image's panel";
    // "Mirror X" is the panel's fourth row: rows start 10 px under the header and are 26 px
    // high with 2 px between them; the click lands on the checkbox at the row's left end.
    const Rect column = layout.PanelColumn();
    Click({column.x0 + 18.0, headers[0].rect.y1 + 10.0 + 3 * 28.0 + 13.0});
    x->MoveTo(layout.RenderArea().x0 + 10, layout.RenderArea().y1 - 10);

    const Picture mirrored =
        Keep("mirrored", WaitForSettled([&](const Picture& p) { return RedRightOfBlue(p) > 100.0; }));
    ASSERT_FALSE(mirrored.Empty()) << "clicking \"Mirror X\" did not swap the halves; red is now "
                                   << RedRightOfBlue(Grab()) << " px right of blue";
    EXPECT_GT(FindBlob(mirrored, layout.RenderArea(), IsRed).count, 5000u);
}

TEST_F(PlotView, TheExamplesGraphRisesAcrossItsViewAreaBesideTheImage)
{
    ASSERT_TRUE(Launch(E2E_IMAGE_GRAPH_EXAMPLE, {}));
    const Rect window = x->WindowArea();
    layout.area = {0, 0, window.Width(), window.Height()};
    const Rect left{0, 0, window.Width() / 2, window.Height()};
    const Rect right{window.Width() / 2, 0, window.Width(), window.Height()};
    // Samples keep arriving, so the picture never holds still: take the first complete one.
    const Picture shown = Keep("shown", WaitUntil([&](const Picture& p) {
        return FindBlob(p, right, IsGraphLine).count > 300 &&
               FindBlob(p, left, [](Rgb c) { return std::max({c.r, c.g, c.b}) - std::min({c.r, c.g, c.b}) > 80; })
                       .count > 20000;
    }, 30s));
    ASSERT_FALSE(shown.Empty()) << "the graph and the image did not both appear; output:\n" << Output();

    // The line's pixels in the first and last quarter of the view area: higher on screen
    // (a smaller row) on the right.
    const int quarter = right.Width() / 4;
    const Blob early = FindBlob(shown, {right.x0, 0, right.x0 + quarter, right.y1}, IsGraphLine);
    const Blob late = FindBlob(shown, {right.x1 - quarter, 0, right.x1, right.y1}, IsGraphLine);
    ASSERT_GT(early.count, 20u);
    ASSERT_GT(late.count, 20u);
    EXPECT_GT(early.centroid.y, late.centroid.y + 0.3 * right.Height()) << "the line does not climb";

    // Live: the samples arriving change the plot.
    const Picture later =
        Keep("later", WaitUntil([&](const Picture& p) { return CountDifferences(shown, p, right) > 200; }));
    EXPECT_FALSE(later.Empty()) << "the graph did not change while the example ran";
}

} // namespace
} // namespace e2e
