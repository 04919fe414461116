#pragma once
// Colour maps turn a scalar in 0..1 into a colour for data display. The enumerator values are
// stored in state files and carried by GUI items, so they never change.

#include "tesk/Color.h"

#include <optional>
#include <span>
#include <vector>

namespace tesk {

enum class ColorMap : int {
    Rainbow = 0,
    Thermal = 1,
    BlueToRed = 2,
    RedToGreen = 3,
    Scattered = 4,
    GrayScale = 5,
    Colorful = 6,
};

inline constexpr int kColorMapCount = 7;

/// Display name ("Gray scale", "Blue To Red", ...); "Unknown" for a value outside the enum.
const char* ColorMapName(ColorMap map);

/// The map with this stored value, or nothing when the value is not a colour map.
std::optional<ColorMap> ColorMapFromInt(int value);

/// The key colours of a map, from t = 0 to t = 1. Continuous maps blend evenly spaced keys;
/// Scattered gives each key an equal share of 0..1 without blending. A renderer can upload
/// these as a small 1D texture. A value outside the enum gives Rainbow's keys.
std::span<const Color3f> ColorMapKeys(ColorMap map);

/// True for maps whose colours are distinct categories rather than a gradient.
bool IsColorMapQualitative(ColorMap map);

/// t is clamped to 0..1; NaN gives the map's first colour. A value outside the enum logs a
/// warning and maps with Rainbow.
Color3f MapValueToColor(float t, ColorMap map);

/// out[i] = MapValueToColor(values[i], map). When the spans differ in length only the common
/// part is written and a warning is logged.
void MapValuesToColors(std::span<const float> values, std::span<Color3f> out, ColorMap map);
/// Resizes `out` to the number of values first.
void MapValuesToColors(std::span<const float> values, std::vector<Color3f>& out, ColorMap map);
std::vector<Color3f> MapValuesToColors(std::span<const float> values, ColorMap map);

} // namespace tesk
