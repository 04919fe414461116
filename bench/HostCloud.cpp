#include "HostCloud.h"

#include <glm/common.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

namespace bench {

namespace {

constexpr float kSide = 100.0f; // metres
constexpr float kLowest = -7.5f;
constexpr float kHighest = 7.5f;

struct Stop {
    float at;
    std::array<float, 3> rgb;
};
// Water, grass, earth, rock, snow: neighbouring heights differ visibly, so a thinned frame
// shows its holes against the colour of the land around them.
constexpr std::array<Stop, 5> kRamp{{{0.0f, {30, 70, 160}},
                                     {0.35f, {70, 150, 60}},
                                     {0.6f, {125, 100, 70}},
                                     {0.82f, {150, 150, 150}},
                                     {1.0f, {250, 250, 250}}}};

void HeightColour(float height, std::uint8_t* rgb)
{
    const float t = std::clamp((height - kLowest) / (kHighest - kLowest), 0.0f, 1.0f);
    std::size_t upper = 1;
    while (upper + 1 < kRamp.size() && t > kRamp[upper].at)
        ++upper;
    const Stop& a = kRamp[upper - 1];
    const Stop& b = kRamp[upper];
    const float f = std::clamp((t - a.at) / (b.at - a.at), 0.0f, 1.0f);
    for (int i = 0; i < 3; ++i)
        rgb[i] = static_cast<std::uint8_t>(std::lround(a.rgb[i] + f * (b.rgb[i] - a.rgb[i])));
}

// A scanner's range noise of a couple of centimetres, from the point's index alone.
float Noise(std::size_t index)
{
    std::uint32_t h = static_cast<std::uint32_t>(index) * 2654435761u;
    h ^= h >> 15;
    h *= 2246822519u;
    h ^= h >> 13;
    return (static_cast<float>(h & 0xffffu) / 65535.0f - 0.5f) * 0.04f;
}

// The terrain's terms are products of a function of x and one of z, so each row and each
// column is evaluated once instead of once a point.
struct Terms {
    float broadSin, broadCos, ridgeSin, ridgeCos, bumpSin;
};

Terms ColumnTerms(float x)
{
    return {std::sin(0.07f * x), 0.0f, std::sin(0.21f * x), std::cos(0.21f * x), std::sin(0.9f * x)};
}

Terms RowTerms(float z)
{
    return {0.0f, std::cos(0.05f * z), std::sin(0.13f * z), std::cos(0.13f * z), std::cos(0.7f * z)};
}

float Height(const Terms& column, const Terms& row)
{
    // 4 sin(.07x) cos(.05z) + 2 sin(.21x + .13z) + .6 sin(.9x) cos(.7z)
    return 4.0f * column.broadSin * row.broadCos +
           2.0f * (column.ridgeSin * row.ridgeCos + column.ridgeCos * row.ridgeSin) +
           0.6f * column.bumpSin * row.bumpSin;
}

} // namespace

HostCloud MakeHostCloud(std::size_t count)
{
    HostCloud cloud;
    if (count == 0)
        return cloud;
    const auto columns = static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(count))));
    const std::size_t rows = (count + columns - 1) / columns;
    std::vector<Terms> columnTerms(columns);
    std::vector<float> xs(columns);
    for (std::size_t c = 0; c < columns; ++c) {
        xs[c] = kSide * ((static_cast<float>(c) + 0.5f) / static_cast<float>(columns) - 0.5f);
        columnTerms[c] = ColumnTerms(xs[c]);
    }
    cloud.xyz.resize(3 * count);
    cloud.rgb.resize(3 * count);
    glm::vec3 lo(INFINITY);
    glm::vec3 hi(-INFINITY);
    std::size_t index = 0;
    for (std::size_t r = 0; r < rows && index < count; ++r) {
        const float z = kSide * ((static_cast<float>(r) + 0.5f) / static_cast<float>(rows) - 0.5f);
        const Terms row = RowTerms(z);
        // A sweeping scanner goes back and forth.
        for (std::size_t step = 0; step < columns && index < count; ++step, ++index) {
            const std::size_t c = r % 2 == 0 ? step : columns - 1 - step;
            const float height = Height(columnTerms[c], row);
            const glm::vec3 p(xs[c], height + Noise(index), z);
            float* out = &cloud.xyz[3 * index];
            out[0] = p.x;
            out[1] = p.y;
            out[2] = p.z;
            HeightColour(height, &cloud.rgb[3 * index]);
            lo = glm::min(lo, p);
            hi = glm::max(hi, p);
        }
    }
    cloud.minimum = lo;
    cloud.maximum = hi;
    return cloud;
}

const HostCloud& HostCloudOf(std::size_t count)
{
    static std::map<std::size_t, HostCloud> kept;
    auto found = kept.find(count);
    if (found == kept.end())
        found = kept.emplace(count, MakeHostCloud(count)).first;
    return found->second;
}

void CameraBox(const HostCloud& cloud, int step, glm::vec3& minimum, glm::vec3& maximum)
{
    const glm::vec3 centre = 0.5f * (cloud.minimum + cloud.maximum);
    const glm::vec3 half = 0.5f * (cloud.maximum - cloud.minimum);
    const auto s = static_cast<float>(step);
    const glm::vec3 drift(0.03f * half.x * std::sin(0.7f * s), 0.0f, 0.03f * half.z * std::cos(0.5f * s));
    const float scale = 1.0f + 0.04f * std::sin(0.3f * s);
    minimum = centre + drift - scale * half;
    maximum = centre + drift + scale * half;
}

} // namespace bench
