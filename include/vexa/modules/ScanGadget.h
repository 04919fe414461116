#pragma once
// Draws a scan like a point cloud, with a camera marker where the scan's camera stood (sized
// to the scan, turned as the camera was) and focusing that looks from the camera.
//
// The state record is the point cloud gadget's; the marker's visibility is not kept.

#include <vexa/Export.h>
#include <vexa/modules/PointCloudGadget.h>

#include <vexa/draw/GeometryStyle.h>

#include <glm/ext/quaternion_float.hpp>
#include <glm/mat3x3.hpp>

#include <memory>

namespace vexa::draw {
class GeometryRenderer;
}

namespace vexa::modules {

class ScanResource;

class VEXA_API ScanGadget : public PointCloudGadget {
public:
    explicit ScanGadget(const ScanResource* resource);
    ~ScanGadget() override;

    void Initialize() override;
    void GenerateGui(GuiGenerator& generator) override;
    /// Looks at the scan's centre from its camera, upright as the camera was; near and far
    /// planes from the scan's size.
    bool FocusCamera(glm::vec3& target, glm::vec3& position) const override;

    /// Null before Initialize.
    const std::shared_ptr<draw::GeometryStyle>& GetMarkerStyle() const { return markerStyle_; }

    /// The unit quaternion of a rotation matrix.
    static glm::quat BasisToRotation(const glm::mat3& basis);
    /// The marker's size: a fifth of the camera's distance from the scan's centre.
    static float MarkerScale(const glm::vec3& cameraPosition, const glm::vec3& centerOfMass);

private:
    const ScanResource* scan_;
    std::shared_ptr<draw::GeometryRenderer> marker_;
    std::shared_ptr<draw::GeometryStyle> markerStyle_;
};

} // namespace vexa::modules
