#pragma once
// What the end-to-end tests read off the screen: an RGB picture of a window and the few
// measurements they judge it by (colour classes, their centroids, region differences).

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace e2e {

struct Rgb {
    std::uint8_t r = 0;
    std::uint8_t g = 0;
    std::uint8_t b = 0;

    bool operator==(const Rgb&) const = default;
};

/// A rectangle in window pixels, origin top-left; `x1` and `y1` are exclusive.
struct Rect {
    int x0 = 0;
    int y0 = 0;
    int x1 = 0;
    int y1 = 0;

    bool Contains(int x, int y) const { return x >= x0 && x < x1 && y >= y0 && y < y1; }
    int Width() const { return x1 - x0; }
    int Height() const { return y1 - y0; }
};

struct Point {
    double x = 0.0;
    double y = 0.0;
};

class Picture {
public:
    Picture() = default;
    Picture(int width, int height)
        : width_(width), height_(height), rgb_(static_cast<std::size_t>(width * height) * 3)
    {
    }

    int Width() const { return width_; }
    int Height() const { return height_; }
    bool Empty() const { return width_ == 0 || height_ == 0; }
    Rect Bounds() const { return {0, 0, width_, height_}; }

    Rgb At(int x, int y) const { return {rgb_[Index(x, y)], rgb_[Index(x, y) + 1], rgb_[Index(x, y) + 2]}; }
    void Set(int x, int y, Rgb c)
    {
        const std::size_t i = Index(x, y);
        rgb_[i] = c.r, rgb_[i + 1] = c.g, rgb_[i + 2] = c.b;
    }

    bool operator==(const Picture&) const = default;

    bool SavePng(const std::string& path) const;
    /// Reads an RGB or RGBA PNG (alpha dropped); an empty picture when it cannot.
    static Picture LoadPng(const std::string& path);

private:
    std::size_t Index(int x, int y) const { return (static_cast<std::size_t>(y) * width_ + x) * 3; }

    int width_ = 0;
    int height_ = 0;
    std::vector<std::uint8_t> rgb_;
};

using ColorTest = std::function<bool(Rgb)>;

/// Calls `visit(x, y)` for every pixel of `area` that lies in the picture and in none of `holes`.
template <typename Visit>
void ForEachPixel(const Picture& picture, const Rect& area, Visit visit, const std::vector<Rect>& holes = {})
{
    for (int y = std::max(area.y0, 0); y < std::min(area.y1, picture.Height()); ++y)
        for (int x = std::max(area.x0, 0); x < std::min(area.x1, picture.Width()); ++x)
            if (std::ranges::none_of(holes, [&](const Rect& hole) { return hole.Contains(x, y); }))
                visit(x, y);
}

/// The pixels inside `area` (clipped to the picture) that pass `test`, minus those in `holes`.
struct Blob {
    std::size_t count = 0;
    Point centroid;
};
Blob FindBlob(const Picture& picture, const Rect& area, const ColorTest& test,
              const std::vector<Rect>& holes = {});

/// Pixels inside `area` that differ between the two pictures (same size assumed).
std::size_t CountDifferences(const Picture& a, const Picture& b, const Rect& area,
                             const std::vector<Rect>& holes = {});

/// Mean of (r + g + b) / 3 over `area`.
double MeanBrightness(const Picture& picture, const Rect& area);

bool Near(Rgb a, Rgb b, int tolerance);

} // namespace e2e
