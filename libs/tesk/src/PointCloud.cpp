#include "tesk/PointCloud.h"

#include <runa/HugePages.h>
#include <runa/rlog.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace tesk {
namespace {

bool IsFinite(const glm::vec3& p)
{
    return std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
}

/// A host's array copied in one pass: no zero-fill first, and fresh memory faulted in huge
/// pages, which for ten million points costs less than the copy itself.
template <class T>
std::vector<T> FreshCopy(std::span<const T> values)
{
    std::vector<T> out;
    runa::ReserveFresh(out, values.size());
    out.assign(values.begin(), values.end());
    return out;
}

std::vector<glm::vec3> CopyXyz(const float* xyz, std::size_t count)
{
    static_assert(sizeof(glm::vec3) == 3 * sizeof(float), "glm::vec3 must be three packed floats");
    return FreshCopy(std::span<const glm::vec3>(reinterpret_cast<const glm::vec3*>(xyz), count));
}

} // namespace

PointCloud::PointCloud(std::span<const glm::vec3> positions) : positions_(FreshCopy(positions)) {}

PointCloud::PointCloud(std::vector<glm::vec3>&& positions) : positions_(std::move(positions)) {}

PointCloud::PointCloud(const float* xyz, std::size_t count)
{
    SetPositions(xyz, count);
}

void PointCloud::SetPositions(std::span<const glm::vec3> positions)
{
    // Copy first: the span may point into this cloud's own positions.
    ReplacePositions(FreshCopy(positions));
}

void PointCloud::SetPositions(std::vector<glm::vec3>&& positions)
{
    ReplacePositions(std::move(positions));
}

bool PointCloud::SetPositions(const float* xyz, std::size_t count)
{
    if (xyz == nullptr && count > 0) {
        rlog::Fail("Null position array for " + std::to_string(count) + " points",
                   "tesk::PointCloud::SetPositions");
        return false;
    }
    ReplacePositions(CopyXyz(xyz, count));
    return true;
}

void PointCloud::ReplacePositions(std::vector<glm::vec3>&& positions)
{
    if (positions.size() != positions_.size() && (!normals_.empty() || !properties_.empty())) {
        rlog::Warn("The point count changes from " + std::to_string(positions_.size()) + " to " +
                       std::to_string(positions.size()) + "; dropping the normals and " +
                       std::to_string(properties_.size()) + " properties that no longer fit",
                   "tesk::PointCloud::SetPositions");
        normals_.clear();
        properties_.clear();
    }
    positions_ = std::move(positions);
}

void PointCloud::AddPoint(const glm::vec3& position)
{
    positions_.push_back(position);
    if (!normals_.empty())
        normals_.push_back(glm::vec3(0.0f));
    for (PointProperty& property : properties_)
        property.AppendDefault();
}

void PointCloud::Reserve(std::size_t count)
{
    positions_.reserve(count);
    if (!normals_.empty())
        normals_.reserve(count);
    for (PointProperty& property : properties_)
        property.Reserve(count);
}

void PointCloud::Clear()
{
    positions_.clear();
    normals_.clear();
    properties_.clear();
    space_.reset();
    originOffset_ = glm::dvec3(0.0);
}

bool PointCloud::CheckLength(std::size_t length, std::string_view what, const char* label) const
{
    if (length == positions_.size())
        return true;
    rlog::Fail(std::string(what) + " has " + std::to_string(length) + " values but the point cloud has " +
                   std::to_string(positions_.size()) + " points; not stored",
               label);
    return false;
}

bool PointCloud::SetNormals(std::span<const glm::vec3> normals)
{
    if (!CheckLength(normals.size(), "Normals array", "tesk::PointCloud::SetNormals"))
        return false;
    normals_ = FreshCopy(normals);
    return true;
}

bool PointCloud::SetNormals(std::vector<glm::vec3>&& normals)
{
    if (!CheckLength(normals.size(), "Normals array", "tesk::PointCloud::SetNormals"))
        return false;
    normals_ = std::move(normals);
    return true;
}

bool PointCloud::SetNormals(const float* xyz, std::size_t count)
{
    if (xyz == nullptr && count > 0) {
        rlog::Fail("Null normal array for " + std::to_string(count) + " points",
                   "tesk::PointCloud::SetNormals");
        return false;
    }
    if (!CheckLength(count, "Normals array", "tesk::PointCloud::SetNormals"))
        return false;
    normals_ = CopyXyz(xyz, count);
    return true;
}

void PointCloud::ClearNormals()
{
    normals_.clear();
    normals_.shrink_to_fit();
}

bool PointCloud::StoreProperty(PointProperty&& property, const char* label)
{
    if (property.GetName().empty()) {
        rlog::Fail(std::string("A ") + PropertyTypeName(property.GetType()) +
                       " property needs a name; not stored",
                   label);
        return false;
    }
    if (!CheckLength(property.Size(), "Property \"" + property.GetName() + "\"", label))
        return false;
    if (PointProperty* existing = FindProperty(property.GetName()))
        *existing = std::move(property);
    else
        properties_.push_back(std::move(property));
    return true;
}

