#include "tesk/PointProperty.h"

#include <type_traits>
#include <utility>

namespace tesk {
namespace {

template <class T>
std::span<const T> ValuesIf(const PointProperty::Storage& storage)
{
    if (const auto* values = std::get_if<std::vector<T>>(&storage))
        return *values;
    return {};
}

template <class T>
std::span<T> MutableValuesIf(PointProperty::Storage& storage)
{
    if (auto* values = std::get_if<std::vector<T>>(&storage))
        return *values;
    return {};
}

} // namespace

const char* PropertyTypeName(PropertyType type)
{
    switch (type) {
    case PropertyType::Float:
        return "Float";
    case PropertyType::UV:
        return "UV";
    case PropertyType::Color:
        return "Color";
    case PropertyType::ByteColor:
        return "ByteColor";
    }
    return "Unknown";
}

PointProperty::PointProperty(std::string name, std::vector<float>&& values)
    : name_(std::move(name)), values_(std::move(values))
{
}

PointProperty::PointProperty(std::string name, std::vector<glm::vec2>&& values)
    : name_(std::move(name)), values_(std::move(values))
{
}

PointProperty::PointProperty(std::string name, std::vector<Color3f>&& values)
    : name_(std::move(name)), values_(std::move(values))
{
}

PointProperty::PointProperty(std::string name, std::vector<Color3b>&& values)
    : name_(std::move(name)), values_(std::move(values))
{
}

PropertyType PointProperty::GetType() const
{
    return std::visit(
        [](const auto& values) {
            using T = typename std::decay_t<decltype(values)>::value_type;
            if constexpr (std::is_same_v<T, float>)
                return PropertyType::Float;
            else if constexpr (std::is_same_v<T, glm::vec2>)
                return PropertyType::UV;
            else if constexpr (std::is_same_v<T, Color3f>)
                return PropertyType::Color;
            else
                return PropertyType::ByteColor;
        },
        values_);
}

std::size_t PointProperty::Size() const
{
    return std::visit([](const auto& values) { return values.size(); }, values_);
}

std::span<const float> PointProperty::GetFloats() const
{
    return ValuesIf<float>(values_);
}
std::span<const glm::vec2> PointProperty::GetUVs() const
{
    return ValuesIf<glm::vec2>(values_);
}
std::span<const Color3f> PointProperty::GetColors() const
{
    return ValuesIf<Color3f>(values_);
}
std::span<const Color3b> PointProperty::GetByteColors() const
{
    return ValuesIf<Color3b>(values_);
}

std::span<float> PointProperty::GetMutableFloats()
{
    return MutableValuesIf<float>(values_);
}
std::span<glm::vec2> PointProperty::GetMutableUVs()
{
    return MutableValuesIf<glm::vec2>(values_);
}
std::span<Color3f> PointProperty::GetMutableColors()
{
    return MutableValuesIf<Color3f>(values_);
}
std::span<Color3b> PointProperty::GetMutableByteColors()
{
    return MutableValuesIf<Color3b>(values_);
}

const void* PointProperty::Data() const
{
    return std::visit([](const auto& values) -> const void* { return values.data(); }, values_);
}

std::size_t PointProperty::ElementSize() const
{
    return std::visit([](const auto& values) { return sizeof(values[0]); }, values_);
}

void PointProperty::AppendDefault()
{
    std::visit(
        [](auto& values) {
            using T = typename std::decay_t<decltype(values)>::value_type;
            if constexpr (std::is_same_v<T, glm::vec2>)
                values.push_back(glm::vec2(0.0f)); // glm leaves a default vector uninitialised
            else
                values.push_back(T{});
        },
        values_);
}

void PointProperty::Reserve(std::size_t count)
{
    std::visit([count](auto& values) { values.reserve(count); }, values_);
}

} // namespace tesk
