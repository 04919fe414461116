#pragma once

#include <glm/glm.hpp>

namespace geom {

template <int N, class T>
struct TSphere {
    using Vector = glm::vec<N, T, glm::defaultp>;

    Vector center = Vector(T(0));
    T radius = T(0);

    TSphere() = default;
    TSphere(const Vector& centre, T sphereRadius) : center(centre), radius(sphereRadius) {}

    bool IsValid() const { return radius >= T(0); }

    /// Points on the surface count as inside.
    bool Contains(const Vector& point) const
    {
        const Vector d = point - center;
        return glm::dot(d, d) <= radius * radius;
    }

    bool operator==(const TSphere&) const = default;
};

using Sphere3f = TSphere<3, float>;

} // namespace geom

namespace tesk {
namespace geom = ::geom;
}
