#include "tesk/Interpolator.h"

#include <cstdio>

namespace tesk {

glm::quat InterpolateLinear(const glm::quat& a, const glm::quat& b, float t)
{
    // glm::slerp takes the short way round.
    return glm::slerp(a, b, t);
}

glm::quat InterpolateCubic(const glm::quat& p0, const glm::quat& p1, const glm::quat& p2, const glm::quat& p3,
                           float t)
{
    // q and -q are the same rotation; blending across hemispheres would pass through zero.
    const auto toVector = [&p1](const glm::quat& q) {
        const float sign = glm::dot(q, p1) < 0.0f ? -1.0f : 1.0f;
        return glm::vec4(q.x, q.y, q.z, q.w) * sign;
    };
    const glm::vec4 a = toVector(p0);
    const glm::vec4 b = toVector(p1);
    const glm::vec4 c = toVector(p2);
    const glm::vec4 d = toVector(p3);
    const glm::vec4 v = InterpolateCubic(a, b, c, d, t);
    const float length = glm::length(v);
    if (!(length > 0.0f))
        return p1;
    return glm::quat(v.w / length, v.x / length, v.y / length, v.z / length);
}

namespace detail {

void ReportNoKeys(float time, const char* label)
{
    char number[64];
    std::snprintf(number, sizeof(number), "%f", static_cast<double>(time));
    rlog::Fail(std::string("Can not interpolate to time ") + number + " when no key frames available.",
               label);
}

void ReportBadTime(const char* label)
{
    rlog::Fail("Key frame time is not a number.", label);
}

void ReportBadIndex(std::size_t index, std::size_t size, const char* label)
{
    rlog::Fail("Key frame index " + std::to_string(index) + " is out of range (" + std::to_string(size) +
                   " key frames).",
               label);
}

} // namespace detail
} // namespace tesk
