#include "scene/GadgetManager.h"

#include "core/EngineServices.h"
#include "core/Notifications.h"
#include "core/Viewarea.h"

#include <vexa/Camera.h>
#include <vexa/CameraController.h>
#include <vexa/Gadget.h>

#include <vexa/Resource.h>

#include <vexa/draw/RenderSystem.h>
#include <vexa/draw/Scene.h>
#include <vexa/draw/VisualCamera.h>

#include <runa/rlog.h>

#include <CEGUI/Window.h>

#include <glm/geometric.hpp>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace vexa {

GadgetManager::GadgetManager(Viewarea* viewarea)
    : viewarea_(viewarea), renderCanvas_(viewarea != nullptr ? viewarea->GetRenderCanvas() : nullptr),
      scene_(std::make_shared<draw::Scene>(glm::ivec4(0, 0, 0, 0))),
      camera_(std::make_shared<Camera>(scene_.get()))
{
    camera_->Reset();

    EngineServices& engine = GetEngineServices();
    scene_->SetLights(engine.GetLights());
    if (draw::RenderSystem* renderSystem = engine.GetRenderSystem())
        renderSystem->AddScene(scene_);
    if (CameraController* controller = engine.GetCameraController())
        controller->AddScene(scene_, camera_);
    engine.RequestRedraw();

    UpdateViewport();
    CEGUI::Window* area = viewarea != nullptr ? viewarea->GetWindow() : nullptr;
    for (CEGUI::Window* window : {area, renderCanvas_}) {
        if (window == nullptr)
            continue;
        connections_.push_back(window->subscribeEvent(
            CEGUI::Window::EventSized, CEGUI::Event::Subscriber(&GadgetManager::OnWindowChanged, this)));
        connections_.push_back(window->subscribeEvent(
            CEGUI::Window::EventMoved, CEGUI::Event::Subscriber(&GadgetManager::OnWindowChanged, this)));
    }

    // Whatever moves the camera (drags, animations, the host) must show on the next update.
    cameraSubscription_ = scene_->GetCamera()->SubscribeChange([]() { GetEngineServices().RequestRedraw(); });
}

GadgetManager::~GadgetManager()
{
    for (auto& connection : connections_)
        connection->disconnect();
    scene_->GetCamera()->UnsubscribeChange(cameraSubscription_);
    for (auto& [gadgetId, gadget] : gadgets_)
        gadget->Terminate();
    gadgets_.clear();
    if (draw::RenderSystem* renderSystem = GetEngineServices().GetRenderSystem())
        renderSystem->RemoveScene(scene_);
}

const std::shared_ptr<Gadget>& GadgetManager::GetGadget(const ResourceId& id) const
{
    auto it = gadgets_.find(id);
    if (it == gadgets_.end())
        throw std::out_of_range("View with id '" + id.ToString() + "' do not exist.");
    return it->second;
}

bool GadgetManager::IsListed(const std::shared_ptr<Gadget>& gadget) const
{
    auto it = gadgets_.find(gadget->GetId());
    return it != gadgets_.end() && it->second == gadget;
}

bool GadgetManager::HasGadget(const ResourceId& id) const
{
    return gadgets_.count(id) != 0;
}

bool GadgetManager::FocusCamera(const ResourceId& id)
{
    auto it = gadgets_.find(id);
    if (it == gadgets_.end())
        return false;
    glm::vec3 target(0.0f);
    glm::vec3 position(0.0f);
    if (!it->second->FocusCamera(target, position))
        return false;
    if (camera_) {
        camera_->SetTarget(target);
        camera_->SetPosition(position);
        GetEngineServices().RequestRedraw();
    }
    return true;
}

