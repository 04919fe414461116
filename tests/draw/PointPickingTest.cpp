// Picking a point of a cloud on the CPU: no GL, positions and a camera only.

#include <vexa/draw/PointPicking.h>

#include <gtest/gtest.h>

#include <glm/ext/matrix_clip_space.hpp>
#include <glm/ext/matrix_transform.hpp>
#include <glm/glm.hpp>

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <random>
#include <tuple>
#include <vector>

using vexa::draw::PickPoint;

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

// A 400 x 300 view area whose top-left corner is at (300, 200) in the window, and a camera at
// z = 5 looking down -Z at the origin, near 0.1, far 20.
const glm::ivec4 kViewport{300, 200, 700, 500};
const glm::vec2 kCentre{500.0f, 350.0f};
const glm::mat4 kClip =
    glm::perspective(glm::radians(45.0f), 4.0f / 3.0f, 0.1f, 20.0f) *
    glm::lookAt(glm::vec3(0.0f, 0.0f, 5.0f), glm::vec3(0.0f), glm::vec3(0.0f, 1.0f, 0.0f));

/// Where a point lands in the window (pixels, origin top-left).
glm::vec2 Pixel(const glm::vec3& p, const glm::mat4& clip = kClip, const glm::ivec4& viewport = kViewport)
{
    const glm::vec4 c = clip * glm::vec4(p, 1.0f);
    return {viewport.x + (c.x / c.w * 0.5f + 0.5f) * static_cast<float>(viewport.z - viewport.x),
            viewport.y + (0.5f - c.y / c.w * 0.5f) * static_cast<float>(viewport.w - viewport.y)};
}

std::optional<std::size_t> Pick(const std::vector<glm::vec3>& points, glm::vec2 cursor, float radius = 5.0f)
{
    return PickPoint(points, kClip, kViewport, cursor, radius);
}

/// The plain definition, point by point in doubles: drawn (finite, inside the clip volume),
/// within the radius, then the smallest 24-bit depth-buffer value, the shortest distance to
/// the cursor, the first index.
std::optional<std::size_t> PickByDefinition(const std::vector<glm::vec3>& points, const glm::mat4& clip,
                                            const glm::ivec4& viewport, glm::vec2 cursor, float radius)
{
    const glm::dmat4 m(clip);
    const double width = viewport.z - viewport.x;
    const double height = viewport.w - viewport.y;
    std::optional<std::size_t> best;
    std::tuple<std::int64_t, double> bestKey;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const glm::vec3& p = points[i];
        if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z))
            continue;
        glm::dvec4 c;
        for (int r = 0; r < 4; ++r)
            c[r] = m[0][r] * p.x + m[1][r] * p.y + m[2][r] * p.z + m[3][r];
        if (!(c.w > 0.0) || std::abs(c.x) > c.w || std::abs(c.y) > c.w || std::abs(c.z) > c.w)
            continue;
        const double dx = viewport.x + (c.x / c.w + 1.0) * 0.5 * width - cursor.x;
        const double dy = viewport.y + (1.0 - c.y / c.w) * 0.5 * height - cursor.y;
        const double distance2 = dx * dx + dy * dy;
        if (distance2 > static_cast<double>(radius) * radius)
            continue;
        const std::tuple<std::int64_t, double> key{std::llround((c.z / c.w * 0.5 + 0.5) * 16777215.0),
                                                   distance2};
        if (!best || key < bestKey) {
            best = i;
            bestKey = key;
        }
    }
    return best;
}

} // namespace

TEST(PointPicking, IgnoresPointsThatAreNotDrawnAndFindsNothingWithoutPointsOrRoom)
{
    const glm::vec3 shown(0.0f);
    const std::vector<glm::vec3> hidden{
        {0.0f, 0.0f, 10.0f},  // behind the camera, on its axis
        {0.0f, 0.0f, -16.0f}, // beyond the far plane
        {0.0f, 0.0f, 4.95f},  // before the near plane
        {kNaN, 0.0f, 0.0f},   // not a number
        {0.0f, kNaN, 2.0f},   // not a number, nearer than `shown`
        {0.0f, 0.0f, kInf},   // infinitely far
        {-kInf, kInf, -kInf}, // nowhere
    };
    EXPECT_EQ(Pick(hidden, kCentre, 50.0f), std::nullopt);
    for (std::size_t i = 0; i < hidden.size(); ++i) {
        std::vector<glm::vec3> points(20, hidden[i]);
        points[13] = shown;
        EXPECT_EQ(Pick(points, kCentre), 13u) << "with point " << i;
    }

    // Without points or room there is nothing to find.
    const std::vector<glm::vec3> points{{0.0f, 0.0f, 0.0f}};
    EXPECT_EQ(Pick({}, kCentre), std::nullopt);
    EXPECT_EQ(PickPoint(points, kClip, {300, 200, 300, 500}, kCentre, 5.0f), std::nullopt) << "no width";
    EXPECT_EQ(PickPoint(points, kClip, {300, 500, 700, 200}, kCentre, 5.0f), std::nullopt) << "upside down";
    EXPECT_EQ(Pick(points, kCentre, -1.0f), std::nullopt);
    EXPECT_EQ(Pick(points, kCentre, kNaN), std::nullopt);
    EXPECT_EQ(Pick(points, {kNaN, kCentre.y}), std::nullopt);
    EXPECT_EQ(PickPoint(points, glm::mat4(kNaN), kViewport, kCentre, 5.0f), std::nullopt);
}

