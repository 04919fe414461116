#pragma once
// A 2D image shown in its view areas. One image renderer holds the pixels (on the GPU after the
// first frame) and serves every view area; each area's gadget only brings its own style.

#include <vexa/Export.h>
#include <vexa/Resource.h>

#include <tesk/Image.h>

#include <memory>
#include <string>

namespace vexa::draw {
class ImageRenderer;
}

namespace vexa::modules {

class VEXA_API ImageResource : public Resource {
public:
    /// Shows a copy of `image` under `name`; resource type "ImageResource". An empty image is
    /// logged and shows nothing.
    ImageResource(const std::string& name, const tesk::Image& image);
    /// Takes the pixels over without copying them.
    ImageResource(const std::string& name, tesk::Image&& image);

    std::shared_ptr<Gadget> CreateGadget() override;

    /// The renderer shared by every view area that shows the image.
    const std::shared_ptr<draw::ImageRenderer>& GetObjectPtr() const { return renderer_; }

private:
    std::shared_ptr<draw::ImageRenderer> renderer_;
};

/// Makes a resource of `image` under `name` and, when the library is running, shows it (or
/// replaces the listed one with that name).
VEXA_API std::shared_ptr<ImageResource> AddImage(const std::string& name, const tesk::Image& image);
/// As above, taking the host's pixels over instead of copying them.
VEXA_API std::shared_ptr<ImageResource> AddImage(const std::string& name, tesk::Image&& image);

} // namespace vexa::modules
