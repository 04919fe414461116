// A camera flight made, stored and played with the camera animation panel, as a person does
// it: the toolbar's camera button opens the panel, its buttons record two views, save them,
// forget them, load them and fly the camera from the first view to the second.

#include "HostCase.h"

namespace e2e {
namespace {

class CameraFlight : public HostCase {
protected:
    /// How far the balls of two pictures lie apart, in pixels (mean over the four).
    double Apart(const ClusterLayout& a, const ClusterLayout& b) const
    {
        double sum = 0.0;
        for (std::size_t i = 0; i < 4; ++i)
            sum += Distance(a.balls[i].centroid, b.balls[i].centroid);
        return sum / 4.0;
    }

    /// Orbits the camera with a left drag across the view.
    void Orbit(double dx)
    {
        x->Drag(Button::Left, At(0.5, 0.5), At(0.5 + dx, 0.55));
        Rest();
    }
};

TEST_F(CameraFlight, TwoKeyframesSavedRemovedLoadedAndPlayedFlyTheCameraThroughThem)
{
    // The cloud has no panel, so that the camera animation panel comes first in the column.
    ASSERT_NO_FATAL_FAILURE(OpenHost({.cloudPanel = false}));
    // Only the built-in panels; the new one comes last.
    const std::size_t builtIn = FindPanelHeaders(start, layout).size();

    // The video camera button at the left of the sidebar's toolbar.
    const Rect sidebar = layout.Sidebar();
    x->Click(Button::Left, sidebar.x0 + 16, sidebar.y0 + 16);
    Rest();
    const Picture opened = Keep("panel", WaitForSettled([&](const Picture& p) {
                                    return FindPanelHeaders(p, layout).size() == builtIn + 1;
                                }));
    ASSERT_FALSE(opened.Empty()) << "the camera button opened no panel";
    const PanelHeader header = FindPanelHeaders(opened, layout).back();
    const std::vector<Rect> buttons =
        FindWideButtons(opened, layout.PanelColumn(), header.rect.y1, opened.Height());
    // Play, Stop, Add, Remove last, Remove all, Save, Load.
    ASSERT_EQ(buttons.size(), 7u) << "the panel's buttons were not found";
    const Rect& play = buttons[0];
    const Rect& add = buttons[2];
    const Rect& removeAll = buttons[4];
    const Rect& save = buttons[5];
    const Rect& load = buttons[6];

    // The second key frame four seconds after the first: a flight slow enough to watch.
    const Rect delta = FindEditBox(opened, layout.PanelColumn(), add.y1);
    ASSERT_GT(delta.Width(), 0) << "no \"Keyframe delta time\" field";
    x->DoubleClick(Button::Left, delta.x0 + 10, (delta.y0 + delta.y1) / 2);
    x->Tap("4");
    x->Tap("Return");
    Rest();

    // First view: as the host framed it.
    const ClusterLayout first = Measure(opened);
    ClickCentre(add);
    Rest();
    // Second view: orbited to the side.
    Orbit(0.25);
    const Picture turned = Keep("second-view", WaitForChange(opened, layout.RenderArea()));
    ASSERT_FALSE(turned.Empty()) << "the drag did not turn the camera";
    const ClusterLayout second = Measure(turned);
    ASSERT_GT(Apart(first, second), 30.0) << "the two views should differ clearly";
    ClickCentre(add);
    Rest();

    ClickCentre(save);
    Rest();
    const fs::path file = WorkingDirectory() / "vexa" / "AnimationSequence01.json";
    ASSERT_TRUE(WaitFor([&] { return fs::exists(file); }, 10s)) << "nothing saved to " << file;
    EXPECT_NE(ReadFile(file).find("\"4.000000\""), std::string::npos) << ReadFile(file);

    // Forgotten: playing now only reports that there is nothing to play.
    ClickCentre(removeAll);
    ClickCentre(play);
    Rest();
    EXPECT_TRUE(WaitForOutput("Can not interpolate to time 0.000000 when no key frames available.", 10s))
        << Output();

    // A third view, from which the loaded flight must take the camera away.
    Orbit(-0.3);
    const Picture elsewhere = Keep("elsewhere", WaitForChange(turned, layout.RenderArea()));
    ASSERT_FALSE(elsewhere.Empty());
    ASSERT_GT(Apart(Measure(elsewhere), first), 30.0);
    ASSERT_GT(Apart(Measure(elsewhere), second), 30.0);

    ClickCentre(load);
    ClickCentre(play);
    Rest();
    // The flight starts at the first view... (within 10 px: the flight eases out of it, and on
    // a loaded machine the first frames may come a few tenths of a second apart)
    const Picture departing = Keep(
        "departing",
        WaitUntil(
            [&](const Picture& p) { return Measure(p).AllVisible(50) && Apart(Measure(p), first) < 10.0; },
            3s));
    EXPECT_FALSE(departing.Empty()) << "the flight did not start at the first key frame";
    // ... passes between the two ...
    const Picture between = Keep("between", WaitUntil(
                                                [&](const Picture& p) {
                                                    const ClusterLayout now = Measure(p);
                                                    return now.AllVisible(50) && Apart(now, first) > 10.0 &&
                                                           Apart(now, second) > 10.0;
                                                },
                                                4s));
    EXPECT_FALSE(between.Empty()) << "the camera jumped instead of flying";
    // ... and lands on the second.
    const Picture landed = Keep(
        "landed",
        WaitForSettled(
            [&](const Picture& p) { return Measure(p).AllVisible(50) && Apart(Measure(p), second) < 3.0; },
            15s));
    EXPECT_FALSE(landed.Empty()) << "the flight did not end at the second key frame: "
                                 << Measure(Grab()).Describe() << "\nexpected " << second.Describe();
}

} // namespace
} // namespace e2e
