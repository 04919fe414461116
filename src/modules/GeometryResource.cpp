#include <vexa/modules/GeometryResource.h>

#include "modules/AddNew.h"

#include <vexa/modules/GeometryGadget.h>

#include <vexa/draw/GeometryRenderer.h>

namespace vexa::modules {

GeometryResource::GeometryResource(const std::string& name, draw::GeometryName geometry)
    : Resource(name, "GeometryResource"), geometry_(geometry),
      renderer_(std::make_shared<draw::GeometryRenderer>(geometry))
{
}

void GeometryResource::SetGeometry(draw::GeometryName geometry)
{
    geometry_ = geometry;
    renderer_ = std::make_shared<draw::GeometryRenderer>(geometry);
    // The gadgets hold the old renderer in their scenes; rebuilding them swaps it everywhere.
    ResetGadgets();
}

std::shared_ptr<Gadget> GeometryResource::CreateGadget()
{
    return std::make_shared<GeometryGadget>(this, renderer_);
}

std::shared_ptr<GeometryResource> AddGeometry(const std::string& name, draw::GeometryName geometry)
{
    return AddNew<GeometryResource>(name, geometry);
}

} // namespace vexa::modules
