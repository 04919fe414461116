// A big cloud in the viewer, turned with the mouse: while the drag goes on, frames show an
// evenly spread part of it (the machine here cannot draw a million points at an interactive
// rate); once the camera is still, the whole cloud again, in the same place.

#include "E2eTest.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <thread>

namespace e2e {
namespace {

/// A scanned terrain in scan order, `rows` x `columns` points coloured by height in strong
/// colours (binary PLY, uchar colours, as scanners write them).
void WriteTerrainPly(const fs::path& file, int rows, int columns)
{
    std::ofstream out(file, std::ios::binary);
    out << "ply\nformat binary_little_endian 1.0\nelement vertex " << rows * columns
        << "\nproperty float x\nproperty float y\nproperty float z\nproperty uchar red\nproperty uchar "
           "green\n"
           "property uchar blue\nend_header\n";
    std::vector<char> record(15);
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column) {
            const float u = -2.0f + 4.0f * column / columns, v = -1.0f + 2.0f * row / rows;
            const float h = 0.25f * std::sin(3 * u) * std::cos(4 * v);
            const auto t = static_cast<std::uint8_t>(255.0f * (h + 0.25f) / 0.5f);
            const float xyz[3] = {u, h, v};
            const std::uint8_t rgb[3] = {t, 40, static_cast<std::uint8_t>(255 - t)};
            std::memcpy(record.data(), xyz, 12);
            std::memcpy(record.data() + 12, rgb, 3);
            out.write(record.data(), 15);
        }
}

/// The cloud's red to blue (through purple); the grid, background and text are grey.
bool IsCloud(Rgb c)
{
    return std::max({c.r, c.g, c.b}) - std::min({c.r, c.g, c.b}) > 40;
}

struct Coverage {
    std::size_t pixels = 0;
    Rect box{1 << 20, 1 << 20, 0, 0};
};

Coverage Cover(const Picture& picture, const Rect& area)
{
    Coverage cover;
    ForEachPixel(picture, area, [&](int x, int y) {
        if (!IsCloud(picture.At(x, y)))
            return;
        ++cover.pixels;
        cover.box = {std::min(cover.box.x0, x), std::min(cover.box.y0, y), std::max(cover.box.x1, x + 1),
                     std::max(cover.box.y1, y + 1)};
    });
    return cover;
}

using BigCloud = E2eTest;

} // namespace

TEST_F(BigCloud, WhileADragTurnsItAnEvenPartIsDrawnAndAllOfItOnceItStops)
{
    const fs::path ply = CaseDirectory() / "terrain.ply";
    WriteTerrainPly(ply, 700, 1400);
    ASSERT_TRUE(LaunchViewer({ply.string()}));
    const Rect area = layout.RenderArea();
    Rest();
    const Picture opened =
        WaitForWindow([&](const Picture& p) { return Cover(p, area).pixels > 5000; }, "opened", 60s);
    ASSERT_FALSE(opened.Empty()) << "the terrain did not appear";

    // Press, turn a little in small steps, and hold the button: the drag is not over.
    const Point from = At(0.5, 0.85);
    x->MoveTo(static_cast<int>(from.x), static_cast<int>(from.y));
    x->Press(Button::Left);
    for (int step = 1; step <= 6; ++step) {
        x->MoveTo(static_cast<int>(from.x) + 8 * step, static_cast<int>(from.y) - 2 * step);
        std::this_thread::sleep_for(60ms);
    }
    const Picture moving = Keep("moving", WaitForChange(opened, area));
    x->Release(Button::Left);
    const Picture stopped = Keep("stopped", WaitForChange(moving, area));
    ASSERT_FALSE(moving.Empty() || stopped.Empty());

    // Releasing the button does not move the camera: the two pictures show the same view.
    const Coverage part = Cover(moving, area), whole = Cover(stopped, area);
    std::size_t gaps = 0;
    ForEachPixel(stopped, area, [&](int px, int py) {
        gaps += IsCloud(stopped.At(px, py)) && !IsCloud(moving.At(px, py)) ? 1 : 0;
    });
    EXPECT_GT(gaps, whole.pixels / 50) << "while moving, only part of the cloud is drawn";
    EXPECT_GT(part.pixels, whole.pixels / 2) << "but enough of it to see the cloud";
    // The part spans the whole cloud, not some of its rows: the same box, and no empty patch
    // where the whole cloud has points.
    const int slack = whole.box.Width() / 25 + 2;
    EXPECT_NEAR(part.box.x0, whole.box.x0, slack);
    EXPECT_NEAR(part.box.x1, whole.box.x1, slack);
    EXPECT_NEAR(part.box.y0, whole.box.y0, slack);
    EXPECT_NEAR(part.box.y1, whole.box.y1, slack);
    int patches = 0, holes = 0;
    for (int py = whole.box.y0; py + 24 <= whole.box.y1; py += 24)
        for (int px = whole.box.x0; px + 24 <= whole.box.x1; px += 24) {
            const Rect patch{px, py, px + 24, py + 24};
            if (Cover(stopped, patch).pixels < 300)
                continue;
            ++patches;
            holes += Cover(moving, patch).pixels == 0 ? 1 : 0;
        }
    EXPECT_GT(patches, 20);
    EXPECT_EQ(holes, 0) << "of " << patches << " patches the cloud covers";
}

} // namespace e2e
