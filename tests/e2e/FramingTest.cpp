// Opening a file in the viewer: every point of it is in view, however lopsided the cloud.

#include "ViewerCase.h"

#include <fstream>

namespace e2e {
namespace {

class Framing : public ViewerCase {};

TEST_F(Framing, ALopsidedCloudIsInViewToItsLastPoint)
{
    // A dense green blob holds the centre of mass; a thin red column rises ten units from it,
    // topped by a few magenta points. Framed by its centre and spread, the top would be cut off.
    const fs::path file = CaseDirectory() / "tall.xyz";
    {
        std::ofstream out(file);
        for (int i = 0; i < 60; ++i)
            for (int j = 0; j < 60; ++j)
                out << (i - 30) * 0.01 << ' ' << 0.0 << ' ' << (j - 30) * 0.01 << " 0 255 0\n";
        for (int i = 0; i < 1000; ++i)
            out << 0.0 << ' ' << i * 0.0098 << ' ' << 0.0 << " 255 0 0\n";
        for (int i = 0; i < 5; ++i)
            out << i * 0.002 << ' ' << 10.0 << ' ' << 0.0 << " 255 0 255\n";
    }
    ASSERT_TRUE(LaunchViewer({file.string()}));
    const Picture shown =
        WaitForWindow([&](const Picture& p) { return FindBlob(p, layout.RenderArea(), IsGreen).count > 100; }, "opened");
    ASSERT_FALSE(shown.Empty()) << "the cloud did not appear";
    const Rect scene = layout.RenderArea();
    const Blob top = FindBlob(shown, scene, IsMagenta, {layout.SidebarToggle()});
    EXPECT_GT(top.count, 0u) << "the top of the column is not in the visible part of the view";
    // Not just touching the edge: a margin is left above it.
    EXPECT_GT(top.centroid.y, scene.y0 + 10.0);
}

} // namespace
} // namespace e2e
