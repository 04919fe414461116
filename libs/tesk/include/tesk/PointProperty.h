#pragma once
// One named array of per-point values attached to a point cloud. The values of a property
// live in one contiguous vector of their own type, so renderers and modules read them as a
// plain span: no per-point dispatch, no per-point allocation.

#include "tesk/Color.h"

#include <glm/vec2.hpp>

#include <cstddef>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace tesk {

/// What one point of a property holds. The integer codes are part of the data contract
/// with hosts and modules (1 = float, 4 = colour) and never change.
enum class PropertyType : int {
    Float = 1,     ///< one float per point (data to map through a colour map)
    UV = 2,        ///< one glm::vec2 texture coordinate per point
    Color = 4,     ///< one tesk::Color3f per point
    ByteColor = 8, ///< one tesk::Color3b per point, as scanners and most files deliver them
};

/// "Float", "UV", "Color", "ByteColor".
const char* PropertyTypeName(PropertyType type);

class PointProperty {
public:
    using Storage =
        std::variant<std::vector<float>, std::vector<glm::vec2>, std::vector<Color3f>, std::vector<Color3b>>;

    PointProperty() = default;
    PointProperty(std::string name, std::vector<float>&& values);
    PointProperty(std::string name, std::vector<glm::vec2>&& values);
    PointProperty(std::string name, std::vector<Color3f>&& values);
    PointProperty(std::string name, std::vector<Color3b>&& values);

    const std::string& GetName() const { return name_; }
    PropertyType GetType() const;
    /// Number of points the property holds values for.
    std::size_t Size() const;

    /// The values when the property has that type; an empty span otherwise.
    std::span<const float> GetFloats() const;
    std::span<const glm::vec2> GetUVs() const;
    std::span<const Color3f> GetColors() const;
    std::span<const Color3b> GetByteColors() const;

    /// Writable views of the same values (the length cannot change through them).
    std::span<float> GetMutableFloats();
    std::span<glm::vec2> GetMutableUVs();
    std::span<Color3f> GetMutableColors();
    std::span<Color3b> GetMutableByteColors();

    /// The values as raw bytes, whatever the type: Size() * ElementSize() bytes.
    const void* Data() const;
    std::size_t ElementSize() const;

    const Storage& GetStorage() const { return values_; }

private:
    friend class PointCloud;

    void AppendDefault();
    void Reserve(std::size_t count);

    std::string name_;
    Storage values_;
};

} // namespace tesk
