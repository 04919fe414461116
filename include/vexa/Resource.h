#pragma once
// Base of everything a host hands to the viewer for display. A resource holds data and its
// identity; it draws nothing. For every view area that shows it, it creates a gadget.
//
// The destructor is virtual: a scan is a point cloud resource and hosts derive their own, and
// whoever ends up holding one through a base class must destroy the whole of it.

#include <vexa/Export.h>
#include <vexa/ResourceId.h>

#include <memory>
#include <string>

namespace vexa {

class Gadget;

class VEXA_API Resource {
public:
    Resource(const std::string& name, const std::string& type);
    explicit Resource(const ResourceId& id);
    virtual ~Resource() = default;

    Resource(const Resource&) = default;
    Resource& operator=(const Resource&) = default;
    Resource(Resource&&) = default;
    Resource& operator=(Resource&&) = default;

    /// A new gadget that shows this resource in one view area.
    virtual std::shared_ptr<Gadget> CreateGadget() = 0;
    /// Called by every library update while the resource is registered.
    virtual void Update(float timeStep);

    /// Asks every view area to rebuild this resource's gadgets. Ignored while the resource is
    /// not registered.
    void ResetGadgets();

    const ResourceId& GetId() const { return id; }

    ResourceId id;

protected:
    /// The next library update redraws; for data changes existing gadgets show as they are.
    void DrawOnNextUpdate() const;
};

} // namespace vexa
