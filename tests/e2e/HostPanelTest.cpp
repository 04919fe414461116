// A host's own panel in the sidebar, used as a person uses it: its button, clicked on screen,
// runs the host's handler, and the scene changes; the wheel scrolls the panels.

#include "E2eTest.h"

namespace e2e {
namespace {

class HostPanel : public E2eTest {};

/// The example's rings: warm yellow to orange.
bool IsRing(Rgb c)
{
    return c.r > 200 && c.g > 90 && c.b < 120 && c.r > c.b + 100;
}

TEST_F(HostPanel, TheHostsButtonsChangeTheScene)
{
    ASSERT_TRUE(Launch(E2E_GUI_PANEL_EXAMPLE, {}));
    const Picture shown = WaitForWindow(
        [&](const Picture& p) {
            return FindBlob(p, layout.RenderArea(), IsRing).count > 200 &&
                   FindPanelHeaders(p, layout).size() == 2;
        },
        "shown");
    ASSERT_FALSE(shown.Empty()) << "the ring and the two panels did not appear";
    const std::size_t oneRing = FindBlob(shown, layout.RenderArea(), IsRing).count;

    // The host's panel comes first ("GuiDataUnit:Controls" sorts before the rings), its
    // "Add a ring" and "Clear" buttons under its header.
    const std::vector<PanelHeader> headers = FindPanelHeaders(shown, layout);
    const std::vector<Rect> buttons =
        FindWideButtons(shown, layout.PanelColumn(), headers[0].rect.y1, headers[1].rect.y0);
    ASSERT_EQ(buttons.size(), 2u) << "the host's panel does not show its two buttons";

    // Two quick clicks, as a person adds two rings: both count.
    ClickCentre(buttons[0]);
    ClickCentre(buttons[0]);
    Rest();
    const Picture grown = Keep("three rings", WaitForSettled([&](const Picture& p) {
                                   // Rings grow outwards: three of them cover about four times the first
                                   // one's pixels.
                                   return FindBlob(p, layout.RenderArea(), IsRing).count > oneRing * 3;
                               }));
    ASSERT_FALSE(grown.Empty()) << "two clicks on \"Add a ring\" did not add two rings";

    // Three ring panels run past the window's bottom: the wheel over their text scrolls the
    // column up, and back down.
    const int top = FindPanelHeaders(grown, layout).front().rect.y0;
    const auto headerAt = [&](const Picture& p) {
        const std::vector<PanelHeader> found = FindPanelHeaders(p, layout);
        return found.empty() ? -1 : found.front().rect.y0;
    };
    x->MoveTo(layout.PanelColumn().x0 + 30, layout.PanelColumn().y1 - 40);
    x->Wheel(-3);
    EXPECT_FALSE(
        Keep("scrolled", WaitForSettled([&](const Picture& p) { return headerAt(p) < top; })).Empty())
        << "the wheel over the panels did not scroll them";
    x->Wheel(3);
    EXPECT_FALSE(WaitForSettled([&](const Picture& p) { return headerAt(p) == top; }).Empty())
        << "the wheel up did not scroll back";

    ClickCentre(buttons[1]);
    Rest();
    const Picture cleared = Keep("cleared", WaitForSettled([&](const Picture& p) {
                                     return FindBlob(p, layout.RenderArea(), IsRing).count == 0;
                                 }));
    EXPECT_FALSE(cleared.Empty()) << "\"Clear\" did not take the rings away";
}

} // namespace
} // namespace e2e