// The search skips most points with a quick float test and only runs the exact one on the
// rest; whatever the camera, that must never change the answer.
TEST(PointPicking, AgreesWithThePlainDefinitionOnRandomClouds)
{
    std::mt19937 generator(20261123u);
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    const auto signedUnit = [&] { return 2.0f * unit(generator) - 1.0f; };
    int found = 0;
    for (int trial = 0; trial < 400; ++trial) {
        const int kind = trial % 6;
        const float scale = std::pow(10.0f, 3.0f * unit(generator) - 1.0f);
        const glm::vec3 centre = kind == 4 ? glm::vec3(1000.0f, 2000.0f, -500.0f) : glm::vec3(0.0f);
        std::vector<glm::vec3> points(1 + generator() % (kind == 5 ? 3000 : 700));
        for (glm::vec3& p : points) {
            p = centre + scale * glm::vec3(signedUnit(), signedUnit(), signedUnit());
            if (kind == 1) // a plane, in steps
                p = scale * glm::vec3(std::round(20.0f * p.x / scale) / 20.0f,
                                      std::round(20.0f * p.y / scale) / 20.0f, 0.0f);
            if (kind == 2 && unit(generator) < 0.3f) // a scanner's zeros
                p = glm::vec3(0.0f);
            if (kind == 3 && unit(generator) < 0.1f)
                p.y = kNaN;
            if (kind == 5) // a crowd a hundredth across, a few pixels or less
                p *= 0.01f / scale;
        }
        // Some clouds are seen from very far, down to a pixel or two.
        float distance = scale * (kind == 0 && trial % 2 == 0 ? 3000.0f : 1.5f + 4.0f * unit(generator));
        if (kind == 5)
            distance = scale * (50.0f + 400.0f * unit(generator));
        glm::vec3 direction = glm::normalize(glm::vec3(signedUnit(), signedUnit(), signedUnit()));
        if (kind == 1 && trial % 2 == 0)
            direction = glm::vec3(0.0f, 0.0f, 1.0f);
        const glm::ivec4 viewport(static_cast<int>(300.0f * unit(generator)),
                                  static_cast<int>(300.0f * unit(generator)),
                                  600 + static_cast<int>(900.0f * unit(generator)),
                                  500 + static_cast<int>(500.0f * unit(generator)));
        const float aspect =
            static_cast<float>(viewport.z - viewport.x) / static_cast<float>(viewport.w - viewport.y);
        const bool orthographic = trial % 7 == 0 || (kind == 5 && trial % 4 == 1);
        const glm::mat4 projection =
            orthographic ? glm::ortho(-scale * aspect, scale * aspect, -scale, scale, 0.01f * distance,
                                      3.0f * distance)
                         : glm::perspective(glm::radians(20.0f + 70.0f * unit(generator)), aspect,
                                            distance * 1e-3f * (0.1f + unit(generator)), distance * 10.0f);
        const glm::vec3 up =
            std::abs(direction.y) > 0.99f ? glm::vec3(1.0f, 0.0f, 0.0f) : glm::vec3(0.0f, 1.0f, 0.0f);
        const glm::mat4 clip = projection * glm::lookAt(centre + distance * direction, centre, up);

        // Mostly near some point, as a user clicks.
        glm::vec2 cursor = Pixel(points[generator() % points.size()], clip, viewport) +
                           glm::vec2(3.0f * signedUnit(), 3.0f * signedUnit());
        if (!std::isfinite(cursor.x) || !std::isfinite(cursor.y) || trial % 9 == 0)
            cursor = glm::vec2(viewport.x, viewport.y) +
                     glm::vec2(viewport.z - viewport.x, viewport.w - viewport.y) *
                         glm::vec2(unit(generator), unit(generator));
        const float radius = trial % 10 == 0 ? 0.0f : 10.0f * unit(generator);

        const std::optional<std::size_t> expected = PickByDefinition(points, clip, viewport, cursor, radius);
        ASSERT_EQ(PickPoint(points, clip, viewport, cursor, radius), expected) << "trial " << trial;
        found += expected ? 1 : 0;
    }
    EXPECT_GT(found, 200) << "most trials should find something to compare";
}
