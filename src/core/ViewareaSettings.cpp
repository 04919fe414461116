#include "core/ViewareaSettings.h"

#include "core/Viewarea.h"

#include <vexa/Camera.h>
#include <vexa/draw/Scene.h>

#include <runa/BinaryStream.h>
#include <runa/rlog.h>

namespace vexa {

namespace {

// Far more view areas than any layout makes: a larger count means the file is not ours, and
// must not turn into a huge reservation.
constexpr std::uint32_t kMaxRecords = 256;

} // namespace

bool ViewareaSettings::ReadPayload(std::istream& in)
{
    static constexpr const char* label = "vexa::ViewareaSettings::ReadPayload";
    runa::BinaryReader reader(in, label);
    std::uint32_t count = 0;
    if (!reader.Read(count))
        return false;
    if (count > kMaxRecords) {
        rlog::Warn("Implausible view area count " + std::to_string(count), label);
        return false;
    }
    std::vector<ViewareaLook> read(count);
    for (ViewareaLook& record : read)
        if (!record.ReadFromStream(in))
            return false;
    records_ = std::move(read);
    return true;
}

void ViewareaSettings::WritePayload(std::ostream& out) const
{
    runa::BinaryWriter writer(out);
    writer.Write(static_cast<std::uint32_t>(records_.size()));
    for (const ViewareaLook& record : records_)
        record.WriteToStream(out);
}

void ViewareaSettings::Capture(const std::vector<std::unique_ptr<Viewarea>>& areas)
{
    std::vector<ViewareaLook> captured;
    captured.reserve(areas.size());
    for (const auto& area : areas)
        captured.push_back(CaptureOne(*area));
    records_ = std::move(captured);
}

bool ViewareaSettings::Apply(const std::vector<std::unique_ptr<Viewarea>>& areas) const
{
    if (records_.size() != areas.size())
        return false;
    for (std::size_t i = 0; i < areas.size(); ++i)
        ApplyOne(*areas[i], records_[i]);
    return true;
}

ViewareaLook ViewareaSettings::CaptureOne(const Viewarea& area)
{
    ViewareaLook record = area.GetLook();
    const draw::Scene* scene = area.GetScene();
    record.axes = scene->IsAxesVisible();
    record.gridMode = static_cast<std::uint32_t>(scene->GetGridMode());
    record.gridUnits = scene->GetGridUnits();
    record.nearPlane = scene->GetNear();
    record.farPlane = scene->GetFar();
    record.sidebarVisible = area.IsSidebarVisible();
    if (const Camera* camera = area.GetCamera()) {
        record.camera.position = camera->GetPosition();
        record.camera.target = camera->GetTarget();
        record.camera.up = camera->GetUp();
        record.camera.fixedRotationEnabled = camera->IsFixedRotationEnabled();
        record.camera.axis = camera->GetFixedRotationAxis();
    }
    return record;
}

void ViewareaSettings::ApplyOne(Viewarea& area, const ViewareaLook& record)
{
    draw::Scene* scene = area.GetScene();
    area.SetAxesVisible(record.axes);
    scene->SetGridMode(static_cast<int>(record.gridMode));
    scene->SetGridUnits(record.gridUnits);
    scene->SetNearFar(record.nearPlane, record.farPlane);
    area.SetSidebarVisible(record.sidebarVisible);
    if (Camera* camera = area.GetCamera()) {
        camera->SetPose(Camera::Pose(record.camera.target, record.camera.position, record.camera.up));
        // SetPose switches fixed rotation off; the axis goes first so that switching it back
        // on turns the camera upright about the stored axis.
        camera->SetFixedRotationAxis(record.camera.axis);
        camera->SetFixedRotationEnabled(record.camera.fixedRotationEnabled);
    }
}

} // namespace vexa
