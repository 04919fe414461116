#include <vexa/modules/ColoringData.h>

#include <runa/HugePages.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace vexa::modules {

const std::vector<tesk::Color3f>& ColoringData::GetColoringOption(std::size_t index) const
{
    return coloringOptions_.at(index);
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
    for (const tesk::PointProperty& property : cloud.GetProperties())
    {
        if (property.GetType() == tesk::PropertyType::Color)
        {
            const std::span<const tesk::Color3f> colors = property.GetColors().first(std::min(property.Size(), count));
            coloringNames_.push_back(property.GetName());
            std::vector<tesk::Color3f>& copy = coloringOptions_.emplace_back();
            // Ten million colours are 120 MB of fresh memory: fault it in huge pages.
            runa::ReserveFresh(copy, colors.size());
            copy.assign(colors.begin(), colors.end());
        }
        else if (property.GetType() == tesk::PropertyType::Float)
        {
            const std::span<const float> values = property.GetFloats().first(std::min(property.Size(), count));
            DataRecord record;
            runa::ReserveFresh(record.values, values.size());
            record.values.assign(values.begin(), values.end());
            // NaNs and infinities stay out of the range (they would make every other value
            // map to one colour).
            for (float v : record.values)
            {
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
    for (std::size_t set = 0; set < coloringNames_.size(); ++set)
    {
        if (index >= coloringOptions_[set].size())
            continue;
        const tesk::Color3f& c = coloringOptions_[set][index];
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
    const std::to_chars_result result = fixed ? std::to_chars(first, last, value, std::chars_format::fixed, 4)
                                              : std::to_chars(first, last, value, std::chars_format::general, 4);
    std::string text(first, result.ptr);
    if (fixed)
    {
        text.erase(text.find_last_not_of('0') + 1);
        if (text.back() == '.')
            text.pop_back();
    }
    return text;
}

} // namespace vexa::modules
