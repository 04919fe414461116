#include <vexa/Gadget.h>

#include "core/EngineServices.h"
#include "core/Notifications.h"
#include "core/Viewarea.h"

#include <vexa/Resource.h>

#include <vexa/draw/Scene.h>
#include <vexa/draw/Style.h>

#include <runa/BinaryStream.h>
#include <runa/rlog.h>

#include <cstdint>
#include <fstream>
#include <istream>
#include <ostream>

namespace vexa {

namespace {

constexpr unsigned int kBaseStateVersion = 0;
constexpr unsigned int kStyleRecordVersion = 0;

} // namespace

Gadget::Gadget(const Resource* resource)
    : id_(resource != nullptr ? resource->id : ResourceId()), resource_(resource)
{
    GetNotifications().Subscribe(this, kResourceGuiChanged, [this](const void* data) {
        const auto* changed = static_cast<const ResourceId*>(data);
        if (changed != nullptr && *changed == id_)
            SaveState();
    });
}

Gadget::~Gadget()
{
    // A gadget released without Terminate must not leave a callback to freed memory behind.
    GetNotifications().Unsubscribe(this);
}

void Gadget::Initialize()
{
    initialized_ = true;
}

void Gadget::Terminate()
{
    GetNotifications().Unsubscribe(this);
}

void Gadget::GenerateGui(GuiGenerator&)
{
    TestInitialization("Gadget::GenerateGui");
}

void Gadget::Update(float) {}

bool Gadget::FocusCamera(glm::vec3&, glm::vec3&) const
{
    return false;
}

EventStatus Gadget::KeyPressed(Key, const ModKeys&, EventStatus)
{
    return EventStatus::NotConsumed;
}

EventStatus Gadget::KeyReleased(Key, const ModKeys&, EventStatus)
{
    return EventStatus::NotConsumed;
}

EventStatus Gadget::MouseButtonPressed(MouseButton, const ModKeys&, EventStatus)
{
    return EventStatus::NotConsumed;
}

EventStatus Gadget::MouseButtonReleased(MouseButton, const ModKeys&, EventStatus)
{
    return EventStatus::NotConsumed;
}

EventStatus Gadget::MouseWheel(float, EventStatus)
{
    return EventStatus::NotConsumed;
}

EventStatus Gadget::MouseMoved(float, float, EventStatus)
{
    return EventStatus::NotConsumed;
}

EventStatus Gadget::ViewResized(unsigned int, unsigned int, EventStatus)
{
    return EventStatus::NotConsumed;
}

void Gadget::RenderTexts(draw::TextRenderer&) {}

int Gadget::AddRenderer(const std::shared_ptr<draw::Renderer>& renderer,
                        const std::shared_ptr<draw::Style>& style, unsigned char flags) const
{
    if (!TestInitialization("Gadget::AddRenderer"))
        return 0;
    if (viewarea_ == nullptr) {
        rlog::Warn(id_.ToString() + " - Gadget has no view area to add a renderer to.",
                   "vexa::Gadget::AddRenderer");
        return 0;
    }
    return viewarea_->AddRenderer(id_, renderer, style, flags);
}

void Gadget::RemoveRenderer(int handle) const
{
    if (!TestInitialization("Gadget::RemoveRenderer") || viewarea_ == nullptr)
        return;
    viewarea_->RemoveRenderer(id_, handle);
}

std::optional<PickHit> Gadget::Pick(const PickRequest&) const
{
    return std::nullopt;
}

void Gadget::SetViewarea(Viewarea* viewarea)
{
    viewarea_ = viewarea;
}

Camera* Gadget::GetCamera() const
{
    return viewarea_ != nullptr ? viewarea_->GetCamera() : nullptr;
}

draw::ProjectionParams Gadget::GetProjectionParams() const
{
    if (viewarea_ == nullptr)
        return draw::Scene().GetProjectionParams();
    return viewarea_->GetScene()->GetProjectionParams();
}

void Gadget::SetNearFar(float nearPlane, float farPlane) const
{
    if (viewarea_ == nullptr)
        return;
    viewarea_->GetScene()->SetNearFar(nearPlane, farPlane);
    DrawOnNextUpdate();
}

void Gadget::AddCeguiElement(CEGUI::Element*) {}

unsigned int Gadget::GetViewAreaId() const
{
    return viewarea_ != nullptr ? viewarea_->GetId() : 0u;
}

void Gadget::DrawOnNextUpdate() const
{
    GetEngineServices().RequestRedraw();
}

bool Gadget::ReadFromStream(std::istream& stream)
{
    return ReadStateVersion(stream, kBaseStateVersion);
}

void Gadget::WriteToStream(std::ostream& stream) const
{
    WriteStateVersion(stream, kBaseStateVersion);
}

void Gadget::LoadState()
{
    stateLoaded_ = true;
    const std::string path = GetStateFileName();
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    // A missing or empty file is a first use. A file of another version or a damaged one
    // leaves the defaults; the reader has its own word about a record cut short.
    if (!file.is_open() || file.tellg() <= 0)
        return;
    file.seekg(0);
    ReadFromStream(file);
}

bool Gadget::SaveState() const
{
    if (!stateLoaded_ || !TestInitialization("Gadget::SaveState"))
        return false;
    std::ofstream file(GetStateFileName(), std::ios::binary | std::ios::trunc);
    if (!file.is_open())
        return false;
    WriteToStream(file);
    return true;
}

bool Gadget::ReadStyleRecord(std::istream& stream, draw::Style& style)
{
    return ReadStateVersion(stream, kStyleRecordVersion) && style.ReadFromStream(stream);
}

void Gadget::WriteStyleRecord(std::ostream& stream, const draw::Style& style)
{
    WriteStateVersion(stream, kStyleRecordVersion);
    style.WriteToStream(stream);
}

bool Gadget::ReadStateVersion(std::istream& stream, unsigned int version)
{
    return runa::BinaryReader(stream, "vexa::Gadget::ReadStateVersion").ReadVersion(version);
}

void Gadget::WriteStateVersion(std::ostream& stream, unsigned int version)
{
    runa::BinaryWriter(stream).WriteVersion(version);
}

bool Gadget::TestInitialization(const std::string& function) const
{
    if (initialized_)
        return true;
    rlog::Warn(id_.ToString() + " - Can not execute function \"" + function +
                   "\" before Gadget is initialized.\n" +
                   "Did you forget to call Initialize for super class at the start of your method?",
               "vexa::Gadget::TestInitialization");
    return false;
}

std::string Gadget::GetStateFileName() const
{
    return GetEngineServices().GetIntermediateDirectory() + id_.type + "State" +
           std::to_string(GetViewAreaId()) + ".bin";
}

} // namespace vexa
