#pragma once
// The free functions a host drives the viewer with: directories, start and end, the main
// loop step, resources and input callbacks. All of them must be called from the thread that
// called Initialize.

#include <vexa/Export.h>
#include <vexa/Input.h>
#include <vexa/ResourceId.h>

#include <runa/Version.h>
#include <tesk/Color.h>

#include <glm/vec3.hpp>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace vexa {

class Resource;

/// One gadget currently shown.
struct VEXA_API ActiveResourceInfo {
    /// The resource the gadget shows; empty when it is no longer listed.
    std::shared_ptr<Resource> resource;
    std::uint32_t viewareaId = 0;
    /// Whether the resource is the one selected in that view area's sidebar.
    bool isSelected = false;
};

/// Starts the viewer with the look file (an empty path: the built-in look). A second call,
/// also after Terminate, is refused.
VEXA_API bool Initialize(const std::string& lookFile);
VEXA_API bool Initialize();
/// Closes the window and releases everything; a later Initialize is refused.
VEXA_API void Terminate();
VEXA_API runa::Version GetVersion();

/// Where state files and screenshots go; created (one level) when missing.
VEXA_API void SetIntermediateDirectory(const std::string& path);
/// Where shaders and GUI resources are read from; must exist. Call before Initialize.
VEXA_API void SetAssetDirectory(const std::string& path);

VEXA_API bool IsOpen();
/// One main-loop step: events, animations, and a frame when something changed.
VEXA_API void Update();

/// Shows the resource, or replaces the listed one with the same id.
VEXA_API void AddResource(const std::shared_ptr<Resource>& resource);
VEXA_API void RemoveAllResources();
/// Removes every resource whose name begins with `prefix` (case-sensitive); an empty prefix
/// removes nothing.
VEXA_API void RemoveResourcesWithPrefix(const std::string& prefix);

VEXA_API void SetFileDropCallback(const std::function<void(const std::vector<std::string>&)>& callback);
VEXA_API void SetKeyDownCallback(const std::function<void(const Key&, const ModKeys&)>& callback);
VEXA_API void SetKeyUpCallback(const std::function<void(const Key&, const ModKeys&)>& callback);

/// `viewarea` is the index in creation order; it must be valid.
VEXA_API bool IsAxesVisible(unsigned char viewarea);
/// An index past the end is ignored.
VEXA_API void SetAxesVisible(unsigned char viewarea, bool visible);
VEXA_API void SetSidebarVisible(unsigned char viewarea, bool visible);

VEXA_API std::vector<ActiveResourceInfo> GetActiveResources();
VEXA_API tesk::Color3b GetBackgroundColor();
/// Frames the resource in every view area that shows it, as its panel's focus button does.
VEXA_API void FocusCamera(const ResourceId& id);
/// Turns every view area's camera, along its present direction of view, onto the box (world
/// space) so that all of it is in view with a margin; the clipping planes follow.
VEXA_API void FrameBox(const glm::vec3& minimum, const glm::vec3& maximum);
/// Draws a frame at once and saves the window's image to `path` as PNG. False before
/// Initialize, once the window was closed, or when the file cannot be written.
VEXA_API bool SaveScreenshot(const std::string& path);

} // namespace vexa
