#include <plor/Framebuffer.h>

#include <plor/Gl.h>

#include "GlContext.h"

#include <runa/rlog.h>

#include <glbinding/gl/gl.h>

#include <algorithm>

using namespace gl;

namespace plor {

namespace {

const char* kResizeLabel = "plor::Framebuffer::Resize";

/// Restores the framebuffer bindings of the caller when leaving a scope.
class FramebufferBindingGuard {
public:
    FramebufferBindingGuard()
    {
        glGetIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &draw_);
        glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &read_);
    }
    ~FramebufferBindingGuard()
    {
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, static_cast<GLuint>(draw_));
        glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(read_));
    }
    FramebufferBindingGuard(const FramebufferBindingGuard&) = delete;
    FramebufferBindingGuard& operator=(const FramebufferBindingGuard&) = delete;

private:
    GLint draw_ = 0;
    GLint read_ = 0;
};

} // namespace

Framebuffer::~Framebuffer()
{
    Release();
}

bool Framebuffer::Resize(int width, int height, int samples)
{
    if (width <= 0 || height <= 0) {
        rlog::Warn("Invalid framebuffer size " + std::to_string(width) + "x" + std::to_string(height),
                   kResizeLabel);
        return false;
    }
    if (!detail::HasCurrentContext()) {
        rlog::Fail("No OpenGL context is current", kResizeLabel);
        return false;
    }
    int effectiveSamples = samples > 1 ? std::min(samples, GetMaxSamples()) : 0;
    if (effectiveSamples < 2)
        effectiveSamples = 0;
    if (fbo_ != 0 && width == width_ && height == height_ && effectiveSamples == samples_)
        return true;

    Release();
    FramebufferBindingGuard guard;
    glGenFramebuffers(1, &fbo_);
    glBindFramebuffer(GL_FRAMEBUFFER, fbo_);

    if (effectiveSamples > 0) {
        glGenRenderbuffers(1, &colorRenderbuffer_);
        glBindRenderbuffer(GL_RENDERBUFFER, colorRenderbuffer_);
        glRenderbufferStorageMultisample(GL_RENDERBUFFER, effectiveSamples, GL_RGBA8, width, height);
        glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, colorRenderbuffer_);
    } else {
        glGenTextures(1, &colorTexture_);
        glBindTexture(GL_TEXTURE_2D, colorTexture_);
        glTexImage2D(GL_TEXTURE_2D, 0, static_cast<GLint>(GL_RGBA8), width, height, 0, GL_RGBA,
                     GL_UNSIGNED_BYTE, nullptr);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, static_cast<GLint>(GL_LINEAR));
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, static_cast<GLint>(GL_LINEAR));
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, static_cast<GLint>(GL_CLAMP_TO_EDGE));
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, static_cast<GLint>(GL_CLAMP_TO_EDGE));
        glBindTexture(GL_TEXTURE_2D, 0);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, colorTexture_, 0);
    }

    glGenRenderbuffers(1, &depthRenderbuffer_);
    glBindRenderbuffer(GL_RENDERBUFFER, depthRenderbuffer_);
    if (effectiveSamples > 0)
        glRenderbufferStorageMultisample(GL_RENDERBUFFER, effectiveSamples, GL_DEPTH24_STENCIL8, width,
                                         height);
    else
        glRenderbufferStorage(GL_RENDERBUFFER, GL_DEPTH24_STENCIL8, width, height);
    glBindRenderbuffer(GL_RENDERBUFFER, 0);
    glFramebufferRenderbuffer(GL_FRAMEBUFFER, GL_DEPTH_STENCIL_ATTACHMENT, GL_RENDERBUFFER,
                              depthRenderbuffer_);

    const GLenum status = glCheckFramebufferStatus(GL_FRAMEBUFFER);
    if (status != GL_FRAMEBUFFER_COMPLETE) {
        rlog::Fail("Framebuffer of " + std::to_string(width) + "x" + std::to_string(height) + " with " +
                       std::to_string(effectiveSamples) + " samples is incomplete (status " +
                       std::to_string(static_cast<unsigned int>(status)) + ")",
                   kResizeLabel);
        Release();
        return false;
    }
    width_ = width;
    height_ = height;
    samples_ = effectiveSamples;
    return true;
}

void Framebuffer::Bind() const
{
    glBindFramebuffer(GL_FRAMEBUFFER, fbo_);
}

void Framebuffer::BindDefault()
{
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
}

void Framebuffer::BlitTo(const Framebuffer* target) const
{
    if (fbo_ == 0) {
        rlog::Warn("Blit from a framebuffer that was never sized", "plor::Framebuffer::BlitTo");
        return;
    }
    if (target && target->fbo_ == 0) {
        rlog::Warn("Blit into a framebuffer that was never sized", "plor::Framebuffer::BlitTo");
        return;
    }
    const int targetWidth = target ? target->width_ : width_;
    const int targetHeight = target ? target->height_ : height_;
    const bool sameSize = targetWidth == width_ && targetHeight == height_;
    if (samples_ > 0 && !sameSize) {
        rlog::Warn("A multisampled framebuffer resolves only into one of the same size",
                   "plor::Framebuffer::BlitTo");
        return;
    }
    glBindFramebuffer(GL_READ_FRAMEBUFFER, fbo_);
    glBindFramebuffer(GL_DRAW_FRAMEBUFFER, target ? target->fbo_ : 0);
    glBlitFramebuffer(0, 0, width_, height_, 0, 0, targetWidth, targetHeight, GL_COLOR_BUFFER_BIT,
                      sameSize ? GL_NEAREST : GL_LINEAR);
    // Work continues in the target: drawing over the copy, or reading it back.
    glBindFramebuffer(GL_FRAMEBUFFER, target ? target->fbo_ : 0);
}

void Framebuffer::Release()
{
    DeleteGlObject(GlObjectKind::Framebuffer, fbo_);
    DeleteGlObject(GlObjectKind::Texture, colorTexture_);
    DeleteGlObject(GlObjectKind::Renderbuffer, colorRenderbuffer_);
    DeleteGlObject(GlObjectKind::Renderbuffer, depthRenderbuffer_);
    fbo_ = 0;
    colorTexture_ = 0;
    colorRenderbuffer_ = 0;
    depthRenderbuffer_ = 0;
    width_ = 0;
    height_ = 0;
    samples_ = 0;
}

std::vector<std::uint8_t> ReadPixelsRgba(int x, int y, int width, int height)
{
    if (width <= 0 || height <= 0 || !detail::HasCurrentContext())
        return {};
    const std::size_t rowBytes = static_cast<std::size_t>(width) * 4;
    std::vector<std::uint8_t> pixels(rowBytes * static_cast<std::size_t>(height));
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(x, y, width, height, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    // GL returns the bottom row first.
    for (int top = 0, bottom = height - 1; top < bottom; ++top, --bottom)
        std::swap_ranges(
            pixels.begin() + static_cast<std::ptrdiff_t>(rowBytes * static_cast<std::size_t>(top)),
            pixels.begin() + static_cast<std::ptrdiff_t>(rowBytes * static_cast<std::size_t>(top + 1)),
            pixels.begin() + static_cast<std::ptrdiff_t>(rowBytes * static_cast<std::size_t>(bottom)));
    return pixels;
}

int GetMaxSamples()
{
    if (!detail::HasCurrentContext())
        return 0;
    GLint samples = 0;
    glGetIntegerv(GL_MAX_SAMPLES, &samples);
    return samples;
}

} // namespace plor
