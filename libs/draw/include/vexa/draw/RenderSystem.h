#pragma once
// Draws every scene into the window: background, anti-aliasing, the scenes' instances,
// helpers and texts, and reads the result back for screenshots.

#include <vexa/draw/TextRenderer.h>

#include <tesk/Color.h>
#include <tesk/Image.h>

#include <glm/mat4x4.hpp>
#include <glm/vec2.hpp>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace plor {
class ProgramList;
class Framebuffer;
class Texture;
} // namespace plor

namespace vexa::draw {

class Scene;
class HelperRenderer;
struct RenderContext;

/// Values are stored in settings files and offered in this order in the options panel.
enum class AntiAliasingMethod : std::uint8_t {
    Off = 0,
    Msaa2x = 1,
    Msaa4x = 2,
    Msaa8x = 3,
    Msaa16x = 4,
    Fxaa = 5
};

class RenderSystem {
public:
    /// No GL work: programs, targets and helpers are created at the first Render.
    RenderSystem();
    ~RenderSystem();
    RenderSystem(const RenderSystem&) = delete;
    RenderSystem& operator=(const RenderSystem&) = delete;

    void AddScene(const std::shared_ptr<Scene>& scene);
    void RemoveScene(const std::shared_ptr<Scene>& scene);
    void ClearScenes();
    const std::vector<std::shared_ptr<Scene>>& GetScenes() const { return scenes_; }

    /// Size of the window's framebuffer, and of the window in window pixels when they
    /// differ (high-density screens); viewports are given in window pixels.
    void SetFramebufferSize(int width, int height);
    void SetFramebufferSize(int width, int height, int windowWidth, int windowHeight);
    glm::ivec2 GetFramebufferSize() const { return framebufferSize_; }

    void SetBackgroundColor(const tesk::Color3b& color);
    void SetBackgroundColor(const tesk::Color3f& color);
    tesk::Color3b GetBackgroundColor() const;

    void SetAntiAliasingMethod(AntiAliasingMethod method);
    /// From a stored or GUI value; unknown values fall back to Off.
    void SetAntiAliasingMethod(int value);
    AntiAliasingMethod GetAntiAliasingMethod() const { return antiAliasing_; }
    /// Samples per pixel of a method (1 for Off and FXAA).
    static int SamplesOf(AntiAliasingMethod method);

    /// Draws all scenes into the default framebuffer. Needs the window's context current.
    void Render();
    /// Draws all scenes into `target` instead (tests, off-screen pictures).
    void RenderTo(plor::Framebuffer& target);

    /// Rebuilds every shader program from its files at the next Render.
    void RequestShaderReload() { reloadRequested_ = true; }
    bool ReloadShaders();

    /// The window's current image (default framebuffer), RGBA, top row first.
    tesk::Image CaptureImage() const;
    /// Writes CaptureImage() as PNG; logs and returns false when it cannot.
    bool SaveScreenshot(const std::string& path) const;

    TextRenderer& GetTextRenderer() { return textRenderer_; }
    plor::ProgramList& GetPrograms();

    /// Points each point cloud may draw in the coming frames (0: all of them): a budget set
    /// while the camera moves, so that frames keep coming at an interactive rate.
    void SetPointBudget(std::size_t points) { pointBudget_ = points; }
    std::size_t GetPointBudget() const { return pointBudget_; }
    /// Points drawn by point clouds in the last frame, and those a budget left out (0 when
    /// the frame showed everything).
    std::size_t GetDrawnPoints() const { return drawnPoints_; }
    std::size_t GetSkippedPoints() const { return skippedPoints_; }
    /// Called by point renderers as they draw.
    void CountPoints(std::size_t drawn, std::size_t skipped)
    {
        drawnPoints_ += drawn;
        skippedPoints_ += skipped;
    }
    /// True when some scene's camera or projection differs from the one it was last drawn with.
    bool HaveViewsChanged() const;

    /// Number of frames drawn so far (tests use it to tell whether a frame happened).
    std::uint64_t GetFrameCount() const { return frameCount_; }

private:
    struct Gpu;
    void EnsureGpu();
    void RenderScenes(int targetWidth, int targetHeight);
    /// One frame into `output` (null: the default framebuffer) through the chosen method.
    void RenderFrame(const plor::Framebuffer* output, int width, int height);
    void RenderScene(const RenderContext& context);
    /// Full-screen pass from the single-sampled scene target into `output`, which is bound.
    void RunFxaa(const plor::Framebuffer* output, int width, int height);

    std::vector<std::shared_ptr<Scene>> scenes_;
    glm::ivec2 framebufferSize_{0};
    glm::ivec2 windowSize_{0};
    tesk::Color3f background_;
    AntiAliasingMethod antiAliasing_ = AntiAliasingMethod::Msaa4x;
    bool reloadRequested_ = false;
    std::uint64_t frameCount_ = 0;
    std::size_t pointBudget_ = 0;
    std::size_t drawnPoints_ = 0;
    std::size_t skippedPoints_ = 0;
    /// Each scene's projection x view as last drawn, in scene order.
    std::vector<glm::mat4> drawnViews_;
    TextRenderer textRenderer_;
    std::unique_ptr<Gpu> gpu_;
};

} // namespace vexa::draw
