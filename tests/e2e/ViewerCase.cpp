#include "ViewerCase.h"

#include <cstring>
#include <fstream>

namespace e2e {

void ViewerCase::OpenClusters()
{
    const fs::path ply = CaseDirectory() / "balls.ply";
    WriteClusterPly(ply);
    ASSERT_TRUE(LaunchViewer({ply.string()}));
    const Rect window = x->WindowArea();
    layout.area = {0, 0, window.Width(), window.Height()};
    const Picture opened = WaitForSettled([&](const Picture& p) { return Measure(p).AllVisible(); }, 30s);
    if (opened.Empty())
    {
        Keep("start-timeout", Grab());
        FAIL() << "the four balls did not appear; last picture: " << Measure(Grab()).Describe();
    }
    Keep("opened", opened);
    // The viewer opens a file with all of its box in view; the cases start closer, from the
    // cloud's own framing (its panel's focus button: its centre of mass in the middle).
    const std::vector<PanelHeader> headers = FindPanelHeaders(opened, layout);
    ASSERT_EQ(headers.size(), 1u) << "expected the one panel of the file";
    const Point focus = headers.front().FocusButton();
    x->Click(Button::Left, static_cast<int>(focus.x), static_cast<int>(focus.y));
    const Rect area = layout.RenderArea();
    x->MoveTo(area.x0 + area.Width() / 10, area.y0 + area.Height() * 9 / 10);
    start = WaitForChange(opened, area);
    if (start.Empty() || !Measure(start).AllVisible())
    {
        Keep("focus-timeout", Grab());
        FAIL() << "the focus button did not frame the balls";
    }
    Keep("start", start);
}

Picture ViewerCase::Barrier(Point rest)
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
    x->MoveTo(static_cast<int>(rest.x), static_cast<int>(rest.y));
    return WaitForSettled([&](const Picture& p) { return CountDifferences(now, p, focus) == 0; }, 15s);
}

void ViewerCase::WriteOptions(float sensitivity)
{
    fs::create_directories(WorkingDirectory() / "vexa");
    std::ofstream out(WorkingDirectory() / "vexa" / "options.bin", std::ios::binary);
    // Format version 2, little-endian: u8 anti-aliasing (2: MSAA 4x), u8 white background,
    // f32 mouse sensitivity, u8 optimised rendering, u8 shortcuts, u8 view layout (0: the look's).
    const unsigned char version[4] = {2, 0, 0, 0};
    out.write(reinterpret_cast<const char*>(version), 4);
    const unsigned char head[2] = {2, 0};
    out.write(reinterpret_cast<const char*>(head), 2);
    // The machines these run on store floats little-endian, as the file does.
    unsigned char value[4];
    std::memcpy(value, &sensitivity, 4);
    out.write(reinterpret_cast<const char*>(value), 4);
    const unsigned char tail[3] = {1, 1, 0};
    out.write(reinterpret_cast<const char*>(tail), 3);
}

} // namespace e2e
