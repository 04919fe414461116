// Files a user opens in the viewer, judged by what they look like on screen: a file's own
// colours as they are, points that keep their size at any angle, and every point of it in
// view however lopsided the cloud.

#include "ViewerCase.h"

#include <glm/geometric.hpp>
#include <glm/vec3.hpp>

#include <algorithm>
#include <fstream>
#include <vector>

namespace e2e {
namespace {

class Content : public ViewerCase {};

bool IsSalmon(Rgb c)
{
    return c.r > 120 && c.r > c.g + 60 && c.r > c.b + 60;
}

TEST_F(Content, ACloudsOwnColoursShowAsTheyAreAndEdgeOnPointsKeepTheirSize)
{
    // A 24 x 24 grid across the plane the default view looks straight at (normal (1, 1, 1)),
    // every normal lying in that plane: each point is seen exactly edge-on, and lit by any
    // light it would be darkened. The file's colour is (230, 60, 60).
    const glm::vec3 u = glm::normalize(glm::vec3(1.0f, -1.0f, 0.0f));
    const glm::vec3 v = glm::normalize(glm::cross(glm::vec3(1.0f, 1.0f, 1.0f), u));
    const fs::path file = CaseDirectory() / "edge-on.ply";
    {
        std::ofstream out(file);
        out << "ply\nformat ascii 1.0\nelement vertex 576\nproperty float x\nproperty float y\nproperty "
               "float z\n"
               "property float nx\nproperty float ny\nproperty float nz\nproperty uchar red\nproperty uchar "
               "green\n"
               "property uchar blue\nend_header\n";
        for (int i = 0; i < 24; ++i)
            for (int j = 0; j < 24; ++j) {
                const glm::vec3 p = (static_cast<float>(i) * u + static_cast<float>(j) * v) * 0.1f;
                out << p.x << ' ' << p.y << ' ' << p.z << ' ' << u.x << ' ' << u.y << ' ' << u.z
                    << " 230 60 60\n";
            }
    }
    ASSERT_TRUE(LaunchViewer({file.string()}));
    const Picture shown = WaitForWindow(
        [&](const Picture& p) { return FindBlob(p, layout.RenderArea(), IsSalmon).count >= 576; }, "opened");
    ASSERT_FALSE(shown.Empty()) << "the cloud did not appear";

    // Round points of the default size cover about seven pixels each; discs turned edge-on
    // would be a pixel or two wide.
    const Blob points = FindBlob(shown, layout.RenderArea(), IsSalmon);
    EXPECT_GT(points.count, 576u * 5) << "points seen edge-on shrank";
    // The middle of each point has the file's colour, not a shaded one.
    std::vector<int> reds;
    ForEachPixel(shown, layout.RenderArea(), [&](int px, int py) {
        if (IsSalmon(shown.At(px, py)))
            reds.push_back(shown.At(px, py).r);
    });
    std::sort(reds.begin(), reds.end());
    ASSERT_FALSE(reds.empty());
    EXPECT_NEAR(reds[reds.size() * 9 / 10], 230, 12) << "the file's red is not shown as it is";
}

TEST_F(Content, ALopsidedCloudIsInViewToItsLastPoint)
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
    const Picture shown = WaitForWindow(
        [&](const Picture& p) { return FindBlob(p, layout.RenderArea(), IsGreen).count > 100; }, "opened");
    ASSERT_FALSE(shown.Empty()) << "the cloud did not appear";
    const Rect scene = layout.RenderArea();
    const Blob top = FindBlob(shown, scene, IsMagenta, {layout.SidebarToggle()});
    EXPECT_GT(top.count, 0u) << "the top of the column is not in the visible part of the view";
    // Not just touching the edge: a margin is left above it.
    EXPECT_GT(top.centroid.y, scene.y0 + 10.0);
}

} // namespace
} // namespace e2e
