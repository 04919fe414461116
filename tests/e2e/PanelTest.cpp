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
    const Picture away = Keep("away", WaitForChange(start, area));
    ASSERT_FALSE(away.Empty()) << "dragging with the right and middle buttons did not move the camera";
    const ClusterLayout moved = Measure(away);
    ASSERT_GT(Distance(moved.Mean(), framed.Mean()) + std::abs(moved.Spread() - framed.Spread()), 20.0)
        << "the camera did not go far enough away for the case to mean anything: " << moved.Describe();

    const std::vector<PanelHeader> headers = FindPanelHeaders(away, layout);
    ASSERT_EQ(headers.size(), 1u);
    Click(headers.front().FocusButton());
    Rest();
    const Picture refocused = Keep("refocused", WaitForChange(away, area));
    ASSERT_FALSE(refocused.Empty()) << "the focus button did not move the camera";

    // The same view as the one the case started from (the focus button's, see OpenClusters).
    const ClusterLayout back = Measure(refocused);
    ASSERT_TRUE(back.AllVisible()) << back.Describe();
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_LE(Distance(back.balls[i].centroid, framed.balls[i].centroid), 0.03 * framed.Spread())
            << "at start: " << framed.Describe() << "\nrefocused: " << back.Describe();

    // The cross beside it takes the resource out of the view area.
    Click(headers.front().RemoveButton());
    Rest();
    const Picture removed = Keep("removed", WaitForChange(refocused, refocused.Bounds()));
    ASSERT_FALSE(removed.Empty()) << "clicking the cross changed nothing";
    for (const Blob& ball : Measure(removed).balls)
        EXPECT_EQ(ball.count, 0u) << "the points are still drawn: " << Measure(removed).Describe();
    EXPECT_TRUE(FindPanelHeaders(removed, layout).empty()) << "the panel is still shown";
}

TEST_F(PanelSelection, PinShowsOnTheSelectedPanelOnlyAndDeselectsAndAPointSizeTypedInDrawsPointsThatSize)
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
    const Picture deselected =
        Keep("after-pin", WaitForSettled(
                              [&](const Picture& p) {
                                  const auto now = FindPanelHeaders(p, layout);
                                  return now.size() == 2 && !now[0].selected && !now[1].selected;
                              },
                              15s));
    ASSERT_FALSE(deselected.Empty())
        << "after clicking the pin a panel still shows the selected header colour";
    for (const PanelHeader& header : FindPanelHeaders(deselected, layout))
        EXPECT_EQ(CountLightPixels(deselected, header.PinRect()), 0u) << "a pin is still shown";
    // Deselecting is not removing.
    EXPECT_TRUE(Measure(deselected).AllVisible(100)) << Measure(deselected).Describe();

    // The cloud's "Point size" field: click after the old value, delete it, type the new one.
    const Rect box = FindPointSizeField(deselected);
    ASSERT_GT(box.Width(), 0);
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
