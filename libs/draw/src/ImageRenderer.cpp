#include "vexa/draw/ImageRenderer.h"

#include "vexa/draw/RenderContext.h"

#include <plor/Gl.h>
#include <plor/Program.h>
#include <plor/Texture.h>

#include <runa/rlog.h>

#include <glbinding/gl/gl.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>

using namespace gl;

namespace vexa::draw {

namespace {

constexpr std::string_view kProgramName = "IMAGE";
constexpr plor::ProgramFiles kProgramFiles{"image/image.vert", "image/image.frag"};
const char* const kSetLabel = "vexa::draw::ImageRenderer::SetImage";

/// Checkerboard cell behind transparent pixels, in window pixels.
constexpr float kCheckerCell = 8.0f;

float FactorOr(float value, float fallback)
{
    return std::isfinite(value) ? value : fallback;
}

} // namespace

struct ImageRenderer::Gpu {
    plor::Texture texture;
    unsigned int vertexArray = 0;
    unsigned int programId = 0;
    GLint locRect = -1;
    GLint locMirror = -1;
    GLint locImage = -1;
    GLint locMultiplier = -1;
    GLint locOffset = -1;
    GLint locChannelMask = -1;
    GLint locAlphaAsGray = -1;
    GLint locCheckerCell = -1;
};

ImageRenderer::ImageRenderer() : gpu_(std::make_unique<Gpu>())
{
    gpu_->texture.SetWrap(plor::TextureWrap::ClampToEdge);
}

ImageRenderer::ImageRenderer(const tesk::Image& image) : ImageRenderer()
{
    SetImage(image);
}

ImageRenderer::ImageRenderer(tesk::Image&& image) : ImageRenderer()
{
    SetImage(std::move(image));
}

ImageRenderer::~ImageRenderer()
{
    ReleaseGpuResources();
}

bool ImageRenderer::Accept(const tesk::Image& image)
{
    if (image.IsEmpty()) {
        rlog::Warn("The image has no pixels (" + std::to_string(image.GetWidth()) + " x " +
                       std::to_string(image.GetHeight()) + "); " +
                       (HasImage() ? "keeping the previous image" : "nothing is drawn"),
                   kSetLabel);
        return false;
    }
    width_ = image.GetWidth();
    height_ = image.GetHeight();
    channels_ = image.GetChannels();
    format_ = image.GetFormat();
    sizeChecked_ = false;
    return true;
}

bool ImageRenderer::SetImage(const tesk::Image& image)
{
    if (!Accept(image))
        return false;
    gpu_->texture.SetImage(image);
    return true;
}

bool ImageRenderer::SetImage(tesk::Image&& image)
{
    if (!Accept(image))
        return false;
    gpu_->texture.SetImage(std::move(image));
    return true;
}

void ImageRenderer::Clear()
{
    // Release keeps the texture object's wrap and filter settings.
    gpu_->texture.Release();
    width_ = 0;
    height_ = 0;
    channels_ = 0;
}

glm::vec4 ImageRenderer::ComputeImageRect(const glm::uvec2& imageSize, const glm::ivec2& viewportSize,
                                          float pixelScale, const ImageStyle& style)
{
    if (imageSize.x == 0 || imageSize.y == 0 || viewportSize.x <= 0 || viewportSize.y <= 0)
        return glm::vec4(0.0f);
    const glm::vec2 view(viewportSize);
    const glm::vec2 image(imageSize);

    glm::vec2 size;
    if (style.fitToViewport) {
        if (style.keepAspectRatio)
            size = image * std::min(view.x / image.x, view.y / image.y);
        else
            size = view;
    } else {
        const float scale = std::isfinite(pixelScale) && pixelScale > 0.0f ? pixelScale : 1.0f;
        size = image * scale;
    }
    // Whole-pixel corners keep one-to-one images sharp; fitted ones are snapped the same way
    // so that a letterboxed image does not blur its first row.
    const glm::vec2 origin = glm::floor((view - size) * 0.5f + 0.5f);
    return {origin.x, origin.y, origin.x + size.x, origin.y + size.y};
}

bool ImageRenderer::IsCompatibileWithStyle(const Style& style) const
{
    return dynamic_cast<const ImageStyle*>(&style) != nullptr;
}

void ImageRenderer::Render(const RenderContext& context, const Style& style)
{
    const auto* imageStyle = dynamic_cast<const ImageStyle*>(&style);
    if (!imageStyle || !imageStyle->visible || !HasImage() || !context.programs)
        return;
    const glm::ivec2 viewportSize(context.glViewport.z, context.glViewport.w);
    if (viewportSize.x <= 0 || viewportSize.y <= 0)
        return;

    Gpu& gpu = *gpu_;
    if (!sizeChecked_) {
        sizeChecked_ = true;
        GLint maxSize = 0;
        glGetIntegerv(GL_MAX_TEXTURE_SIZE, &maxSize);
        if (maxSize > 0 &&
            (width_ > static_cast<std::uint32_t>(maxSize) || height_ > static_cast<std::uint32_t>(maxSize))) {
            rlog::Fail("The image is " + std::to_string(width_) + " x " + std::to_string(height_) +
                           " pixels; this graphics driver takes at most " + std::to_string(maxSize) +
                           " per side, so it is not shown",
                       "vexa::draw::ImageRenderer::Render");
            Clear();
            return;
        }
    }

    plor::Program* program = &context.programs->GetOrAdd(kProgramName, kProgramFiles);
    if (!program->Use())
        return;

    if (gpu.programId != program->GetId()) {
        const GLuint id = program->GetId();
        gpu.locRect = glGetUniformLocation(id, "uRect");
        gpu.locMirror = glGetUniformLocation(id, "uMirror");
        gpu.locImage = glGetUniformLocation(id, "uImage");
        gpu.locMultiplier = glGetUniformLocation(id, "uMultiplier");
        gpu.locOffset = glGetUniformLocation(id, "uOffset");
        gpu.locChannelMask = glGetUniformLocation(id, "uChannelMask");
        gpu.locAlphaAsGray = glGetUniformLocation(id, "uAlphaAsGray");
        gpu.locCheckerCell = glGetUniformLocation(id, "uCheckerCell");
        gpu.programId = id;
    }

    gpu.texture.SetFilter(imageStyle->nearestFiltering ? plor::TextureFilter::Nearest
                                                       : plor::TextureFilter::Linear);
    if (!gpu.texture.Bind(0))
        return;
    if (gpu.vertexArray == 0)
        glGenVertexArrays(1, &gpu.vertexArray);

    // Pixel rectangle (origin top-left) to normalised device coordinates (origin centre, y up).
    const glm::vec4 rect = ComputeImageRect({width_, height_}, viewportSize, context.pixelScale, *imageStyle);
    const glm::vec2 view(viewportSize);
    glUniform4f(gpu.locRect, rect.x / view.x * 2.0f - 1.0f, 1.0f - rect.y / view.y * 2.0f,
                rect.z / view.x * 2.0f - 1.0f, 1.0f - rect.w / view.y * 2.0f);
    glUniform2f(gpu.locMirror, imageStyle->mirrorX ? 1.0f : 0.0f, imageStyle->mirrorY ? 1.0f : 0.0f);
    glUniform1i(gpu.locImage, 0);

    const ImageStyle& s = *imageStyle;
    if (s.colorTransformEnabled) {
        glUniform4f(gpu.locMultiplier, FactorOr(s.redMultiplier, 1.0f), FactorOr(s.greenMultiplier, 1.0f),
                    FactorOr(s.blueMultiplier, 1.0f), FactorOr(s.alphaMultiplier, 1.0f));
        glUniform4f(gpu.locOffset, FactorOr(s.redOffset, 0.0f), FactorOr(s.greenOffset, 0.0f),
                    FactorOr(s.blueOffset, 0.0f), FactorOr(s.alphaOffset, 0.0f));
    } else {
        glUniform4f(gpu.locMultiplier, 1.0f, 1.0f, 1.0f, 1.0f);
        glUniform4f(gpu.locOffset, 0.0f, 0.0f, 0.0f, 0.0f);
    }
    auto mask = [](bool shown) { return shown ? 1.0f : 0.0f; };
    glUniform4f(gpu.locChannelMask, mask(s.showRed), mask(s.showGreen), mask(s.showBlue), mask(s.showAlpha));
    glUniform1i(gpu.locAlphaAsGray, s.showAlpha && !s.showRed && !s.showGreen && !s.showBlue ? 1 : 0);
    const float scale =
        std::isfinite(context.pixelScale) && context.pixelScale > 0.0f ? context.pixelScale : 1.0f;
    glUniform1f(gpu.locCheckerCell, std::max(1.0f, std::round(kCheckerCell * scale)));

    // A flat picture over everything else in the view: no depth, no blending (transparency is
    // resolved against the checkerboard in the shader).
    const bool depthWasOn = glIsEnabled(GL_DEPTH_TEST) == GL_TRUE;
    const bool blendWasOn = glIsEnabled(GL_BLEND) == GL_TRUE;
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_BLEND);

    glBindVertexArray(gpu.vertexArray);
    glDrawArrays(GL_TRIANGLE_STRIP, 0, 4);
    glBindVertexArray(0);
    glBindTexture(GL_TEXTURE_2D, 0);

    if (depthWasOn)
        glEnable(GL_DEPTH_TEST);
    if (blendWasOn)
        glEnable(GL_BLEND);
}

void ImageRenderer::ReleaseGpuResources()
{
    if (!gpu_)
        return;
    if (gpu_->vertexArray != 0)
        plor::DeleteGlObject(plor::GlObjectKind::VertexArray, gpu_->vertexArray);
    gpu_->vertexArray = 0;
    gpu_->programId = 0;
    Clear();
}

} // namespace vexa::draw