// The span overloads check the length before copying so that a refused array costs nothing.
template <class T>
bool PointCloud::StoreCopy(const std::string& name, std::span<const T> values, const char* label)
{
    if (!CheckLength(values.size(), "Property \"" + name + "\"", label))
        return false;
    return StoreProperty(PointProperty(name, FreshCopy(values)), label);
}

bool PointCloud::AddFloatProperty(const std::string& name, std::span<const float> values)
{
    return StoreCopy(name, values, "tesk::PointCloud::AddFloatProperty");
}

bool PointCloud::AddFloatProperty(const std::string& name, std::vector<float>&& values)
{
    return StoreProperty(PointProperty(name, std::move(values)), "tesk::PointCloud::AddFloatProperty");
}

bool PointCloud::AddColorProperty(const std::string& name, std::span<const Color3f> values)
{
    return StoreCopy(name, values, "tesk::PointCloud::AddColorProperty");
}

bool PointCloud::AddColorProperty(const std::string& name, std::vector<Color3f>&& values)
{
    return StoreProperty(PointProperty(name, std::move(values)), "tesk::PointCloud::AddColorProperty");
}

bool PointCloud::AddColorProperty(const std::string& name, std::span<const Color3b> values)
{
    return StoreCopy(name, values, "tesk::PointCloud::AddColorProperty");
}

bool PointCloud::AddColorProperty(const std::string& name, std::vector<Color3b>&& values)
{
    return StoreProperty(PointProperty(name, std::move(values)), "tesk::PointCloud::AddColorProperty");
}

bool PointCloud::AddUVProperty(const std::string& name, std::span<const glm::vec2> values)
{
    return StoreCopy(name, values, "tesk::PointCloud::AddUVProperty");
}

bool PointCloud::AddUVProperty(const std::string& name, std::vector<glm::vec2>&& values)
{
    return StoreProperty(PointProperty(name, std::move(values)), "tesk::PointCloud::AddUVProperty");
}

bool PointCloud::SetUVs(std::span<const glm::vec2> uvs)
{
    if (!CheckLength(uvs.size(), "UV array", "tesk::PointCloud::SetUVs"))
        return false;
    return StoreProperty(
        PointProperty(std::string(UVPropertyName), std::vector<glm::vec2>(uvs.begin(), uvs.end())),
        "tesk::PointCloud::SetUVs");
}

bool PointCloud::SetUVs(std::vector<glm::vec2>&& uvs)
{
    return StoreProperty(PointProperty(std::string(UVPropertyName), std::move(uvs)),
                         "tesk::PointCloud::SetUVs");
}

bool PointCloud::HasUVs() const
{
    return std::any_of(properties_.begin(), properties_.end(),
                       [](const PointProperty& p) { return p.GetType() == PropertyType::UV; });
}

std::span<const glm::vec2> PointCloud::GetUVs() const
{
    if (const PointProperty* named = FindProperty(UVPropertyName);
        named && named->GetType() == PropertyType::UV)
        return named->GetUVs();
    for (const PointProperty& property : properties_)
        if (property.GetType() == PropertyType::UV)
            return property.GetUVs();
    return {};
}

const PointProperty* PointCloud::GetProperty(std::size_t index) const
{
    return index < properties_.size() ? &properties_[index] : nullptr;
}

PointProperty* PointCloud::GetProperty(std::size_t index)
{
    return index < properties_.size() ? &properties_[index] : nullptr;
}

const PointProperty* PointCloud::FindProperty(std::string_view name) const
{
    for (const PointProperty& property : properties_)
        if (property.GetName() == name)
            return &property;
    return nullptr;
}

PointProperty* PointCloud::FindProperty(std::string_view name)
{
    for (PointProperty& property : properties_)
        if (property.GetName() == name)
            return &property;
    return nullptr;
}

std::span<const float> PointCloud::GetFloatProperty(std::string_view name) const
{
    const PointProperty* property = FindProperty(name);
    return property ? property->GetFloats() : std::span<const float>();
}

std::span<const Color3f> PointCloud::GetColorProperty(std::string_view name) const
{
    const PointProperty* property = FindProperty(name);
    return property ? property->GetColors() : std::span<const Color3f>();
}

std::span<const Color3b> PointCloud::GetByteColorProperty(std::string_view name) const
{
    const PointProperty* property = FindProperty(name);
    return property ? property->GetByteColors() : std::span<const Color3b>();
}

std::span<const glm::vec2> PointCloud::GetUVProperty(std::string_view name) const
{
    const PointProperty* property = FindProperty(name);
    return property ? property->GetUVs() : std::span<const glm::vec2>();
}

bool PointCloud::RemoveProperty(std::string_view name)
{
    const auto it = std::find_if(properties_.begin(), properties_.end(),
                                 [name](const PointProperty& p) { return p.GetName() == name; });
    if (it == properties_.end())
        return false;
    properties_.erase(it);
    return true;
}

geom::Aabb3f PointCloud::ComputeBoundingBox() const
{
    geom::Aabb3f box;
    for (const glm::vec3& p : positions_)
        if (IsFinite(p))
            box.Extend(p);
    return box;
}

std::size_t PointCloud::CountNonFinite() const
{
    return static_cast<std::size_t>(
        std::count_if(positions_.begin(), positions_.end(), [](const glm::vec3& p) { return !IsFinite(p); }));
}

} // namespace tesk
