#pragma once
// A point cloud as the viewer keeps it: the renderer (which holds the positions, on the GPU
// after the first frame), a few numbers for the panel and the camera, and copies of the
// per-point colour sets and float data that the gadgets turn into colours on demand.

#include <vexa/Export.h>
#include <vexa/Resource.h>
#include <vexa/modules/ColoringChoice.h>
#include <vexa/modules/ColoringData.h>

#include <tesk/Color.h>
#include <tesk/PointCloud.h>

#include <runa/SpaceDefinition.h>

#include <glm/ext/vector_double3.hpp>
#include <glm/vec3.hpp>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vexa::draw {
class PointCloudRenderer;
}

namespace vexa::modules {

// Resources are destroyed through shared pointers of their concrete type (see Resource.h),
// so the public non-virtual destructor is safe; keep hosts' -Wnon-virtual-dtor quiet about it.
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif
class VEXA_API PointCloudResource : public Resource {
public:
    /// One float property of the cloud with its range (see ColoringData).
    using DataRecord = ColoringData::DataRecord;
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

    PointCloudResource(const std::string& name, const tesk::PointCloud& cloud);

    std::shared_ptr<Gadget> CreateGadget() override;

    const std::shared_ptr<draw::PointCloudRenderer>& GetRenderer() const { return renderer_; }
    std::uint32_t GetPointCount() const { return pointCount_; }
    const glm::vec3& GetCenterOfMass() const { return centerOfMass_; }
    /// Root-mean-square distance of (a sample of) the points from their centre of mass.
    float GetApproxRadius() const { return approxRadius_; }
    bool HasNormals() const { return hasNormals_; }
    bool HasFloatData() const { return coloring_.HasFloatData(); }
    bool IsColoringAvailable() const { return coloring_.IsColoringAvailable(); }
    const std::vector<std::string>& GetColoringNames() const { return coloring_.GetColoringNames(); }
    const std::vector<std::string>& GetFDataNames() const { return coloring_.GetFDataNames(); }
    /// Throws std::out_of_range past the end.
    const std::vector<tesk::Color3f>& GetColoringOption(std::size_t index) const
    {
        return coloring_.GetColoringOption(index);
    }
    /// Throws std::out_of_range past the end.
    const DataRecord& GetFDataOption(std::size_t index) const { return coloring_.GetFDataOption(index); }
    const ColoringData& GetColoringData() const { return coloring_; }
    /// What was subtracted from the file's coordinates (tesk::PointCloud::GetOriginOffset).
    const glm::dvec3& GetOriginOffset() const { return originOffset_; }
    const std::optional<runa::SpaceDefinition>& GetSpace() const { return space_; }
    /// The space's name, "N/A" without one.
    std::string GetSpaceId() const;

    /// How a view area that has no saved point cloud settings yet starts colouring this cloud
    /// (a PointCloudGadget::ColorSource and the colour set or data index it uses). Without a
    /// preference, and as soon as the user has chosen in that view area, the saved choice rules.
    /// `colorMap` is the tesk::ColorMap a data mapping starts with.
    void SetPreferredColorSource(int source, int option = 0, int colorMap = 5);
    const ColoringPreference& GetColoringPreference() const { return preference_; }

    /// The sampling the centre and radius use: every point below 1000 points, else every
    /// (count / 1000)-th.
    static std::size_t SampleStep(std::size_t pointCount);

protected:
    /// For derived resources with a type text of their own (a scan is a point cloud too).
    PointCloudResource(const std::string& name, const std::string& type, const tesk::PointCloud& cloud);

    /// Takes everything from `cloud` anew (also to replace the data of a listed resource).
    void StoreData(const tesk::PointCloud& cloud);

private:
    std::shared_ptr<draw::PointCloudRenderer> renderer_;
    std::uint32_t pointCount_ = 0;
    std::optional<runa::SpaceDefinition> space_;
    bool hasNormals_ = false;
    glm::vec3 centerOfMass_{0.0f};
    float approxRadius_ = 0.0f;
    glm::dvec3 originOffset_{0.0};
    ColoringData coloring_;
    ColoringPreference preference_;
};

/// Makes a resource of `cloud` under `name` and, when the library is running, shows it (or
/// replaces the listed one with that name).
VEXA_API std::shared_ptr<PointCloudResource> AddPointCloud(const std::string& name, const tesk::PointCloud& cloud);

} // namespace vexa::modules
