#pragma once
// The look of the window and of its view areas: what the look file sets and what the view
// areas remember between runs. The view-area records also have a versioned little-endian
// binary form for the view-area state file; a reader that meets another version or runs
// out of data returns false and keeps its previous values.

#include "core/CompositeCoordinates.h"

#include <vexa/ResourceId.h>

#include <tesk/Color.h>

#include <glm/glm.hpp>

#include <cstdint>
#include <istream>
#include <ostream>
#include <string>
#include <vector>

namespace vexa {

/// Initial placement of a view area's camera; the same values a camera reset restores.
class CameraLook {
public:
    static constexpr std::uint32_t kStreamVersion = 1;

    glm::vec3 position{2.0f, 2.0f, 2.0f};
    glm::vec3 target{0.0f, 0.0f, 0.0f};
    glm::vec3 up{0.0f, 1.0f, 0.0f};
    bool fixedRotationEnabled = false;
    glm::vec3 axis{0.0f, 1.0f, 0.0f};

    CameraLook() = default;
    CameraLook(const CameraLook&) = default;
    CameraLook& operator=(const CameraLook&) = default;
    // Declared so that the virtual destructor does not turn moves into copies.
    CameraLook(CameraLook&&) noexcept = default;
    CameraLook& operator=(CameraLook&&) noexcept = default;
    virtual ~CameraLook() = default;

    virtual void WriteToStream(std::ostream& out) const;
    virtual bool ReadFromStream(std::istream& in);

    bool operator==(const CameraLook&) const = default;
};

/// How one resource behaves in one view area.
class ResourceLook {
public:
    static constexpr std::uint32_t kStreamVersion = 1;

    ResourceId id;
    /// The user cannot remove it from the view area (its panel has no remove button). How the
    /// sidebar reads all four flags is described in gui/Sidebar.h.
    bool permanent = false;
    bool guiEnabled = true;
    bool selectEnabled = true;
    bool autoSelect = false;

    ResourceLook() = default;
    ResourceLook(const ResourceLook&) = default;
    ResourceLook& operator=(const ResourceLook&) = default;
    ResourceLook(ResourceLook&&) noexcept = default;
    ResourceLook& operator=(ResourceLook&&) noexcept = default;
    virtual ~ResourceLook() = default;

    virtual void WriteToStream(std::ostream& out) const;
    virtual bool ReadFromStream(std::istream& in);

    bool operator==(const ResourceLook&) const = default;
};

/// One view area. The defaults cover the whole window.
class ViewareaLook {
public:
    static constexpr std::uint32_t kStreamVersion = 1;

    enum GridMode : std::uint32_t { GridNone = 0, GridXY = 1, GridYZ = 2, GridZX = 3 };

    CompositePosition position{{0.0f, 0.0f}, {0.0f, 0.0f}};
    CompositeSize size{{1.0f, 0.0f}, {1.0f, 0.0f}};
    bool axes = true;
    /// One of GridMode.
    std::uint32_t gridMode = GridNone;
    /// Edge length of one grid cell.
    float gridUnits = 1.0f;
    bool sidebarEnabled = true;
    bool sidebarVisible = true;
    float nearPlane = 0.001f;
    float farPlane = 20.0f;
    CameraLook camera;
    std::vector<ResourceLook> resourceLooks;
    bool cameraAnimatorEnabled = true;
    bool settingsEnabled = true;

    ViewareaLook() = default;
    ViewareaLook(const ViewareaLook&) = default;
    ViewareaLook& operator=(const ViewareaLook&) = default;
    ViewareaLook(ViewareaLook&&) noexcept = default;
    ViewareaLook& operator=(ViewareaLook&&) noexcept = default;
    virtual ~ViewareaLook() = default;

    virtual void WriteToStream(std::ostream& out) const;
    virtual bool ReadFromStream(std::istream& in);

    bool operator==(const ViewareaLook&) const = default;
};

/// The whole window. Without a look file it holds one full-window view area.
struct WindowLook {
    std::int32_t width = 640;
    std::int32_t height = 480;
    /// "VEXA v" and the library version.
    std::string caption = DefaultCaption();
    bool maximized = false;
    bool fullscreen = false;
    bool optionsEnabled = true;
    bool keyShortcutsEnabled = true;
    tesk::Color3b background{0x3D, 0x3D, 0x3D};
    std::vector<ViewareaLook> views{ViewareaLook{}};

    static std::string DefaultCaption();

    bool operator==(const WindowLook&) const = default;
};

} // namespace vexa
