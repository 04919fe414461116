#include <plor/Window.h>

#include <plor/Gl.h>

#include "GlContext.h"
#include "WindowCallbacks.h"

#include <runa/rlog.h>

// This file makes no GL calls; the GL header GLFW would include clashes with glbinding's.
#define GLFW_INCLUDE_NONE
#include <GLFW/glfw3.h>

#include <algorithm>

namespace plor {

namespace {

bool glfwReady = false;
int liveWindows = 0;

void OnGlfwError(int code, const char* description)
{
    rlog::Fail(std::string(description ? description : "unknown error") + " (GLFW error " +
                   std::to_string(code) + ")",
               "plor::Window");
}

/// GLFW is initialised on the first window and stays so: GUI libraries keep GLFW state of
/// their own, and re-initialising between windows would only cost time.
bool EnsureGlfw()
{
    if (glfwReady)
        return true;
    glfwSetErrorCallback(OnGlfwError);
    glfwReady = glfwInit() == GLFW_TRUE;
    return glfwReady;
}

int Flag(bool value)
{
    return value ? GLFW_TRUE : GLFW_FALSE;
}

Window* FromHandle(GLFWwindow* handle)
{
    return handle ? static_cast<Window*>(glfwGetWindowUserPointer(handle)) : nullptr;
}

} // namespace

std::shared_ptr<Window> Window::Create(const WindowParams& params, const std::shared_ptr<Window>& shareWith)
{
    if (!EnsureGlfw()) {
        rlog::Fail(
            "No display: the window system could not be initialised (set DISPLAY or run under xvfb-run)",
            "plor::Window::Create");
        return nullptr;
    }
    if (params.width <= 0 || params.height <= 0) {
        rlog::Fail("Invalid window size " + std::to_string(params.width) + "x" +
                       std::to_string(params.height),
                   "plor::Window::Create");
        return nullptr;
    }

    glfwDefaultWindowHints();
    glfwWindowHint(GLFW_CLIENT_API, GLFW_OPENGL_API);
    // Drivers hand out their newest core version for a 3.3 core request.
    glfwWindowHint(GLFW_CONTEXT_VERSION_MAJOR, 3);
    glfwWindowHint(GLFW_CONTEXT_VERSION_MINOR, 3);
    glfwWindowHint(GLFW_OPENGL_PROFILE, GLFW_OPENGL_CORE_PROFILE);
    glfwWindowHint(GLFW_OPENGL_FORWARD_COMPAT, GLFW_TRUE);
    // Created hidden so that it can be placed before it appears; shown below when asked.
    glfwWindowHint(GLFW_VISIBLE, GLFW_FALSE);
    glfwWindowHint(GLFW_MAXIMIZED, Flag(params.maximized));
    glfwWindowHint(GLFW_RESIZABLE, Flag(params.resizable != 0));
    glfwWindowHint(GLFW_DECORATED, Flag(params.decorated != 0));
    glfwWindowHint(GLFW_DOUBLEBUFFER, Flag(params.doubleBuffer != 0));
    glfwWindowHint(GLFW_STENCIL_BITS, params.stencilBits);
    glfwWindowHint(GLFW_DEPTH_BITS, 24);
    glfwWindowHint(GLFW_SAMPLES, std::max(params.samples, 0));

    int width = params.width;
    int height = params.height;
    GLFWmonitor* monitor = nullptr;
    if (params.fullscreen) {
        monitor = glfwGetPrimaryMonitor();
        if (const GLFWvidmode* mode = monitor ? glfwGetVideoMode(monitor) : nullptr) {
            // The monitor's current mode avoids a mode switch.
            glfwWindowHint(GLFW_RED_BITS, mode->redBits);
            glfwWindowHint(GLFW_GREEN_BITS, mode->greenBits);
            glfwWindowHint(GLFW_BLUE_BITS, mode->blueBits);
            glfwWindowHint(GLFW_REFRESH_RATE, mode->refreshRate);
            width = mode->width;
            height = mode->height;
        } else {
            rlog::Warn("No primary monitor for a full-screen window; opening a normal window",
                       "plor::Window::Create");
            monitor = nullptr;
        }
    }

    GLFWwindow* share = shareWith ? shareWith->handle_ : nullptr;
    GLFWwindow* handle = glfwCreateWindow(width, height, params.caption.c_str(), monitor, share);
    if (!handle) {
        rlog::Fail("Could not open a window with an OpenGL 3.3 core context", "plor::Window::Create");
        return nullptr;
    }

    std::shared_ptr<Window> window(new Window());
    window->handle_ = handle;
    window->params_ = params;
    window->sharing_ = share != nullptr;
    ++liveWindows;
    glfwSetWindowUserPointer(handle, window.get());
    InstallCallbacks(handle);

    if (params.positionSet && !monitor)
        glfwSetWindowPos(handle, params.positionX, params.positionY);
    if (params.visible)
        glfwShowWindow(handle);
    return window;
}

Window::~Window()
{
    if (!handle_)
        return;
    glfwSetWindowUserPointer(handle_, nullptr);
    glfwDestroyWindow(handle_);
    handle_ = nullptr;
    // With the last context gone, the objects still waiting for deletion died with it, and
    // their names may be handed out again by a future context.
    if (--liveWindows == 0)
        detail::DiscardDeferredGlDeletes();
}

void Window::AddObserver(WindowEventObserver* observer, unsigned mask)
{
    if (!observer) {
        rlog::Warn("Ignoring a null observer", "plor::Window::AddObserver");
        return;
    }
    for (Registration& registration : observers_) {
        if (registration.observer == observer) {
            registration.mask = mask;
            return;
        }
    }
    observers_.push_back({observer, mask});
}

void Window::RemoveObserver(WindowEventObserver* observer)
{
    for (Registration& registration : observers_)
        if (registration.observer == observer)
            registration.observer = nullptr;
    if (dispatchDepth_ == 0)
        std::erase_if(observers_, [](const Registration& r) { return r.observer == nullptr; });
}

template <class F>
void Window::Dispatch(unsigned mask, F&& call)
{
    ++dispatchDepth_;
    // Observers added by a handler start with the next event; removed ones are blanked, so
    // indices stay valid even when the vector grows.
    const std::size_t count = observers_.size();
    for (std::size_t i = 0; i < count; ++i) {
        const Registration registration = observers_[i];
        if (registration.observer && (registration.mask & mask) != 0)
            call(*registration.observer);
    }
    if (--dispatchDepth_ == 0)
        std::erase_if(observers_, [](const Registration& r) { return r.observer == nullptr; });
}

void Window::InstallCallbacks(GLFWwindow* handle)
{
    glfwSetCursorPosCallback(handle, &WindowCallbacks::CursorPosition);
    glfwSetMouseButtonCallback(handle, &WindowCallbacks::MouseButton);
    glfwSetScrollCallback(handle, &WindowCallbacks::Scroll);
    glfwSetKeyCallback(handle, &WindowCallbacks::Key);
    glfwSetCharCallback(handle, &WindowCallbacks::Char);
    glfwSetDropCallback(handle, &WindowCallbacks::Drop);
    glfwSetWindowRefreshCallback(handle, &WindowCallbacks::Refresh);
    glfwSetFramebufferSizeCallback(handle, &WindowCallbacks::FramebufferSize);
    glfwSetWindowPosCallback(handle, &WindowCallbacks::Position);
    glfwSetWindowSizeCallback(handle, &WindowCallbacks::Size);
    glfwSetWindowIconifyCallback(handle, &WindowCallbacks::Iconify);
}

void WindowCallbacks::CursorPosition(GLFWwindow* handle, double x, double y)
{
    if (Window* window = FromHandle(handle))
        window->Dispatch(kMouseEvents, [&](WindowEventObserver& o) {
            o.OnMouseMove(static_cast<float>(x), static_cast<float>(y));
        });
}

void WindowCallbacks::MouseButton(GLFWwindow* handle, int button, int action, int mods)
{
    Window* window = FromHandle(handle);
    if (!window)
        return;
    const auto which = static_cast<plor::MouseButton>(button);
    const Modifiers modifiers = Modifiers::FromBits(mods);
    if (action == GLFW_PRESS)
        window->Dispatch(kMouseEvents, [&](WindowEventObserver& o) { o.OnMouseDown(which, modifiers); });
    else if (action == GLFW_RELEASE)
        window->Dispatch(kMouseEvents, [&](WindowEventObserver& o) { o.OnMouseUp(which, modifiers); });
}

void WindowCallbacks::Scroll(GLFWwindow* handle, double dx, double dy)
{
    if (Window* window = FromHandle(handle))
        window->Dispatch(kMouseEvents, [&](WindowEventObserver& o) {
            o.OnMouseWheel(static_cast<float>(dx), static_cast<float>(dy));
        });
}

void WindowCallbacks::Key(GLFWwindow* handle, int key, int /*scancode*/, int action, int mods)
{
    Window* window = FromHandle(handle);
    if (!window)
        return;
    const Modifiers modifiers = Modifiers::FromBits(mods);
    if (action == GLFW_PRESS || action == GLFW_REPEAT) {
        const bool repeat = action == GLFW_REPEAT;
        window->Dispatch(kKeyEvents, [&](WindowEventObserver& o) { o.OnKeyDown(key, modifiers, repeat); });
    } else if (action == GLFW_RELEASE) {
        window->Dispatch(kKeyEvents, [&](WindowEventObserver& o) { o.OnKeyUp(key, modifiers); });
    }
}

void WindowCallbacks::Char(GLFWwindow* handle, unsigned int codepoint)
{
    if (Window* window = FromHandle(handle))
        window->Dispatch(kKeyEvents, [&](WindowEventObserver& o) { o.OnChar(codepoint); });
}

void WindowCallbacks::Drop(GLFWwindow* handle, int count, const char** paths)
{
    Window* window = FromHandle(handle);
    if (!window || count <= 0 || !paths)
        return;
    std::vector<std::string> files;
    files.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        if (paths[i])
            files.emplace_back(paths[i]);
    window->Dispatch(kDropEvents, [&](WindowEventObserver& o) { o.OnFilesDropped(files); });
}

void WindowCallbacks::Refresh(GLFWwindow* handle)
{
    if (Window* window = FromHandle(handle))
        window->Dispatch(kWindowEvents, [](WindowEventObserver& o) { o.OnWindowRefresh(); });
}

void WindowCallbacks::FramebufferSize(GLFWwindow* handle, int width, int height)
{
    if (Window* window = FromHandle(handle))
        window->Dispatch(kWindowEvents,
                         [&](WindowEventObserver& o) { o.OnFramebufferResized(width, height); });
}

void WindowCallbacks::Position(GLFWwindow* handle, int x, int y)
{
    if (Window* window = FromHandle(handle))
        window->Dispatch(kWindowEvents, [&](WindowEventObserver& o) { o.OnWindowMoved(x, y); });
}

void WindowCallbacks::Size(GLFWwindow* handle, int width, int height)
{
    if (Window* window = FromHandle(handle))
        window->Dispatch(kWindowEvents, [&](WindowEventObserver& o) { o.OnWindowResized(width, height); });
}

void WindowCallbacks::Iconify(GLFWwindow* handle, int iconified)
{
    if (Window* window = FromHandle(handle))
        window->Dispatch(kWindowEvents,
                         [&](WindowEventObserver& o) { o.OnWindowIconified(iconified == GLFW_TRUE); });
}

void Window::MakeContextCurrent()
{
    glfwMakeContextCurrent(handle_);
    InitializeGlFunctions();
    FlushDeferredGlDeletes();
}

void Window::ReleaseContext()
{
    glfwMakeContextCurrent(nullptr);
}

bool Window::SetContextConditional()
{
    if (IsContextCurrent()) {
        madeCurrentConditionally_ = false;
        return true;
    }
    MakeContextCurrent();
    madeCurrentConditionally_ = true;
    return IsContextCurrent();
}

void Window::UnsetContextConditional()
{
    if (!madeCurrentConditionally_)
        return;
    madeCurrentConditionally_ = false;
    if (IsContextCurrent())
        ReleaseContext();
}

bool Window::IsContextCurrent() const
{
    return glfwGetCurrentContext() == handle_;
}

bool Window::IsSharingContext() const
{
    return sharing_;
}

void Window::PollEvents()
{
    if (glfwReady)
        glfwPollEvents();
}

void Window::SwapBuffers()
{
    glfwSwapBuffers(handle_);
}

bool Window::IsCloseRequested() const
{
    return glfwWindowShouldClose(handle_) == GLFW_TRUE;
}

void Window::SetCloseRequested(bool close)
{
    glfwSetWindowShouldClose(handle_, Flag(close));
}

bool Window::IsVisible() const
{
    return glfwGetWindowAttrib(handle_, GLFW_VISIBLE) == GLFW_TRUE;
}

void Window::Show()
{
    glfwShowWindow(handle_);
}

void Window::Hide()
{
    glfwHideWindow(handle_);
}

bool Window::IsIconified() const
{
    return glfwGetWindowAttrib(handle_, GLFW_ICONIFIED) == GLFW_TRUE;
}

bool Window::IsMaximized() const
{
    return glfwGetWindowAttrib(handle_, GLFW_MAXIMIZED) == GLFW_TRUE;
}

glm::ivec2 Window::GetFramebufferSize() const
{
    glm::ivec2 size(0);
    glfwGetFramebufferSize(handle_, &size.x, &size.y);
    return size;
}

glm::ivec2 Window::GetWindowSize() const
{
    glm::ivec2 size(0);
    glfwGetWindowSize(handle_, &size.x, &size.y);
    return size;
}

glm::ivec2 Window::GetPosition() const
{
    glm::ivec2 position(0);
    glfwGetWindowPos(handle_, &position.x, &position.y);
    return position;
}

glm::vec2 Window::GetCursorPosition() const
{
    double x = 0.0;
    double y = 0.0;
    glfwGetCursorPos(handle_, &x, &y);
    return {static_cast<float>(x), static_cast<float>(y)};
}

void Window::SetCaption(const std::string& caption)
{
    params_.caption = caption;
    glfwSetWindowTitle(handle_, caption.c_str());
}

void Window::SetSize(int width, int height)
{
    if (width <= 0 || height <= 0) {
        rlog::Warn("Invalid window size " + std::to_string(width) + "x" + std::to_string(height),
                   "plor::Window::SetSize");
        return;
    }
    glfwSetWindowSize(handle_, width, height);
}

int Window::GetAttribute(int attribute) const
{
    return glfwGetWindowAttrib(handle_, attribute);
}

} // namespace plor
