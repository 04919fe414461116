#include <vexa/modules/ScanGadget.h>

#include <vexa/Camera.h>
#include <vexa/GuiGenerator.h>
#include <vexa/gui/Elements.h>
#include <vexa/modules/ScanResource.h>

#include <vexa/draw/GeometryName.h>
#include <vexa/draw/GeometryRenderer.h>

#include <glm/geometric.hpp>
#include <glm/gtc/quaternion.hpp>

#include <string>

namespace vexa::modules {

ScanGadget::ScanGadget(const ScanResource* resource) : PointCloudGadget(resource), scan_(resource) {}

ScanGadget::~ScanGadget() = default;

glm::quat ScanGadget::BasisToRotation(const glm::mat3& basis)
{
    // glm's conversion is the standard one: it starts from the largest of w, x, y, z (read
    // off the trace and the diagonal), so no branch divides by a small number.
    return glm::normalize(glm::quat_cast(basis));
}

float ScanGadget::MarkerScale(const glm::vec3& cameraPosition, const glm::vec3& centerOfMass)
{
    return 0.2f * glm::distance(cameraPosition, centerOfMass);
}

void ScanGadget::Initialize()
{
    PointCloudGadget::Initialize();
    if (scan_ == nullptr)
        return;
    marker_ = std::make_shared<draw::GeometryRenderer>(draw::GeometryName::Camera);
    markerStyle_ = std::make_shared<draw::GeometryStyle>();
    tesk::Transform& transform = markerStyle_->transform;
    transform.SetPosition(scan_->GetCameraPosition());
    transform.SetUniformScale(MarkerScale(scan_->GetCameraPosition(), scan_->GetCenterOfMass()));
    transform.SetRotation(BasisToRotation(scan_->GetCameraBasis()));
    AddRenderer(marker_, markerStyle_, 0);
}

void ScanGadget::GenerateGui(GuiGenerator& generator)
{
    if (IsInitialized() && scan_ != nullptr) {
        const glm::uvec2& resolution = scan_->GetResolution();
        generator.AddLabel("Resolution: " + std::to_string(resolution.x) + " x " +
                           std::to_string(resolution.y));
        generator.AddLabel("Camera basis: " + scan_->GetBasisDefinition().name);
    }
    PointCloudGadget::GenerateGui(generator);
    if (!IsInitialized() || markerStyle_ == nullptr)
        return;
    generator.AddSeparator();
    if (gui::Checkbox* show = generator.AddCheckbox("Display Camera"))
        show->SetLink(&markerStyle_->visible)->Subscribe([this](const gui::Checkbox*) {
            DrawOnNextUpdate();
        });
}

bool ScanGadget::FocusCamera(glm::vec3& target, glm::vec3& position) const
{
    if (scan_ == nullptr)
        return false;
    target = scan_->GetCenterOfMass();
    position = scan_->GetCameraPosition();
    if (Camera* camera = GetCamera()) {
        camera->SetTarget(target);
        camera->SetPosition(position);
        camera->AlignUp(scan_->GetCameraUp());
    }
    const float r = scan_->GetApproxRadius();
    SetNearFar(r * 0.01f, r * 100.0f);
    return true;
}

} // namespace vexa::modules
