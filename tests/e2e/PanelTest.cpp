// The buttons and fields of a resource's sidebar panel.

#include "HostCase.h"
#include "ViewerCase.h"

#include <cmath>

namespace e2e {
namespace {

class PanelButtons : public ViewerCase {};
class PanelSelection : public HostCase {};

TEST_F(PanelButtons, FocusFramesTheResourceAgainAfterADollyAndCrossRemovesIt)
{
    ASSERT_NO_FATAL_FAILURE(OpenClusters());
    const ClusterLayout framed = Measure(start);
    const Rect area = layout.RenderArea();

    // Away from the balls: a dolly backwards, then a pan to the side.
    x->Drag(Button::Right, At(0.3, 0.6), At(0.3, 0.9));
    x->Drag(Button::Middle, At(0.2, 0.9), At(0.1, 0.8));
    const Picture away = WaitForChange(start, area);
    ASSERT_FALSE(away.Empty()) << "dragging with the right and middle buttons did not move the camera";
    Keep("away", away);
    const ClusterLayout moved = Measure(away);
    ASSERT_GT(Distance(moved.Mean(), framed.Mean()) + std::abs(moved.Spread() - framed.Spread()), 20.0)
        << "the camera did not go far enough away for the case to mean anything: " << moved.Describe();

    const std::vector<PanelHeader> headers = FindPanelHeaders(away, layout);
    ASSERT_EQ(headers.size(), 1u);
    Click(headers.front().FocusButton());
    Rest();
    const Picture refocused = WaitForChange(away, area);
    ASSERT_FALSE(refocused.Empty()) << "the focus button did not move the camera";
    Keep("refocused", refocused);

    // The same view as the one the case started from (the focus button's, see OpenClusters).
    const ClusterLayout back = Measure(refocused);
    ASSERT_TRUE(back.AllVisible()) << back.Describe();
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_LE(Distance(back.balls[i].centroid, framed.balls[i].centroid), 0.03 * framed.Spread())
            << "at start: " << framed.Describe() << "\nrefocused: " << back.Describe();

    // The cross beside it takes the resource out of the view area.
    Click(headers.front().RemoveButton());
    Rest();
    const Picture removed = WaitForChange(refocused, refocused.Bounds());
    ASSERT_FALSE(removed.Empty()) << "clicking the cross changed nothing";
    Keep("removed", removed);
    const ClusterLayout left = Measure(removed);
    EXPECT_EQ(left.Pixels(), 0u) << "the points are still drawn: " << left.Describe();
    EXPECT_TRUE(FindPanelHeaders(removed, layout).empty()) << "the panel is still shown";
}

TEST_F(PanelSelection, PinShowsOnTheSelectedPanelOnlyAndDeselects)
{
    ASSERT_NO_FATAL_FAILURE(OpenHost({.second = true, .selectCloud = true}));
    const std::vector<PanelHeader> headers = FindPanelHeaders(start, layout);
    ASSERT_EQ(headers.size(), 2u) << "expected the panels of both resources";
    // The selected resource's panel comes first.
    ASSERT_TRUE(headers[0].selected) << "the look selects the cloud; its header should be FF435B72";
    EXPECT_FALSE(headers[1].selected);
    EXPECT_GT(CountLightPixels(start, headers[0].PinRect()), 10u) << "no pin on the selected panel";
    EXPECT_EQ(CountLightPixels(start, headers[1].PinRect()), 0u) << "a pin on a panel that is not selected";

    Click(headers[0].PinButton());
    Rest();
    const Picture deselected = WaitForSettled(
        [&](const Picture& p) {
            const auto now = FindPanelHeaders(p, layout);
            return now.size() == 2 && !now[0].selected && !now[1].selected;
        },
        15s);
    Keep("after-pin", deselected);
    ASSERT_FALSE(deselected.Empty()) << "after clicking the pin a panel still shows the selected header colour";
    for (const PanelHeader& header : FindPanelHeaders(deselected, layout))
        EXPECT_EQ(CountLightPixels(deselected, header.PinRect()), 0u) << "a pin is still shown";
    // Deselecting is not removing.
    EXPECT_TRUE(Measure(deselected).AllVisible(100)) << Measure(deselected).Describe();
}

class PointSizeField : public HostCase {};

TEST_F(PointSizeField, TypingANumberIntoTheClearedFieldDrawsPointsThatSize)
{
    ASSERT_NO_FATAL_FAILURE(OpenHost());
    const Rect box = FindPointSizeField();
    ASSERT_GT(box.Width(), 0);

    // Click after the old value, delete it, type the new one.
    x->Click(Button::Left, box.x1 - 10, (box.y0 + box.y1) / 2);
    for (int i = 0; i < 3; ++i)
        x->Tap("BackSpace");
    x->Tap("9");
    x->Tap("Return");
    Rest();
    ExpectMarkerDiameter(9.0, "after-clearing-and-typing-9");
}

} // namespace
} // namespace e2e
