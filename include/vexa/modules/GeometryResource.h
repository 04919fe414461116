#pragma once
// One of the drawing library's built-in shapes (box, sphere, camera marker, ...) as a
// resource, e.g. to mark a point of interest or to try out materials and matcaps.

#include <vexa/Export.h>
#include <vexa/Resource.h>

#include <vexa/draw/GeometryName.h>

#include <memory>
#include <string>

namespace vexa::draw {
class GeometryRenderer;
}

namespace vexa::modules {

class VEXA_API GeometryResource : public Resource {
public:
    /// Shows `geometry` under `name`; resource type "GeometryResource".
    explicit GeometryResource(const std::string& name, draw::GeometryName geometry = draw::GeometryName::Box);

    /// Swaps the shape; every view area rebuilds its gadget for the resource.
    void SetGeometry(draw::GeometryName geometry);
    draw::GeometryName GetGeometry() const { return geometry_; }

    std::shared_ptr<Gadget> CreateGadget() override;

    const std::shared_ptr<draw::GeometryRenderer>& GetRenderer() const { return renderer_; }

private:
    draw::GeometryName geometry_;
    std::shared_ptr<draw::GeometryRenderer> renderer_;
};

/// Registers a built-in shape under `name` (when the library is running) and returns it.
VEXA_API std::shared_ptr<GeometryResource> AddGeometry(const std::string& name, draw::GeometryName geometry);

} // namespace vexa::modules
