// Keyboard shortcuts and the sidebar arrow of the viewer, as a person uses them.

#include "ViewerCase.h"

#include <cmath>

namespace e2e {
namespace {

/// Share of the pixels of `area` that show `dimmed` as `original` under a black overlay of
/// alpha AA (170 of 255): each channel keeps a third.
double DimmedShare(const Picture& original, const Picture& dimmed, const Rect& area)
{
    const auto third = [](std::uint8_t v) {
        return static_cast<std::uint8_t>(std::lround(v * 85.0 / 255.0));
    };
    double matching = 0, total = 0;
    ForEachPixel(original, area, [&](int x, int y) {
        const Rgb a = original.At(x, y);
        ++total, matching += Near(dimmed.At(x, y), {third(a.r), third(a.g), third(a.b)}, 3) ? 1 : 0;
    });
    return total == 0 ? 0.0 : matching / total;
}

/// The larger share of the two rows (columns) around the middle drawn in the separator colour
/// RGB (26,26,26): an even size has no single middle line.
double MiddleSeparatorShare(const Picture& picture, bool row)
{
    const int length = row ? picture.Width() : picture.Height(),
              middle = (row ? picture.Height() : picture.Width()) / 2;
    int best = 0;
    for (int index : {middle - 1, middle}) {
        int count = 0;
        for (int i = 0; i < length; ++i)
            count += Near(row ? picture.At(i, index) : picture.At(index, i), {26, 26, 26}, 1) ? 1 : 0;
        best = std::max(best, count);
    }
    return static_cast<double>(best) / length;
}

class Window : public ViewerCase {};

TEST_F(Window, TheArrowHidesTheSidebarF12SavesAPngRReloadsTheShadersAndTabSplitsTheWindow)
{
    ASSERT_NO_FATAL_FAILURE(OpenClusters());
    ASSERT_FALSE(FindPanelHeaders(start, layout).empty()) << "the sidebar shows no panel to begin with";
    ClickCentre(layout.SidebarToggle());
    Rest();
    const auto panelShown = [&](const Picture& p) { return !FindPanelHeaders(p, layout).empty(); };
    const Picture hidden = Keep("hidden", WaitForSettled(std::not_fn(panelShown)));
    ASSERT_FALSE(hidden.Empty()) << "the sidebar's panel is still shown after clicking the arrow";
    // The 3D area takes the whole width: the scene's middle moves to the window's middle.
    ViewAreaLayout wide = layout;
    wide.sidebarVisible = false;
    const ClusterLayout spread = MeasureClusters(hidden, wide.RenderArea(), {wide.SidebarToggle()});
    ASSERT_TRUE(spread.AllVisible()) << spread.Describe();
    EXPECT_NEAR(spread.Mean().x, start.Width() / 2.0, 0.05 * start.Width()) << spread.Describe();

    // The arrow, now at the top right of the wider 3D area, brings it back.
    ClickCentre(wide.SidebarToggle());
    Rest();
    const Picture shown = Keep("shown-again", WaitForSettled(panelShown));
    ASSERT_FALSE(shown.Empty()) << "the second click did not bring the sidebar back";
    const ClusterLayout again = Measure(shown), before = Measure(start);
    EXPECT_LE(Distance(again.Mean(), before.Mean()), 3.0) << Compare(before, again);
    EXPECT_EQ(CountDifferences(start, shown, layout.Sidebar()), 0u) << "the sidebar should look as it did";

    // F12 saves the window as it is shown.
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

    const Picture file = Keep("screenshot-file", Picture::LoadPng(saved.string()));
    ASSERT_FALSE(file.Empty()) << saved << " is not a readable PNG";
    EXPECT_EQ(file.Width(), shown.Width());
    EXPECT_EQ(file.Height(), shown.Height());
    // It shows what the screen showed: the balls in the same places.
    const ClusterLayout onScreen = Measure(shown), stored = Measure(file);
    ASSERT_TRUE(stored.AllVisible()) << stored.Describe();
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_LE(Distance(onScreen.balls[i].centroid, stored.balls[i].centroid), 2.0)
            << "screen: " << onScreen.Describe() << "\nfile:   " << stored.Describe();

    // R reloads the shaders and says so.
    x->Tap("r");

    EXPECT_TRUE(WaitForOutput("Shaders reloaded", 15s)) << "the reload was not logged; output:\n" << Output();
    Rect strip;
    EXPECT_FALSE(WaitForNotice(strip).Empty()) << "no notice appeared at the bottom of the window";
    // The reloaded programs still draw the points, as before, once the notice has faded.
    const Picture reloaded =
        Keep("reloaded",
             WaitForSettled([&](const Picture& p) { return CountDifferences(shown, p, p.Bounds()) == 0; }));
    ASSERT_FALSE(reloaded.Empty()) << "after the reload the window does not look as it did";

    // Tab dims the whole window; a chosen tile splits it.
    const int w = reloaded.Width(), h = reloaded.Height();
    ASSERT_LT(MiddleSeparatorShare(reloaded, true), 0.1) << "one view area has no middle separator";
    x->Tap("Tab");
    const Picture chooser = Keep("chooser", WaitForChange(reloaded, reloaded.Bounds()));
    ASSERT_FALSE(chooser.Empty()) << "Tab did not open the layout chooser";
    // The whole window dims, the 3D area as much as the sidebar; the tiles and their title
    // sit in the middle band, which is left out.
    const Rect above{0, 0, w, h / 2 - 110}, below{0, h / 2 + 70, w, h};
    EXPECT_GE(DimmedShare(reloaded, chooser, above), 0.95);
    EXPECT_GE(DimmedShare(reloaded, chooser, below), 0.95);

    // The four tiles, 136 px wide and 16 px apart, stand centred in the window; "Quad Split"
    // is the last. Hovering first lights the tile, so the click lands on a laid-out chooser.
    const int quadX = w / 2 + static_cast<int>(1.5 * (136 + 16)), quadY = h / 2;
    x->MoveTo(quadX, quadY);
    Keep("quad-tile-hovered", WaitForChange(chooser, {quadX - 60, quadY - 55, quadX + 60, quadY + 55}));
    x->Click(Button::Left, quadX, quadY);
    Rest();
    const Picture quad = Keep("after-quad-click", WaitForSettled(
                                                      [](const Picture& p) {
                                                          return MiddleSeparatorShare(p, true) >= 0.9 &&
                                                                 MiddleSeparatorShare(p, false) >= 0.9;
                                                      },
                                                      15s));
    ASSERT_FALSE(quad.Empty())
        << "no separator lines across the window's middle row and column after choosing "
           "\"Quad Split\"; row share "
        << MiddleSeparatorShare(Grab(), true) << ", column share " << MiddleSeparatorShare(Grab(), false);
    // The overlay is gone: the top band is no longer a dimmed copy of anything as dark.
    EXPECT_GT(MeanBrightness(quad, above), 0.6 * MeanBrightness(reloaded, above));
}

} // namespace
} // namespace e2e
