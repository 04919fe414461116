#pragma once
// A line segment carries no colour of its own: a batch of segments is drawn in one colour, so
// keeping them as bare point pairs lets a renderer upload the array as it is.

#include <glm/glm.hpp>

namespace geom {

struct LineSegment3 {
    glm::vec3 a = glm::vec3(0.0f);
    glm::vec3 b = glm::vec3(0.0f);

    LineSegment3() = default;
    LineSegment3(const glm::vec3& start, const glm::vec3& end) : a(start), b(end) {}

    float Length() const { return glm::length(b - a); }
    glm::vec3 PointAt(float t) const { return a + (b - a) * t; }

    bool operator==(const LineSegment3&) const = default;
};

static_assert(sizeof(LineSegment3) == 6 * sizeof(float), "segments upload as packed vertex pairs");

} // namespace geom

namespace tesk {
namespace geom = ::geom;
}
