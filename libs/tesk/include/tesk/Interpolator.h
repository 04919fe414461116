#pragma once
// Key frames of any value type along a time line, read back by linear or Catmull-Rom
// interpolation. A value type takes part by providing, in its own namespace so that
// argument-dependent lookup finds them:
//
//   T InterpolateLinear(const T& a, const T& b, float t);           // or Interpolate(a, b, t)
//   T InterpolateCubic(const T& p0, const T& p1, const T& p2, const T& p3, float t);
//
// where the cubic runs from p1 at t = 0 to p2 at t = 1. Types with vector-space arithmetic
// (float, double, glm vectors) are covered below; glm::quat gets spherical blending.

#include <runa/rlog.h>

#include <glm/glm.hpp>
#include <glm/gtc/quaternion.hpp>

#include <algorithm>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace tesk {

/// Values that can be blended as a + (b - a) * t.
template <class T>
concept VectorSpaceValue = requires(const T& a, float s)
{
    {
        a + a
        } -> std::convertible_to<T>;
    {
        a - a
        } -> std::convertible_to<T>;
    {
        a* s
        } -> std::convertible_to<T>;
};

template <VectorSpaceValue T>
T InterpolateLinear(const T& a, const T& b, float t)
{
    return a + (b - a) * t;
}

/// Uniform Catmull-Rom: passes through p1 at t = 0 and p2 at t = 1 with tangents
/// (p2 - p0) / 2 and (p3 - p1) / 2.
template <VectorSpaceValue T>
T InterpolateCubic(const T& p0, const T& p1, const T& p2, const T& p3, float t)
{
    const float t2 = t * t;
    const float t3 = t2 * t;
    return (p0 * (2.0f * t2 - t3 - t) + p1 * (3.0f * t3 - 5.0f * t2 + 2.0f) +
            p2 * (4.0f * t2 - 3.0f * t3 + t) + p3 * (t3 - t2)) *
           0.5f;
}

glm::quat InterpolateLinear(const glm::quat& a, const glm::quat& b, float t);
/// Catmull-Rom on the components with all four in the hemisphere of p1, renormalised.
glm::quat InterpolateCubic(const glm::quat& p0, const glm::quat& p1, const glm::quat& p2, const glm::quat& p3,
                           float t);

namespace detail {

// Unqualified calls: ordinary lookup finds the overloads above, argument-dependent lookup
// finds those of the value's own namespace.
template <class T>
concept HasInterpolateLinear = requires(const T& a, float t)
{
    {
        InterpolateLinear(a, a, t)
        } -> std::convertible_to<T>;
};
template <class T>
concept HasInterpolate = requires(const T& a, float t)
{
    {
        Interpolate(a, a, t)
        } -> std::convertible_to<T>;
};

template <class T>
T Linear(const T& a, const T& b, float t)
{
    if constexpr (HasInterpolateLinear<T>)
        return InterpolateLinear(a, b, t);
    else
        return Interpolate(a, b, t);
}

template <class T>
T Cubic(const T& p0, const T& p1, const T& p2, const T& p3, float t)
{
    return InterpolateCubic(p0, p1, p2, p3, t);
}

void ReportNoKeys(float time, const char* label);
void ReportBadTime(const char* label);
void ReportBadIndex(std::size_t index, std::size_t size, const char* label);

} // namespace detail

template <class T>
class Interpolator {
public:
    struct Key {
        float time;
        T value;
    };

    std::size_t Size() const { return keys_.size(); }
    bool Empty() const { return keys_.empty(); }
    void Clear() { keys_.clear(); }
    void Reserve(std::size_t count) { keys_.reserve(count); }

    /// Adds a key after every key whose time is not greater, so keys with equal times keep
    /// the order in which they were inserted. A NaN time is refused with an error.
    void Insert(float time, T value)
    {
        if (std::isnan(time)) {
            detail::ReportBadTime("tesk::Interpolator::Insert");
            return;
        }
        const auto at = std::upper_bound(keys_.begin(), keys_.end(), time,
                                         [](float t, const Key& key) { return t < key.time; });
        keys_.insert(at, Key{time, std::move(value)});
    }

