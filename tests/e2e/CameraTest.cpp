// Mouse gestures in the viewer's 3D area, judged by where the four balls end up on screen.
// Every gesture starts on empty background, away from the balls and the sidebar.

#include "ViewerCase.h"

#include <cmath>
#include <numbers>

namespace e2e {
namespace {

Point Relative(const ClusterLayout& layout, std::size_t ball)
{
    const Point mean = layout.Mean();
    return {layout.balls[ball].centroid.x - mean.x, layout.balls[ball].centroid.y - mean.y};
}

/// The largest change of a ball's place relative to the mean of all four.
double RelativeMotion(const ClusterLayout& before, const ClusterLayout& after)
{
    double largest = 0.0;
    for (std::size_t i = 0; i < 4; ++i)
        largest = std::max(largest, Distance(Relative(before, i), Relative(after, i)));
    return largest;
}

/// Degrees the ball turned about the mean, positive clockwise on screen.
double TurnDegrees(const ClusterLayout& before, const ClusterLayout& after, std::size_t ball)
{
    const Point a = Relative(before, ball), b = Relative(after, ball);
    return std::remainder(std::atan2(b.y, b.x) - std::atan2(a.y, a.x), 2 * std::numbers::pi) * 180.0 /
           std::numbers::pi;
}

class CameraGestures : public ViewerCase {
protected:
    /// The settled picture after a gesture; fails the case when nothing changed.
    ClusterLayout After(const Picture& before, const std::string& label, Picture* picture = nullptr)
    {
        const Picture after = Keep(label, WaitForChange(before, layout.RenderArea()));
        if (after.Empty())
            ADD_FAILURE() << label << ": the picture did not change";
        if (picture != nullptr)
            *picture = after;
        const ClusterLayout measured = Measure(after);
        EXPECT_TRUE(measured.AllVisible()) << label << ": " << measured.Describe();
        return measured;
    }

    /// The settled picture after a gesture that should scale the scene about its middle, larger
    /// or smaller.
    Picture ExpectScaled(const Picture& from, const std::string& label, bool larger)
    {
        Picture picture;
        const ClusterLayout before = Measure(from), after = After(from, label, &picture);
        const double ratio = after.Spread() / before.Spread();
        EXPECT_TRUE(larger ? ratio >= 1.1 : ratio <= 1 / 1.1) << label << "\n" << Compare(before, after);
        EXPECT_LE(Distance(before.Mean(), after.Mean()), 0.15 * before.Spread()) << label << "\n"
                                                                                 << Compare(before, after);
        return picture;
    }
};

TEST_F(CameraGestures, LeftDragOrbitsAboutTheTarget)
{
    ASSERT_NO_FATAL_FAILURE(OpenClusters());
    const ClusterLayout before = Measure(start);

    // 180 px to the right: about 50 degrees at the default sensitivity.
    x->Drag(Button::Left, At(0.15, 0.375), At(0.33, 0.375));
    const ClusterLayout after = After(start, "left-drag");

    EXPECT_GE(RelativeMotion(before, after), 0.3 * before.Spread())
        << "the balls should have moved against each other\n"
        << Compare(before, after);
    EXPECT_LE(Distance(before.Mean(), after.Mean()), 0.15 * before.Spread())
        << "an orbit about the target keeps the scene's middle in place\n"
        << Compare(before, after);
    // The content follows the pointer: what lies beyond the target (the white ball at the
    // origin; the camera looks from the (1,1,1) side) swings the other way.
    EXPECT_LT(Relative(after, 3).x - Relative(before, 3).x, -0.1 * before.Spread()) << Compare(before, after);
}

TEST_F(CameraGestures, MiddleDragPansWithThePointer)
{
    ASSERT_NO_FATAL_FAILURE(OpenClusters());
    const ClusterLayout before = Measure(start);

    const Point from = At(0.3, 0.875), to = At(0.42, 0.775);
    x->Drag(Button::Middle, from, to);
    const ClusterLayout after = After(start, "middle-drag");

    // Points at the target's depth follow the pointer exactly; the balls lie a little in
    // front of and behind it.
    const Point drag{to.x - from.x, to.y - from.y};
    const double length = std::hypot(drag.x, drag.y);
    for (std::size_t i = 0; i < 4; ++i) {
        const Point moved{after.balls[i].centroid.x - before.balls[i].centroid.x,
                          after.balls[i].centroid.y - before.balls[i].centroid.y};
        EXPECT_LE(Distance(moved, drag), 0.3 * length)
            << "ball " << i << " moved by (" << moved.x << ", " << moved.y << "), the pointer by (" << drag.x
            << ", " << drag.y << ")\n"
            << Compare(before, after);
    }
    EXPECT_NEAR(after.Spread() / before.Spread(), 1.0, 0.1) << "a pan neither zooms nor turns";
}

TEST_F(CameraGestures, ControlLeftDragRollsWithThePointer)
{
    ASSERT_NO_FATAL_FAILURE(OpenClusters());
    const ClusterLayout before = Measure(start);

    // From right of the view's centre straight down: the pointer sweeps 45 degrees clockwise
    // about the centre.
    const Rect r = layout.RenderArea();
    const Point centre{(r.x0 + r.x1) / 2.0, (r.y0 + r.y1) / 2.0};
    const double reach = 0.3 * std::min(r.Width(), r.Height());
    x->Drag(Button::Left, {centre.x + reach, centre.y}, {centre.x + reach, centre.y + reach}, {"Control_L"});
    const ClusterLayout after = After(start, "control-left-drag");

    for (std::size_t i = 0; i < 4; ++i) {
        // The white ball sits at the middle, where a direction means nothing.
        if (Distance(Relative(before, i), {0, 0}) < 0.3 * before.Spread())
            continue;
        EXPECT_NEAR(TurnDegrees(before, after, i), 45.0, 12.0)
            << "ball " << i << " should turn clockwise with the pointer\n"
            << Compare(before, after);
        EXPECT_NEAR(Distance(Relative(after, i), {0, 0}) / Distance(Relative(before, i), {0, 0}), 1.0, 0.1)
            << "a roll keeps every ball's distance from the middle, ball " << i;
    }
}

TEST_F(CameraGestures, RightDragDolliesAndTheWheelZoomsInAndOut)
{
    ASSERT_NO_FATAL_FAILURE(OpenClusters());
    // Up moves the camera forward: everything grows about the middle; down moves it back.
    x->Drag(Button::Right, At(0.3, 0.875), At(0.3, 0.625));
    const Picture closer = ExpectScaled(start, "right-drag-up", true);
    ASSERT_FALSE(closer.Empty());
    x->Drag(Button::Right, At(0.3, 0.625), At(0.3, 0.875));
    const Picture back = ExpectScaled(closer, "right-drag-down", false);
    ASSERT_FALSE(back.Empty());
    // The wheel at the same spot: out first, as the framed scene already reaches the top edge.
    x->Wheel(-2);
    const Picture out = ExpectScaled(back, "wheel-down", false);
    ASSERT_FALSE(out.Empty());
    x->Wheel(2);
    ExpectScaled(out, "wheel-up", true);
}

} // namespace
} // namespace e2e
