#include "vexa/draw/RenderSystem.h"

#include "HelperRenderer.h"
#include "vexa/draw/RenderContext.h"
#include "vexa/draw/Renderer.h"
#include "vexa/draw/Scene.h"
#include "vexa/draw/Style.h"

#include <plor/Framebuffer.h>
#include <plor/Gl.h>
#include <plor/Program.h>
#include <plor/Texture.h>

#include <runa/rlog.h>

#include <glbinding/ContextHandle.h>
#include <glbinding/gl/gl.h>
#include <glm/glm.hpp>

#include <algorithm>
#include <cmath>
#include <string>

using namespace gl;

namespace vexa::draw {

namespace {

const std::string kFxaaProgram = "core.fxaa";
const std::string kFxaaSource = "uSource";
const std::string kFxaaTexelSize = "uTexelSize";

constexpr int kCheckerSize = 64;
constexpr int kCheckerCell = 8;

bool HasCurrentContext()
{
    return glbinding::getCurrentContext() != 0;
}

/// Content must never be unlit, so scenes without lights get a key light from above right and a
/// weaker fill from the left, both following the camera.
const Light& DefaultKeyLight()
{
    static const Light light{{-0.35f, -0.6f, -0.7f}, {1.0f, 1.0f, 1.0f}, 0.85f, true};
    return light;
}

const Light& DefaultFillLight()
{
    static const Light light{{0.6f, 0.2f, -0.5f}, {1.0f, 1.0f, 1.0f}, 0.35f, true};
    return light;
}

tesk::Image MakeCheckerImage()
{
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(kCheckerSize * kCheckerSize * 4));
    for (int y = 0; y < kCheckerSize; ++y) {
        for (int x = 0; x < kCheckerSize; ++x) {
            const bool light = ((x / kCheckerCell) + (y / kCheckerCell)) % 2 == 0;
            const std::uint8_t value = light ? 235 : 30;
            std::uint8_t* pixel = &pixels[static_cast<std::size_t>((y * kCheckerSize + x) * 4)];
            pixel[0] = pixel[1] = pixel[2] = value;
            pixel[3] = 255;
        }
    }
    return tesk::Image(kCheckerSize, kCheckerSize, 4, std::move(pixels));
}

Light ResolveLight(const Light& light, const glm::quat& cameraOrientation)
{
    Light resolved = light;
    glm::vec3 direction = light.direction;
    if (!(glm::dot(direction, direction) > 1e-12f) || !std::isfinite(glm::dot(direction, direction)))
        direction = glm::vec3(0.0f, 0.0f, -1.0f);
    // View space to world space is the camera's own orientation (the inverse view rotation).
    if (light.cameraRelative)
        direction = cameraOrientation * direction;
    resolved.direction = glm::normalize(direction);
    return resolved;
}

int Round(float value)
{
    return static_cast<int>(std::lround(value));
}

void BindOutput(const plor::Framebuffer* output)
{
    if (output)
        output->Bind();
    else
        plor::Framebuffer::BindDefault();
}

void DrawPass(const RenderContext& context, RenderPass pass);

} // namespace

struct RenderSystem::Gpu {
    bool created = false;
    plor::ProgramList programs;
    plor::Framebuffer multisampled;
    plor::Framebuffer fxaaSource;
    plor::Texture checker;
    /// The full-screen pass draws without vertex buffers, but core profiles still want a VAO.
    unsigned int emptyVertexArray = 0;
    HelperRenderer helpers;
    /// Reused for every scene so a frame allocates nothing once the lights vector has grown.
    RenderContext context;
};

RenderSystem::RenderSystem()
    : background_(tesk::Color3b(0x3D, 0x3D, 0x3D).ToFloat()), gpu_(std::make_unique<Gpu>())
{
    gpu_->checker.SetImage(MakeCheckerImage());
    gpu_->checker.SetWrap(plor::TextureWrap::Repeat);
    gpu_->checker.SetFilter(plor::TextureFilter::LinearMipmap);
    gpu_->context.lights.reserve(8);
}

RenderSystem::~RenderSystem()
{
    // GL objects are deleted now with a context, otherwise when one is next made current.
    if (gpu_->emptyVertexArray != 0)
        plor::DeleteGlObject(plor::GlObjectKind::VertexArray, gpu_->emptyVertexArray);
}

void RenderSystem::AddScene(const std::shared_ptr<Scene>& scene)
{
    if (!scene) {
        rlog::Warn("Cannot add a null scene", "vexa::draw::RenderSystem::AddScene");
        return;
    }
    if (std::find(scenes_.begin(), scenes_.end(), scene) != scenes_.end())
        return;
    scenes_.push_back(scene);
}

