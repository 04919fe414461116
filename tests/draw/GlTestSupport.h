#pragma once
// Shared fixture for drawing tests: a hidden window whose context is current, shaders read
// from the source tree, an off-screen target to draw into, and probes that check what a
// person would see (colours with tolerance, counts of pixels), never exact images.

#include <plor/Framebuffer.h>
#include <plor/Program.h>
#include <plor/Window.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <ostream>
#include <vector>

namespace gl_test_support {

struct Rgba {
    int r = 0;
    int g = 0;
    int b = 0;
    int a = 0;
};

inline std::ostream& operator<<(std::ostream& out, const Rgba& c)
{
    return out << "(" << c.r << ", " << c.g << ", " << c.b << ", " << c.a << ")";
}

/// 8-bit colour from a 0..1 float triple, the way the driver rounds it.
inline Rgba FromFloat(float r, float g, float b)
{
    auto byte = [](float v) { return static_cast<int>(std::lround(v * 255.0f)); };
    return {byte(r), byte(g), byte(b), 255};
}

/// True when every RGB channel is within `tolerance` of the expected one.
inline bool Near(const Rgba& actual, const Rgba& expected, int tolerance = 3)
{
    return std::abs(actual.r - expected.r) <= tolerance && std::abs(actual.g - expected.g) <= tolerance &&
           std::abs(actual.b - expected.b) <= tolerance;
}

/// RGBA pixels, top row first (as plor::ReadPixelsRgba and RenderSystem::CaptureImage give them).
class Pixels {
public:
    Pixels() = default;
    Pixels(int width, int height, std::vector<std::uint8_t> data)
        : width_(width), height_(height), data_(std::move(data))
    {
    }

    int Width() const { return width_; }
    int Height() const { return height_; }
    bool Empty() const { return data_.empty(); }

    /// (x, y) from the top-left corner; out-of-range pixels read as transparent black.
    Rgba At(int x, int y) const
    {
        if (x < 0 || y < 0 || x >= width_ || y >= height_ || data_.empty())
            return {};
        const std::uint8_t* p = &data_[(static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
                                        static_cast<std::size_t>(x)) * 4];
        return {p[0], p[1], p[2], p[3]};
    }

    /// Pixels in the rectangle [x0, x1) x [y0, y1) (clipped to the image) that satisfy `test`.
    int Count(const std::function<bool(const Rgba&)>& test, int x0, int y0, int x1, int y1) const
    {
        int count = 0;
        for (int y = std::max(y0, 0); y < std::min(y1, height_); ++y)
            for (int x = std::max(x0, 0); x < std::min(x1, width_); ++x)
                if (test(At(x, y)))
                    ++count;
        return count;
    }
    int Count(const std::function<bool(const Rgba&)>& test) const { return Count(test, 0, 0, width_, height_); }

    /// Pixels that differ from `colour` by more than `tolerance` in some channel.
    int CountDifferent(const Rgba& colour, int tolerance = 3) const
    {
        return Count([&](const Rgba& c) { return !Near(c, colour, tolerance); });
    }

private:
    int width_ = 0;
    int height_ = 0;
    std::vector<std::uint8_t> data_;
};

/// Fixture: a hidden window with its context current for every test, the shader build directory
/// set to the source tree's shaders, and a single-sampled off-screen target of kSize x kSize.
class GlTest : public ::testing::Test {
protected:
    static constexpr int kSize = 128;

    void SetUp() override
    {
        plor::WindowParams params;
        params.width = kSize;
        params.height = kSize;
        params.caption = "vexa draw test";
        params.visible = false;
        params.resizable = 0;
        window_ = plor::Window::Create(params);
        ASSERT_NE(window_, nullptr) << "No OpenGL window could be created; GL tests need a display "
                                       "(run them under xvfb-run)";
        window_->MakeContextCurrent();
        plor::SetShaderBuildDirectory(VEXA_SOURCE_ASSET_DIR "shaders/");
        ASSERT_TRUE(target_.Resize(kSize, kSize)) << "The off-screen target could not be created";
    }

    void TearDown() override
    {
        target_.Release();
        if (window_)
            window_->ReleaseContext();
        window_.reset();
    }

    /// The off-screen target's pixels.
    Pixels ReadTarget() const { return Read(target_); }

    /// Any single-sampled framebuffer's pixels.
    static Pixels Read(const plor::Framebuffer& framebuffer)
    {
        framebuffer.Bind();
        std::vector<std::uint8_t> data =
            plor::ReadPixelsRgba(0, 0, framebuffer.GetWidth(), framebuffer.GetHeight());
        plor::Framebuffer::BindDefault();
        return Pixels(framebuffer.GetWidth(), framebuffer.GetHeight(), std::move(data));
    }

    std::shared_ptr<plor::Window> window_;
    plor::Framebuffer target_;
};

} // namespace gl_test_support
