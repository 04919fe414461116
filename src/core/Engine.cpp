#include "core/Engine.h"

#include "core/DetailBudget.h"
#include "core/InputTranslator.h"
#include "core/LayoutChooser.h"
#include "core/LookParser.h"
#include "core/Notice.h"
#include "core/Notifications.h"
#include "core/Platform.h"
#include "core/SeparatorLines.h"
#include "core/Viewarea.h"
#include "core/ViewareaSettings.h"
#include "gui/Sidebar.h"
#include "scene/GadgetManager.h"

#include <vexa/CameraController.h>
#include <vexa/Debugger.h>
#include <vexa/Gadget.h>
#include <vexa/Resource.h>
#include <vexa/draw/Light.h>
#include <vexa/draw/RenderSystem.h>
#include <vexa/draw/Scene.h>
#include <vexa/draw/TextRenderer.h>
#include <vexa/modules/CameraAnimResource.h>

#include <nubo/GuiSystem.h>

#include <plor/Gl.h>
#include <plor/Program.h>
#include <plor/Window.h>

#include <runa/rlog.h>

#include <glbinding/gl/gl.h>

#include <algorithm>
#include <cmath>
#include <exception>
#include <map>
#include <optional>
#include <utility>

namespace vexa {

namespace {

constexpr const char* kLineShader = "LINE_SHADER";
constexpr int kGlfwVisible = 0x20004;
// A camera that moves (an animation, a focus jump, a host's pose) marks the view areas dirty on
// every change; they are written once it has been still this long (100 ns ticks: 0.5 s), so a
// moving camera does not cost a file write per frame.
constexpr std::uint64_t kViewSettleTicks = 5'000'000;
// Frames drawn while the camera moves may leave points out (DetailBudget); once it has been
// still this long (0.15 s) and no drag holds it, the next update draws everything. Shorter
// would redraw at full detail between the events of one slow drag.
constexpr std::uint64_t kDetailSettleTicks = 1'500'000;
constexpr float kNoticeSeconds = 3.0f;
// A pick report stays longer than the other notices: it is read, not glanced at.
constexpr float kPickNoticeSeconds = 8.0f;
// How far (pixels) the pointer may wander between press and release for a click.
constexpr float kClickSlop = 4.0f;

struct PixelRect {
    float x = 0.0f;
    float y = 0.0f;
    float width = 0.0f;
    float height = 0.0f;
};

PixelRect ResolveRect(const ViewareaLook& look, float width, float height)
{
    return {look.position.x.Resolve(width), look.position.y.Resolve(height), look.size.width.Resolve(width),
            look.size.height.Resolve(height)};
}

} // namespace

struct Engine::Impl {
    WindowManager windowManager;
    // A screenshot is taken from the back buffer of the next frame, before the swap leaves it
    // undefined.
    std::string screenshotPath;
    bool screenshotSaved = false;
    bool screenshotNotice = false;
    std::shared_ptr<plor::Window> window;
    std::vector<std::shared_ptr<Resource>> resources;
    // The engine's own resources by key; they outlive every gadget made from them.
    std::map<unsigned int, std::shared_ptr<Resource>> builtIns;
    nubo::GuiSystem gui;
    std::unique_ptr<draw::RenderSystem> renderSystem;
    std::unique_ptr<CameraController> cameraController;
    glm::vec2 cursor{0.0f, 0.0f};
    // Where a Shift + left press that may become a pick went down.
    std::optional<glm::vec2> pickPress;
    std::vector<std::unique_ptr<Viewarea>> viewareas;
    std::string assetDirectory;
    std::string intermediateDirectory;
    bool redraw = false;
    bool initialized = false;
    InputTranslator input;
    std::unique_ptr<LayoutChooser> layoutChooser;
    std::unique_ptr<Notice> notice = std::make_unique<Notice>();
    GeneralOptions options;
    ViewareaSettings viewareaSettings;
    plor::ProgramList programs;
    SeparatorLines separatorLines;
    std::vector<std::shared_ptr<draw::Light>> lights{std::make_shared<draw::Light>()};
    std::uint64_t lastTick = 0;
    bool firstStep = true;
    bool iconified = false;
    bool shaderReloadRequested = false;
    // The look's "options-enabled": whether sidebars offer the global options at all.
    bool optionsEnabled = true;
    std::uint64_t lastViewChangeTick = 0;
    DetailBudget detailBudget;
    // When some scene's camera last differed from the frame before.
    std::uint64_t lastCameraMoveTick = 0;
    // The last frame left points out; draw again once the camera is still.
    bool refinePending = false;
};

Engine::Engine() : impl_(std::make_unique<Impl>())
{
    impl_->layoutChooser =
        std::make_unique<LayoutChooser>([this](std::uint8_t layout) { ApplyLayout(layout); });
    SetEngineServices(this);
}

Engine::~Engine()
{
    // A camera that moved just before the end has not settled long enough to be written.
    if (impl_->initialized)
        SaveDirtySettings(GetTicks(), true);
    if (impl_->window) {
        impl_->window->RemoveObserver(this);
        impl_->window->RemoveObserver(&impl_->windowManager);
        impl_->window->SetContextConditional();
    }
    // Their windows go before the GUI does.
    impl_->layoutChooser.reset();
    impl_->notice.reset();
    // Gadgets and view areas reach back through the services while they go.
    impl_->viewareas.clear();
    impl_->resources.clear();
    impl_->builtIns.clear();
    impl_->cameraController.reset();
    impl_->separatorLines.Release();
    impl_->programs.ReleaseAll();
    impl_->renderSystem.reset();
    impl_->gui.Terminate();
    if (impl_->window)
        impl_->window->UnsetContextConditional();
    SetEngineServices(nullptr);
}

bool Engine::SetIntermediateDirectory(const std::string& path)
{
    return NormalizeIntermediateDirectory(path, impl_->intermediateDirectory);
}

bool Engine::SetAssetDirectory(const std::string& path)
{
    return NormalizeAssetDirectory(path, impl_->assetDirectory);
}

const std::string& Engine::GetAssetDirectory() const
{
    return impl_->assetDirectory;
}
const std::string& Engine::GetIntermediateDirectory() const
{
    return impl_->intermediateDirectory;
}
bool Engine::IsInitialized() const
{
    return impl_->initialized;
}
void Engine::MarkViewareasDirty()
{
    impl_->viewareaSettings.SetDirty();
}

void Engine::SaveSettings()
{
    if (impl_->initialized)
        SaveDirtySettings(GetTicks(), true);
}

ViewareaSettings& Engine::GetViewareaSettings()
{
    return impl_->viewareaSettings;
}

GeneralOptions& Engine::GetOptions()
{
    return impl_->options;
}
WindowManager& Engine::GetWindowManager()
{
    return impl_->windowManager;
}
const std::shared_ptr<plor::Window>& Engine::GetWindow() const
{
    return impl_->window;
}
bool Engine::IsRedrawRequested() const
{
    return impl_->redraw;
}
bool Engine::IsLayoutChooserShown() const
{
    return impl_->layoutChooser && impl_->layoutChooser->IsShown();
}
CEGUI::Window* Engine::GetLayoutChooser() const
{
    return impl_->layoutChooser ? impl_->layoutChooser->GetWindow() : nullptr;
}
float Engine::GetNoticeCountdown() const
{
    return impl_->notice ? impl_->notice->GetCountdown() : 0.0f;
}
void Engine::RequestShaderReload()
{
    impl_->shaderReloadRequested = true;
}
void Engine::OnWindowIconified(bool iconified)
{
    impl_->iconified = iconified;
    // Whatever was drawn before is gone from the screen once the window comes back.
    if (!iconified)
        RequestRedraw();
}
const std::vector<std::shared_ptr<Resource>>& Engine::GetResources() const
{
    return impl_->resources;
}
const std::vector<std::unique_ptr<Viewarea>>& Engine::GetViewareas() const
{
    return impl_->viewareas;
}
void Engine::RequestRedraw()
{
    impl_->redraw = true;
}
draw::RenderSystem* Engine::GetRenderSystem()
{
    return impl_->renderSystem.get();
}
CameraController* Engine::GetCameraController()
{
    return impl_->cameraController.get();
}
std::vector<std::shared_ptr<draw::Light>> Engine::GetLights() const
{
    return impl_->lights;
}

std::shared_ptr<Resource> Engine::FindResource(const ResourceId& id) const
{
    for (const auto& resource : impl_->resources)
        if (resource->GetId() == id)
            return resource;
    // The camera animation is not listed (it would get a gadget everywhere), yet a sidebar
    // makes its gadget by id like any other.
    for (const auto& [key, resource] : impl_->builtIns)
        if (resource->GetId() == id)
            return resource;
    return nullptr;
}

std::shared_ptr<Resource> Engine::GetBuiltInResource(unsigned int key) const
{
    auto it = impl_->builtIns.find(key);
    return it != impl_->builtIns.end() ? it->second : nullptr;
}

bool Engine::Initialize(const std::string& lookFile)
{
    Impl& s = *impl_;
    if (s.assetDirectory.empty()) {
        ShowMessageBox(kInitializationErrorCaption, kAssetDirectoryInvalidText, MessageIcon::Error);
        return false;
    }
    if (s.intermediateDirectory.empty())
        SetIntermediateDirectory("./vexa/");

    std::unique_ptr<LookParser> look;
    if (!lookFile.empty()) {
        try {
            look = std::make_unique<LookParser>(lookFile);
        } catch (const std::exception&) {
            look.reset();
        }
        // A look that was read but failed (no "vexa", another version, a view without its
        // place) is as useless as one that could not be read: the user hears of both.
        if (!look || !look->Succeeded()) {
            ShowMessageBox(kInitializationCaption, kLookParseErrorText, MessageIcon::Warning);
            look.reset();
        }
    }

    plor::WindowParams& params = s.windowManager.GetWindowParams();
    WindowLook windowLook;
    // Only a look places the window; without one it keeps the window's own defaults (caption,
    // 640 x 480 at 100, 100), which window.bin may then override.
    if (look) {
        windowLook = look->GetWindowLook();
        params.caption = windowLook.caption;
        params.width = windowLook.width;
        params.height = windowLook.height;
        params.maximized = windowLook.maximized;
        params.fullscreen = windowLook.fullscreen;
        params.positionSet = false;
    }
    s.windowManager.Load(s.intermediateDirectory);
    s.windowManager.CopyPlacementFromParams();

    s.window = plor::Window::Create(params);
    if (!s.window) {
        rlog::Fail("The viewer window could not be created.", "vexa::Engine::Initialize");
        return false;
    }
    s.windowManager.SetWindow(s.window);
    s.window->AddObserver(&s.windowManager, plor::kAllEvents);
    s.window->AddObserver(this, plor::kAllEvents);
    s.window->SetContextConditional();

    plor::SetShaderBuildDirectory(s.assetDirectory + "shaders/");
    s.programs.Add(kLineShader, "core/lines.vert", "core/lines.frag");
    s.programs.Get(kLineShader);
    const glm::ivec2 size = s.window->GetFramebufferSize();
    gl::glViewport(0, 0, size.x, size.y);

    if (!s.gui.Initialize(s.window, s.assetDirectory + "resources/"))
        rlog::Fail("The GUI could not be started; the window runs without it.", "vexa::Engine::Initialize");

    s.renderSystem = std::make_unique<draw::RenderSystem>();
    s.renderSystem->GetTextRenderer().SetFontFile(s.assetDirectory + "resources/InriaSans-Regular.ttf");
    s.cameraController = std::make_unique<CameraController>();
    s.cameraController->SetViewChangedCallback([this]() {
        RequestRedraw();
        impl_->viewareaSettings.SetDirty();
        impl_->lastViewChangeTick = GetTicks();
    });
    s.options.SetBackgroundColor(tesk::Color3b{0x3D, 0x3D, 0x3D});
    s.renderSystem->SetBackgroundColor(s.options.GetBackgroundColor());
    s.options.SetShortcutsEnabled(windowLook.keyShortcutsEnabled);
    s.optionsEnabled = windowLook.optionsEnabled;
    std::vector<ViewareaLook> viewLooks;
    if (look) {
        s.options.SetBackgroundColor(windowLook.background);
        viewLooks = look->GetViewareaLooks();
    }

    GeneralOptions::Hooks hooks;
    hooks.setAntiAliasing = [this](int method) {
        impl_->renderSystem->SetAntiAliasingMethod(method);
        RequestRedraw();
    };
    hooks.setBackground = [this](const tesk::Color3b& color) {
        impl_->renderSystem->SetBackgroundColor(color);
        RequestRedraw();
    };
    // The controller maps the stored slider value itself.
    hooks.setSensitivity = [this](float) {
        impl_->cameraController->SetMouseSensitivity(impl_->options.GetStoredSensitivity());
    };
    s.options.SetHooks(std::move(hooks));
    const bool firstRun = !s.options.FileExists(s.intermediateDirectory);
    s.options.Load(s.intermediateDirectory);
    s.options.SetDirty(false);
    s.options.ApplyAll();
    if (s.options.GetViewLayout() != 0)
        viewLooks = LayoutChooser::MakeLayout(s.options.GetViewLayout());
    s.builtIns[kCameraAnimationResource] =
        std::make_shared<modules::CameraAnimResource>("VEXA/CameraAnimation");
    s.builtIns[kDebuggerResource] = std::make_shared<Debugger>(Debugger::kBuiltInName);
    // Listed, so that every view area shows it (and updates count its shapes down).
    AddResource(s.builtIns[kDebuggerResource]);
    SetViewareas(viewLooks);
    // Records for another layout do not fit; the view areas then keep their look's state.
    if (s.viewareaSettings.Load(s.intermediateDirectory) && !s.viewareaSettings.Apply(s.viewareas))
        rlog::Info("viewareas.bin was written for another number of view areas; it is not applied",
                   "vexa::Engine::Initialize");
    OnFramebufferResized(size.x, size.y);
    // Restoring the cameras above reported them as changed; nothing differs from the file.
    s.viewareaSettings.SetDirty(false);
    s.iconified = s.window->IsIconified();
    if (firstRun)
        s.options.SetDirty(true);
    CheckGpuVersion();
    s.window->UnsetContextConditional();
    s.initialized = true;
    s.redraw = true;
    return true;
}

void Engine::CheckGpuVersion()
{
    const std::string warning = ComposeGpuWarning(plor::GetGlVendor(), plor::GetGlRenderer(),
                                                  plor::GetGlVersionString(), plor::GetGlVersion());
    if (warning.empty())
        return;
    if (!impl_->options.FileExists(impl_->intermediateDirectory))
        ShowMessageBox(kGpuWarningCaption, warning, MessageIcon::Warning);
    else
        rlog::Warn(warning, "vexa::Engine::CheckGpuVersion");
}

void Engine::ClearViewareas()
{
    const auto count = static_cast<unsigned int>(impl_->viewareas.size());
    impl_->viewareas.clear();
    if (impl_->cameraController && count > 0)
        impl_->cameraController->RemoveScenes(count);
    RequestRedraw();
}

void Engine::SetViewareas(const std::vector<ViewareaLook>& looks)
{
    ClearViewareas();
    std::vector<ViewareaLook> areas = looks;
    if (areas.empty())
        areas.push_back(ViewareaLook{});
    CEGUI::Window* root = impl_->gui.IsInitialized() ? impl_->gui.GetRoot() : nullptr;
    for (const ViewareaLook& look : areas) {
        // The position in the list: gadget state files are named by it, so the same look and
        // layout find the same files in every run and after every layout change.
        const auto id = static_cast<unsigned int>(impl_->viewareas.size());
        auto area = root != nullptr ? std::make_unique<Viewarea>(id, root) : std::make_unique<Viewarea>(id);
        area->ApplyLook(look);
        area->SetGlobalOptionsEnabled(impl_->optionsEnabled);
        area->SetSidebarVisibilityCallback([this](bool) { impl_->viewareaSettings.SetDirty(); });
        if (Sidebar* sidebar = area->GetSidebar(); sidebar != nullptr && look.cameraAnimatorEnabled)
            if (auto animation = GetBuiltInResource(kCameraAnimationResource))
                sidebar->SetVideoResource(animation->GetId());
        // Resources that are already listed get their gadgets here; later ones through the
        // resource-added notification the view area subscribed to.
        for (const auto& resource : impl_->resources)
            if (area->ShowsResource(resource->GetId()) &&
                !area->GetGadgetManager().HasGadget(resource->GetId()))
                area->GetGadgetManager().Create(resource->GetId());
        impl_->viewareas.push_back(std::move(area));
    }
    if (impl_->layoutChooser)
        impl_->layoutChooser->BringToFront();
    if (impl_->window) {
        const glm::ivec2 size = impl_->window->GetFramebufferSize();
        OnFramebufferResized(size.x, size.y);
    }
}

void Engine::BuildSeparatorLines()
{
    if (!impl_->window)
        return;
    const glm::ivec2 size = impl_->window->GetFramebufferSize();
    std::vector<glm::vec4> areas;
    areas.reserve(impl_->viewareas.size());
    for (const auto& area : impl_->viewareas) {
        const PixelRect r =
            ResolveRect(area->GetLook(), static_cast<float>(size.x), static_cast<float>(size.y));
        areas.emplace_back(r.x, r.y, r.width, r.height);
    }
    impl_->separatorLines.Build(areas, size);
}

void Engine::Update()
{
    Impl& s = *impl_;
    if (!s.window)
        return;
    if (s.window->IsCloseRequested()) {
        s.window->Hide();
        return;
    }
    // Current already while polling: input handlers feed the GUI (which may rebuild its
    // geometry), take screenshots and rebuild the separator lines.
    s.window->SetContextConditional();
    if (!s.window->IsSharingContext())
        plor::Window::PollEvents();
    if (s.iconified) {
        s.window->UnsetContextConditional();
        return;
    }

    const std::uint64_t now = GetTicks();
    SaveDirtySettings(now);

    if (s.firstStep) {
        s.lastTick = now;
        s.firstStep = false;
    }
    const std::uint64_t elapsed = now > s.lastTick ? now - s.lastTick : s.lastTick - now;
    const float dt = static_cast<float>(elapsed / 10) * 1e-6f;

    for (const auto& resource : s.resources)
        resource->Update(dt);

    if (s.notice->Advance(dt))
        RequestRedraw();
    if (s.shaderReloadRequested) {
        s.shaderReloadRequested = false;
        if (s.renderSystem)
            s.renderSystem->RequestShaderReload();
        s.programs.ReloadAll();
        ShowNotice("Shaders reloaded");
        RequestRedraw();
    }

    for (const auto& area : s.viewareas) {
        if (Sidebar* sidebar = area->GetSidebar(); sidebar != nullptr && sidebar->IsRegenerationRequested()) {
            sidebar->Regenerate();
            RequestRedraw();
        }
        if (Sidebar* sidebar = area->GetSidebar(); sidebar != nullptr && sidebar->Update())
            RequestRedraw();
        for (const auto& [id, gadget] : area->GetGadgetManager().GetGadgets())
            gadget->Update(dt);
    }
    s.gui.InjectTime(dt);
    s.lastTick = now;

    if (s.refinePending && !IsDragging() && now >= s.lastCameraMoveTick + kDetailSettleTicks)
        RequestRedraw();
    if (!s.options.IsOptimizedRendering() || s.gui.IsDirty() || s.redraw) {
        Render();
        s.redraw = false;
    }
    s.window->UnsetContextConditional();
}

bool Engine::IsDragging() const
{
    return impl_->cameraController && impl_->cameraController->GetDragMode() != CameraController::kDragNone;
}

void Engine::SaveDirtySettings(std::uint64_t now, bool final)
{
    Impl& s = *impl_;
    if (s.windowManager.IsDirty())
        s.windowManager.Save(s.intermediateDirectory);
    if (s.options.IsDirty())
        s.options.Save(s.intermediateDirectory);
    if (!s.viewareaSettings.IsDirty())
        return;
    // While a drag goes on, or the camera moved a moment ago, more changes are on their way.
    const bool dragging = IsDragging();
    const std::uint64_t sinceChange = now > s.lastViewChangeTick ? now - s.lastViewChangeTick : 0;
    if (!final && (dragging || sinceChange < kViewSettleTicks))
        return;
    // Without view areas (already released) there is nothing to describe; the file keeps the
    // state written while they existed.
    if (s.viewareas.empty())
        return;
    s.viewareaSettings.Capture(s.viewareas);
    s.viewareaSettings.Save(s.intermediateDirectory);
}

void Engine::ShowNotice(const std::string& text, float seconds)
{
    rlog::Info(text, "vexa::Engine::ShowNotice");
    impl_->notice->Show(impl_->gui.IsInitialized() ? impl_->gui.GetRoot() : nullptr, text, seconds);
    RequestRedraw();
}

void Engine::Render(bool fullDetail)
{
    Impl& s = *impl_;
    if (!s.window || !s.renderSystem)
        return;
    s.window->SetContextConditional();
    const std::uint64_t start = GetTicks();
    const bool viewsChanged = s.renderSystem->HaveViewsChanged();
    if (viewsChanged)
        s.lastCameraMoveTick = start;
    const bool moving =
        !fullDetail && (viewsChanged || IsDragging() || start < s.lastCameraMoveTick + kDetailSettleTicks);
    s.renderSystem->SetPointBudget(moving ? s.detailBudget.Get() : 0);
    draw::TextRenderer& texts = s.renderSystem->GetTextRenderer();
    for (const auto& area : s.viewareas) {
        texts.SetScene(area->GetScene());
        for (const auto& [id, gadget] : area->GetGadgetManager().GetGadgets())
            gadget->RenderTexts(texts);
        texts.SetScene(nullptr);
    }
    s.renderSystem->Render();
    if (s.gui.IsInitialized())
        s.gui.Draw();

    if (plor::Program* program = s.programs.Get(kLineShader))
        s.separatorLines.Draw(*program, s.window->GetFramebufferSize());
    if (!s.screenshotPath.empty()) {
        s.screenshotSaved = s.renderSystem->SaveScreenshot(s.screenshotPath);
        if (s.screenshotNotice)
            ShowNotice(s.screenshotSaved ? "Screenshot: " + s.screenshotPath
                                         : "The screenshot could not be saved");
        s.screenshotNotice = false;
        s.screenshotPath.clear();
    }
    s.window->SwapBuffers();
    // Presenting waits for the rasteriser, so this is the frame's whole cost.
    const double seconds = static_cast<double>(GetTicks() - start) / static_cast<double>(kTicksPerSecond);
    s.detailBudget.Record(seconds, s.renderSystem->GetDrawnPoints(), moving);
    s.refinePending = s.renderSystem->GetSkippedPoints() > 0;
    const std::string error = plor::GetLastGlError();
    if (!error.empty())
        rlog::Fail("OpenGL error " + error, "vexa::Engine::Render");
    s.window->UnsetContextConditional();
}

bool Engine::SaveScreenshot(const std::string& path)
{
    Impl& s = *impl_;
    // A closed window has nothing on screen to save.
    if (!s.window || !s.renderSystem || path.empty() || !IsOpen())
        return false;
    s.screenshotPath = path;
    s.screenshotSaved = false;
    Render(true);
    s.screenshotPath.clear();
    return s.screenshotSaved;
}

bool Engine::IsOpen() const
{
    return impl_->window && impl_->window->GetAttribute(kGlfwVisible) != 0 &&
           !impl_->window->IsCloseRequested();
}

void Engine::AddResource(const std::shared_ptr<Resource>& resource)
{
    if (!resource) {
        rlog::Warn("A null resource cannot be shown.", "vexa::Engine::AddResource");
        return;
    }
    const ResourceId id = resource->GetId();
    for (auto& listed : impl_->resources) {
        if (listed->GetId() == id) {
            listed = resource;
            GetNotifications().Notify(kResourceGadgetsReset, &id);
            RequestRedraw();
            return;
        }
    }
    impl_->resources.push_back(resource);
    GetNotifications().Notify(kResourceAdded, &id);
    RequestRedraw();
}

void Engine::RemoveAllResources()
{
    // Copies of the ids: a subscriber may drop the resource while it is being told.
    std::vector<ResourceId> ids;
    ids.reserve(impl_->resources.size());
    for (const auto& resource : impl_->resources)
        ids.push_back(resource->GetId());
    for (const ResourceId& id : ids)
        GetNotifications().Notify(kResourceRemoved, &id);
    impl_->resources.clear();
    RequestRedraw();
}

void Engine::RemoveResourcesWithPrefix(const std::string& prefix)
{
    if (prefix.empty())
        return;
    std::vector<ResourceId> ids;
    for (const auto& resource : impl_->resources)
        if (resource->GetId().name.starts_with(prefix))
            ids.push_back(resource->GetId());
    auto& list = impl_->resources;
    for (const ResourceId& id : ids) {
        auto it = std::find_if(list.begin(), list.end(), [&](const auto& r) { return r->GetId() == id; });
        if (it == list.end())
            continue;
        GetNotifications().Notify(kResourceRemoved, &id);
        it = std::find_if(list.begin(), list.end(), [&](const auto& r) { return r->GetId() == id; });
        if (it != list.end())
            list.erase(it);
    }
    if (!ids.empty())
        RequestRedraw();
}

Viewarea* Engine::ViewareaUnderCursor() const
{
    for (const auto& area : impl_->viewareas)
        if (area->Contains(impl_->cursor.x, impl_->cursor.y))
            return area.get();
    return nullptr;
}

void Engine::OnFramebufferResized(int width, int height)
{
    Impl& s = *impl_;
    if (s.renderSystem)
        s.renderSystem->SetFramebufferSize(width, height);
    if (s.gui.IsInitialized())
        s.gui.NotifyDisplaySizeChanged(width, height);
    // The GUI has laid the areas out for the new size above: gadgets hear the size of the
    // canvas they are drawn in (the area less a shown sidebar). An area without windows has
    // only its look's rectangle.
    for (const auto& area : s.viewareas) {
        if (area->GetRenderCanvas() != nullptr) {
            area->NotifyCanvasSize();
            continue;
        }
        const PixelRect r =
            ResolveRect(area->GetLook(), static_cast<float>(width), static_cast<float>(height));
        area->ViewResized(static_cast<unsigned int>(std::max(r.width, 0.0f)),
                          static_cast<unsigned int>(std::max(r.height, 0.0f)));
    }
    BuildSeparatorLines();
    RequestRedraw();
}

void Engine::OnMouseMove(float x, float y)
{
    Impl& s = *impl_;
    s.cursor = {x, y};
    const bool gui = s.gui.IsInitialized() && s.gui.InjectMouseMove(x, y);
    // Also over the GUI: a drag that began in a view goes on while the pointer crosses a panel.
    if (s.cameraController)
        s.cameraController->InjectMouseMove(x, y);
    if (gui)
        return;
    if (Viewarea* area = ViewareaUnderCursor())
        area->MouseMoved(x, y);
}

void Engine::OnMouseDown(plor::MouseButton button, const plor::Modifiers& mods)
{
    Impl& s = *impl_;
    const TranslatedButton press = s.input.Press(button, mods);
    if (s.gui.IsInitialized() && s.gui.InjectMouseDown(press.guiButton))
        return;
    if (s.cameraController)
        s.cameraController->ActivateSceneUnderMouse(press.guiButton, press.systemKeys);
    Viewarea* area = ViewareaUnderCursor();
    if (area == nullptr)
        return;
    const EventStatus status = area->MouseButtonPressed(press.button, press.mods);
    // Shift + left starts no camera drag, which leaves it free for picking. A pick is a click:
    // it is reported at the release, unless the pointer went somewhere else meanwhile.
    const ModKeys shiftOnly{.shift = true};
    if (status == EventStatus::NotConsumed && press.button == MouseButton::Left && press.mods == shiftOnly)
        s.pickPress = s.cursor;
}

void Engine::OnMouseUp(plor::MouseButton button, const plor::Modifiers& mods)
{
    Impl& s = *impl_;
    const TranslatedButton release = s.input.Release(button, mods);
    if (s.cameraController && s.cameraController->DeactivateArea().has_value()) {
        s.viewareaSettings.SetDirty();
        RequestRedraw();
    }
    const std::optional<glm::vec2> pickPress =
        release.button == MouseButton::Left ? std::exchange(s.pickPress, std::nullopt) : std::nullopt;
    if (s.gui.IsInitialized() && s.gui.InjectMouseUp(release.guiButton))
        return;
    Viewarea* area = ViewareaUnderCursor();
    if (area == nullptr)
        return;
    area->MouseButtonReleased(release.button, release.mods);
    if (pickPress && glm::length(s.cursor - *pickPress) <= kClickSlop)
        ReportPick(*area);
}

void Engine::OnMouseWheel(float, float dy)
{
    Impl& s = *impl_;
    if (s.gui.IsInitialized() && s.gui.InjectMouseWheel(dy))
        return;
    if (s.cameraController && s.cameraController->ZoomSceneUnderMouse(dy).has_value()) {
        s.viewareaSettings.SetDirty();
        RequestRedraw();
    }
    if (Viewarea* area = ViewareaUnderCursor())
        area->MouseWheel(dy);
}

void Engine::OnKeyDown(int key, const plor::Modifiers& mods, bool repeat)
{
    Impl& s = *impl_;
    const TranslatedKey typed = s.input.TranslateKey(key, mods);
    // The GUI sees every key so that text fields edit; a field with the keyboard also gets the
    // auto-repeat (a held Backspace keeps deleting). Everyone else ignores repeats.
    const bool typing = s.gui.IsInitialized() && s.gui.IsTypingText();
    if (s.gui.IsInitialized() && (!repeat || typing))
        s.gui.InjectKeyDown(typed.scan);
    if (repeat)
        return;
    if (s.options.IsShortcutsEnabled()) {
        if (typed.key == Key::Tab)
            ToggleLayoutChooser();
        // Letters and function keys are text while a field has the keyboard: typing "r" into
        // a search box must not reload the shaders.
        else if (!typing && typed.key == Key::F12 && s.renderSystem) {
            s.screenshotPath = MakeScreenshotPath();
            // Told after the capture, so that the notice is not in the picture.
            s.screenshotNotice = true;
            RequestRedraw();
        } else if (!typing && typed.key == Key::R && typed.mods == ModKeys{})
            RequestShaderReload();
    }
    for (const auto& area : s.viewareas)
        area->KeyPressed(typed.key, typed.mods);
    if (keyDownCallback_)
        keyDownCallback_(typed.key, typed.mods);
}

void Engine::OnKeyUp(int key, const plor::Modifiers& mods)
{
    Impl& s = *impl_;
    const TranslatedKey typed = s.input.TranslateKey(key, mods);
    if (s.gui.IsInitialized())
        s.gui.InjectKeyUp(typed.scan);
    if (Viewarea* area = ViewareaUnderCursor())
        area->KeyReleased(typed.key, typed.mods);
    if (keyUpCallback_)
        keyUpCallback_(typed.key, typed.mods);
}

void Engine::OnChar(unsigned int codepoint)
{
    if (impl_->gui.IsInitialized())
        impl_->gui.InjectChar(codepoint);
}

void Engine::OnFilesDropped(const std::vector<std::string>& paths)
{
    if (fileDropCallback_)
        fileDropCallback_(paths);
}

void Engine::ReportPick(Viewarea& area)
{
    const std::optional<PickHit> hit = area.Pick(impl_->cursor);
    const std::string text = hit ? hit->report : "Nothing to pick under the pointer";
    rlog::Info(text, "vexa::Engine::ReportPick");
    impl_->notice->Show(impl_->gui.IsInitialized() ? impl_->gui.GetRoot() : nullptr, text,
                        hit ? kPickNoticeSeconds : kNoticeSeconds);
    RequestRedraw();
}

void Engine::ApplyLayout(std::uint8_t layout)
{
    Impl& s = *impl_;
    s.layoutChooser->Hide();
    s.options.SetViewLayout(layout);
    s.options.SetDirty(true);
    // Rebuilding also re-lays the separator lines through the resize handler.
    SetViewareas(LayoutChooser::MakeLayout(layout));
    // The new areas' state replaces the old layout's records.
    s.viewareaSettings.SetDirty();
}

void Engine::ShowLayoutChooser()
{
    if (!IsLayoutChooserShown())
        ToggleLayoutChooser();
}

std::vector<ResourceId> Engine::GetResourceIds() const
{
    std::vector<ResourceId> ids;
    ids.reserve(impl_->resources.size());
    for (const auto& resource : impl_->resources)
        ids.push_back(resource->GetId());
    return ids;
}

void Engine::ToggleLayoutChooser()
{
    RequestRedraw();
    if (impl_->gui.IsInitialized())
        impl_->layoutChooser->Toggle(impl_->gui.GetRoot());
}

} // namespace vexa
