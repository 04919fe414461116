#pragma once
// Off-screen render targets: multisampled scenes, anti-aliasing passes, pixel read-back.

#include <cstdint>
#include <vector>

namespace plor {

class Framebuffer {
public:
    Framebuffer() = default;
    ~Framebuffer();
    Framebuffer(const Framebuffer&) = delete;
    Framebuffer& operator=(const Framebuffer&) = delete;

    /// (Re)creates an RGBA8 colour target with a depth-stencil buffer. `samples` > 1 makes a
    /// multisampled target (clamped to what the driver allows); otherwise the colour is a
    /// texture that can be sampled. No work when size and samples are unchanged.
    bool Resize(int width, int height, int samples = 0);
    void Bind() const;
    static void BindDefault();

    /// Copies (resolving multisamples) the colour into `target`, or into the default
    /// framebuffer when `target` is null.
    void BlitTo(const Framebuffer* target) const;

    /// The colour texture of a single-sampled target (0 for multisampled ones).
    unsigned int GetColorTexture() const { return colorTexture_; }
    int GetWidth() const { return width_; }
    int GetHeight() const { return height_; }
    int GetSamples() const { return samples_; }
    bool IsValid() const { return fbo_ != 0; }

    void Release();

private:
    unsigned int fbo_ = 0;
    unsigned int colorTexture_ = 0;
    unsigned int colorRenderbuffer_ = 0;
    unsigned int depthRenderbuffer_ = 0;
    int width_ = 0;
    int height_ = 0;
    int samples_ = 0;
};

/// Reads the currently bound read framebuffer's pixels as RGBA8, top row first.
std::vector<std::uint8_t> ReadPixelsRgba(int x, int y, int width, int height);

/// Largest sample count the driver supports for multisampled targets.
int GetMaxSamples();

} // namespace plor