void RenderSystem::RemoveScene(const std::shared_ptr<Scene>& scene)
{
    scenes_.erase(std::remove(scenes_.begin(), scenes_.end(), scene), scenes_.end());
}

void RenderSystem::ClearScenes()
{
    scenes_.clear();
}

void RenderSystem::SetFramebufferSize(int width, int height)
{
    SetFramebufferSize(width, height, width, height);
}

void RenderSystem::SetFramebufferSize(int width, int height, int windowWidth, int windowHeight)
{
    // A minimised window reports 0 x 0; keeping the last real size avoids empty targets.
    if (width <= 0 || height <= 0 || windowWidth <= 0 || windowHeight <= 0)
        return;
    framebufferSize_ = {width, height};
    windowSize_ = {windowWidth, windowHeight};
}

void RenderSystem::SetBackgroundColor(const tesk::Color3b& color)
{
    background_ = color.ToFloat();
}

void RenderSystem::SetBackgroundColor(const tesk::Color3f& color)
{
    auto clamp = [](float value) { return std::isnan(value) ? 0.0f : std::clamp(value, 0.0f, 1.0f); };
    background_ = {clamp(color.r), clamp(color.g), clamp(color.b)};
}

tesk::Color3b RenderSystem::GetBackgroundColor() const
{
    return background_.ToByte();
}

void RenderSystem::SetAntiAliasingMethod(AntiAliasingMethod method)
{
    antiAliasing_ = method;
}

void RenderSystem::SetAntiAliasingMethod(int value)
{
    if (value < static_cast<int>(AntiAliasingMethod::Off) ||
        value > static_cast<int>(AntiAliasingMethod::Fxaa)) {
        rlog::Warn("Unknown anti-aliasing method " + std::to_string(value) + "; anti-aliasing is off",
                   "vexa::draw::RenderSystem::SetAntiAliasingMethod");
        antiAliasing_ = AntiAliasingMethod::Off;
        return;
    }
    antiAliasing_ = static_cast<AntiAliasingMethod>(value);
}

int RenderSystem::SamplesOf(AntiAliasingMethod method)
{
    switch (method) {
    case AntiAliasingMethod::Msaa2x:
        return 2;
    case AntiAliasingMethod::Msaa4x:
        return 4;
    case AntiAliasingMethod::Msaa8x:
        return 8;
    case AntiAliasingMethod::Msaa16x:
        return 16;
    case AntiAliasingMethod::Off:
    case AntiAliasingMethod::Fxaa:
        break;
    }
    return 1;
}

plor::ProgramList& RenderSystem::GetPrograms()
{
    return gpu_->programs;
}

bool RenderSystem::ReloadShaders()
{
    if (!HasCurrentContext()) {
        rlog::Warn("Shaders can only be rebuilt with a context current",
                   "vexa::draw::RenderSystem::ReloadShaders");
        return false;
    }
    const bool ok = gpu_->programs.ReloadAll();
    if (ok)
        rlog::Info("Rebuilt " + std::to_string(gpu_->programs.Size()) + " shader programs",
                   "vexa::draw::RenderSystem::ReloadShaders");
    return ok;
}

void RenderSystem::EnsureGpu()
{
    Gpu& gpu = *gpu_;
    if (gpu.created)
        return;
    glGenVertexArrays(1, &gpu.emptyVertexArray);
    gpu.programs.Add(kFxaaProgram, "core/fullscreen.vert", "core/fxaa.frag");
    gpu.created = true;
}

void RenderSystem::Render()
{
    if (!HasCurrentContext()) {
        rlog::Fail("No OpenGL context is current; nothing is drawn", "vexa::draw::RenderSystem::Render");
        return;
    }
    glm::ivec2 size = framebufferSize_;
    if (size.x <= 0 || size.y <= 0) {
        // Not told yet: the engine sets the viewport to the whole window at start-up.
        GLint viewport[4] = {0, 0, 0, 0};
        glGetIntegerv(GL_VIEWPORT, viewport);
        size = {viewport[2], viewport[3]};
    }
    RenderFrame(nullptr, size.x, size.y);
}

void RenderSystem::RenderTo(plor::Framebuffer& target)
{
    if (!HasCurrentContext()) {
        rlog::Fail("No OpenGL context is current; nothing is drawn", "vexa::draw::RenderSystem::RenderTo");
        return;
    }
    if (!target.IsValid()) {
        rlog::Warn("The target framebuffer has no storage; call Resize first",
                   "vexa::draw::RenderSystem::RenderTo");
        return;
    }
    RenderFrame(&target, target.GetWidth(), target.GetHeight());
}

bool RenderSystem::HaveViewsChanged() const
{
    if (drawnViews_.size() != scenes_.size())
        return true;
    for (std::size_t i = 0; i < scenes_.size(); ++i)
        if (drawnViews_[i] != scenes_[i]->GetProjectionMatrix() * scenes_[i]->GetCamera()->GetViewMatrix())
            return true;
    return false;
}

