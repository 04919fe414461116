#include "tesk/ColorMap.h"

#include <runa/rlog.h>

#include <algorithm>
#include <array>
#include <string>

namespace tesk {
namespace {

constexpr Color3f Rgb(unsigned hex)
{
    return Color3f(static_cast<float>((hex >> 16) & 0xFF) / 255.0f,
                   static_cast<float>((hex >> 8) & 0xFF) / 255.0f, static_cast<float>(hex & 0xFF) / 255.0f);
}

constexpr std::array kRainbow = {
    Color3f(0.0f, 0.0f, 1.0f), Color3f(0.0f, 1.0f, 1.0f), Color3f(0.0f, 1.0f, 0.0f),
    Color3f(1.0f, 1.0f, 0.0f), Color3f(1.0f, 0.0f, 0.0f),
};

// Black body style: dark values fade to black, the hottest saturate to white.
constexpr std::array kThermal = {
    Color3f(0.0f, 0.0f, 0.0f), Color3f(0.35f, 0.0f, 0.55f), Color3f(0.85f, 0.1f, 0.2f),
    Color3f(1.0f, 0.5f, 0.0f), Color3f(1.0f, 0.9f, 0.1f),   Color3f(1.0f, 1.0f, 1.0f),
};

// Diverging through a light neutral so that the middle of the range reads as "neither".
constexpr std::array kBlueToRed = {
    Rgb(0x3B4CC0), Rgb(0x8DB0FE), Rgb(0xDDDDDD), Rgb(0xF49A7B), Rgb(0xB40426),
};

constexpr std::array kRedToGreen = {
    Rgb(0xD73027), Rgb(0xFC8D59), Rgb(0xFFFFBF), Rgb(0x91CF60), Rgb(0x1A9850),
};

// Hues chosen so that neighbouring categories never look alike.
constexpr std::array kScattered = {
    Rgb(0xE6194B), Rgb(0x3C78D8), Rgb(0x3CB44B), Rgb(0xF58231), Rgb(0x911EB4), Rgb(0x42D4F4),
    Rgb(0xFFE119), Rgb(0xF032E6), Rgb(0x9A6324), Rgb(0xBFEF45), Rgb(0x808080), Rgb(0x469990),
};

constexpr std::array kGrayScale = {
    Color3f(0.0f, 0.0f, 0.0f),
    Color3f(1.0f, 1.0f, 1.0f),
};

// Lightness rises monotonically while the hue sweeps violet, blue, teal, green to yellow, so
// the order of values survives printing in grey and most colour-vision deficiencies.
constexpr std::array kColorful = {
    Rgb(0x440154), Rgb(0x472D7B), Rgb(0x3B528B), Rgb(0x2C728E), Rgb(0x21918C),
    Rgb(0x28AE80), Rgb(0x5EC962), Rgb(0xADDC30), Rgb(0xFDE725),
};

bool IsKnown(ColorMap map)
{
    const int value = static_cast<int>(map);
    return value >= 0 && value < kColorMapCount;
}

std::span<const Color3f> KeysOf(ColorMap map)
{
    switch (map) {
    case ColorMap::Rainbow:
        return kRainbow;
    case ColorMap::Thermal:
        return kThermal;
    case ColorMap::BlueToRed:
        return kBlueToRed;
    case ColorMap::RedToGreen:
        return kRedToGreen;
    case ColorMap::Scattered:
        return kScattered;
    case ColorMap::GrayScale:
        return kGrayScale;
    case ColorMap::Colorful:
        return kColorful;
    }
    return kRainbow;
}

ColorMap Checked(ColorMap map, const char* label)
{
    if (IsKnown(map))
        return map;
    rlog::Warn("Unknown color map " + std::to_string(static_cast<int>(map)) + "; using Rainbow.", label);
    return ColorMap::Rainbow;
}

// Everything a value needs, worked out once per map so that the per-value work is a clamp,
// one multiply and one blend.
struct Mapper {
    const Color3f* keys;
    int lastIndex;
    float scale;
    bool blend;

    explicit Mapper(ColorMap map)
    {
        const auto table = KeysOf(map);
        keys = table.data();
        lastIndex = static_cast<int>(table.size()) - 1;
        blend = map != ColorMap::Scattered;
        // Blending spreads the keys over 0..1 with the last one at t = 1; buckets give each
        // key an equal share, and t = 1 falls into the last.
        scale = blend ? static_cast<float>(lastIndex) : static_cast<float>(lastIndex + 1);
    }

    Color3f operator()(float t) const
    {
        if (!(t > 0.0f)) // NaN too
            t = 0.0f;
        else if (t > 1.0f)
            t = 1.0f;
        const float x = t * scale;
        if (!blend)
            return keys[std::min(static_cast<int>(x), lastIndex)];
        const int i = std::min(static_cast<int>(x), lastIndex - 1);
        const float f = x - static_cast<float>(i);
        const float g = 1.0f - f;
        // a*(1-f) + b*f rather than a + (b-a)*f: exact keys at both ends of a segment.
        const Color3f& a = keys[i];
        const Color3f& b = keys[i + 1];
        return Color3f(a.r * g + b.r * f, a.g * g + b.g * f, a.b * g + b.b * f);
    }
};

void MapAll(std::span<const float> values, Color3f* out, const Mapper& mapper)
{
    const std::size_t n = values.size();
    const float* in = values.data();
    for (std::size_t i = 0; i < n; ++i)
        out[i] = mapper(in[i]);
}

} // namespace

const char* ColorMapName(ColorMap map)
{
    switch (map) {
    case ColorMap::Rainbow:
        return "Rainbow";
    case ColorMap::Thermal:
        return "Thermal";
    case ColorMap::BlueToRed:
        return "Blue To Red";
    case ColorMap::RedToGreen:
        return "Red To Green";
    case ColorMap::Scattered:
        return "Scattered";
    case ColorMap::GrayScale:
        return "Gray scale";
    case ColorMap::Colorful:
        return "Colorful";
    }
    return "Unknown";
}

std::optional<ColorMap> ColorMapFromInt(int value)
{
    if (value < 0 || value >= kColorMapCount)
        return std::nullopt;
    return static_cast<ColorMap>(value);
}

std::span<const Color3f> ColorMapKeys(ColorMap map)
{
    return KeysOf(map);
}

bool IsColorMapQualitative(ColorMap map)
{
    return map == ColorMap::Scattered;
}

Color3f MapValueToColor(float t, ColorMap map)
{
    return Mapper(Checked(map, "tesk::MapValueToColor"))(t);
}

void MapValuesToColors(std::span<const float> values, std::span<Color3f> out, ColorMap map)
{
    static constexpr const char* label = "tesk::MapValuesToColors";
    if (values.size() != out.size())
        rlog::Warn("Mapping " + std::to_string(values.size()) + " values into " + std::to_string(out.size()) +
                       " colors; only the common part is written.",
                   label);
    const std::size_t n = std::min(values.size(), out.size());
    MapAll(values.first(n), out.data(), Mapper(Checked(map, label)));
}

void MapValuesToColors(std::span<const float> values, std::vector<Color3f>& out, ColorMap map)
{
    out.resize(values.size());
    MapAll(values, out.data(), Mapper(Checked(map, "tesk::MapValuesToColors")));
}

std::vector<Color3f> MapValuesToColors(std::span<const float> values, ColorMap map)
{
    std::vector<Color3f> out;
    MapValuesToColors(values, out, map);
    return out;
}

} // namespace tesk
