#pragma once
// Base of everything that shows one resource in one view area: it adds renderers to the view
// area's scene, builds the resource's sidebar panel, answers input routed to it and keeps its
// settings in a small binary state file per gadget type and view area.
//
// A subclass's Initialize() calls LoadState(), then Gadget::Initialize(), and only then adds
// renderers. The guarded operations (GenerateGui, AddRenderer, RemoveRenderer, SaveState) warn
// and do nothing until Gadget::Initialize() has run.
//
// State file: <intermediate directory><resource type>State<view area id>.bin. All gadgets of
// one type in one view area share it, so a new point cloud starts with the settings the user
// chose for the previous one. The stream starts with the base record (u32 0), then the
// subclass's own versioned record. The gadget saves itself whenever a GUI value of exactly its
// resource changes.

#include <vexa/Export.h>
#include <vexa/Input.h>
#include <vexa/Picking.h>
#include <vexa/ResourceId.h>

#include <vexa/draw/ProjectionParams.h>

#include <glm/vec3.hpp>

#include <iosfwd>
#include <memory>
#include <optional>
#include <string>

namespace CEGUI {
class Element;
}

namespace vexa {

class Camera;
class GuiGenerator;
class Resource;
class Viewarea;
namespace draw {
class Renderer;
class Style;
class TextRenderer;
} // namespace draw

class VEXA_API Gadget {
public:
    explicit Gadget(const Resource* resource);
    virtual ~Gadget();
    Gadget(const Gadget&) = delete;
    Gadget& operator=(const Gadget&) = delete;

    virtual void Initialize();
    /// Drops this gadget's engine subscriptions; subclasses call it after their own clean-up.
    virtual void Terminate();
    virtual void GenerateGui(GuiGenerator& generator);
    virtual void Update(float timeStep);
    /// A gadget that can frame its content fills both vectors and returns true.
    virtual bool FocusCamera(glm::vec3& target, glm::vec3& position) const;

    virtual EventStatus KeyPressed(Key key, const ModKeys& mods, EventStatus status);
    virtual EventStatus KeyReleased(Key key, const ModKeys& mods, EventStatus status);
    virtual EventStatus MouseButtonPressed(MouseButton button, const ModKeys& mods, EventStatus status);
    virtual EventStatus MouseButtonReleased(MouseButton button, const ModKeys& mods, EventStatus status);
    virtual EventStatus MouseWheel(float delta, EventStatus status);
    virtual EventStatus MouseMoved(float x, float y, EventStatus status);
    virtual EventStatus ViewResized(unsigned int width, unsigned int height, EventStatus status);

    virtual void RenderTexts(draw::TextRenderer& textRenderer);

    /// Adds an instance to the view area's scene; returns its handle, 0 on failure.
    virtual int AddRenderer(const std::shared_ptr<draw::Renderer>& renderer,
                            const std::shared_ptr<draw::Style>& style, unsigned char flags) const;
    virtual void RemoveRenderer(int handle) const;

    /// What of this gadget's content lies under the pointer (Shift + left click); the base
    /// has nothing to offer.
    virtual std::optional<PickHit> Pick(const PickRequest& request) const;

    void SetViewarea(Viewarea* viewarea);
    Viewarea* GetViewarea() const { return viewarea_; }
    const ResourceId& GetId() const { return id_; }
    const Resource* GetResource() const { return resource_; }
    bool IsInitialized() const { return initialized_; }

    /// The camera of the gadget's view area, null without one.
    Camera* GetCamera() const;
    /// The view area scene's projection; defaults without a view area.
    draw::ProjectionParams GetProjectionParams() const;
    void SetNearFar(float nearPlane, float farPlane) const;
    /// Hook for gadgets that own extra CEGUI elements; the base keeps none.
    void AddCeguiElement(CEGUI::Element* element);

    /// Writes the state file. False when the state was never loaded, before initialisation or
    /// when the file cannot be written.
    bool SaveState() const;

protected:
    virtual bool ReadFromStream(std::istream& stream);
    virtual void WriteToStream(std::ostream& stream) const;

    unsigned int GetViewAreaId() const;
    void DrawOnNextUpdate() const;
    void LoadState();

    static bool ReadStateVersion(std::istream& stream, unsigned int version);
    static void WriteStateVersion(std::ostream& stream, unsigned int version);
    /// A drawing style inside a state record: u32 0, then the style's own versioned block.
    /// Reading fails (and the style keeps its values) on another word or a bad block.
    static bool ReadStyleRecord(std::istream& stream, draw::Style& style);
    static void WriteStyleRecord(std::ostream& stream, const draw::Style& style);

private:
    bool TestInitialization(const std::string& function) const;
    std::string GetStateFileName() const;

    ResourceId id_;
    const Resource* resource_;
    bool initialized_ = false;
    Viewarea* viewarea_ = nullptr;
    bool stateLoaded_ = false;
};

} // namespace vexa
