#pragma once
// One rectangular part of the window with its own scene, camera, gadgets and sidebar. Input
// that the engine routes here is passed along the gadgets in id order.
//
// Which resources a view area shows: with no "units" rules in its look, every registered
// resource; with rules, exactly the resources they name. A shown sidebar takes its width from
// the right of the render canvas, so the scene is drawn beside it, never under it.

#include <vexa/Input.h>
#include <vexa/Picking.h>
#include <vexa/ResourceId.h>

#include "core/Looks.h"

#include <glm/vec2.hpp>

#include <functional>
#include <memory>
#include <optional>

namespace CEGUI {
class Window;
}

namespace vexa {

class Camera;
class GadgetManager;
class GuiViewareaOptions;
class Sidebar;
namespace draw {
class Renderer;
class Scene;
class Style;
} // namespace draw

class Viewarea {
public:
    /// A view area without windows: scene, camera and gadgets only.
    explicit Viewarea(unsigned int id);
    /// A view area built from "ViewArea.layout" under `parent` (the GUI must be running).
    /// Logs and stays without windows when the layout cannot be loaded.
    Viewarea(unsigned int id, CEGUI::Window* parent);
    virtual ~Viewarea();
    Viewarea(const Viewarea&) = delete;
    Viewarea& operator=(const Viewarea&) = delete;

    unsigned int GetId() const { return id_; }
    /// The area window and its "render_canvas" child; null for a view area without windows.
    CEGUI::Window* GetWindow() const { return window_; }
    CEGUI::Window* GetRenderCanvas() const { return renderCanvas_; }

    GadgetManager& GetGadgetManager() { return *gadgetManager_; }
    const GadgetManager& GetGadgetManager() const { return *gadgetManager_; }
    Camera* GetCamera() const;
    draw::Scene* GetScene() const;

    /// The scene registry: instances added here are recorded under the gadget's id.
    int AddRenderer(const ResourceId& id, const std::shared_ptr<draw::Renderer>& renderer,
                    const std::shared_ptr<draw::Style>& style, unsigned char flags);
    void RemoveRenderer(const ResourceId& id, int handle);

    /// Places and configures the area and subscribes to resource notifications 0, 1 and 2.
    void ApplyLook(const ViewareaLook& look);
    const ViewareaLook& GetLook() const { return look_; }
    /// Whether the look's rules let this view area show the resource.
    bool ShowsResource(const ResourceId& id) const;
    /// The look's rule for the resource; null when the look has none for it.
    const ResourceLook* FindResourceLook(const ResourceId& id) const;
    /// Whether a cursor position (window pixels) lies inside the area.
    bool Contains(float x, float y) const;

    bool IsSidebarVisible() const { return sidebarVisible_; }
    /// Shows or hides the sidebar and flips the toggle glyph.
    void SetSidebarVisible(bool visible);
    bool IsSidebarToggleShown() const { return sidebarToggleShown_; }
    /// Called with the new state whenever the sidebar's visibility changes.
    void SetSidebarVisibilityCallback(std::function<void(bool)> callback);
    CEGUI::Window* GetChild(const char* name) const;
    /// The panels column; null for a view area without windows.
    Sidebar* GetSidebar() const { return sidebar_.get(); }
    /// The view and camera options pop-up; null for a view area without windows.
    GuiViewareaOptions* GetViewOptions() const { return viewOptions_.get(); }

    /// Called by the gadget manager: the gadget's panel comes and goes with the gadget. A
    /// resource whose rule says "auto-select" becomes the sidebar's selected resource here.
    void OnGadgetCreated(const ResourceId& id);
    void OnGadgetRemoved(const ResourceId& id);

    /// The window-wide switch of the look ("options-enabled"): off, no sidebar of this area
    /// offers the global options, whatever its own "enable-settings" says.
    void SetGlobalOptionsEnabled(bool enabled);

    bool IsAxesVisible() const;
    void SetAxesVisible(bool visible);

    /// The nearest thing any gadget here has under `cursor` (window pixels); nothing when no
    /// gadget reports a hit.
    std::optional<PickHit> Pick(glm::vec2 cursor) const;

    virtual EventStatus KeyPressed(Key key, const ModKeys& mods);
    virtual EventStatus KeyReleased(Key key, const ModKeys& mods);
    virtual EventStatus MouseButtonPressed(MouseButton button, const ModKeys& mods);
    virtual EventStatus MouseButtonReleased(MouseButton button, const ModKeys& mods);
    virtual EventStatus MouseWheel(float delta);
    virtual EventStatus MouseMoved(float x, float y);
    virtual EventStatus ViewResized(unsigned int width, unsigned int height);
    /// ViewResized with the render canvas's pixel size (what the scene is drawn in); nothing
    /// for a view area without windows.
    EventStatus NotifyCanvasSize();

private:
    void OnResourceAdded(const ResourceId& id);
    void OnResourceReset(const ResourceId& id);
    void OnResourceRemoved(const ResourceId& id);
    void ChangeSidebarVisibility(bool visible);
    void LayOutToolbar();

    unsigned int id_;
    ViewareaLook look_;
    bool sidebarVisible_ = false;
    bool sidebarToggleShown_ = false;
    bool globalOptionsEnabled_ = true;
    std::function<void(bool)> sidebarCallback_;
    CEGUI::Window* window_ = nullptr;
    CEGUI::Window* renderCanvas_ = nullptr;
    std::unique_ptr<GadgetManager> gadgetManager_;
    std::unique_ptr<Sidebar> sidebar_;
    std::unique_ptr<GuiViewareaOptions> viewOptions_;
};

} // namespace vexa
