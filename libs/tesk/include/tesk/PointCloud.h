#pragma once
// Points as a host hands them to the viewer: positions, optional normals and any number of
// named per-point properties (colours, float data, texture coordinates), optionally tagged
// with the space they were captured in.
//
// Every array is contiguous and has exactly one entry per point. Setters refuse arrays of
// another length (logged, nothing stored), so readers may rely on that without checking.
// Bulk setters come in three forms: a span (copied once), a raw pointer and count, and a
// moved-in std::vector (not copied at all), so a host can fill millions of points cheaply.

#include "tesk/Color.h"
#include "tesk/PointProperty.h"
#include "tesk/geom/Aabb.h"

#include <runa/SpaceDefinition.h>

#include <glm/ext/vector_double3.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tesk {

class PointCloud {
public:
    /// Name under which SetUVs stores the texture coordinates.
    static constexpr std::string_view UVPropertyName = "uv";

    PointCloud() = default;
    explicit PointCloud(std::span<const glm::vec3> positions);
    explicit PointCloud(std::vector<glm::vec3>&& positions);
    /// `xyz` holds 3 * `count` floats, x y z of each point in turn.
    PointCloud(const float* xyz, std::size_t count);

    // ---- positions ----

    /// Replace the positions. When the point count changes, normals and properties no longer
    /// fit and are dropped (with a warning if there were any).
    void SetPositions(std::span<const glm::vec3> positions);
    void SetPositions(std::vector<glm::vec3>&& positions);
    /// False (logged, nothing changed) for a null pointer with a non-zero count.
    bool SetPositions(const float* xyz, std::size_t count);

    /// Appends one point; normals and properties grow by a default value (zero normal,
    /// 0, black, (0, 0)) so that every array keeps one entry per point.
    void AddPoint(const glm::vec3& position);
    /// Reserves room for `count` points in every array, for hosts that add points one by one.
    void Reserve(std::size_t count);
    /// Removes every point, normal, property, the space and the origin offset.
    void Clear();

    std::size_t Size() const { return positions_.size(); }
    bool Empty() const { return positions_.empty(); }

    std::span<const glm::vec3> GetPositions() const { return positions_; }
    std::span<glm::vec3> GetMutablePositions() { return positions_; }
    const glm::vec3* Data() const { return positions_.data(); }

    // ---- normals ----

    /// False (logged, nothing stored) unless there is exactly one normal per point.
    bool SetNormals(std::span<const glm::vec3> normals);
    bool SetNormals(std::vector<glm::vec3>&& normals);
    bool SetNormals(const float* xyz, std::size_t count);
    void ClearNormals();

    /// True when normals were set (a cloud of zero points never has normals).
    bool HasNormals() const { return !normals_.empty(); }
    /// Empty span when the cloud has no normals.
    std::span<const glm::vec3> GetNormals() const { return normals_; }
    std::span<glm::vec3> GetMutableNormals() { return normals_; }

    // ---- properties ----
    // Adding a property under a name that already exists replaces it (its type may change);
    // properties otherwise keep the order in which they were added. A property whose length
    // is not the point count, or whose name is empty, is refused (logged, returns false).

    bool AddFloatProperty(const std::string& name, std::span<const float> values);
    bool AddFloatProperty(const std::string& name, std::vector<float>&& values);
    bool AddColorProperty(const std::string& name, std::span<const Color3f> values);
    bool AddColorProperty(const std::string& name, std::vector<Color3f>&& values);
    /// Byte colours are kept as bytes (type ByteColor), a quarter of the memory of floats.
    bool AddColorProperty(const std::string& name, std::span<const Color3b> values);
    bool AddColorProperty(const std::string& name, std::vector<Color3b>&& values);
    bool AddUVProperty(const std::string& name, std::span<const glm::vec2> values);
    bool AddUVProperty(const std::string& name, std::vector<glm::vec2>&& values);

    /// The texture coordinates, stored as the UV property named UVPropertyName.
    bool SetUVs(std::span<const glm::vec2> uvs);
    bool SetUVs(std::vector<glm::vec2>&& uvs);
    /// True when some property has the UV type: that is how a mesh declares UV mapping.
    bool HasUVs() const;
    /// The property named UVPropertyName if it is a UV property, else the first UV property;
    /// empty span when there is none.
    std::span<const glm::vec2> GetUVs() const;

    std::size_t PropertyCount() const { return properties_.size(); }
    std::span<const PointProperty> GetProperties() const { return properties_; }
    /// Null when `index` is past the end.
    const PointProperty* GetProperty(std::size_t index) const;
    PointProperty* GetProperty(std::size_t index);
    /// Null when there is no property of that name.
    const PointProperty* FindProperty(std::string_view name) const;
    PointProperty* FindProperty(std::string_view name);
    bool HasProperty(std::string_view name) const { return FindProperty(name) != nullptr; }

    /// Values of the named property; an empty span when it is missing or of another type.
    std::span<const float> GetFloatProperty(std::string_view name) const;
    std::span<const Color3f> GetColorProperty(std::string_view name) const;
    std::span<const Color3b> GetByteColorProperty(std::string_view name) const;
    std::span<const glm::vec2> GetUVProperty(std::string_view name) const;

    /// False when there was no property of that name.
    bool RemoveProperty(std::string_view name);
    void ClearProperties() { properties_.clear(); }

    // ---- space ----

    const std::optional<runa::SpaceDefinition>& GetSpace() const { return space_; }
    bool HasSpace() const { return space_.has_value(); }
    void SetSpace(const runa::SpaceDefinition& space) { space_ = space; }
    void ClearSpace() { space_.reset(); }

    // ---- origin offset ----
    // Positions are floats, which keep about seven digits: georeferenced data (coordinates of
    // a million metres) would lose everything below a decimetre. Whoever reads such data
    // subtracts one offset from every point first and records it here, so that the true
    // coordinates are position + offset. Zero for data near the origin.

    const glm::dvec3& GetOriginOffset() const { return originOffset_; }
    void SetOriginOffset(const glm::dvec3& offset) { originOffset_ = offset; }
    bool HasOriginOffset() const { return originOffset_ != glm::dvec3(0.0); }

    // ---- queries ----

    /// Box around every point whose three coordinates are finite; an empty box (IsEmpty())
    /// when there is none.
    geom::Aabb3f ComputeBoundingBox() const;
    /// Number of points with a NaN or infinite coordinate. Such points may be stored;
    /// renderers skip them.
    std::size_t CountNonFinite() const;

private:
    void ReplacePositions(std::vector<glm::vec3>&& positions);
    bool CheckLength(std::size_t length, std::string_view what, const char* label) const;
    bool StoreProperty(PointProperty&& property, const char* label);
    /// A fresh copy of `values` stored as property `name`, once their length is checked.
    template <class T>
    bool StoreCopy(const std::string& name, std::span<const T> values, const char* label);

    std::vector<glm::vec3> positions_;
    std::vector<glm::vec3> normals_;
    std::vector<PointProperty> properties_;
    std::optional<runa::SpaceDefinition> space_;
    glm::dvec3 originOffset_{0.0};
};

} // namespace tesk
