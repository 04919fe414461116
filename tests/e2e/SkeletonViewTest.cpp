// The skeleton example as a person meets it: a walking figure that moves on its own, and the
// panel's "Render Mode" droplist that turns its solid bones into stick lines.

#include "E2eTest.h"

#include <algorithm>
#include <vector>

namespace e2e {
namespace {

/// Stick lines take the style's bone colour (209, 204, 189) unlit; lit octahedra are darker.
bool IsBoneLine(Rgb c)
{
    return Near(c, {209, 204, 189}, 22);
}
/// Any shade of a bone: greys brighter than the background (61, 61, 61), not bluish.
bool IsBoneShade(Rgb c)
{
    const int high = std::max({c.r, c.g, c.b}), low = std::min({c.r, c.g, c.b});
    return high > 85 && high - low < 40 && c.r + 4 >= c.b;
}
/// The joints' orange, lit or not.
bool IsJoint(Rgb c)
{
    return c.r > 90 && c.r > c.g + 40 && c.g > c.b + 20;
}

/// Centres of the joint spheres: a joint pixel joins the first cluster whose centre is
/// within 12 px; clusters of fewer than 12 pixels are dropped.
std::vector<Point> FindJoints(const Picture& picture, const Rect& area)
{
    std::vector<std::pair<Point, int>> clusters;
    ForEachPixel(picture, area, [&](int x, int y) {
        const Point p{static_cast<double>(x), static_cast<double>(y)};
        if (!IsJoint(picture.At(x, y)))
            return;
        auto it = std::ranges::find_if(clusters, [&](const auto& c) { return Distance(c.first, p) < 12.0; });
        if (it == clusters.end())
            return clusters.push_back({p, 1});
        const double n = ++it->second;
        it->first = {it->first.x + (p.x - it->first.x) / n, it->first.y + (p.y - it->first.y) / n};
    });
    std::vector<Point> joints;
    for (const auto& [centre, count] : clusters)
        if (count >= 12)
            joints.push_back(centre);
    return joints;
}

/// Pairs of joints joined by a line of bone colour: 20 of 21 points along the middle 60 % of
/// the segment between them have a line pixel within 2 px.
int CountDrawnSegments(const Picture& picture, const Rect& area)
{
    const std::vector<Point> joints = FindJoints(picture, area);
    int segments = 0;
    for (std::size_t i = 0; i < joints.size(); ++i)
        for (std::size_t j = i + 1; j < joints.size(); ++j) {
            const Point a = joints[i], b = joints[j];
            int hits = 0;
            for (double t = 0.2; t < 0.81; t += 0.03) {
                const int x = static_cast<int>(a.x + t * (b.x - a.x)),
                          y = static_cast<int>(a.y + t * (b.y - a.y));
                hits += FindBlob(picture, {x - 2, y - 2, x + 3, y + 3}, IsBoneLine).count > 0 ? 1 : 0;
            }
            segments += Distance(a, b) > 25.0 && hits >= 20 ? 1 : 0;
        }
    return segments;
}

/// The share of bone pixels whose run across or down is at most 6 pixels: near 1 for lines,
/// far less for filled shapes.
double ThinShare(const Picture& picture, const Rect& area)
{
    const auto run = [&](int x, int y, int dx, int dy) {
        int length = 1;
        for (int s : {-1, 1})
            for (int k = 1; k <= 6 && area.Contains(x + s * k * dx, y + s * k * dy) &&
                            IsBoneShade(picture.At(x + s * k * dx, y + s * k * dy));
                 ++k)
                ++length;
        return length;
    };
    double all = 0, thin = 0;
    ForEachPixel(picture, area, [&](int x, int y) {
        if (IsBoneShade(picture.At(x, y)))
            ++all, thin += std::min(run(x, y, 1, 0), run(x, y, 0, 1)) <= 6 ? 1 : 0;
    });
    return all > 0 ? thin / all : 0.0;
}

class SkeletonView : public E2eTest {
protected:
    /// Starts the example and waits for the figure and its panel, opening the sidebar when it
    /// is hidden. The figure never holds still, so no picture is waited on to settle.
    void Open()
    {
        ASSERT_TRUE(Launch(E2E_SKELETON_EXAMPLE, {}));
        const Picture shown = Keep(
            "shown",
            WaitUntil([](const Picture& p) { return FindBlob(p, p.Bounds(), IsJoint).count > 300; }, 30s));
        ASSERT_FALSE(shown.Empty()) << "the figure did not appear";
        layout.sidebarVisible = !FindPanelHeaders(shown, layout).empty();
        if (!layout.sidebarVisible)
            ClickCentre(layout.SidebarToggle());
        layout.sidebarVisible = true;
        start = Keep("start",
                     WaitUntil([&](const Picture& p) { return FindPanelHeaders(p, layout).size() == 1; }));
        ASSERT_FALSE(start.Empty()) << "no panel for the skeleton in the sidebar";
    }
};

TEST_F(SkeletonView, TheFigureWalksOnItsOwnAndStickmanDrawsThinLinesBetweenTheJoints)
{
    ASSERT_NO_FATAL_FAILURE(Open());
    const Rect area = layout.RenderArea();
    // Around the figure as first seen, with a margin for the stride.
    Rect figure{area.x1, area.y1, area.x0, area.y0};
    for (const Point& j : FindJoints(start, area))
        figure = {
            std::min(figure.x0, static_cast<int>(j.x) - 30), std::min(figure.y0, static_cast<int>(j.y) - 30),
            std::max(figure.x1, static_cast<int>(j.x) + 30), std::max(figure.y1, static_cast<int>(j.y) + 30)};
    ASSERT_LT(figure.x0, figure.x1) << "no joints found";

    // A quarter of the 1.2 s stride apart: another pose whatever the phase.
    const Picture first = Keep("first", Grab());
    XSession::Pause(300ms);
    const Picture later = Keep("later", Grab());
    EXPECT_GT(CountDifferences(first, later, figure), 300u) << "the figure did not move in 0.3 s";
    EXPECT_EQ(CountDifferences(first, later, area, {figure}), 0u) << "something besides the figure changed";

    ASSERT_GT(FindBlob(start, area, IsBoneShade).count, 1000u) << "the octahedra are not drawn";
    const double solidShare = ThinShare(start, area);

    // "Render Mode" is the panel's first row; its list drops below the box, 16 px an item:
    // "Octahedron", "Wired Octahedron", "Stickman".
    const Rect box =
        FindEditBox(start, layout.PanelColumn(), FindPanelHeaders(start, layout).front().rect.y1);
    ASSERT_GT(box.Width(), 0) << "no droplist in the skeleton's panel";
    ClickCentre(box);
    const Rect list{box.x0, box.y1, box.x1, box.y1 + 50};
    const auto opened = [&](const Picture& p) { return CountDifferences(start, p, list) > 300; };
    ASSERT_FALSE(Keep("list", WaitUntil(opened)).Empty()) << "the droplist did not open";
    Click({(box.x0 + box.x1) / 2.0, box.y1 + 2.0 + 2 * 16 + 8});
    Rest();

    const auto lines = [&](const Picture& p) { return CountDrawnSegments(p, area) >= 8; };
    const Picture sticks = Keep("stickman", WaitUntil(lines));
    ASSERT_FALSE(sticks.Empty()) << "no lines of bone colour between the joints after choosing \"Stickman\"; "
                                 << CountDrawnSegments(Grab(), area) << " found";
    EXPECT_EQ(CountDrawnSegments(start, area), 0) << "octahedra drawn in line colour";
    // Lines, not solids: nearly every bone pixel is within a few pixels of an edge.
    const double lineShare = ThinShare(sticks, area);
    EXPECT_GT(lineShare, 0.9);
    EXPECT_GT(lineShare, solidShare + 0.3) << "lines " << lineShare << ", octahedra " << solidShare;
}

} // namespace
} // namespace e2e
