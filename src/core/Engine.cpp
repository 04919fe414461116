#include "core/Engine.h"

#include "core/LookParser.h"
#include "core/Notifications.h"
#include "core/Platform.h"
#include "core/Viewarea.h"
#include "core/ViewareaSettings.h"
#include "scene/GadgetManager.h"

#include <vexa/CameraController.h>
#include <vexa/Gadget.h>
#include <vexa/Resource.h>
#include <vexa/draw/Light.h>
#include <vexa/draw/RenderSystem.h>
#include <vexa/draw/Scene.h>
#include <vexa/draw/TextRenderer.h>

#include <nubo/GuiSystem.h>

#include <plor/ArrayObject.h>
#include <plor/Gl.h>
#include <plor/Program.h>
#include <plor/Window.h>

#include <runa/rlog.h>

#include <CEGUI/CEGUI.h>
#include <glbinding/gl/gl.h>

#include <algorithm>
#include <cmath>
#include <exception>

namespace vexa {

namespace {

constexpr const char* kLineShader = "LINE_SHADER";
constexpr int kGlfwVisible = 0x20004;
constexpr int kTabKey = 258;
constexpr int kF12Key = 301;
constexpr int kRKey = 82;
constexpr const char* kLayoutChooserName = "vexa_layout_chooser";

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

ViewareaLook MakeArea(float x, float y, float width, float height)
{
    ViewareaLook look;
    look.position = {{x, 0.0f}, {y, 0.0f}};
    look.size = {{width, 0.0f}, {height, 0.0f}};
    return look;
}

CEGUI::MouseButton ToCeguiButton(plor::MouseButton button)
{
    switch (button)
    {
    case plor::MouseButton::Left: return CEGUI::LeftButton;
    case plor::MouseButton::Right: return CEGUI::RightButton;
    case plor::MouseButton::Middle: return CEGUI::MiddleButton;
    default: return CEGUI::NoButton;
    }
}

} // namespace

struct Engine::Impl {
    WindowManager windowManager;
    std::shared_ptr<plor::Window> window;
    std::vector<std::shared_ptr<Resource>> resources;
    nubo::GuiSystem gui;
    std::unique_ptr<draw::RenderSystem> renderSystem;
    std::unique_ptr<CameraController> cameraController;
    glm::vec2 cursor{0.0f, 0.0f};
    std::vector<std::unique_ptr<Viewarea>> viewareas;
    std::string assetDirectory;
    std::string intermediateDirectory;
    bool redraw = false;
    bool initialized = false;
    CEGUI::Window* layoutChooser = nullptr;
    GeneralOptions options;
    ViewareaSettings viewareaSettings;
    plor::ProgramList programs;
    plor::ArrayObject separatorLines;
    std::vector<std::shared_ptr<draw::Light>> lights{std::make_shared<draw::Light>()};
    std::uint64_t lastTick = 0;
    bool firstStep = true;
    unsigned int nextViewareaId = 0;
};

Engine::Engine() : impl_(std::make_unique<Impl>())
{
    SetEngineServices(this);
}

Engine::~Engine()
{
    if (impl_->window)
    {
        impl_->window->RemoveObserver(this);
        impl_->window->RemoveObserver(&impl_->windowManager);
        impl_->window->SetContextConditional();
    }
    if (impl_->layoutChooser != nullptr && CEGUI::WindowManager::getSingletonPtr() != nullptr)
        CEGUI::WindowManager::getSingleton().destroyWindow(impl_->layoutChooser);
    impl_->layoutChooser = nullptr;
    // Gadgets and view areas reach back through the services while they go.
    impl_->viewareas.clear();
    impl_->resources.clear();
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

const std::string& Engine::GetAssetDirectory() const { return impl_->assetDirectory; }
const std::string& Engine::GetIntermediateDirectory() const { return impl_->intermediateDirectory; }
bool Engine::IsInitialized() const { return impl_->initialized; }
void Engine::MarkViewareasDirty()
{
    impl_->viewareaSettings.SetDirty();
}

ViewareaSettings& Engine::GetViewareaSettings()
{
    return impl_->viewareaSettings;
}

GeneralOptions& Engine::GetOptions() { return impl_->options; }
WindowManager& Engine::GetWindowManager() { return impl_->windowManager; }
const std::shared_ptr<plor::Window>& Engine::GetWindow() const { return impl_->window; }
bool Engine::IsRedrawRequested() const { return impl_->redraw; }
bool Engine::IsLayoutChooserShown() const
{
    return impl_->layoutChooser != nullptr && impl_->layoutChooser->getParent() != nullptr;
}
const std::vector<std::shared_ptr<Resource>>& Engine::GetResources() const { return impl_->resources; }
const std::vector<std::unique_ptr<Viewarea>>& Engine::GetViewareas() const { return impl_->viewareas; }
void Engine::RequestRedraw() { impl_->redraw = true; }
draw::RenderSystem* Engine::GetRenderSystem() { return impl_->renderSystem.get(); }
CameraController* Engine::GetCameraController() { return impl_->cameraController.get(); }
std::vector<std::shared_ptr<draw::Light>> Engine::GetLights() const { return impl_->lights; }

std::shared_ptr<Resource> Engine::FindResource(const ResourceId& id) const
{
    for (const auto& resource : impl_->resources)
        if (resource->GetId() == id)
            return resource;
    return nullptr;
}

bool Engine::Initialize(const std::string& lookFile)
{
    Impl& s = *impl_;
    if (s.assetDirectory.empty())
    {
        ShowMessageBox(kInitializationErrorCaption, kAssetDirectoryInvalidText, MessageIcon::Error);
        return false;
    }
    if (s.intermediateDirectory.empty())
        SetIntermediateDirectory("./vexa/");

    std::unique_ptr<LookParser> look;
    if (!lookFile.empty())
    {
        try
        {
            look = std::make_unique<LookParser>(lookFile);
        }
        catch (const std::exception&)
        {
            ShowMessageBox(kInitializationCaption, kLookParseErrorText, MessageIcon::Warning);
        }
    }

    plor::WindowParams& params = s.windowManager.GetWindowParams();
    WindowLook windowLook;
    if (look)
        windowLook = look->GetWindowLook();
    params.caption = windowLook.caption;
    params.width = windowLook.width;
    params.height = windowLook.height;
    params.maximized = windowLook.maximized;
    params.fullscreen = windowLook.fullscreen;
    params.positionSet = false;
    s.windowManager.Load(s.intermediateDirectory);
    s.windowManager.CopyPlacementFromParams();

    s.window = plor::Window::Create(params);
    if (!s.window)
    {
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
    s.cameraController->SetViewChangedCallback([this]() { RequestRedraw(); });
    s.options.SetBackgroundColor(tesk::Color3b{0x3D, 0x3D, 0x3D});
    s.renderSystem->SetBackgroundColor(s.options.GetBackgroundColor());
    s.options.SetShortcutsEnabled(windowLook.keyShortcutsEnabled);
    std::vector<ViewareaLook> viewLooks;
    if (look)
    {
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
        viewLooks = MakeLayout(s.options.GetViewLayout());
    SetViewareas(viewLooks);
    // Records for another layout do not fit; the view areas then keep their look's state.
    if (s.viewareaSettings.Load(s.intermediateDirectory) && !s.viewareaSettings.Apply(s.viewareas))
        rlog::Info("viewareas.bin was written for another number of view areas; it is not applied",
                   "vexa::Engine::Initialize");
    s.viewareaSettings.SetDirty(false);

    OnFramebufferResized(size.x, size.y);
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
    const std::string warning =
        ComposeGpuWarning(plor::GetGlVendor(), plor::GetGlRenderer(), plor::GetGlVersionString(), plor::GetGlVersion());
    if (warning.empty())
        return;
    if (!impl_->options.FileExists(impl_->intermediateDirectory))
        ShowMessageBox(kGpuWarningCaption, warning, MessageIcon::Warning);
    else
        rlog::Warn(warning, "vexa::Engine::CheckGpuVersion");
}

std::vector<ViewareaLook> Engine::MakeLayout(std::uint8_t layout)
{
    switch (layout)
    {
    case 1: return {MakeArea(0.0f, 0.0f, 1.0f, 1.0f)};
    case 2: return {MakeArea(0.0f, 0.0f, 0.5f, 1.0f), MakeArea(0.5f, 0.0f, 0.5f, 1.0f)};
    case 3:
        return {MakeArea(0.0f, 0.0f, 0.5f, 1.0f), MakeArea(0.5f, 0.0f, 0.5f, 0.5f), MakeArea(0.5f, 0.5f, 0.5f, 0.5f)};
    case 4:
        return {MakeArea(0.0f, 0.0f, 0.5f, 0.5f), MakeArea(0.5f, 0.0f, 0.5f, 0.5f), MakeArea(0.0f, 0.5f, 0.5f, 0.5f),
                MakeArea(0.5f, 0.5f, 0.5f, 0.5f)};
    default: return {};
    }
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
    for (const ViewareaLook& look : areas)
    {
        const unsigned int id = impl_->nextViewareaId++;
        auto area = root != nullptr ? std::make_unique<Viewarea>(id, root) : std::make_unique<Viewarea>(id);
        area->ApplyLook(look);
        area->SetSidebarVisibilityCallback([this](bool) { impl_->viewareaSettings.SetDirty(); });
        // Resources that are already listed get their gadgets here; later ones through the
        // resource-added notification the view area subscribed to.
        for (const auto& resource : impl_->resources)
            if (area->ShowsResource(resource->GetId()) && !area->GetGadgetManager().HasGadget(resource->GetId()))
                area->GetGadgetManager().Create(resource->GetId());
        impl_->viewareas.push_back(std::move(area));
    }
    if (impl_->layoutChooser != nullptr && impl_->layoutChooser->getParent() != nullptr)
        impl_->layoutChooser->moveToFront();
    if (impl_->window)
    {
        const glm::ivec2 size = impl_->window->GetFramebufferSize();
        OnFramebufferResized(size.x, size.y);
    }
}

void Engine::BuildSeparatorLines()
{
    if (!impl_->window)
        return;
    const glm::ivec2 size = impl_->window->GetFramebufferSize();
    const float width = static_cast<float>(std::max(size.x, 1));
    const float height = static_cast<float>(std::max(size.y, 1));
    const auto toClipX = [&](float x) { return 2.0f * x / width - 1.0f; };
    const auto toClipY = [&](float y) { return 1.0f - 2.0f * y / height; };
    std::vector<glm::vec3> vertices;
    // Only the inner edges: the window border needs no line.
    for (const auto& area : impl_->viewareas)
    {
        const PixelRect r = ResolveRect(area->GetLook(), width, height);
        const float right = r.x + r.width;
        const float bottom = r.y + r.height;
        if (right < width - 0.5f)
        {
            vertices.emplace_back(toClipX(right), toClipY(r.y), 0.0f);
            vertices.emplace_back(toClipX(right), toClipY(bottom), 0.0f);
        }
        if (bottom < height - 0.5f)
        {
            vertices.emplace_back(toClipX(r.x), toClipY(bottom), 0.0f);
            vertices.emplace_back(toClipX(right), toClipY(bottom), 0.0f);
        }
    }
    const std::size_t count = vertices.size();
    impl_->separatorLines.SetBuffer(0, std::move(vertices), {plor::Attribute{0, 3}});
    impl_->separatorLines.SetVertexCount(count);
}

void Engine::Update()
{
    Impl& s = *impl_;
    if (!s.window)
        return;
    if (s.window->IsCloseRequested())
    {
        s.window->Hide();
        return;
    }
    if (!s.window->IsSharingContext())
        plor::Window::PollEvents();
    if (s.window->IsIconified())
        return;

    if (s.windowManager.IsDirty())
        s.windowManager.Save(s.intermediateDirectory);
    if (s.options.IsDirty())
        s.options.Save(s.intermediateDirectory);
    if (s.viewareaSettings.IsDirty())
    {
        s.viewareaSettings.Capture(s.viewareas);
        s.viewareaSettings.Save(s.intermediateDirectory);
    }

    const std::uint64_t now = GetTicks();
    if (s.firstStep)
    {
        s.lastTick = now;
        s.firstStep = false;
    }
    const std::uint64_t elapsed = now > s.lastTick ? now - s.lastTick : s.lastTick - now;
    const float dt = static_cast<float>(elapsed / 10) * 1e-6f;

    s.window->SetContextConditional();
    for (const auto& resource : s.resources)
        resource->Update(dt);
    for (const auto& area : s.viewareas)
        for (const auto& [id, gadget] : area->GetGadgetManager().GetGadgets())
            gadget->Update(dt);
    s.gui.InjectTime(dt);
    s.lastTick = now;

    if (!s.options.IsOptimizedRendering() || s.gui.IsDirty() || s.redraw)
    {
        Render();
        s.redraw = false;
    }
    s.window->UnsetContextConditional();
}

void Engine::Render()
{
    Impl& s = *impl_;
    if (!s.window || !s.renderSystem)
        return;
    s.window->SetContextConditional();
    draw::TextRenderer& texts = s.renderSystem->GetTextRenderer();
    for (const auto& area : s.viewareas)
    {
        texts.SetScene(area->GetScene());
        for (const auto& [id, gadget] : area->GetGadgetManager().GetGadgets())
            gadget->RenderTexts(texts);
        texts.SetScene(nullptr);
    }
    s.renderSystem->Render();
    if (s.gui.IsInitialized())
        s.gui.Draw();

    const glm::ivec2 size = s.window->GetFramebufferSize();
    if (s.separatorLines.GetVertexCount() > 0)
    {
        plor::Program* program = s.programs.Get(kLineShader);
        gl::glBindFramebuffer(gl::GL_FRAMEBUFFER, 0);
        gl::glViewport(0, 0, size.x, size.y);
        gl::glDisable(gl::GL_DEPTH_TEST);
        if (program != nullptr && program->Use())
        {
            gl::glUniform3f(0, 26.0f / 255.0f, 26.0f / 255.0f, 26.0f / 255.0f);
            gl::glLineWidth(1.0f);
            s.separatorLines.Draw(plor::PrimitiveType::Lines);
        }
    }
    s.window->SwapBuffers();
    const std::string error = plor::GetLastGlError();
    if (!error.empty())
        rlog::Fail("OpenGL error " + error, "vexa::Engine::Render");
    s.window->UnsetContextConditional();
}

bool Engine::IsOpen() const
{
    return impl_->window && impl_->window->GetAttribute(kGlfwVisible) != 0 && !impl_->window->IsCloseRequested();
}

void Engine::AddResource(const std::shared_ptr<Resource>& resource)
{
    if (!resource)
    {
        rlog::Warn("A null resource cannot be shown.", "vexa::Engine::AddResource");
        return;
    }
    const ResourceId id = resource->GetId();
    for (auto& listed : impl_->resources)
    {
        if (listed->GetId() == id)
        {
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
    for (const ResourceId& id : ids)
    {
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
    for (const auto& area : s.viewareas)
    {
        const PixelRect r = ResolveRect(area->GetLook(), static_cast<float>(width), static_cast<float>(height));
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
    if (s.gui.IsInitialized() && s.gui.InjectMouseDown(button))
        return;
    if (s.cameraController)
        s.cameraController->ActivateSceneUnderMouse(ToCeguiButton(button), static_cast<unsigned int>(mods.ToBits()));
    if (Viewarea* area = ViewareaUnderCursor())
        area->MouseButtonPressed(static_cast<MouseButton>(button), ModKeys::FromBits(mods.ToBits()));
}

void Engine::OnMouseUp(plor::MouseButton button, const plor::Modifiers& mods)
{
    Impl& s = *impl_;
    if (s.cameraController && s.cameraController->DeactivateArea().has_value())
    {
        s.viewareaSettings.SetDirty();
        RequestRedraw();
    }
    if (s.gui.IsInitialized() && s.gui.InjectMouseUp(button))
        return;
    if (Viewarea* area = ViewareaUnderCursor())
        area->MouseButtonReleased(static_cast<MouseButton>(button), ModKeys::FromBits(mods.ToBits()));
}

void Engine::OnMouseWheel(float, float dy)
{
    Impl& s = *impl_;
    if (s.gui.IsInitialized() && s.gui.InjectMouseWheel(dy))
        return;
    if (s.cameraController && s.cameraController->ZoomSceneUnderMouse(dy).has_value())
    {
        s.viewareaSettings.SetDirty();
        RequestRedraw();
    }
    if (Viewarea* area = ViewareaUnderCursor())
        area->MouseWheel(dy);
}

void Engine::OnKeyDown(int key, const plor::Modifiers& mods, bool repeat)
{
    Impl& s = *impl_;
    if (repeat)
        return;
    if (s.gui.IsInitialized() && s.gui.InjectKeyDown(key))
        return;
    const ModKeys modKeys = ModKeys::FromBits(mods.ToBits());
    if (s.options.IsShortcutsEnabled())
    {
        if (key == kTabKey)
            ToggleLayoutChooser();
        else if (key == kF12Key && s.renderSystem)
            s.renderSystem->SaveScreenshot(MakeScreenshotPath());
        else if (key == kRKey && s.renderSystem)
        {
            s.renderSystem->RequestShaderReload();
            s.programs.ReloadAll();
            RequestRedraw();
        }
    }
    if (Viewarea* area = ViewareaUnderCursor())
        area->KeyPressed(static_cast<Key>(key), modKeys);
    if (keyDownCallback_)
        keyDownCallback_(static_cast<Key>(key), modKeys);
}

void Engine::OnKeyUp(int key, const plor::Modifiers& mods)
{
    Impl& s = *impl_;
    if (s.gui.IsInitialized() && s.gui.InjectKeyUp(key))
        return;
    const ModKeys modKeys = ModKeys::FromBits(mods.ToBits());
    if (Viewarea* area = ViewareaUnderCursor())
        area->KeyReleased(static_cast<Key>(key), modKeys);
    if (keyUpCallback_)
        keyUpCallback_(static_cast<Key>(key), modKeys);
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

void Engine::ApplyLayout(std::uint8_t layout)
{
    impl_->options.SetViewLayout(layout);
    impl_->options.SetDirty(true);
    SetViewareas(MakeLayout(layout));
}

void Engine::ToggleLayoutChooser()
{
    Impl& s = *impl_;
    RequestRedraw();
    if (!s.gui.IsInitialized())
        return;
    CEGUI::Window* root = s.gui.GetRoot();
    if (s.layoutChooser != nullptr && s.layoutChooser->getParent() != nullptr)
    {
        s.layoutChooser->getParent()->removeChild(s.layoutChooser);
        return;
    }
    if (s.layoutChooser == nullptr)
    {
        CEGUI::WindowManager& windows = CEGUI::WindowManager::getSingleton();
        try
        {
            CEGUI::Window* chooser = windows.createWindow("DarkVexa/ColorRect", kLayoutChooserName);
            chooser->setArea(CEGUI::URect(CEGUI::UDim(0, 0), CEGUI::UDim(0, 0), CEGUI::UDim(1, 0), CEGUI::UDim(1, 0)));
            chooser->setAlwaysOnTop(true);
            chooser->setMousePassThroughEnabled(false);
            chooser->setProperty("Colour", "AA000000");
            chooser->subscribeEvent(CEGUI::Window::EventMouseClick, [this](const CEGUI::EventArgs&) {
                ToggleLayoutChooser();
                return true;
            });
            const char* captions[] = {"Single View", "Dual Split", "B Split", "Quad Split"};
            for (int i = 0; i < 4; ++i)
            {
                CEGUI::Window* button = windows.createWindow("DarkVexa/PushButton", "layout" + std::to_string(i));
                button->setID(static_cast<CEGUI::uint>(i + 1));
                button->setText(captions[i]);
                button->setFont("InriaSans-12-Normal");
                button->setArea(CEGUI::URect(CEGUI::UDim(0.1f + 0.2f * static_cast<float>(i), 0),
                                             CEGUI::UDim(0.45f, 0), CEGUI::UDim(0.1f + 0.2f * static_cast<float>(i) + 0.18f, 0),
                                             CEGUI::UDim(0.55f, 0)));
                button->subscribeEvent(CEGUI::PushButton::EventClicked, [this, i](const CEGUI::EventArgs&) {
                    if (impl_->layoutChooser->getParent() != nullptr)
                        impl_->layoutChooser->getParent()->removeChild(impl_->layoutChooser);
                    ApplyLayout(static_cast<std::uint8_t>(i + 1));
                    return true;
                });
                chooser->addChild(button);
            }
            s.layoutChooser = chooser;
        }
        catch (const CEGUI::Exception& e)
        {
            rlog::Fail(std::string("The layout chooser could not be built: ") + e.what(),
                       "vexa::Engine::ToggleLayoutChooser");
            return;
        }
    }
    root->addChild(s.layoutChooser);
    s.layoutChooser->moveToFront();
}

} // namespace vexa
