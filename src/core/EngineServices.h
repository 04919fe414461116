#pragma once
// What resources, gadgets and view areas need from the running engine. The engine implements
// it; without an engine (tests, objects made before Initialize) a neutral stand-in answers:
// nothing is registered, redraw requests are dropped, the intermediate directory is "./vexa/".

#include <vexa/ResourceId.h>

#include <memory>
#include <string>
#include <vector>

namespace vexa {

class Resource;
class CameraController;
class GeneralOptions;
namespace draw {
class RenderSystem;
struct Light;
} // namespace draw

class EngineServices {
public:
    virtual ~EngineServices() = default;

    /// The next library update redraws the window.
    virtual void RequestRedraw() = 0;
    /// Always ends in '/'.
    virtual const std::string& GetIntermediateDirectory() const = 0;
    /// Ends in '/'; empty when no asset directory was set.
    virtual const std::string& GetAssetDirectory() const = 0;
    /// The registered resource with this id, or null.
    virtual std::shared_ptr<Resource> FindResource(const ResourceId& id) const = 0;
    /// Null while the engine has no render system (and in tests).
    virtual draw::RenderSystem* GetRenderSystem() = 0;
    /// Null while the engine has no camera controller (and in tests).
    virtual CameraController* GetCameraController() = 0;
    /// The lights every new scene gets.
    virtual std::vector<std::shared_ptr<draw::Light>> GetLights() const = 0;

    // The built-in sidebar panels reach these; without an engine they act on a process-wide
    // set of options that nothing loads or saves, and the requests go nowhere.
    /// The library-wide switches (options.bin).
    virtual GeneralOptions& GetGeneralOptions();
    /// Shows the layout chooser over the whole window, making it on first use.
    virtual void ShowLayoutChooser() {}
    /// The shaders are rebuilt at the next step, where the context is current.
    virtual void RequestShaderReload() {}
    /// The view areas' state is saved at the start of the next step.
    virtual void MarkViewareasDirty() {}
    /// Every registered resource, in registration order.
    virtual std::vector<ResourceId> GetResourceIds() const { return {}; }
};

/// The installed services, or the neutral stand-in; never null.
EngineServices& GetEngineServices();
/// Installs `services` (null restores the stand-in). The caller keeps ownership and must
/// uninstall before destroying it.
void SetEngineServices(EngineServices* services);

} // namespace vexa
