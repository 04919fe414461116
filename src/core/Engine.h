#pragma once
// The single object behind the public functions: it owns the window, the GUI, the render
// system, the view areas and the resources, starts them in a fixed order, runs one main-loop
// step per vexa::Update, routes the window's input and draws a frame only when something
// changed (unless optimised rendering is switched off).

#include "core/EngineServices.h"
#include "core/GeneralOptions.h"
#include "core/Looks.h"
#include "core/WindowManager.h"

#include <vexa/Input.h>
#include <vexa/ResourceId.h>

#include <plor/WindowEventObserver.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace plor {
class Window;
}

namespace CEGUI {
class Window;
}

namespace vexa {

class Resource;
class Viewarea;
class CameraController;
class ViewareaSettings;

class Engine : public plor::WindowEventObserver, public EngineServices {
public:
    using FileDropCallback = std::function<void(const std::vector<std::string>&)>;
    using KeyCallback = std::function<void(const Key&, const ModKeys&)>;

    Engine();
    ~Engine() override;
    /// The engine behind the public functions, or null when there is none; for the
    /// library's own tests, which inject window events into it.
    static Engine* GetCurrent();
    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    /// Starts everything; false when the asset directory is missing or the window could not
    /// be created. An empty look file means the built-in look.
    bool Initialize(const std::string& lookFile);
    void Update();
    /// Draws a frame now. While the camera moves, point clouds draw a budgeted subset unless
    /// `fullDetail` asks for everything (screenshots).
    void Render(bool fullDetail = false);
    /// A mouse drag is turning, panning or dollying a camera.
    bool IsDragging() const;
    /// Draws a frame now and writes it to `path` as PNG; false when it could not.
    bool SaveScreenshot(const std::string& path);
    void CheckGpuVersion();

    /// Returns whether the directory exists now.
    bool SetIntermediateDirectory(const std::string& path);
    bool SetAssetDirectory(const std::string& path);
    const std::string& GetAssetDirectory() const override;

    bool IsOpen() const;
    bool IsInitialized() const;

    /// Appends the resource, or replaces the one with the same id in place; raises resource
    /// added (0) or gadgets reset (1).
    void AddResource(const std::shared_ptr<Resource>& resource);
    void RemoveAllResources();
    void RemoveResourcesWithPrefix(const std::string& prefix);
    const std::vector<std::shared_ptr<Resource>>& GetResources() const;

    /// Keys of the engine's own resources, made by Initialize: the camera animation, whose
    /// panel each sidebar's "toggle_video" adds and removes, and the debugger of vexa::Debug().
    static constexpr unsigned int kCameraAnimationResource = 0;
    static constexpr unsigned int kDebuggerResource = 1;
    /// Null before Initialize.
    std::shared_ptr<Resource> GetBuiltInResource(unsigned int key) const;

    void SetFileDropCallback(FileDropCallback callback) { fileDropCallback_ = std::move(callback); }
    void SetKeyUpCallback(KeyCallback callback) { keyUpCallback_ = std::move(callback); }
    void SetKeyDownCallback(KeyCallback callback) { keyDownCallback_ = std::move(callback); }

    const std::vector<std::unique_ptr<Viewarea>>& GetViewareas() const;
    /// Releases every view area (and their scenes and gadgets).
    void ClearViewareas();
    /// Replaces the view areas by ones built from `looks` (one full-window area when empty).
    void SetViewareas(const std::vector<ViewareaLook>& looks);

    /// The view areas' state is saved at the start of the next update step.
    void MarkViewareasDirty() override;
    /// Writes every changed settings file now, also a camera that has not settled yet.
    void SaveSettings();
    ViewareaSettings& GetViewareaSettings();

    GeneralOptions& GetOptions();
    WindowManager& GetWindowManager();
    const std::shared_ptr<plor::Window>& GetWindow() const;
    bool IsRedrawRequested() const;
    bool IsLayoutChooserShown() const;
    /// The chooser's window once it was first shown; null before.
    CEGUI::Window* GetLayoutChooser() const;

    /// A short message at the bottom of the window that fades out over its last 2.5 seconds;
    /// also logged.
    void ShowNotice(const std::string& text, float seconds = 3.0f);
    /// Seconds until the notice is gone; 0 when none is shown.
    float GetNoticeCountdown() const;
    /// The render system's shaders and the engine's own programs are rebuilt at the next step,
    /// where the context is current, not from inside an input handler.
    void RequestShaderReload() override;

    // EngineServices
    void RequestRedraw() override;
    const std::string& GetIntermediateDirectory() const override;
    std::shared_ptr<Resource> FindResource(const ResourceId& id) const override;
    draw::RenderSystem* GetRenderSystem() override;
    CameraController* GetCameraController() override;
    std::vector<std::shared_ptr<draw::Light>> GetLights() const override;
    GeneralOptions& GetGeneralOptions() override { return GetOptions(); }
    void ShowLayoutChooser() override;
    std::vector<ResourceId> GetResourceIds() const override;

    // plor::WindowEventObserver
    void OnMouseMove(float x, float y) override;
    void OnMouseDown(plor::MouseButton button, const plor::Modifiers& mods) override;
    void OnMouseUp(plor::MouseButton button, const plor::Modifiers& mods) override;
    void OnMouseWheel(float dx, float dy) override;
    void OnKeyDown(int key, const plor::Modifiers& mods, bool repeat) override;
    void OnKeyUp(int key, const plor::Modifiers& mods) override;
    void OnChar(unsigned int codepoint) override;
    void OnFilesDropped(const std::vector<std::string>& paths) override;
    void OnWindowRefresh() override {}
    void OnFramebufferResized(int width, int height) override;
    /// Remembered here so that an idle step does not ask the window system every time.
    void OnWindowIconified(bool iconified) override;

    void ToggleLayoutChooser();

private:
    struct Impl;

    Viewarea* ViewareaUnderCursor() const;
    void BuildSeparatorLines();
    void ApplyLayout(std::uint8_t layout);
    /// What lies under the pointer in `area`, in the notice line and the log (a Shift + left
    /// click).
    void ReportPick(Viewarea& area);
    /// `final`: the engine goes away, so nothing waits for the camera to settle.
    void SaveDirtySettings(std::uint64_t now, bool final = false);

    FileDropCallback fileDropCallback_;
    KeyCallback keyUpCallback_;
    KeyCallback keyDownCallback_;
    std::unique_ptr<Impl> impl_;
};

} // namespace vexa
