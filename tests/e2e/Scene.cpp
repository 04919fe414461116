#include "Scene.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <random>
#include <sstream>

namespace e2e {

void WriteClusterPly(const std::filesystem::path& file, int pointsPerBall)
{
    struct Ball {
        float x, y, z;
        int r, g, b;
    };
    const Ball balls[] = {
        {1, 0, 0, 255, 0, 0}, {0, 1, 0, 0, 255, 0}, {0, 0, 1, 0, 0, 255}, {0, 0, 0, 255, 255, 255}};
    std::mt19937 random(7);
    std::uniform_real_distribution<float> unit(-1.0f, 1.0f);
    std::ofstream out(file);
    out << "ply\nformat ascii 1.0\nelement vertex " << 4 * pointsPerBall
        << "\nproperty float x\nproperty float y\nproperty float z\n"
           "property uchar red\nproperty uchar green\nproperty uchar blue\nend_header\n";
    for (const Ball& ball : balls)
        for (int n = 0; n < pointsPerBall;) {
            const float x = unit(random), y = unit(random), z = unit(random);
            if (x * x + y * y + z * z > 1.0f)
                continue;
            out << ball.x + 0.08f * x << ' ' << ball.y + 0.08f * y << ' ' << ball.z + 0.08f * z << ' '
                << ball.r << ' ' << ball.g << ' ' << ball.b << '\n';
            ++n;
        }
}

// Anti-aliased edges blend a ball's colour with the background (46,49,56); the limits keep
// blends that are mostly the ball's colour.
bool IsRed(Rgb c)
{
    return c.r >= 140 && c.g <= 30 && c.b <= 30;
}
bool IsGreen(Rgb c)
{
    return c.g >= 140 && c.r <= 30 && c.b <= 30;
}
bool IsBlue(Rgb c)
{
    return c.b >= 140 && c.r <= 30 && c.g <= 30;
}
bool IsWhite(Rgb c)
{
    return c.r >= 230 && c.g >= 230 && c.b >= 230;
}
bool IsMagenta(Rgb c)
{
    return c.r >= 140 && c.b >= 140 && c.g <= 40;
}

bool ClusterLayout::AllVisible(std::size_t pixels) const
{
    return std::ranges::all_of(balls, [&](const Blob& ball) { return ball.count >= pixels; });
}

Point ClusterLayout::Mean() const
{
    Point mean;
    for (const Blob& ball : balls) {
        mean.x += ball.centroid.x / 4.0;
        mean.y += ball.centroid.y / 4.0;
    }
    return mean;
}

double ClusterLayout::Spread() const
{
    const Point mean = Mean();
    double sum = 0.0;
    for (const Blob& ball : balls)
        sum += Distance(ball.centroid, mean) / 4.0;
    return sum;
}

std::string ClusterLayout::Describe() const
{
    static const char* names[] = {"red", "green", "blue", "white"};
    std::ostringstream text;
    text.precision(1);
    text << std::fixed;
    for (int i = 0; i < 4; ++i)
        text << names[i] << " " << balls[i].count << " px at (" << balls[i].centroid.x << ", "
             << balls[i].centroid.y << "); ";
    const Point mean = Mean();
    text << "mean (" << mean.x << ", " << mean.y << "), spread " << Spread();
    return text.str();
}

std::string Compare(const ClusterLayout& before, const ClusterLayout& after)
{
    return "before: " + before.Describe() + "\nafter:  " + after.Describe();
}

ClusterLayout MeasureClusters(const Picture& picture, const Rect& area, const std::vector<Rect>& holes)
{
    ClusterLayout layout;
    layout.balls[0] = FindBlob(picture, area, IsRed, holes);
    layout.balls[1] = FindBlob(picture, area, IsGreen, holes);
    layout.balls[2] = FindBlob(picture, area, IsBlue, holes);
    layout.balls[3] = FindBlob(picture, area, IsWhite, holes);
    return layout;
}

double Distance(Point a, Point b)
{
    return std::hypot(a.x - b.x, a.y - b.y);
}

Rect ViewAreaLayout::Sidebar() const
{
    return {area.x1 - kSidebarWidth, area.y0, area.x1, area.y1};
}

Rect ViewAreaLayout::RenderArea() const
{
    return {area.x0, area.y0, sidebarVisible ? area.x1 - kSidebarWidth : area.x1, area.y1};
}

Rect ViewAreaLayout::SidebarToggle() const
{
    const int right = RenderArea().x1;
    return {right - 26, area.y0 + 6, right - 6, area.y0 + 26};
}

Rect ViewAreaLayout::PanelColumn() const
{
    const Rect sidebar = Sidebar();
    return {sidebar.x0 + kPanelIndent, sidebar.y0 + kToolbarHeight, sidebar.x1, sidebar.y1};
}

std::vector<PanelHeader> FindPanelHeaders(const Picture& picture, const ViewAreaLayout& layout)
{
    std::vector<PanelHeader> headers = FindAllPanelHeaders(picture, layout);
    std::erase_if(headers, [](const PanelHeader& header) { return !header.focusButton; });
    return headers;
}

std::vector<PanelHeader> FindAllPanelHeaders(const Picture& picture, const ViewAreaLayout& layout)
{
    const Rect column = layout.PanelColumn();
    // Between the focus button (0..24 px) and the title (from 28 px) the header shows only
    // its own colour.
    const int probe = column.x0 + 26;
    std::vector<PanelHeader> headers;
    int y = column.y0;
    while (y < column.y1 && y < picture.Height()) {
        const Rgb c = picture.At(probe, y);
        const bool plain = c == kHeaderColor, selected = c == kSelectedHeaderColor;
        if (!plain && !selected) {
            ++y;
            continue;
        }
        int end = y;
        while (end < column.y1 && end < picture.Height() && picture.At(probe, end) == c)
            ++end;
        if (end - y == ViewAreaLayout::kHeaderHeight) {
            // The header ends short of the column's edge while the column shows its scrollbar;
            // its top row is plain header colour from end to end.
            int right = probe;
            while (right < column.x1 && right < picture.Width() && picture.At(right, y) == c)
                ++right;
            const Rect rect{column.x0, y, right, end};
            const bool focus = CountLightPixels(picture, {rect.x0, rect.y0, rect.x0 + 24, rect.y1}) > 10;
            headers.push_back({rect, selected, focus});
        }
        y = end;
    }
    return headers;
}

Rect FindEditBox(const Picture& picture, const Rect& column, int top)
{
    constexpr int kMinWidth = 40;
    for (int y = std::max(top, column.y0); y < column.y1 && y < picture.Height(); ++y) {
        int run = 0;
        for (int x = column.x0; x < column.x1 && x < picture.Width(); ++x) {
            run = picture.At(x, y) == kInputColor ? run + 1 : 0;
            if (run < kMinWidth)
                continue;
            int x0 = x - run + 1, x1 = x + 1;
            while (x1 < column.x1 && picture.At(x1, y) == kInputColor)
                ++x1;
            int y1 = y;
            while (y1 < column.y1 && picture.At(x0, y1) == kInputColor)
                ++y1;
            return {x0, y, x1, y1};
        }
    }
    return {};
}

std::vector<Rect> FindWideButtons(const Picture& picture, const Rect& column, int top, int bottom)
{
    const auto border = [&](int x, int y) { return picture.At(x, y) == kButtonBorderColor; };
    std::vector<Rect> buttons;
    bottom = std::min(bottom, picture.Height());
    for (int y = std::max(top, column.y0); y < bottom; ++y) {
        // The longest run of the border colour on this row.
        Rect run{column.x0, y, column.x0, y}, longest = run;
        for (int x = column.x0; x < column.x1; ++x) {
            run = border(x, y) ? Rect{run.x0, y, x + 1, y} : Rect{x + 1, y, x + 1, y};
            longest = run.Width() > longest.Width() ? run : longest;
        }
        if (longest.Width() < column.Width() / 2)
            continue;
        // The bottom edge: the next row down with the border colour in the middle.
        int y1 = y + 2;
        while (y1 < bottom && !border((longest.x0 + longest.x1) / 2, y1))
            ++y1;
        buttons.push_back({longest.x0, y, longest.x1, y1 + 1});
        y = y1 + 1;
    }
    return buttons;
}

std::size_t CountLightPixels(const Picture& picture, const Rect& area)
{
    return FindBlob(picture, area, [](Rgb c) { return c.r >= 170 && c.g >= 170 && c.b >= 170; }).count;
}

} // namespace e2e
