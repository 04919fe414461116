#pragma once
// Axis-aligned boxes in N dimensions. A default box is empty (min above max), so extending it
// by the first point makes that point the whole box without a special case.

#include <glm/glm.hpp>

#include <limits>
#include <span>

namespace geom {

template <int N, class T>
struct TAabb {
    using Vector = glm::vec<N, T, glm::defaultp>;

    Vector min = Vector(std::numeric_limits<T>::max());
    Vector max = Vector(std::numeric_limits<T>::lowest());

    TAabb() = default;
    TAabb(const Vector& minimum, const Vector& maximum) : min(minimum), max(maximum) {}

    static TAabb FromPoints(std::span<const Vector> points)
    {
        TAabb box;
        for (const Vector& p : points)
            box.Extend(p);
        return box;
    }

    /// Grows the box to hold `point`. A coordinate that is NaN leaves that axis unchanged,
    /// because glm's min/max keep their first argument when the comparison fails.
    void Extend(const Vector& point)
    {
        min = glm::min(min, point);
        max = glm::max(max, point);
    }

    void Extend(const TAabb& other)
    {
        if (other.IsEmpty())
            return;
        min = glm::min(min, other.min);
        max = glm::max(max, other.max);
    }

    /// True only when the box has extent on every axis: a single point or a flat box is not
    /// valid, since a camera cannot frame it and a scale derived from it would be singular.
    bool IsValid() const { return glm::all(glm::greaterThan(max, min)); }

    /// True when no point was ever added (min above max on some axis).
    bool IsEmpty() const { return glm::any(glm::lessThan(max, min)); }

    bool Contains(const Vector& point) const
    {
        return glm::all(glm::lessThanEqual(min, point)) && glm::all(glm::lessThanEqual(point, max));
    }

    Vector Center() const { return (min + max) / T(2); }
    Vector Size() const { return max - min; }

    void Reset() { *this = TAabb(); }

    bool operator==(const TAabb&) const = default;
};

using Aabb2f = TAabb<2, float>;
using Aabb3f = TAabb<3, float>;

} // namespace geom

namespace tesk {
namespace geom = ::geom;
}