    /// Removes the key with the greatest time (the latest inserted among equals).
    void RemoveLast()
    {
        if (!keys_.empty())
            keys_.pop_back();
    }

    std::span<const Key> Keys() const { return keys_; }

    /// Out of range: an error is logged and a default key is returned.
    const Key& GetKey(std::size_t index) const
    {
        if (index >= keys_.size()) {
            detail::ReportBadIndex(index, keys_.size(), "tesk::Interpolator::GetKey");
            static const Key fallback{0.0f, T{}};
            return fallback;
        }
        return keys_[index];
    }
    float GetTime(std::size_t index) const { return GetKey(index).time; }
    const T& GetValue(std::size_t index) const { return GetKey(index).value; }

    /// Time of the earliest / latest key; 0 without keys.
    float FirstTime() const { return keys_.empty() ? 0.0f : keys_.front().time; }
    float LastTime() const { return keys_.empty() ? 0.0f : keys_.back().time; }

    /// Straight blend between the keys around t; the first / last value outside the keys'
    /// range. Without keys an error is logged and T{} returned.
    T GetValueAtTime(float t) const
    {
        static constexpr const char* label = "tesk::Interpolator::GetValueAtTime";
        Segment s;
        if (!Locate(t, label, s))
            return s.index < keys_.size() ? keys_[s.index].value : T{};
        return detail::Linear(keys_[s.index].value, keys_[s.index + 1].value, s.local);
    }

    /// Catmull-Rom through the keys: the segment between the keys around t, with their outer
    /// neighbours (the end keys repeated at either end) shaping the tangents. t is taken
    /// relative to its own segment, so unevenly spaced keys still meet at their values.
    /// Exact key values at key times; the first / last value outside the range. Without
    /// keys an error is logged and T{} returned.
    T GetValueAtTimeCubic(float t) const
    {
        static constexpr const char* label = "tesk::Interpolator::GetValueAtTimeCubic";
        Segment s;
        if (!Locate(t, label, s))
            return s.index < keys_.size() ? keys_[s.index].value : T{};
        const std::size_t i = s.index;
        const T& p1 = keys_[i].value;
        const T& p2 = keys_[i + 1].value;
        const T& p0 = i > 0 ? keys_[i - 1].value : p1;
        const T& p3 = i + 2 < keys_.size() ? keys_[i + 2].value : p2;
        return detail::Cubic(p0, p1, p2, p3, s.local);
    }

private:
    struct Segment {
        std::size_t index = static_cast<std::size_t>(-1);
        float local = 0.0f;
    };

    // True when t lies strictly inside a segment [index, index + 1] with a local parameter
    // in [0, 1). Otherwise the answer is the single key `index`, or nothing when there are
    // no keys (index stays out of range).
    bool Locate(float t, const char* label, Segment& s) const
    {
        if (keys_.empty()) {
            detail::ReportNoKeys(t, label);
            return false;
        }
        if (std::isnan(t)) {
            detail::ReportBadTime(label);
            s.index = 0;
            return false;
        }
        if (t <= keys_.front().time) {
            s.index = 0;
            return false;
        }
        if (t >= keys_.back().time) {
            s.index = keys_.size() - 1;
            return false;
        }
        // keys_[i].time <= t < keys_[i + 1].time, so the segment has length.
        const auto next = std::upper_bound(keys_.begin(), keys_.end(), t,
                                           [](float time, const Key& key) { return time < key.time; });
        const std::size_t i = static_cast<std::size_t>(next - keys_.begin()) - 1;
        if (t == keys_[i].time) {
            s.index = i;
            return false;
        }
        s.index = i;
        s.local = (t - keys_[i].time) / (keys_[i + 1].time - keys_[i].time);
        return true;
    }

    std::vector<Key> keys_;
};

} // namespace tesk
