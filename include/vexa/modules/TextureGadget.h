#pragma once
// Draws an image resource in one view area: layout (filtering, fitting, mirroring), which
// channels are shown and an optional per-channel colour transformation.
//
// State record after the base one: u32 0, the image style's block, u32 0, one byte for the
// "Color Transformation" flag.

#include <vexa/Export.h>
#include <vexa/Gadget.h>

#include <memory>

namespace vexa::draw {
class ImageStyle;
}

namespace vexa::modules {

class ImageResource;

class VEXA_API TextureGadget : public Gadget {
public:
    explicit TextureGadget(const ImageResource* resource);
    ~TextureGadget() override;

    void Initialize() override;
    void GenerateGui(GuiGenerator& generator) override;

    const std::shared_ptr<draw::ImageStyle>& GetStyle() const { return style_; }
    /// Whether the multipliers and offsets apply (and their fields are shown). The flag the
    /// state record keeps is the style's own switch: the panel and the renderer share it.
    bool IsColorTransformEnabled() const;
    void SetColorTransformEnabled(bool enabled);

protected:
    bool ReadFromStream(std::istream& stream) override;
    void WriteToStream(std::ostream& stream) const override;

private:
    void AddGuiChannels(GuiGenerator& generator);
    void AddGuiColorTransformation(GuiGenerator& generator);

    const ImageResource* image_;
    std::shared_ptr<draw::ImageStyle> style_;
};

} // namespace vexa::modules