void RenderSystem::RenderFrame(const plor::Framebuffer* output, int width, int height)
{
    if (width <= 0 || height <= 0)
        return;
    EnsureGpu();
    Gpu& gpu = *gpu_;
    if (reloadRequested_) {
        reloadRequested_ = false;
        ReloadShaders();
    }

    const int samples = SamplesOf(antiAliasing_);
    const bool multisample = samples > 1 && gpu.multisampled.Resize(width, height, samples);
    const bool fxaa = antiAliasing_ == AntiAliasingMethod::Fxaa && gpu.fxaaSource.Resize(width, height, 0);
    // Targets of a method no longer chosen only hold memory.
    if (!multisample && gpu.multisampled.IsValid())
        gpu.multisampled.Release();
    if (!fxaa && gpu.fxaaSource.IsValid())
        gpu.fxaaSource.Release();

    if (multisample)
        gpu.multisampled.Bind();
    else if (fxaa)
        gpu.fxaaSource.Bind();
    else
        BindOutput(output);

    RenderScenes(width, height);

    if (multisample) {
        gpu.multisampled.BlitTo(output);
    } else if (fxaa) {
        BindOutput(output);
        RunFxaa(output, width, height);
    }

    // Leave a plain state for whatever draws next (GUI, separator lines).
    BindOutput(output);
    glViewport(0, 0, width, height);
    glDisable(GL_SCISSOR_TEST);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_BLEND);
    glUseProgram(0);
    ++frameCount_;
}

void RenderSystem::RunFxaa(const plor::Framebuffer* output, int width, int height)
{
    Gpu& gpu = *gpu_;
    plor::Program* program = gpu.programs.Get(kFxaaProgram);
    if (!program || !program->Use()) {
        // Showing the frame without smoothing beats showing nothing.
        gpu.fxaaSource.BlitTo(output);
        return;
    }
    glViewport(0, 0, width, height);
    glDisable(GL_SCISSOR_TEST);
    glDisable(GL_DEPTH_TEST);
    glDisable(GL_BLEND);
    glActiveTexture(GL_TEXTURE0);
    glBindTexture(GL_TEXTURE_2D, gpu.fxaaSource.GetColorTexture());
    program->SetUniform(kFxaaSource, 0);
    program->SetUniform(kFxaaTexelSize,
                        glm::vec2(1.0f / static_cast<float>(width), 1.0f / static_cast<float>(height)));
    glBindVertexArray(gpu.emptyVertexArray);
    glDrawArrays(GL_TRIANGLES, 0, 3);
    glBindVertexArray(0);
    glBindTexture(GL_TEXTURE_2D, 0);
}

void RenderSystem::RenderScenes(int targetWidth, int targetHeight)
{
    Gpu& gpu = *gpu_;

    glDisable(GL_SCISSOR_TEST);
    glViewport(0, 0, targetWidth, targetHeight);
    glClearColor(background_.r, background_.g, background_.b, 1.0f);
    glDepthMask(GL_TRUE);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);

    // Viewports are in window pixels; the target may be larger (high-density screens) or
    // another size altogether (off-screen pictures), so they are scaled to it.
    glm::ivec2 windowSize = windowSize_;
    if (windowSize.x <= 0 || windowSize.y <= 0)
        windowSize = {targetWidth, targetHeight};
    const float scaleX = static_cast<float>(targetWidth) / static_cast<float>(windowSize.x);
    const float scaleY = static_cast<float>(targetHeight) / static_cast<float>(windowSize.y);

    RenderContext& context = gpu.context;
    context.system = this;
    context.programs = &gpu.programs;
    context.pointBudget = pointBudget_;
    drawnPoints_ = 0;
    skippedPoints_ = 0;
    drawnViews_.resize(scenes_.size());
    context.checkerTexture = &gpu.checker;
    context.framebufferSize = {targetWidth, targetHeight};
    context.pixelScale = scaleX;

    for (std::size_t index = 0; index < scenes_.size(); ++index) {
        const Scene& scene = *scenes_[index];
        const VisualCamera& camera = *scene.GetCamera();
        context.view = camera.GetViewMatrix();
        context.projection = scene.GetProjectionMatrix();
        context.viewProjection = context.projection * context.view;
        // Also for scenes without a place yet, so that a camera change there counts once.
        drawnViews_[index] = context.viewProjection;
        const glm::ivec4& viewport = scene.GetViewport();
        if (scene.GetViewportWidth() <= 0 || scene.GetViewportHeight() <= 0)
            continue;

        const int x0 = Round(static_cast<float>(viewport.x) * scaleX);
        const int x1 = Round(static_cast<float>(viewport.z) * scaleX);
        const int y0 = Round(static_cast<float>(viewport.y) * scaleY);
        const int y1 = Round(static_cast<float>(viewport.w) * scaleY);
        if (x1 <= x0 || y1 <= y0)
            continue;

        context.scene = &scene;
        context.cameraPosition = camera.GetPosition();
        context.cameraForward = camera.GetForward();
        context.cameraUp = camera.GetUp();
        context.nearPlane = scene.GetNear();
        context.farPlane = scene.GetFar();
        context.viewport = viewport;
        // GL counts rows from the bottom.
        context.glViewport = {x0, targetHeight - y1, x1 - x0, y1 - y0};

        context.lights.clear();
        const glm::quat& orientation = camera.GetOrientation();
        for (const std::shared_ptr<Light>& light : scene.GetLights())
            if (light)
                context.lights.push_back(ResolveLight(*light, orientation));
        if (context.lights.empty()) {
            context.lights.push_back(ResolveLight(DefaultKeyLight(), orientation));
            context.lights.push_back(ResolveLight(DefaultFillLight(), orientation));
        }

        RenderScene(context);
    }
    // Texts printed for scenes that were not drawn (no viewport yet) must not pile up.
    textRenderer_.Clear();
}

