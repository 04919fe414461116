// Files a user opens in the viewer, judged by what they look like on screen: a file's own
// colours as they are, points that keep their size at any angle, meshes shaded in their
// material.

#include "ViewerCase.h"

#include <glm/geometric.hpp>
#include <glm/vec3.hpp>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <vector>

namespace e2e {
namespace {

class Content : public ViewerCase {
protected:
    /// Starts the viewer on `file` and waits until `drawn` pixels of the render area pass
    /// `test` and the picture holds still.
    Picture Open(const fs::path& file, const ColorTest& test, std::size_t drawn)
    {
        if (!LaunchViewer({file.string()}))
            return {};
        return WaitForWindow([&](const Picture& p) { return FindBlob(p, layout.RenderArea(), test).count >= drawn; },
                             "opened");
    }
};

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
        out << "ply\nformat ascii 1.0\nelement vertex 576\nproperty float x\nproperty float y\nproperty float z\n"
               "property float nx\nproperty float ny\nproperty float nz\nproperty uchar red\nproperty uchar green\n"
               "property uchar blue\nend_header\n";
        for (int i = 0; i < 24; ++i)
            for (int j = 0; j < 24; ++j)
            {
                const glm::vec3 p = (static_cast<float>(i) * u + static_cast<float>(j) * v) * 0.1f;
                out << p.x << ' ' << p.y << ' ' << p.z << ' ' << u.x << ' ' << u.y << ' ' << u.z << " 230 60 60\n";
            }
    }
    const Picture shown = Open(file, IsSalmon, 576);
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

TEST_F(Content, AMeshFileIsDrawnAsAShadedSurfaceInItsMaterial)
{
    // A sphere as OBJ, its material a blue from the MTL file beside it.
    const fs::path file = CaseDirectory() / "ball.obj";
    {
        std::ofstream mtl(CaseDirectory() / "ball.mtl");
        mtl << "newmtl glaze\nKd 0.15 0.45 0.95\n";
        std::ofstream out(file);
        out << "mtllib ball.mtl\nusemtl glaze\n";
        const int rings = 24, sectors = 48;
        for (int r = 0; r <= rings; ++r)
            for (int s = 0; s < sectors; ++s)
            {
                const double polar = M_PI * r / rings, azimuth = 2.0 * M_PI * s / sectors;
                out << "v " << std::sin(polar) * std::cos(azimuth) << ' ' << std::cos(polar) << ' '
                    << std::sin(polar) * std::sin(azimuth) << '\n';
            }
        for (int r = 0; r < rings; ++r)
            for (int s = 0; s < sectors; ++s)
            {
                const int a = r * sectors + s + 1, b = r * sectors + (s + 1) % sectors + 1;
                out << "f " << a << ' ' << b << ' ' << b + sectors << ' ' << a + sectors << '\n';
            }
    }
    const auto bluish = [](Rgb c) { return c.b > 40 && c.b > c.r + 25 && c.b > c.g; };
    const Picture shown = Open(file, bluish, 20000);
    ASSERT_FALSE(shown.Empty()) << "the mesh did not appear as a surface";
    // Shaded: the lit side is much brighter than the side turned away.
    int darkest = 255, brightest = 0;
    ForEachPixel(shown, layout.RenderArea(), [&](int px, int py) {
        if (bluish(shown.At(px, py)))
            darkest = std::min<int>(darkest, shown.At(px, py).b), brightest = std::max<int>(brightest, shown.At(px, py).b);
    });
    EXPECT_GT(brightest - darkest, 80) << "the surface is not shaded";
}

} // namespace
} // namespace e2e
