#include "ViewerCase.h"

namespace e2e {

void ViewerCase::OpenClusters()
{
    const fs::path ply = CaseDirectory() / "balls.ply";
    WriteClusterPly(ply);
    ASSERT_TRUE(LaunchViewer({ply.string()}));
    const Picture opened = WaitForWindow([&](const Picture& p) { return Measure(p).AllVisible(); }, "opened");
    ASSERT_FALSE(opened.Empty()) << "the four balls did not appear; last picture: "
                                 << Measure(Grab()).Describe();
    // The viewer opens a file with all of its box in view; the cases start closer, from the
    // cloud's own framing (its panel's focus button: its centre of mass in the middle).
    const std::vector<PanelHeader> headers = FindPanelHeaders(opened, layout);
    ASSERT_EQ(headers.size(), 1u) << "expected the one panel of the file";
    Click(headers.front().FocusButton());
    const Rect area = layout.RenderArea();
    Rest();
    start = Keep("start", WaitForChange(opened, area));
    ASSERT_FALSE(start.Empty() || !Measure(start).AllVisible()) << "the focus button did not frame the balls";
}

} // namespace e2e
