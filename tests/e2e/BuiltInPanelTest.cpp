// The sidebar's built-in panels driven as a person does: the view area's own options pop-up,
// the gear's global options and the resource inspector's search.

#include "HostCase.h"

namespace e2e {
namespace {

class BuiltInPanels : public HostCase {
protected:
    /// The gear in the sidebar's toolbar.
    Point Gear() const { return {layout.Sidebar().x0 + 42.0, layout.Sidebar().y0 + 16.0}; }
    /// A patch of the 3D area where nothing is drawn but the background.
    Rect EmptyCorner() const
    {
        const Rect area = layout.RenderArea();
        return {area.x0 + 10, area.y0 + 40, area.x0 + 60, area.y0 + 90};
    }
    /// The byte of options.bin that holds the white background flag (after the 4-byte
    /// version and the anti-aliasing method); -1 while the file is not there.
    int StoredWhiteFlag() const
    {
        const std::string bytes = ReadFile(WorkingDirectory() / "vexa" / "options.bin");
        return bytes.size() > 5 ? bytes[5] : -1;
    }
};

/// The rows of an open drop list.
constexpr int kDropItemHeight = 20;

/// The rightmost column of `area` with a light (title text) pixel; -1 when none.
int RightmostLight(const Picture& picture, const Rect& area)
{
    for (int x = area.x1 - 1; x >= area.x0; --x)
        if (CountLightPixels(picture, {x, area.y0, x + 1, area.y1}) > 0)
            return x;
    return -1;
}

TEST_F(BuiltInPanels, ViewOptionsPutTheGridOnAnotherPlaneAndTheGearsWhiteBackgroundSurvivesARestart)
{
    ASSERT_NO_FATAL_FAILURE(OpenHost());
    const Rect area = layout.RenderArea();
    // The pop-up opens over the camera button at the view area's top-left corner.
    Click({area.x0 + 16.0, area.y0 + 16.0});
    const Rect popup{area.x0 + 6, area.y0 + 6, area.x0 + 406, area.y0 + 181};
    const Picture opened = Keep("opened", WaitForChange(start, popup));
    ASSERT_FALSE(opened.Empty()) << "the camera button opened nothing";

    // "Grid": open the list, then take its last item, "Plane ZX"; the pointer stays inside.
    Click({popup.x0 + 120.0, popup.y0 + 90.0});
    const Rect list{popup.x0, popup.y0 + 97, popup.x0 + 200, popup.y0 + 220};
    const Picture listed = Keep("listed", WaitForChange(opened, list));
    ASSERT_FALSE(listed.Empty()) << "the grid list did not open";
    Click({popup.x0 + 120.0, popup.y0 + 97.0 + 3 * kDropItemHeight + kDropItemHeight / 2.0});

    // Away from it, the pop-up closes; the ground grid now runs through the balls' plane.
    x->MoveTo(area.x1 - 40, area.y1 - 40);
    // The pop-up's "View options" heading has a background of its own.
    const Rect heading{popup.x0 + 10, popup.y0 + 8, popup.x0 + 180, popup.y0 + 24};
    const auto headingShown = [&](const Picture& p) {
        return FindBlob(p, heading, [](Rgb c) { return Near(c, {0x3A, 0x3C, 0x3F}, 2); }).count > 500;
    };
    ASSERT_TRUE(headingShown(opened));
    const Picture closed =
        Keep("closed", WaitForSettled([&](const Picture& p) {
                 return !headingShown(p) && CountDifferences(start, p, area, {popup}) > 500;
             }));
    EXPECT_FALSE(closed.Empty()) << "no grid appeared, or the pop-up stayed open";

    // The gear opens the global options on top of the column.
    const std::vector<PanelHeader> before = FindAllPanelHeaders(start, layout);
    ASSERT_FALSE(before.empty());
    EXPECT_FALSE(before.front().focusButton) << "the resource inspector should head the column";
    EXPECT_LT(MeanBrightness(start, EmptyCorner()), 60.0) << "the look's background is 2E3138";

    Click(Gear());
    Rest();
    const Picture withOptions = Keep("options-opened", WaitForChange(start, layout.PanelColumn()));
    ASSERT_FALSE(withOptions.Empty()) << "the gear changed nothing in the sidebar";
    const std::vector<PanelHeader> after = FindAllPanelHeaders(withOptions, layout);
    ASSERT_EQ(after.size(), before.size() + 1) << "no new panel in the column";
    const PanelHeader options = after.front();
    EXPECT_EQ(options.rect.y0, layout.PanelColumn().y0) << "the options panel goes on top";
    EXPECT_FALSE(options.focusButton);

    // "White background" is the first row: its box sits at the left, 10 px below the header.
    Click({options.rect.x0 + 18.0, options.rect.y1 + 23.0});
    Rest();
    const auto whiteCorner = [&](const Picture& p) { return MeanBrightness(p, EmptyCorner()) > 250.0; };
    const Picture white = Keep("white", WaitForSettled(whiteCorner));
    ASSERT_FALSE(white.Empty()) << "ticking \"White background\" left the background dark";
    EXPECT_GT(MeanBrightness(white, layout.RenderArea()), 200.0);

    // Written by the step after the change; then the program ends and starts again.
    ASSERT_TRUE(WaitFor([&] { return StoredWhiteFlag() == 1; }, 10s))
        << "options.bin does not hold the white background";
    x->RequestClose();
    ASSERT_TRUE(program->WaitForExit(30s).has_value()) << Output();

    ASSERT_TRUE(Launch(E2E_HOST, {"--look", (CaseDirectory() / "host-look.json").string()}));
    const Picture restarted = Keep(
        "restarted", WaitForSettled(
                         [&](const Picture& p) {
                             return whiteCorner(p) && FindBlob(p, layout.RenderArea(), IsRed).count > 100;
                         },
                         30s));
    EXPECT_FALSE(restarted.Empty()) << "after a restart the background is not white";
}

TEST_F(BuiltInPanels, SearchingTheInspectorAndClickingTheHitSelectsTheResource)
{
    ASSERT_NO_FATAL_FAILURE(OpenHost({.second = true}));
    const std::vector<PanelHeader> all = FindAllPanelHeaders(start, layout);
    const std::vector<PanelHeader> resources = FindPanelHeaders(start, layout);
    ASSERT_EQ(resources.size(), 2u);
    ASSERT_FALSE(all.front().focusButton);
    for (const PanelHeader& header : resources)
        ASSERT_FALSE(header.selected);
    // Panels in id order: E2E/Cloud, then E2E/Second, whose longer title reaches further right.
    const auto titleEnd = [&](const Picture& p, const PanelHeader& h) {
        return RightmostLight(p, {h.rect.x0 + 28, h.rect.y0 + 2, h.rect.x0 + 170, h.rect.y1 - 2});
    };
    const int secondTitle = titleEnd(start, resources[1]);
    ASSERT_GT(secondTitle, titleEnd(start, resources[0]));

    const Rect inspector{all.front().rect.x0, all.front().rect.y1, all.front().rect.x1,
                         all.front().rect.y1 + 170};
    Click({inspector.x0 + 110.0, inspector.y0 + 20.0});
    for (const char* key : {"s", "e", "c"})
        x->Tap(key);
    Rest();
    const Picture searched = Keep("searched", WaitForChange(start, inspector));
    ASSERT_FALSE(searched.Empty()) << "typing into the search box changed nothing";

    // The one hit is the list's first item, just below the location line.
    Click({inspector.x0 + 40.0, inspector.y0 + 72.0});
    Rest();
    const Picture picked = Keep("picked", WaitForSettled([&](const Picture& p) {
                                    const std::vector<PanelHeader> now = FindPanelHeaders(p, layout);
                                    return !now.empty() && now.front().selected;
                                }));
    ASSERT_FALSE(picked.Empty()) << "clicking the hit selected no resource";
    const std::vector<PanelHeader> now = FindPanelHeaders(picked, layout);
    ASSERT_EQ(now.size(), 2u);
    EXPECT_FALSE(now[1].selected);
    EXPECT_NEAR(titleEnd(picked, now.front()), secondTitle, 1) << "the selected panel is not E2E/Second's";
}

} // namespace
} // namespace e2e
