#include <vexa/modules/ImageResource.h>

#include "modules/AddNew.h"

#include <vexa/modules/TextureGadget.h>

#include <vexa/draw/ImageRenderer.h>

#include <utility>

namespace vexa::modules {

ImageResource::ImageResource(const std::string& name, const tesk::Image& image)
    : Resource(name, "ImageResource"), renderer_(std::make_shared<draw::ImageRenderer>(image))
{
}

ImageResource::ImageResource(const std::string& name, tesk::Image&& image)
    : Resource(name, "ImageResource"), renderer_(std::make_shared<draw::ImageRenderer>(std::move(image)))
{
}

std::shared_ptr<Gadget> ImageResource::CreateGadget()
{
    return std::make_shared<TextureGadget>(this);
}

std::shared_ptr<ImageResource> AddImage(const std::string& name, const tesk::Image& image)
{
    return AddNew<ImageResource>(name, image);
}

std::shared_ptr<ImageResource> AddImage(const std::string& name, tesk::Image&& image)
{
    return AddNew<ImageResource>(name, std::move(image));
}

} // namespace vexa::modules
