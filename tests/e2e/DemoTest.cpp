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
    layout.sidebarVisible = false;
    const Rect area = layout.RenderArea();
    const Picture shown = WaitForWindow(
        [&](const Picture& p) {
            return FindBlob(p, area, IsGlaze).count > 5000 && FindBlob(p, area, IsMarkerGrey).count > 300;
        },
        "demo");
    ASSERT_FALSE(shown.Empty()) << "the scan and its camera marker did not appear";

    // Open the sidebar, then the scan panel's focus button.
    ClickCentre(layout.SidebarToggle());
    layout.sidebarVisible = true;
    const Picture opened =
        Keep("sidebar", WaitUntil([&](const Picture& p) { return !FindPanelHeaders(p, layout).empty(); }));
    ASSERT_FALSE(opened.Empty()) << "the sidebar did not open with the scan's panel";
    Click(FindPanelHeaders(opened, layout).front().FocusButton());
    Rest();
    const Picture focused = WaitForChange(opened, layout.RenderArea());
    const Picture settled = Keep("focused", WaitForQuiet());
    ASSERT_FALSE(focused.Empty()) << "the focus button changed nothing";
    // From the scanner the bowl fills the view: much more of it than from the side.
    EXPECT_GT(FindBlob(settled, layout.RenderArea(), IsGlaze).count,
              FindBlob(shown, area, IsGlaze).count * 3 / 2);
}

} // namespace
} // namespace e2e