void RenderSystem::RenderScene(const RenderContext& context)
{
    const glm::ivec4& rect = context.glViewport;
    glViewport(rect.x, rect.y, rect.z, rect.w);
    glEnable(GL_SCISSOR_TEST);
    glScissor(rect.x, rect.y, rect.z, rect.w);
    glDepthMask(GL_TRUE);
    glClear(GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);

    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glDisable(GL_BLEND);
    glDisable(GL_CULL_FACE);

    DrawPass(context, RenderPass::Opaque);
    gpu_->helpers.Render(context);
    DrawPass(context, RenderPass::Overlay);
    DrawPass(context, RenderPass::Screen);
    textRenderer_.RenderQueued(context);

    glDisable(GL_SCISSOR_TEST);
}

namespace {

void DrawPass(const RenderContext& context, RenderPass pass)
{
    for (const Scene::Instance& instance : context.scene->GetInstances()) {
        if ((instance.flags & InstanceFlags::Hidden) != 0 || !instance.style->visible)
            continue;
        if (instance.renderer->GetPass() != pass)
            continue;
        const bool noDepth = (instance.flags & InstanceFlags::NoDepthTest) != 0;
        if (noDepth)
            glDisable(GL_DEPTH_TEST);
        instance.renderer->Render(context, *instance.style);
        // Renderers may leave state behind; the next one starts from the scene's baseline.
        glEnable(GL_DEPTH_TEST);
        glDepthMask(GL_TRUE);
    }
}

} // namespace

tesk::Image RenderSystem::CaptureImage() const
{
    static const std::string label = "vexa::draw::RenderSystem::CaptureImage";
    if (!HasCurrentContext()) {
        rlog::Fail("No OpenGL context is current", label);
        return {};
    }
    glm::ivec2 size = framebufferSize_;
    if (size.x <= 0 || size.y <= 0) {
        GLint viewport[4] = {0, 0, 0, 0};
        glGetIntegerv(GL_VIEWPORT, viewport);
        size = {viewport[2], viewport[3]};
    }
    if (size.x <= 0 || size.y <= 0) {
        rlog::Warn("The framebuffer size is unknown; nothing to capture", label);
        return {};
    }

    GLint previousRead = 0;
    glGetIntegerv(GL_READ_FRAMEBUFFER_BINDING, &previousRead);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, 0);
    // Called after rendering and before the swap: the frame is still in the back buffer.
    glReadBuffer(GL_BACK);
    std::vector<std::uint8_t> pixels = plor::ReadPixelsRgba(0, 0, size.x, size.y);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(previousRead));
    if (pixels.empty()) {
        rlog::Fail("Reading the window's pixels failed", label);
        return {};
    }
    return tesk::Image(static_cast<std::uint32_t>(size.x), static_cast<std::uint32_t>(size.y), 4,
                       std::move(pixels));
}

bool RenderSystem::SaveScreenshot(const std::string& path) const
{
    static const std::string label = "vexa::draw::RenderSystem::SaveScreenshot";
    if (path.empty()) {
        rlog::Fail("No file name given for the screenshot", label);
        return false;
    }
    const tesk::Image image = CaptureImage();
    if (image.IsEmpty()) {
        rlog::Fail("Nothing was captured; \"" + path + "\" is not written", label);
        return false;
    }
    if (!image.SavePng(path)) {
        rlog::Fail("Cannot write the screenshot \"" + path + "\"", label);
        return false;
    }
    return true;
}

} // namespace vexa::draw