void GadgetManager::FrameBox(const glm::vec3& minimum, const glm::vec3& maximum)
{
    if (!camera_ || !std::isfinite(glm::dot(minimum, maximum)))
        return;
    // A point (a box without size) is shown as a small box around it.
    constexpr float kMinRadius = 1e-3f;
    // Room around the box, so that no point sits on the window's edge.
    constexpr float kMargin = 1.1f;
    const glm::vec3 centre = 0.5f * (minimum + maximum);
    const float radius = std::max(0.5f * glm::length(maximum - minimum), kMinRadius);
    // The bounding sphere fits the narrower field of view (the scene's viewport already ends
    // where a shown sidebar begins).
    const float halfAngle = 0.5f * std::min(scene_->GetFovX(), scene_->GetFovY());
    const float distance = kMargin * radius / std::sin(std::max(halfAngle, 1e-3f));
    glm::vec3 forward = camera_->GetForward();
    if (!(glm::dot(forward, forward) > 0.5f))
        forward = glm::normalize(glm::vec3(-1.0f));
    camera_->SetTarget(centre);
    camera_->SetPosition(centre - distance * forward);
    scene_->SetNearFar(0.01f * distance, 2.0f * (distance + radius));
    GetEngineServices().RequestRedraw();
}

bool GadgetManager::Create(const ResourceId& id)
{
    std::shared_ptr<Resource> resource = GetEngineServices().FindResource(id);
    if (resource == nullptr)
        return false;
    std::shared_ptr<Gadget> gadget = resource->CreateGadget();
    if (gadget == nullptr) {
        rlog::Warn("Gadget instantiated by \"" + id.ToString() + "\" is nullptr.",
                   "vexa::GadgetManager::Create");
        return false;
    }
    // A gadget made again for the same id replaces the old one, which must let go of the scene.
    if (HasGadget(id))
        Remove(id);
    gadget->SetViewarea(viewarea_);
    gadgets_[id] = gadget;
    gadget->Initialize();
    if (viewarea_ != nullptr)
        viewarea_->OnGadgetCreated(id);
    const ResourceId notified = id;
    GetNotifications().Notify(kGadgetCreated, &notified);
    return true;
}

void GadgetManager::RemoveAll()
{
    std::vector<ResourceId> ids;
    ids.reserve(gadgets_.size());
    for (const auto& [id, gadget] : gadgets_)
        ids.push_back(id);
    for (const ResourceId& id : ids)
        Remove(id);
}

void GadgetManager::Remove(const ResourceId& id)
{
    auto it = gadgets_.find(id);
    if (it == gadgets_.end())
        return;
    std::shared_ptr<Gadget> gadget = it->second;
    // The panel's rows point into the gadget's fields: drop them before the gadget goes.
    if (viewarea_ != nullptr)
        viewarea_->OnGadgetRemoved(id);
    gadget->Terminate();
    auto handles = handles_.find(id);
    if (handles != handles_.end()) {
        for (int handle : handles->second)
            scene_->RemoveInstance(handle);
        handles_.erase(handles);
    }
    gadgets_.erase(id);
    GetEngineServices().RequestRedraw();
}

int GadgetManager::AddRenderer(const ResourceId& id, const std::shared_ptr<draw::Renderer>& renderer,
                               const std::shared_ptr<draw::Style>& style, unsigned char flags)
{
    const int handle = scene_->AddInstance(renderer, style, flags);
    if (handle != 0) {
        handles_[id].insert(handle);
        GetEngineServices().RequestRedraw();
    }
    return handle;
}

void GadgetManager::RemoveRenderer(const ResourceId& id, int handle)
{
    if (scene_->RemoveInstance(handle))
        GetEngineServices().RequestRedraw();
    auto it = handles_.find(id);
    if (it == handles_.end())
        return;
    it->second.erase(handle);
    if (it->second.empty())
        handles_.erase(it);
}

const std::set<int>& GadgetManager::GetRendererHandles(const ResourceId& id) const
{
    static const std::set<int> none;
    auto it = handles_.find(id);
    return it != handles_.end() ? it->second : none;
}

void GadgetManager::UpdateViewport()
{
    if (renderCanvas_ == nullptr)
        return;
    const CEGUI::Rectf rect = renderCanvas_->getUnclippedOuterRect().get();
    const glm::ivec4 viewport(
        static_cast<int>(std::lround(rect.d_min.d_x)), static_cast<int>(std::lround(rect.d_min.d_y)),
        static_cast<int>(std::lround(rect.d_max.d_x)), static_cast<int>(std::lround(rect.d_max.d_y)));
    if (viewport != scene_->GetViewport()) {
        scene_->SetViewport(viewport);
        GetEngineServices().RequestRedraw();
    }
}

bool GadgetManager::OnWindowChanged(const CEGUI::EventArgs&)
{
    UpdateViewport();
    return true;
}

} // namespace vexa
