// Keyboard shortcuts and the sidebar arrow of the viewer, as a person uses them.

#include "ViewerCase.h"

#include <cmath>

namespace e2e {
namespace {

/// Share of the pixels of `area` that show `dimmed` as `original` under a black overlay of
/// alpha AA (170 of 255): each channel keeps a third.
double DimmedShare(const Picture& original, const Picture& dimmed, const Rect& area)
{
    std::size_t matching = 0, total = 0;
    for (int y = std::max(area.y0, 0); y < std::min(area.y1, original.Height()); ++y)
        for (int x = std::max(area.x0, 0); x < std::min(area.x1, original.Width()); ++x)
        {
            const Rgb a = original.At(x, y), b = dimmed.At(x, y);
            const auto third = [](int v) { return static_cast<int>(std::lround(v * 85.0 / 255.0)); };
            ++total;
            if (Near(b, {static_cast<std::uint8_t>(third(a.r)), static_cast<std::uint8_t>(third(a.g)),
                         static_cast<std::uint8_t>(third(a.b))},
                     3))
                ++matching;
        }
    return total == 0 ? 0.0 : static_cast<double>(matching) / static_cast<double>(total);
}

/// Share of a row (or column) drawn in the separator colour RGB (26,26,26).
double SeparatorShare(const Picture& picture, bool row, int index)
{
    const int length = row ? picture.Width() : picture.Height();
    int count = 0;
    for (int i = 0; i < length; ++i)
        if (Near(row ? picture.At(i, index) : picture.At(index, i), {26, 26, 26}, 1))
            ++count;
    return static_cast<double>(count) / length;
}

/// The best separator share of the two rows (columns) around the middle: an even size has
/// no single middle line.
double MiddleSeparatorShare(const Picture& picture, bool row)
{
    const int middle = (row ? picture.Height() : picture.Width()) / 2;
    return std::max(SeparatorShare(picture, row, middle - 1), SeparatorShare(picture, row, middle));
}

class Shortcuts : public ViewerCase {};
class SidebarArrow : public ViewerCase {};

TEST_F(Shortcuts, TabDimsTheWindowAndAChosenTileSplitsIt)
{
    ASSERT_NO_FATAL_FAILURE(OpenClusters());
    const int w = start.Width(), h = start.Height();
    ASSERT_LT(MiddleSeparatorShare(start, true), 0.1) << "one view area has no middle separator";

    x->MoveTo(w / 10, h * 9 / 10);
    x->Tap("Tab");
    const Picture chooser = WaitForChange(start, start.Bounds());
    ASSERT_FALSE(chooser.Empty()) << "Tab did not open the layout chooser";
    Keep("chooser", chooser);
    // The whole window dims, the 3D area as much as the sidebar; the tiles and their title
    // sit in the middle band, which is left out.
    const Rect above{0, 0, w, h / 2 - 110}, below{0, h / 2 + 70, w, h};
    EXPECT_GE(DimmedShare(start, chooser, above), 0.95);
    EXPECT_GE(DimmedShare(start, chooser, below), 0.95);

    // The four tiles, 136 px wide and 16 px apart, stand centred in the window; "Quad Split"
    // is the last. Hovering first lights the tile, so the click lands on a laid-out chooser.
    const int quadX = w / 2 + static_cast<int>(1.5 * (136 + 16)), quadY = h / 2;
    x->MoveTo(quadX, quadY);
    const Picture hovered = WaitForChange(chooser, {quadX - 60, quadY - 55, quadX + 60, quadY + 55});
    Keep("quad-tile-hovered", hovered);
    x->Click(Button::Left, quadX, quadY);
    x->MoveTo(w / 10, h * 9 / 10);
    const Picture quad = WaitForSettled(
        [](const Picture& p) { return MiddleSeparatorShare(p, true) >= 0.9 && MiddleSeparatorShare(p, false) >= 0.9; },
        15s);
    Keep("after-quad-click", quad);
    ASSERT_FALSE(quad.Empty()) << "no separator lines across the window's middle row and column after choosing "
                                  "\"Quad Split\"; row share "
                               << MiddleSeparatorShare(Grab(), true) << ", column share "
                               << MiddleSeparatorShare(Grab(), false);
    // The overlay is gone: the top band is no longer a dimmed copy of anything as dark.
    EXPECT_GT(MeanBrightness(quad, above), 0.6 * MeanBrightness(start, above));
}

TEST_F(Shortcuts, F12SavesTheWindowAsPng)
{
    ASSERT_NO_FATAL_FAILURE(OpenClusters());
    x->MoveTo(start.Width() / 10, start.Height() * 9 / 10);
    x->Tap("F12");

    const fs::path folder = WorkingDirectory() / "screenshots";
    fs::path saved;
    const auto found = [&] {
        std::error_code error;
        for (const auto& entry : fs::directory_iterator(folder, error))
            if (entry.path().extension() == ".png")
                saved = entry.path();
        return !saved.empty();
    };
    ASSERT_TRUE(WaitFor(found, 15s)) << "no PNG appeared in " << folder << "; output:\n" << Output();
    XSession::Pause(500ms); // let the writer finish the file

    const Picture file = Picture::LoadPng(saved.string());
    ASSERT_FALSE(file.Empty()) << saved << " is not a readable PNG";
    Keep("screenshot-file", file);
    EXPECT_EQ(file.Width(), start.Width());
    EXPECT_EQ(file.Height(), start.Height());
    // It shows what the screen showed: the balls in the same places.
    const ClusterLayout shown = Measure(start), stored = Measure(file);
    ASSERT_TRUE(stored.AllVisible()) << stored.Describe();
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_LE(Distance(shown.balls[i].centroid, stored.balls[i].centroid), 2.0)
            << "screen: " << shown.Describe() << "\nfile:   " << stored.Describe();
}

TEST_F(Shortcuts, RReloadsTheShadersAndSaysSo)
{
    ASSERT_NO_FATAL_FAILURE(OpenClusters());
    x->MoveTo(start.Width() / 10, start.Height() * 9 / 10);
    x->Tap("r");

    EXPECT_TRUE(WaitForOutput("Shaders reloaded", 15s)) << "the reload was not logged; output:\n" << Output();
    Rect strip;
    EXPECT_FALSE(WaitForNotice(strip).Empty()) << "no notice appeared at the bottom of the window";
    // The reloaded programs still draw the points.
    const ClusterLayout after = Measure(Grab());
    EXPECT_TRUE(after.AllVisible()) << after.Describe();
}

TEST_F(SidebarArrow, HidesAndShowsTheSidebar)
{
    ASSERT_NO_FATAL_FAILURE(OpenClusters());
    const int w = start.Width(), h = start.Height();
    const Point rest{w / 10.0, h * 0.9};
    ASSERT_FALSE(FindPanelHeaders(start, layout).empty()) << "the sidebar shows no panel to begin with";

    const Rect arrow = FindButtonOnRow(start, layout.RenderArea(), layout.area.y0 + 6);
    ASSERT_GT(arrow.Width(), 0) << "no arrow button at the top right of the 3D area";
    EXPECT_EQ(arrow.x1, layout.SidebarToggle().x1) << "the arrow should sit just left of the sidebar";
    ClickCentre(arrow);
    x->MoveTo(static_cast<int>(rest.x), static_cast<int>(rest.y));
    const Picture hidden = WaitForSettled([&](const Picture& p) { return FindPanelHeaders(p, layout).empty(); }, 15s);
    Keep("hidden", hidden);
    ASSERT_FALSE(hidden.Empty()) << "the sidebar's panel is still shown after clicking the arrow";
    // The 3D area takes the whole width: the scene's middle moves to the window's middle.
    ViewAreaLayout wide = layout;
    wide.sidebarVisible = false;
    // The arrow stays reachable at the top right of the now wider 3D area.
    const Rect back = FindButtonOnRow(hidden, wide.RenderArea(), layout.area.y0 + 6);
    ASSERT_GT(back.Width(), 0) << "no arrow button to bring the sidebar back";
    const ClusterLayout spread = MeasureClusters(hidden, wide.RenderArea(), {back});
    ASSERT_TRUE(spread.AllVisible()) << spread.Describe();
    EXPECT_NEAR(spread.Mean().x, w / 2.0, 0.05 * w) << spread.Describe();

    ClickCentre(back);
    x->MoveTo(static_cast<int>(rest.x), static_cast<int>(rest.y));
    const Picture shown = WaitForSettled([&](const Picture& p) { return !FindPanelHeaders(p, layout).empty(); }, 15s);
    Keep("shown-again", shown);
    ASSERT_FALSE(shown.Empty()) << "the second click did not bring the sidebar back";
    const ClusterLayout again = Measure(shown), before = Measure(start);
    EXPECT_LE(Distance(again.Mean(), before.Mean()), 3.0) << Compare(before, again);
    EXPECT_EQ(CountDifferences(start, shown, layout.Sidebar()), 0u) << "the sidebar should look as it did";
}

} // namespace
} // namespace e2e
