#include "tesk/Color.h"

#include <algorithm>
#include <cmath>

namespace tesk {
namespace {

int HexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

std::uint8_t ToByte(float value)
{
    if (!(value > 0.0f)) // also catches NaN
        return 0;
    if (value >= 1.0f)
        return 255;
    return static_cast<std::uint8_t>(std::lround(value * 255.0f));
}

} // namespace

std::optional<Color3b> Color3b::FromHex(std::string_view text)
{
    if (!text.empty() && text.front() == '#')
        text.remove_prefix(1);
    if (text.size() != 6)
        return std::nullopt;
    std::uint8_t bytes[3];
    for (int i = 0; i < 3; ++i) {
        const int high = HexDigit(text[2 * i]);
        const int low = HexDigit(text[2 * i + 1]);
        if (high < 0 || low < 0)
            return std::nullopt;
        bytes[i] = static_cast<std::uint8_t>(high * 16 + low);
    }
    return Color3b(bytes[0], bytes[1], bytes[2]);
}

std::string Color3b::ToHex() const
{
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string text(6, '0');
    const std::uint8_t bytes[3] = {r, g, b};
    for (int i = 0; i < 3; ++i) {
        text[2 * i] = digits[bytes[i] >> 4];
        text[2 * i + 1] = digits[bytes[i] & 0xF];
    }
    return text;
}

Color3f Color3b::ToFloat() const
{
    return Color3f(r / 255.0f, g / 255.0f, b / 255.0f);
}

std::optional<Color3f> Color3f::FromHex(std::string_view text)
{
    const auto bytes = Color3b::FromHex(text);
    if (!bytes)
        return std::nullopt;
    return bytes->ToFloat();
}

std::string Color3f::ToHex() const
{
    return ToByte().ToHex();
}

Color3b Color3f::ToByte() const
{
    return Color3b(tesk::ToByte(r), tesk::ToByte(g), tesk::ToByte(b));
}

} // namespace tesk
