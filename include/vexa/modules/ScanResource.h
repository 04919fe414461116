#pragma once
// A point cloud captured by a camera: everything a point cloud resource keeps, plus the
// camera (where it stood, how it was turned, its intrinsics and image size), so that every
// view area can show a marker at the camera and look from it.

#include <vexa/Export.h>
#include <vexa/modules/PointCloudResource.h>

#include <tesk/Scan.h>

#include <runa/BasisDefinition.h>

#include <glm/mat3x3.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>

#include <memory>
#include <string>

namespace vexa::modules {

class VEXA_API ScanResource : public PointCloudResource {
public:
    /// Shows `scan` under `name`; resource type "ScanResource".
    ScanResource(const std::string& name, const tesk::Scan& scan);

    std::shared_ptr<Gadget> CreateGadget() override;

    /// Width and height of the camera image.
    const glm::uvec2& GetResolution() const { return resolution_; }
    const tesk::ScanCameraParams& GetCameraParams() const { return cameraParams_; }
    const glm::vec3& GetCameraPosition() const { return cameraPosition_; }
    const glm::vec3& GetCameraUp() const { return cameraUp_; }
    /// Columns: the camera's axes in scan coordinates.
    const glm::mat3& GetCameraBasis() const { return cameraBasis_; }
    /// Which column of the basis is up and which forward.
    const runa::BasisDefinition& GetBasisDefinition() const { return basisDefinition_; }

private:
    glm::uvec2 resolution_{0u, 0u};
    tesk::ScanCameraParams cameraParams_;
    glm::vec3 cameraPosition_{0.0f};
    glm::vec3 cameraUp_{0.0f, 1.0f, 0.0f};
    glm::mat3 cameraBasis_{1.0f};
    runa::BasisDefinition basisDefinition_;
};

/// Makes a resource of `scan` under `name` and, when the library is running, shows it (or
/// replaces the listed one with that name).
VEXA_API std::shared_ptr<ScanResource> AddScan(const std::string& name, const tesk::Scan& scan);

} // namespace vexa::modules
