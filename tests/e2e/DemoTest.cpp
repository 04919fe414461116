// The demo scene as a person meets it: the scan's view area shows the scanner as a camera
// marker, and the scan's focus button looks at the scan from that scanner.

#include "ViewerCase.h"

#include <cstdlib>
#include <fstream>

namespace e2e {
namespace {

class Demo : public ViewerCase {};

/// The scan's glaze (warm orange) and the marker's light grey.
bool IsGlaze(Rgb c)
{
    return c.r > 150 && c.r > c.g + 30 && c.g > c.b + 30;
}
bool IsMarkerGrey(Rgb c)
{
    return c.r > 140 && std::abs(c.r - c.g) < 16 && std::abs(c.g - c.b) < 24;
}

TEST_F(Demo, TheScanShowsItsCameraAndItsFocusLooksFromThere)
{
    // The demo's scan alone in a window that fits the test screen, its sidebar hidden (the
    // sidebar's arrow then sits at the window's top right).
    const fs::path look = CaseDirectory() / "scan.json";
    std::ofstream(look) << R"({"vexa": {"version": "1.0", "width": 900, "height": 700, "views": [
        {"position": "0, 0; 0, 0", "size": "1, 0; 1, 0", "sidebar-visible": false,
         "units": [{"id": "ScanResource:Demo/Bowl scan"}]}]}})";
    ASSERT_TRUE(LaunchViewer({"--demo", "--look", look.string()}));
    const Rect window = x->WindowArea();
    ViewAreaLayout scan;
    scan.area = {0, 0, window.Width(), window.Height()};
    scan.sidebarVisible = false;
    const Picture shown = WaitForSettled(
        [&](const Picture& p) {
            return FindBlob(p, scan.RenderArea(), IsGlaze).count > 5000 &&
                   FindBlob(p, scan.RenderArea(), IsMarkerGrey).count > 300;
        },
        30s);
    Keep("demo", shown.Empty() ? Grab() : shown);
    ASSERT_FALSE(shown.Empty()) << "the scan and its camera marker did not appear";
    const std::size_t glazeBefore = FindBlob(shown, scan.RenderArea(), IsGlaze).count;

    // Open the sidebar, then the scan panel's focus button.
    x->Click(Button::Left, scan.area.x1 - 16, scan.area.y0 + 16);
    scan.sidebarVisible = true;
    const Picture opened = WaitUntil([&](const Picture& p) { return !FindPanelHeaders(p, scan).empty(); }, 15s);
    Keep("sidebar", opened.Empty() ? Grab() : opened);
    ASSERT_FALSE(opened.Empty()) << "the sidebar did not open with the scan's panel";
    const Point focus = FindPanelHeaders(opened, scan).front().FocusButton();
    x->Click(Button::Left, static_cast<int>(focus.x), static_cast<int>(focus.y));
    x->MoveTo(scan.area.x0 + 10, scan.area.y1 - 10);
    const Picture focused = WaitForChange(opened, scan.RenderArea());
    const Picture settled = WaitForQuiet();
    Keep("focused", settled);
    ASSERT_FALSE(focused.Empty()) << "the focus button changed nothing";
    // From the scanner the bowl fills the view: much more of it than from the side.
    EXPECT_GT(FindBlob(settled, scan.RenderArea(), IsGlaze).count, glazeBefore * 3 / 2);
}

} // namespace
} // namespace e2e
