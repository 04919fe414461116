#include "ViewerCase.h"

#include <string>
#include <fstream>

namespace e2e {

void ViewerCase::OpenClusters()
{
    const fs::path ply = CaseDirectory() / "balls.ply";
    WriteClusterPly(ply);
    ASSERT_TRUE(LaunchViewer({ply.string()}));
    const Picture opened = WaitForWindow([&](const Picture& p) { return Measure(p).AllVisible(); }, "opened");
    ASSERT_FALSE(opened.Empty()) << "the four balls did not appear; last picture: " << Measure(Grab()).Describe();
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

Picture ViewerCase::Barrier()
{
    const Picture now = Grab();
    const std::vector<PanelHeader> headers = FindPanelHeaders(now, layout);
    if (headers.empty())
    {
        ADD_FAILURE() << "no panel header to synchronise on";
        return {};
    }
    const Rect focus{headers.front().rect.x0, headers.front().rect.y0, headers.front().rect.x0 + 24,
                     headers.front().rect.y1};
    const Point button = headers.front().FocusButton();
    x->MoveTo(static_cast<int>(button.x), static_cast<int>(button.y));
    const Picture lit = WaitUntil([&](const Picture& p) { return CountDifferences(now, p, focus) > 0; }, 15s);
    if (lit.Empty())
        ADD_FAILURE() << "hovering the focus button changed nothing: the program does not seem to handle input";
    Rest();
    return WaitForSettled([&](const Picture& p) { return CountDifferences(now, p, focus) == 0; }, 15s);
}

void ViewerCase::WriteOptions(float sensitivity)
{
    fs::create_directories(WorkingDirectory() / "vexa");
    // Format version 2, little-endian: u8 anti-aliasing (2: MSAA 4x), u8 white background,
    // f32 mouse sensitivity, u8 optimised rendering, u8 shortcuts, u8 view layout (0: the look's).
    std::string bytes{2, 0, 0, 0, 2, 0};
    // The machines these run on store floats little-endian, as the file does.
    bytes.append(reinterpret_cast<const char*>(&sensitivity), 4);
    bytes += {1, 1, 0};
    std::ofstream(WorkingDirectory() / "vexa" / "options.bin", std::ios::binary) << bytes;
}

} // namespace e2e
