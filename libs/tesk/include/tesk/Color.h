#pragma once
// RGB colours: bytes for settings and GUI, floats (0..1) for rendering and per-point data.
// Both read and write six hexadecimal digits "RRGGBB" ("3D3D3D").

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tesk {

struct Color3f;

struct Color3b {
    std::uint8_t r = 0;
    std::uint8_t g = 0;
    std::uint8_t b = 0;

    constexpr Color3b() = default;
    constexpr Color3b(std::uint8_t red, std::uint8_t green, std::uint8_t blue) : r(red), g(green), b(blue) {}

    /// Six hex digits, either case, optionally after a '#'. Anything else gives no value.
    static std::optional<Color3b> FromHex(std::string_view text);
    /// Six upper-case hex digits, no prefix.
    std::string ToHex() const;

    Color3f ToFloat() const;

    bool operator==(const Color3b&) const = default;
};

struct Color3f {
    float r = 0.0f;
    float g = 0.0f;
    float b = 0.0f;

    constexpr Color3f() = default;
    constexpr Color3f(float red, float green, float blue) : r(red), g(green), b(blue) {}

    static std::optional<Color3f> FromHex(std::string_view text);
    /// Components are clamped to 0..1 and rounded to the nearest byte.
    std::string ToHex() const;

    /// Clamped to 0..1 and rounded to the nearest byte; NaN becomes 0.
    Color3b ToByte() const;

    bool operator==(const Color3f&) const = default;
};

static_assert(sizeof(Color3b) == 3, "Color3b is packed RGB");
static_assert(sizeof(Color3f) == 12, "Color3f is packed RGB");

} // namespace tesk
