#pragma once
// Turns a file's coordinates into float positions without losing their last digits.
//
// A float keeps 24 bits: a scan georeferenced at 10^6 m would be stored in steps of 6 cm.
// The first finite point read decides one offset per file: every axis of that point whose
// magnitude reaches kThreshold is shifted by its value rounded to a multiple of kGranularity
// (round numbers read well in the panel); the other axes are left alone. Every point is then
// stored as (coordinate - offset), computed in double, so millimetres survive anywhere within
// a few kilometres of the first point. The offset goes into tesk::PointCloud::SetOriginOffset.

#include <glm/ext/vector_double3.hpp>
#include <glm/vec3.hpp>

#include <cmath>

namespace vexa::viewer {

class CoordinateShift {
public:
    /// Coordinates below this magnitude are stored as they are: float still resolves
    /// better than a millimetre there.
    static constexpr double kThreshold = 10000.0;
    static constexpr double kGranularity = 1000.0;

    /// The stored position of a point given in file coordinates.
    glm::vec3 Apply(double x, double y, double z)
    {
        if (!decided_)
            Decide(x, y, z);
        return {static_cast<float>(x - offset_.x), static_cast<float>(y - offset_.y),
                static_cast<float>(z - offset_.z)};
    }

    /// Whether any point needs a shift at all, for readers with a faster float-only path:
    /// false once a first finite point near the origin has been seen.
    bool IsShifting() const { return offset_ != glm::dvec3(0.0); }
    bool IsDecided() const { return decided_; }
    const glm::dvec3& Offset() const { return offset_; }

    /// Decides from this point when it is finite; later calls change nothing.
    void Decide(double x, double y, double z)
    {
        if (decided_ || !std::isfinite(x) || !std::isfinite(y) || !std::isfinite(z))
            return;
        decided_ = true;
        offset_ = {AxisOffset(x), AxisOffset(y), AxisOffset(z)};
    }

private:
    static double AxisOffset(double value)
    {
        return std::abs(value) >= kThreshold ? std::round(value / kGranularity) * kGranularity : 0.0;
    }

    glm::dvec3 offset_{0.0};
    bool decided_ = false;
};

} // namespace vexa::viewer
