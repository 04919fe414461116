#pragma once
// The value types of binary point formats (PLY properties, PCD fields) and how one value is
// loaded from a file's bytes, in either byte order. Readers pick the type once per column and
// let VisitScalar instantiate their inner loop for it, so the loop itself has no branch.

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vexa::viewer {

/// Ordered by kind, then size (1, 2, 4, 8 bytes), so a kind plus log2(size) names a type.
enum class Scalar : std::uint8_t {
    Int8,
    Int16,
    Int32,
    Int64,
    UInt8,
    UInt16,
    UInt32,
    UInt64,
    Float32,
    Float64
};

/// Calls `visit.template operator()<T>()` with the C++ type of `type`.
template <class Visit>
decltype(auto) VisitScalar(Scalar type, Visit&& visit)
{
    switch (type) {
    case Scalar::Int8:
        return visit.template operator()<std::int8_t>();
    case Scalar::Int16:
        return visit.template operator()<std::int16_t>();
    case Scalar::Int32:
        return visit.template operator()<std::int32_t>();
    case Scalar::Int64:
        return visit.template operator()<std::int64_t>();
    case Scalar::UInt8:
        return visit.template operator()<std::uint8_t>();
    case Scalar::UInt16:
        return visit.template operator()<std::uint16_t>();
    case Scalar::UInt32:
        return visit.template operator()<std::uint32_t>();
    case Scalar::UInt64:
        return visit.template operator()<std::uint64_t>();
    case Scalar::Float32:
        return visit.template operator()<float>();
    case Scalar::Float64:
        break;
    }
    return visit.template operator()<double>();
}

inline std::size_t ScalarSize(Scalar type)
{
    return VisitScalar(type, []<class T>() { return sizeof(T); });
}

inline bool IsInteger(Scalar type)
{
    return type != Scalar::Float32 && type != Scalar::Float64;
}

/// What a colour channel of this type is divided by to come out in 0..1: the integer types'
/// full range (a divisor, not a factor, so that byte 51 becomes exactly 0.2f); float channels
/// are taken as they are. 32- and 64-bit integers count as bytes, as files use them.
inline float ColorDivisor(Scalar type)
{
    switch (type) {
    case Scalar::Int16:
    case Scalar::UInt16:
        return 65535.0f;
    case Scalar::Float32:
    case Scalar::Float64:
        return 1.0f;
    default:
        return 255.0f;
    }
}

/// One value of type T at `source`, its bytes reversed first when `Swap`.
template <typename T, bool Swap = false>
T Load(const unsigned char* source)
{
    unsigned char bytes[sizeof(T)];
    if constexpr (Swap) {
        for (std::size_t i = 0; i < sizeof(T); ++i)
            bytes[i] = source[sizeof(T) - 1 - i];
    } else {
        std::memcpy(bytes, source, sizeof(T));
    }
    T value;
    std::memcpy(&value, bytes, sizeof(T));
    return value;
}

/// One value of `type` at `source` as a double.
template <bool Swap = false>
double LoadScalar(Scalar type, const unsigned char* source)
{
    return VisitScalar(type, [source]<class T>() { return static_cast<double>(Load<T, Swap>(source)); });
}

} // namespace vexa::viewer
