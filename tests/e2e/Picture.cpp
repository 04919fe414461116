#include "Picture.h"

#include <stb/stb_image.h>
#include <stb/stb_image_write.h>

#include <algorithm>
#include <cstdlib>

namespace e2e {

bool Picture::SavePng(const std::string& path) const
{
    if (Empty())
        return false;
    return stbi_write_png(path.c_str(), width_, height_, 3, rgb_.data(), width_ * 3) != 0;
}

Picture Picture::LoadPng(const std::string& path)
{
    int width = 0, height = 0, channels = 0;
    unsigned char* data = stbi_load(path.c_str(), &width, &height, &channels, 3);
    if (data == nullptr)
        return {};
    Picture picture(width, height);
    std::copy(data, data + static_cast<std::size_t>(width * height) * 3, picture.rgb_.begin());
    stbi_image_free(data);
    return picture;
}

Blob FindBlob(const Picture& picture, const Rect& area, const ColorTest& test, const std::vector<Rect>& holes)
{
    Blob blob;
    double sx = 0.0, sy = 0.0;
    ForEachPixel(
        picture, area,
        [&](int x, int y) {
            if (test(picture.At(x, y)))
                ++blob.count, sx += x + 0.5, sy += y + 0.5;
        },
        holes);
    if (blob.count > 0)
        blob.centroid = {sx / static_cast<double>(blob.count), sy / static_cast<double>(blob.count)};
    return blob;
}

std::size_t CountDifferences(const Picture& a, const Picture& b, const Rect& area,
                             const std::vector<Rect>& holes)
{
    if (a.Width() != b.Width() || a.Height() != b.Height())
        return static_cast<std::size_t>(std::max(a.Width() * a.Height(), b.Width() * b.Height()));
    std::size_t count = 0;
    ForEachPixel(
        a, area, [&](int x, int y) { count += a.At(x, y) == b.At(x, y) ? 0 : 1; }, holes);
    return count;
}

double MeanBrightness(const Picture& picture, const Rect& area)
{
    double sum = 0.0, count = 0.0;
    ForEachPixel(picture, area, [&](int x, int y) {
        const Rgb c = picture.At(x, y);
        sum += (c.r + c.g + c.b) / 3.0, ++count;
    });
    return count == 0 ? 0.0 : sum / count;
}

bool Near(Rgb a, Rgb b, int tolerance)
{
    return std::abs(a.r - b.r) <= tolerance && std::abs(a.g - b.g) <= tolerance &&
           std::abs(a.b - b.b) <= tolerance;
}

} // namespace e2e
