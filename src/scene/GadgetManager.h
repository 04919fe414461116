#pragma once
// Everything drawn in one view area: its scene, its camera and the gadgets of the resources it
// shows, keyed by ResourceId, plus the scene instances each gadget added.

#include <vexa/Input.h>
#include <vexa/ResourceId.h>

#include <CEGUI/Event.h>

#include <glm/vec3.hpp>

#include <map>
#include <memory>
#include <set>
#include <utility>
#include <vector>

namespace CEGUI {
class EventArgs;
class Window;
} // namespace CEGUI

namespace vexa {

class Camera;
class Gadget;
class Viewarea;
namespace draw {
class Renderer;
class Scene;
class Style;
} // namespace draw

class GadgetManager {
public:
    /// Creates the scene and camera and registers them with the engine's render system and
    /// camera controller (when it has them). With a view area that has windows, the scene's
    /// viewport follows its render canvas.
    explicit GadgetManager(Viewarea* viewarea);
    /// Terminates every gadget in key order.
    ~GadgetManager();
    GadgetManager(const GadgetManager&) = delete;
    GadgetManager& operator=(const GadgetManager&) = delete;

    /// Throws std::out_of_range when no gadget is stored under `id`.
    const std::shared_ptr<Gadget>& GetGadget(const ResourceId& id) const;
    bool HasGadget(const ResourceId& id) const;
    /// Points this view area's camera at what the resource's gadget frames; false when the
    /// resource has no gadget here or the gadget cannot frame its content.
    bool FocusCamera(const ResourceId& id);
    /// Points the camera, along its present direction of view, at the box's centre from where
    /// the whole box is in view with a margin, and sets the clipping planes around it.
    void FrameBox(const glm::vec3& minimum, const glm::vec3& maximum);
    /// Makes the gadget of the registered resource `id` in this view area; false (logged when
    /// the resource returns none) when nothing was made.
    bool Create(const ResourceId& id);
    /// Terminates the gadget, takes its instances out of the scene and forgets it.
    void Remove(const ResourceId& id);
    const std::map<ResourceId, std::shared_ptr<Gadget>>& GetGadgets() const { return gadgets_; }

    /// The scene instances are recorded per gadget so that removing a gadget cleans the scene.
    int AddRenderer(const ResourceId& id, const std::shared_ptr<draw::Renderer>& renderer,
                    const std::shared_ptr<draw::Style>& style, unsigned char flags);
    void RemoveRenderer(const ResourceId& id, int handle);
    const std::set<int>& GetRendererHandles(const ResourceId& id) const;

    const std::shared_ptr<draw::Scene>& GetScene() const { return scene_; }
    const std::shared_ptr<Camera>& GetCamera() const { return camera_; }

    /// Routes an event along the gadgets in key order; each gets the status of the previous.
    /// A handler may remove or rebuild gadgets (its own included): the walk goes over the
    /// gadgets there were when the event came, and skips any that is gone or replaced by then.
    template <typename Call>
    EventStatus Route(Call&& call)
    {
        EventStatus status = EventStatus::NotConsumed;
        if (gadgets_.empty())
            return status;
        // Pointer moves come by the hundred a second: the walk's list keeps its memory from
        // one event to the next, and an event sent from inside a handler gets its own list.
        std::vector<std::shared_ptr<Gadget>> nested;
        const bool outer = !routing_;
        std::vector<std::shared_ptr<Gadget>>& walk = outer ? walkBuffer_ : nested;
        routing_ = true;
        struct Done {
            GadgetManager& manager;
            std::vector<std::shared_ptr<Gadget>>& walk;
            bool outer;
            ~Done()
            {
                walk.clear();
                if (outer)
                    manager.routing_ = false;
            }
        } done{*this, walk, outer};
        for (const auto& entry : gadgets_)
            walk.push_back(entry.second);
        for (const std::shared_ptr<Gadget>& gadget : walk)
            if (IsListed(gadget))
                status = call(*gadget, status);
        return status;
    }

    /// Removes every gadget as Remove does, while the view area is still whole: a gadget's
    /// Terminate may still reach its renderers, camera and panel.
    void RemoveAll();

    /// Brings the scene's viewport in line with the render canvas's pixel rectangle.
    void UpdateViewport();

private:
    /// Whether `gadget` is still the one listed for its resource.
    bool IsListed(const std::shared_ptr<Gadget>& gadget) const;
    bool OnWindowChanged(const CEGUI::EventArgs& args);

    ResourceId id_;
    Viewarea* viewarea_;
    CEGUI::Window* renderCanvas_;
    std::shared_ptr<draw::Scene> scene_;
    std::shared_ptr<Camera> camera_;
    std::map<ResourceId, std::shared_ptr<Gadget>> gadgets_;
    std::map<ResourceId, std::set<int>> handles_;
    int cameraSubscription_ = 0;
    std::vector<CEGUI::Event::Connection> connections_;
    std::vector<std::shared_ptr<Gadget>> walkBuffer_;
    bool routing_ = false;
};

} // namespace vexa
