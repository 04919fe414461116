#pragma once
#include <vexa/draw/ImageStyle.h>
#include <vexa/draw/Renderer.h>

#include <tesk/Image.h>

#include <glm/vec2.hpp>
#include <glm/vec4.hpp>

#include <cstdint>
#include <memory>

namespace vexa::draw {

/// A 2D image drawn in its view's viewport (screen pass): 8-bit or float pixels with 1 to 4
/// channels (gray, gray + alpha, RGB, RGBA). The pixels stay on the CPU until the first
/// Render uploads them as a texture; the CPU copy is then dropped.
class ImageRenderer : public Renderer {
public:
    ImageRenderer();
    /// An empty image is logged and the renderer draws nothing until SetImage.
    explicit ImageRenderer(const tesk::Image& image);
    explicit ImageRenderer(tesk::Image&& image);
    ~ImageRenderer() override;

    /// Replaces the image (uploaded at the next Render). An empty image is refused with a
    /// warning and the previous one is kept.
    bool SetImage(const tesk::Image& image);
    bool SetImage(tesk::Image&& image);
    /// Forgets the image; nothing is drawn until the next SetImage.
    void Clear();

    bool HasImage() const { return width_ > 0 && height_ > 0; }
    std::uint32_t GetImageWidth() const { return width_; }
    std::uint32_t GetImageHeight() const { return height_; }
    int GetImageChannels() const { return channels_; }
    tesk::PixelFormat GetImageFormat() const { return format_; }

    /// Where an image of `imageSize` pixels lands in a viewport of `viewportSize` framebuffer
    /// pixels with `style`'s layout flags: (x0, y0, x1, y1) in framebuffer pixels from the
    /// viewport's top-left corner. Unfitted images are centred on whole pixels, each image
    /// pixel `pixelScale` framebuffer pixels wide. All zero when either size is empty.
    static glm::vec4 ComputeImageRect(const glm::uvec2& imageSize, const glm::ivec2& viewportSize,
                                      float pixelScale, const ImageStyle& style);

    bool IsCompatibileWithStyle(const Style& style) const override;
    void Render(const RenderContext& context, const Style& style) override;
    RenderPass GetPass() const override { return RenderPass::Screen; }
    /// Also forgets the image (the texture held the only copy).
    void ReleaseGpuResources() override;

private:
    /// The texture (holding the pixels until upload), the empty vertex array the quad is
    /// drawn with and the program's cached uniform locations.
    struct Gpu;
    bool Accept(const tesk::Image& image);

    std::unique_ptr<Gpu> gpu_;
    std::uint32_t width_ = 0;
    std::uint32_t height_ = 0;
    int channels_ = 0;
    tesk::PixelFormat format_ = tesk::PixelFormat::UInt8;
    /// Set by SetImage; the first Render checks the size against the driver's limit.
    bool sizeChecked_ = false;
};

} // namespace vexa::draw
