// Pictures and plots as a person meets them: an image file opened in the viewer and mirrored
// from its panel, and the image_graph example's live graph climbing across its view area.

#include "ViewerCase.h"

#include <algorithm>
#include <vector>

namespace e2e {
namespace {

/// The graph style's line colour (0.25, 0.65, 1.0).
bool IsGraphLine(Rgb c)
{
    return Near(c, {64, 166, 255}, 40);
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
        return FindBlob(p, layout.RenderArea(), IsRed).centroid.x -
               FindBlob(p, layout.RenderArea(), IsBlue).centroid.x;
    }
};

TEST_F(PlotView, TickingMirrorXInThePanelSwapsTheHalvesOfAnOpenedPng)
{
    // A 64 x 32 PNG, red on the left half and blue on the right.
    const fs::path file = CaseDirectory() / "halves.png";
    Picture halves(64, 32);
    ForEachPixel(halves, halves.Bounds(), [&](int px, int py) {
        halves.Set(px, py, px < 32 ? Rgb{255, 0, 0} : Rgb{0, 0, 255});
    });
    ASSERT_TRUE(halves.SavePng(file.string()));
    const Picture opened = OpenHalves(file);
    ASSERT_FALSE(opened.Empty()) << "the picture did not appear; output:\n" << Output();
    EXPECT_LT(RedRightOfBlue(opened), -100.0) << "red should be on the left";

    const std::vector<PanelHeader> headers = FindPanelHeaders(opened, layout);
    ASSERT_EQ(headers.size(), 1u) << "expected the image's panel";
    // "Mirror X" is the panel's fourth row: rows start 10 px under the header and are 26 px
    // high with 2 px between them; the click lands on the checkbox at the row's left end.
    const Rect column = layout.PanelColumn();
    Click({column.x0 + 18.0, headers[0].rect.y1 + 10.0 + 3 * 28.0 + 13.0});
    Rest();

    const Picture mirrored =
        Keep("mirrored", WaitForSettled([&](const Picture& p) { return RedRightOfBlue(p) > 100.0; }));
    ASSERT_FALSE(mirrored.Empty()) << "clicking \"Mirror X\" did not swap the halves; red is now "
                                   << RedRightOfBlue(Grab()) << " px right of blue";
    EXPECT_GT(FindBlob(mirrored, layout.RenderArea(), IsRed).count, 5000u);
}

TEST_F(PlotView, TheExamplesGraphRisesAcrossItsViewAreaBesideTheImage)
{
    ASSERT_TRUE(Launch(E2E_IMAGE_GRAPH_EXAMPLE, {}));
    const Rect left{0, 0, layout.area.x1 / 2, layout.area.y1},
        right{layout.area.x1 / 2, 0, layout.area.x1, layout.area.y1};
    // Samples keep arriving, so the picture never holds still: take the first complete one.
    const Picture shown =
        Keep("shown", WaitUntil(
                          [&](const Picture& p) {
                              return FindBlob(p, right, IsGraphLine).count > 300 &&
                                     FindBlob(p, left, [](Rgb c) {
                                         return std::max({c.r, c.g, c.b}) - std::min({c.r, c.g, c.b}) > 80;
                                     }).count > 20000;
                          },
                          30s));
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
