#pragma once
// Shared fixture for drawing tests: a hidden window whose context is current, shaders read
// from the source tree, an off-screen target to draw into, a render system with one bare
// scene, and probes that check what a person would see (colours with tolerance, counts of
// pixels), never exact images.

#include <vexa/draw/RenderContext.h>
#include <vexa/draw/RenderSystem.h>
#include <vexa/draw/Scene.h>
#include <vexa/draw/VisualCamera.h>

#include <plor/Framebuffer.h>
#include <plor/Gl.h>
#include <plor/Program.h>
#include <plor/Window.h>

#include <glbinding/gl/gl.h>
#include <gtest/gtest.h>

#include <glm/glm.hpp>
#include <glm/gtc/matrix_transform.hpp>

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
    int r = 0, g = 0, b = 0, a = 0;
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

/// The render system's default background.
inline constexpr Rgba kBackground{0x3D, 0x3D, 0x3D, 255};

inline constexpr auto IsRed = [](const Rgba& c) { return c.r > 200 && c.g < 60 && c.b < 60; };
inline constexpr auto IsGreen = [](const Rgba& c) { return c.g > 200 && c.r < 60 && c.b < 60; };
inline constexpr auto IsDrawn = [](const Rgba& c) { return !Near(c, kBackground, 4); };
inline constexpr auto IsBackground = [](const Rgba& c) { return Near(c, kBackground, 4); };

