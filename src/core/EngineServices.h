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
namespace draw {
class RenderSystem;
class Light;
}

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
};

/// The installed services, or the neutral stand-in; never null.
EngineServices& GetEngineServices();
/// Installs `services` (null restores the stand-in). The caller keeps ownership and must
/// uninstall before destroying it.
void SetEngineServices(EngineServices* services);

} // namespace vexa
