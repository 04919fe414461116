#include <vexa/modules/ColoringData.h>

#include <runa/HugePages.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace vexa::modules {

namespace {

/// A fresh copy of a property's first `count` values, faulted in on huge pages (ten million
/// float colours are 120 MB).
template <class T>
std::vector<T> CopyFirst(std::span<const T> values, std::size_t count)
{
    const std::span<const T> kept = values.first(std::min(values.size(), count));
    std::vector<T> copy;
    runa::ReserveFresh(copy, kept.size());
    copy.assign(kept.begin(), kept.end());
    return copy;
}

} // namespace

const ColoringData::ColorSet& ColoringData::GetColoringOption(std::size_t index) const
{
    return coloringOptions_.at(index);
}

tesk::Color3f ColoringData::ColorAt(const ColorSet& set, std::size_t index)
{
    if (const auto* floats = std::get_if<std::vector<tesk::Color3f>>(&set))
        return index < floats->size() ? (*floats)[index] : tesk::Color3f();
    const auto& bytes = std::get<std::vector<tesk::Color3b>>(set);
    return index < bytes.size() ? bytes[index].ToFloat() : tesk::Color3f();
}

std::vector<tesk::Color3f> ColoringData::ToFloatColors(const ColorSet& set)
{
    if (const auto* floats = std::get_if<std::vector<tesk::Color3f>>(&set))
        return *floats;
    const auto& bytes = std::get<std::vector<tesk::Color3b>>(set);
    std::vector<tesk::Color3f> converted(bytes.size());
    std::transform(bytes.begin(), bytes.end(), converted.begin(),
                   [](tesk::Color3b c) { return c.ToFloat(); });
    return converted;
}

const ColoringData::DataRecord& ColoringData::GetFDataOption(std::size_t index) const
{
    return fdataOptions_.at(index);
}

void ColoringData::Store(const tesk::PointCloud& cloud, std::size_t count)
{
    coloringNames_.clear();
    coloringOptions_.clear();
    fdataNames_.clear();
    fdataOptions_.clear();
    for (const tesk::PointProperty& property : cloud.GetProperties()) {
        if (property.GetType() == tesk::PropertyType::Color) {
            coloringNames_.push_back(property.GetName());
            coloringOptions_.emplace_back(CopyFirst(property.GetColors(), count));
        } else if (property.GetType() == tesk::PropertyType::ByteColor) {
            coloringNames_.push_back(property.GetName());
            coloringOptions_.emplace_back(CopyFirst(property.GetByteColors(), count));
        } else if (property.GetType() == tesk::PropertyType::Float) {
            DataRecord record;
            record.values = CopyFirst(property.GetFloats(), count);
            // NaNs and infinities stay out of the range (they would make every other value
            // map to one colour).
            for (float v : record.values) {
                if (!std::isfinite(v))
                    continue;
                record.minimum = std::min(record.minimum, v);
                record.maximum = std::max(record.maximum, v);
            }
            fdataNames_.push_back(property.GetName());
            fdataOptions_.push_back(std::move(record));
        }
    }
}

std::string ColoringData::DescribeValues(std::size_t index) const
{
    std::string text;
    for (std::size_t set = 0; set < coloringNames_.size(); ++set) {
        if (index >= std::visit([](const auto& colors) { return colors.size(); }, coloringOptions_[set]))
            continue;
        const tesk::Color3f c = ColorAt(coloringOptions_[set], index);
        text += "; " + coloringNames_[set] + " (" + FormatValue(c.r) + ", " + FormatValue(c.g) + ", " +
                FormatValue(c.b) + ")";
    }
    for (std::size_t data = 0; data < fdataNames_.size(); ++data)
        if (index < fdataOptions_[data].values.size())
            text += "; " + fdataNames_[data] + " " + FormatValue(fdataOptions_[data].values[index]);
    return text;
}

std::string ColoringData::FormatValue(double value)
{
    if (std::isnan(value))
        return "nan";
    if (std::isinf(value))
        return value > 0.0 ? "inf" : "-inf";
    if (value == 0.0)
        return "0";
    const bool fixed = std::abs(value) >= 0.00005 && std::abs(value) < 1e15;
    std::array<char, 64> buffer{};
    char* const first = buffer.data();
    char* const last = first + buffer.size();
    const std::to_chars_result result =
        fixed ? std::to_chars(first, last, value, std::chars_format::fixed, 4)
              : std::to_chars(first, last, value, std::chars_format::general, 4);
    std::string text(first, result.ptr);
    if (fixed) {
        text.erase(text.find_last_not_of('0') + 1);
        if (text.back() == '.')
            text.pop_back();
    }
    return text;
}

} // namespace vexa::modules