/// Near() that prints both colours when it fails.
inline ::testing::AssertionResult Looks(const Rgba& actual, const Rgba& expected, int tolerance = 3)
{
    if (Near(actual, expected, tolerance))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << "pixel " << actual << " is not within " << tolerance << " of " << expected;
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

    /// (x, y) from the top-left corner; out-of-range pixels read as transparent black.
    Rgba At(int x, int y) const
    {
        if (x < 0 || y < 0 || x >= width_ || y >= height_ || data_.empty())
            return {};
        const std::uint8_t* p = &data_[4 * static_cast<std::size_t>(y * width_ + x)];
        return {p[0], p[1], p[2], p[3]};
    }
    Rgba At(const glm::vec2& p) const { return At(static_cast<int>(p.x), static_cast<int>(p.y)); }

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
    int Count(const std::function<bool(const Rgba&)>& test) const
    {
        return Count(test, 0, 0, width_, height_);
    }

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
/// Renderers are drawn either by hand with a context from MakeContext (DrawDirect), or as the
/// only instance of a bare scene (no axes, no grid, no anti-aliasing) of a render system.
class GlTest : public ::testing::Test {
protected:
    static constexpr int kSize = 128;
    static constexpr int kMid = kSize / 2;

    void SetUp() override
    {
        window_ = plor::Window::Create(
            {.width = kSize, .height = kSize, .caption = "vexa draw test", .resizable = 0, .visible = false});
        ASSERT_NE(window_, nullptr) << "No OpenGL window could be created; GL tests need a display "
                                       "(run them under xvfb-run -a -s \"-noreset ...\")";
        window_->MakeContextCurrent();
        plor::SetShaderBuildDirectory(VEXA_SOURCE_ASSET_DIR "shaders/");
        ASSERT_TRUE(target_.Resize(kSize, kSize)) << "The off-screen target could not be created";
        system_ = std::make_unique<vexa::draw::RenderSystem>();
        system_->SetAntiAliasingMethod(vexa::draw::AntiAliasingMethod::Off);
        scene_ = std::make_shared<vexa::draw::Scene>(glm::ivec4(0, 0, kSize, kSize));
        scene_->SetAxesVisible(false);
        system_->AddScene(scene_);
    }

    // Everything holding GL objects goes while this test's context is still current: deleted
    // later, their names would be deleted in the next test's context.
    void TearDown() override
    {
        scene_.reset();
        system_.reset();
        programs_.ReleaseAll();
        target_.Release();
        if (window_)
            window_->ReleaseContext();
        window_.reset();
    }

    /// The off-screen target's pixels.
    Pixels ReadTarget() const
    {
        target_.Bind();
        std::vector<std::uint8_t> data = plor::ReadPixelsRgba(0, 0, kSize, kSize);
        plor::Framebuffer::BindDefault();
        return Pixels(kSize, kSize, std::move(data));
    }

    /// Looks from `eye` at `center` with a 45 degree field of view over the whole target, with
    /// the fixture's programs and no lights (renderers then light from the eye).
    vexa::draw::RenderContext MakeContext(const glm::vec3& eye, const glm::vec3& center = glm::vec3(0.0f),
                                          const glm::vec3& up = glm::vec3(0.0f, 1.0f, 0.0f))
    {
        const glm::mat4 view = glm::lookAt(eye, center, up);
        const glm::mat4 projection = glm::perspective(glm::radians(45.0f), 1.0f, 0.05f, 50.0f);
        // clang-format off
        return {.programs = &programs_, .view = view, .projection = projection,
                .viewProjection = projection * view, .cameraPosition = eye,
                .cameraForward = glm::normalize(center - eye), .cameraUp = up, .nearPlane = 0.05f,
                .farPlane = 50.0f, .viewport = {0, 0, kSize, kSize}, .glViewport = {0, 0, kSize, kSize},
                .framebufferSize = {kSize, kSize}, .lights = {}};
        // clang-format on
    }

    /// Clears the target to `background` with depth testing on, runs `draw` and reads back.
    template <class DrawFunction>
    Pixels DrawDirect(DrawFunction&& draw, const Rgba& background = kBackground)
    {
        using namespace gl;
        target_.Bind();
        glViewport(0, 0, kSize, kSize);
        glClearColor(background.r / 255.0f, background.g / 255.0f, background.b / 255.0f, 1.0f);
        glClearDepth(1.0);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glEnable(GL_DEPTH_TEST);
        glDepthFunc(GL_LESS);
        draw();
        EXPECT_EQ(plor::GetLastGlError(), "");
        return ReadTarget();
    }

    /// Renders the render system into the target.
    Pixels Render()
    {
        system_->RenderTo(target_);
        EXPECT_EQ(plor::GetLastGlError(), "");
        return ReadTarget();
    }

    /// Renders `renderer` with `style` as the scene's only instance.
    template <class RendererPtr, class StylePtr>
    Pixels Render(const RendererPtr& renderer, const StylePtr& style)
    {
        while (!scene_->GetInstances().empty())
            scene_->RemoveInstance(scene_->GetInstances().front().handle);
        EXPECT_GT(scene_->AddInstance(renderer, style), 0);
        return Render();
    }

    void LookAtOriginFrom(const glm::vec3& eye, const glm::vec3& up = {0.0f, 1.0f, 0.0f})
    {
        scene_->GetCamera()->SetPosition(eye);
        scene_->GetCamera()->LookAt(glm::vec3(0.0f), up);
    }

    /// Where a world point lands in the picture (x right, y down, continuous pixels).
    static glm::vec2 ToPixel(const glm::mat4& viewProjection, const glm::vec3& world)
    {
        const glm::vec4 clip = viewProjection * glm::vec4(world, 1.0f);
        const glm::vec2 ndc = glm::vec2(clip) / clip.w;
        return {(ndc.x * 0.5f + 0.5f) * kSize, (0.5f - ndc.y * 0.5f) * kSize};
    }
    glm::vec2 ToPixel(const glm::vec3& world) const
    {
        return ToPixel(scene_->GetProjectionMatrix() * scene_->GetCamera()->GetViewMatrix(), world);
    }

    /// Pixels passing `test` within `radius` pixels of where `world` lands in the scene.
    template <class Test>
    int CountAround(const Pixels& pixels, const glm::vec3& world, int radius, Test&& test) const
    {
        const glm::ivec2 p(ToPixel(world));
        return pixels.Count(test, p.x - radius, p.y - radius, p.x + radius + 1, p.y + radius + 1);
    }

    std::shared_ptr<plor::Window> window_;
    plor::Framebuffer target_;
    plor::ProgramList programs_;
    std::unique_ptr<vexa::draw::RenderSystem> system_;
    std::shared_ptr<vexa::draw::Scene> scene_;
};

} // namespace gl_test_support
