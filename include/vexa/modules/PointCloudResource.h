#pragma once
// A point cloud as the viewer keeps it: the renderer (which holds the positions, on the GPU
// after the first frame), a few numbers for the panel and the camera, and copies of the
// per-point colour sets and float data that the gadgets turn into colours on demand.

#include <vexa/Export.h>
#include <vexa/Resource.h>
#include <vexa/modules/VertexAttributes.h>

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

class VEXA_API PointCloudResource : public Resource, public VertexAttributes {
public:
    PointCloudResource(const std::string& name, const tesk::PointCloud& cloud);

    std::shared_ptr<Gadget> CreateGadget() override;

    const std::shared_ptr<draw::PointCloudRenderer>& GetRenderer() const { return renderer_; }
    std::uint32_t GetPointCount() const { return pointCount_; }
    const glm::vec3& GetCenterOfMass() const { return centerOfMass_; }
    /// Root-mean-square distance of (a sample of) the points from their centre of mass.
    float GetApproxRadius() const { return approxRadius_; }
    bool HasNormals() const { return hasNormals_; }
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
    bool hasNormals_ = false;
    glm::vec3 centerOfMass_{0.0f};
    float approxRadius_ = 0.0f;
};

/// Makes a resource of `cloud` under `name` and, when the library is running, shows it (or
/// replaces the listed one with that name).
VEXA_API std::shared_ptr<PointCloudResource> AddPointCloud(const std::string& name,
                                                           const tesk::PointCloud& cloud);

} // namespace vexa::modules
