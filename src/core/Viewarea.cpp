#include "core/Viewarea.h"

#include "core/EngineServices.h"
#include "core/Notifications.h"
#include "gui/GuiPanel.h"
#include "gui/GuiViewareaOptions.h"
#include "gui/Sidebar.h"
#include "scene/GadgetManager.h"

#include <vexa/Gadget.h>

#include <vexa/draw/Scene.h>

#include <runa/rlog.h>

#include <CEGUI/CEGUI.h>

#include <algorithm>
#include <exception>

namespace vexa {

Viewarea::Viewarea(unsigned int id) : id_(id)
{
    gadgetManager_ = std::make_unique<GadgetManager>(this);
}

namespace {

// Width of the "sidebar" window in resources/ViewArea.layout.
constexpr float kSidebarWidth = 270.0f;

constexpr const char* kLayoutFile = "ViewArea.layout";

CEGUI::UDim ToUDim(const CompositeFloat& value)
{
    return CEGUI::UDim(value.relative, value.pixels);
}

} // namespace

Viewarea::Viewarea(unsigned int id, CEGUI::Window* parent) : id_(id)
{
    try {
        window_ = CEGUI::WindowManager::getSingleton().loadLayoutFromFile(kLayoutFile);
        // Sibling names must be unique for CEGUI's name paths.
        window_->setName("viewarea" + CEGUI::PropertyHelper<std::uint32_t>::toString(id));
        renderCanvas_ = window_->getChild("render_canvas");
        if (parent != nullptr)
            parent->addChild(window_);
        window_->getChild("btn_toggle_sidebar")
            ->subscribeEvent(CEGUI::PushButton::EventClicked, [this](const CEGUI::EventArgs&) {
                SetSidebarVisible(!sidebarVisible_);
                return true;
            });
        sidebarVisible_ = window_->getChild("sidebar")->isVisible();
        sidebarToggleShown_ = true;
        sidebar_ = std::make_unique<Sidebar>(*this, window_->getChild("sidebar"));
        sidebar_->SetVisibilityCallback([this](bool shown) {
            sidebarVisible_ = shown;
            if (sidebarCallback_)
                sidebarCallback_(shown);
        });
    } catch (const std::exception& e) {
        rlog::Fail(std::string("Can not build the view area from resources/") + kLayoutFile + ": " + e.what(),
                   "vexa::Viewarea::Viewarea");
        if (window_ != nullptr)
            CEGUI::WindowManager::getSingleton().destroyWindow(window_);
        sidebar_.reset();
        window_ = nullptr;
        renderCanvas_ = nullptr;
    }
    gadgetManager_ = std::make_unique<GadgetManager>(this);
    if (window_ != nullptr) {
        viewOptions_ = std::make_unique<GuiViewareaOptions>(*this, window_);
        window_->getChild("btn_viewarea_options")
            ->subscribeEvent(CEGUI::PushButton::EventClicked, [this](const CEGUI::EventArgs&) {
                viewOptions_->Open();
                return true;
            });
    }
}

Viewarea::~Viewarea()
{
    GetNotifications().Unsubscribe(this);
    // Gadgets end while everything they may reach in Terminate (renderers, camera, panel)
    // still stands; then the panels, which live in the area's windows, and the manager.
    gadgetManager_->RemoveAll();
    sidebar_.reset();
    viewOptions_.reset();
    gadgetManager_.reset();
    if (window_ != nullptr)
        CEGUI::WindowManager::getSingleton().destroyWindow(window_);
}

CEGUI::Window* Viewarea::GetChild(const char* name) const
{
    if (window_ == nullptr)
        return nullptr;
    return window_->getChild(name);
}

void Viewarea::ApplyLook(const ViewareaLook& look)
{
    look_ = look;
    GetNotifications().Unsubscribe(this);
    GetNotifications().Subscribe(this, kResourceAdded, [this](const void* data) {
        OnResourceAdded(*static_cast<const ResourceId*>(data));
    });
    GetNotifications().Subscribe(this, kResourceGadgetsReset, [this](const void* data) {
        OnResourceReset(*static_cast<const ResourceId*>(data));
    });
    GetNotifications().Subscribe(this, kResourceRemoved, [this](const void* data) {
        OnResourceRemoved(*static_cast<const ResourceId*>(data));
    });

    SetAxesVisible(look.axes);
    GetScene()->SetGridMode(static_cast<int>(look.gridMode));
    GetScene()->SetGridUnits(look.gridUnits);
    GetScene()->SetNearFar(look.nearPlane, look.farPlane);

    if (window_ == nullptr) {
        sidebarVisible_ = look.sidebarEnabled && look.sidebarVisible;
        sidebarToggleShown_ = look.sidebarEnabled;
        return;
    }
    window_->setPosition(CEGUI::UVector2(ToUDim(look.position.x), ToUDim(look.position.y)));
    window_->setSize(CEGUI::USize(ToUDim(look.size.width), ToUDim(look.size.height)));

    CEGUI::Window* toggle = window_->getChild("btn_toggle_sidebar");
    if (look.sidebarEnabled) {
        ChangeSidebarVisibility(look.sidebarVisible);
        toggle->setVisible(true);
        sidebarToggleShown_ = true;
    } else {
        ChangeSidebarVisibility(false);
        toggle->setVisible(false);
        sidebarToggleShown_ = false;
    }

    LayOutToolbar();
    gadgetManager_->UpdateViewport();
    GetEngineServices().RequestRedraw();
}

void Viewarea::SetGlobalOptionsEnabled(bool enabled)
{
    globalOptionsEnabled_ = enabled;
    if (!enabled && sidebar_ != nullptr && sidebar_->GetOptionsPanel().IsAttached())
        sidebar_->ToggleOptions();
    if (window_ != nullptr)
        LayOutToolbar();
}

void Viewarea::LayOutToolbar()
{
    const bool settings = look_.settingsEnabled && globalOptionsEnabled_;
    window_->getChild("sidebar/toolbar/toggle_video")->setVisible(look_.cameraAnimatorEnabled);
    window_->getChild("sidebar/toolbar/toggle_options")->setVisible(settings);
    const bool toolbar = look_.cameraAnimatorEnabled || settings;
    window_->getChild("sidebar/toolbar")->setVisible(toolbar);
    // Without the toolbar the panels move up into its place.
    CEGUI::Window* scroll = window_->getChild("sidebar/scroll_panel");
    const float top = toolbar ? window_->getChild("sidebar/toolbar")->getHeight().d_offset : 0.0f;
    scroll->setArea(
        CEGUI::URect(CEGUI::UDim(0, 0), CEGUI::UDim(0, top), CEGUI::UDim(1, 0), CEGUI::UDim(1, 0)));
}

bool Viewarea::ShowsResource(const ResourceId& id) const
{
    // The host's debug shapes are meant for every view area; a look cannot name them.
    if (look_.resourceLooks.empty() || id.type == "Debugger")
        return true;
    for (const ResourceLook& rule : look_.resourceLooks)
        if (rule.id == id)
            return true;
    return false;
}

const ResourceLook* Viewarea::FindResourceLook(const ResourceId& id) const
{
    for (const ResourceLook& rule : look_.resourceLooks)
        if (rule.id == id)
            return &rule;
    return nullptr;
}

bool Viewarea::Contains(float x, float y) const
{
    if (window_ == nullptr)
        return false;
    return window_->getUnclippedOuterRect().get().isPointInRect(CEGUI::Vector2f(x, y));
}

void Viewarea::SetSidebarVisible(bool visible)
{
    // Also where the look disables the sidebar: that only takes the user's toggle away, the
    // host may still show it.
    ChangeSidebarVisibility(visible);
}

void Viewarea::SetSidebarVisibilityCallback(std::function<void(bool)> callback)
{
    sidebarCallback_ = std::move(callback);
}

void Viewarea::ChangeSidebarVisibility(bool visible)
{
    const bool changed = visible != sidebarVisible_;
    sidebarVisible_ = visible;
    if (window_ != nullptr) {
        // The arrow points where the sidebar goes when clicked.
        window_->getChild("btn_toggle_sidebar")
            ->setProperty("Glyph", visible ? "Icons16px/right" : "Icons16px/left");
        window_->getChild("btn_toggle_sidebar")
            ->setProperty("TooltipText", visible ? "Hide the sidebar" : "Show the sidebar");
        // Keep the toggle beside the sidebar, or at the window's edge without it.
        const float right = visible ? -276.0f : -6.0f;
        window_->getChild("btn_toggle_sidebar")
            ->setArea(CEGUI::URect(CEGUI::UDim(1, right - 20.0f), CEGUI::UDim(0, 6), CEGUI::UDim(1, right),
                                   CEGUI::UDim(0, 26)));
        // The scene is drawn beside the sidebar, not under it, so that what the camera looks
        // at stays in the middle of what the user sees.
        CEGUI::Window* canvas = window_->getChild("render_canvas");
        const CEGUI::Sizef before = canvas->getPixelSize();
        canvas->setSize(CEGUI::USize(CEGUI::UDim(1, visible ? -kSidebarWidth : 0.0f), CEGUI::UDim(1, 0)));
        if (canvas->getPixelSize() != before)
            NotifyCanvasSize();
    }
    if (sidebar_ != nullptr) {
        // The sidebar reports the change through the callback installed at construction.
        const bool wasVisible = sidebar_->IsVisible();
        sidebar_->SetVisible(visible);
        if (wasVisible != visible)
            GetEngineServices().RequestRedraw();
    } else if (changed) {
        if (window_ != nullptr)
            window_->getChild("sidebar")->setVisible(visible);
        GetEngineServices().RequestRedraw();
        if (sidebarCallback_)
            sidebarCallback_(visible);
    }
}

void Viewarea::OnResourceAdded(const ResourceId& id)
{
    if (ShowsResource(id) && !gadgetManager_->HasGadget(id))
        gadgetManager_->Create(id);
}

void Viewarea::OnResourceReset(const ResourceId& id)
{
    if (!gadgetManager_->HasGadget(id))
        return;
    gadgetManager_->Remove(id);
    gadgetManager_->Create(id);
    GetEngineServices().RequestRedraw();
}

void Viewarea::OnResourceRemoved(const ResourceId& id)
{
    if (!gadgetManager_->HasGadget(id))
        return;
    gadgetManager_->Remove(id);
    GetEngineServices().RequestRedraw();
}

void Viewarea::OnGadgetCreated(const ResourceId& id)
{
    if (sidebar_ == nullptr || gadgetManager_ == nullptr || !gadgetManager_->HasGadget(id))
        return;
    sidebar_->AddResourcePanel(*gadgetManager_->GetGadget(id));
    const ResourceLook* rule = FindResourceLook(id);
    if (rule != nullptr && rule->autoSelect && sidebar_->SetSelectedResource(id))
        GetEngineServices().RequestRedraw();
}

void Viewarea::OnGadgetRemoved(const ResourceId& id)
{
    if (sidebar_ != nullptr)
        sidebar_->RemoveResourcePanel(id);
}

Camera* Viewarea::GetCamera() const
{
    return gadgetManager_->GetCamera().get();
}

draw::Scene* Viewarea::GetScene() const
{
    return gadgetManager_->GetScene().get();
}

int Viewarea::AddRenderer(const ResourceId& id, const std::shared_ptr<draw::Renderer>& renderer,
                          const std::shared_ptr<draw::Style>& style, unsigned char flags)
{
    return gadgetManager_->AddRenderer(id, renderer, style, flags);
}

void Viewarea::RemoveRenderer(const ResourceId& id, int handle)
{
    gadgetManager_->RemoveRenderer(id, handle);
}

bool Viewarea::IsAxesVisible() const
{
    return GetScene()->IsAxesVisible();
}

void Viewarea::SetAxesVisible(bool visible)
{
    GetScene()->SetAxesVisible(visible);
}

std::optional<PickHit> Viewarea::Pick(glm::vec2 cursor) const
{
    const draw::Scene* scene = GetScene();
    if (scene == nullptr)
        return std::nullopt;
    const draw::VisualCamera& view = *scene->GetCamera();
    PickRequest request;
    request.cursor = cursor;
    request.viewport = scene->GetViewport();
    request.viewProjection = scene->GetProjectionMatrix() * view.GetViewMatrix();
    request.cameraPosition = view.GetPosition();
    std::optional<PickHit> nearest;
    for (const auto& [id, gadget] : gadgetManager_->GetGadgets()) {
        std::optional<PickHit> hit = gadget->Pick(request);
        if (hit && (!nearest || hit->distance < nearest->distance))
            nearest = std::move(hit);
    }
    return nearest;
}

EventStatus Viewarea::KeyPressed(Key key, const ModKeys& mods)
{
    return gadgetManager_->Route([&](Gadget& g, EventStatus s) { return g.KeyPressed(key, mods, s); });
}

EventStatus Viewarea::KeyReleased(Key key, const ModKeys& mods)
{
    return gadgetManager_->Route([&](Gadget& g, EventStatus s) { return g.KeyReleased(key, mods, s); });
}

EventStatus Viewarea::MouseButtonPressed(MouseButton button, const ModKeys& mods)
{
    return gadgetManager_->Route(
        [&](Gadget& g, EventStatus s) { return g.MouseButtonPressed(button, mods, s); });
}

EventStatus Viewarea::MouseButtonReleased(MouseButton button, const ModKeys& mods)
{
    return gadgetManager_->Route(
        [&](Gadget& g, EventStatus s) { return g.MouseButtonReleased(button, mods, s); });
}

EventStatus Viewarea::MouseWheel(float delta)
{
    return gadgetManager_->Route([&](Gadget& g, EventStatus s) { return g.MouseWheel(delta, s); });
}

EventStatus Viewarea::MouseMoved(float x, float y)
{
    return gadgetManager_->Route([&](Gadget& g, EventStatus s) { return g.MouseMoved(x, y, s); });
}

EventStatus Viewarea::NotifyCanvasSize()
{
    if (renderCanvas_ == nullptr)
        return EventStatus::NotConsumed;
    const CEGUI::Sizef size = renderCanvas_->getPixelSize();
    return ViewResized(static_cast<unsigned int>(std::max(size.d_width, 0.0f)),
                       static_cast<unsigned int>(std::max(size.d_height, 0.0f)));
}

EventStatus Viewarea::ViewResized(unsigned int width, unsigned int height)
{
    return gadgetManager_->Route([&](Gadget& g, EventStatus s) { return g.ViewResized(width, height, s); });
}

} // namespace vexa
