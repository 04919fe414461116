#pragma once
// The top-level window and its OpenGL context, over GLFW. This header does not include any
// OpenGL header, so that GUI code which brings its own loader can use it.

#include <plor/WindowEventObserver.h>

#include <glm/vec2.hpp>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct GLFWwindow;

namespace plor {

struct WindowParams {
    int width = 640;
    int height = 480;
    std::string caption = "PLOR Window";
    std::uint8_t stencilBits = 8;
    std::uint8_t doubleBuffer = 1;
    std::uint8_t resizable = 1;
    std::uint8_t decorated = 1;
    int positionX = 100;
    int positionY = 100;
    bool maximized = false;
    bool fullscreen = false;
    /// A hidden window still has a working context; tests and off-screen tools use it.
    bool visible = true;
    /// Multisampling of the window's own framebuffer (render targets do their own).
    int samples = 0;
    /// When false the window system chooses the position.
    bool positionSet = true;
};

class Window {
public:
    /// Opens a window with an OpenGL 3.3 (or newer) core context. `shareWith` shares GL
    /// objects with another window's context. Returns null, with a logged reason, when no
    /// display or no suitable context is available.
    static std::shared_ptr<Window> Create(const WindowParams& params,
                                          const std::shared_ptr<Window>& shareWith = nullptr);
    ~Window();
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    /// Observers are not owned; remove them before they die.
    void AddObserver(WindowEventObserver* observer, unsigned mask = kAllEvents);
    void RemoveObserver(WindowEventObserver* observer);

    void MakeContextCurrent();
    /// Leaves no context current on this thread.
    void ReleaseContext();
    /// Makes this context current unless it already is, and remembers whether it did.
    /// Returns true when the context is current afterwards.
    bool SetContextConditional();
    /// Releases the context only when the matching SetContextConditional made it current.
    void UnsetContextConditional();
    bool IsContextCurrent() const;
    /// True when this window was created sharing another window's context.
    bool IsSharingContext() const;

    /// Processes pending events of all windows and calls the observers.
    static void PollEvents();
    void SwapBuffers();

    bool IsCloseRequested() const;
    void SetCloseRequested(bool close);
    bool IsVisible() const;
    void Show();
    void Hide();
    bool IsIconified() const;
    bool IsMaximized() const;

    glm::ivec2 GetFramebufferSize() const;
    glm::ivec2 GetWindowSize() const;
    glm::ivec2 GetPosition() const;
    glm::vec2 GetCursorPosition() const;
    void SetCaption(const std::string& caption);
    void SetSize(int width, int height);

    /// A raw GLFW window attribute (GLFW_VISIBLE is 0x20004).
    int GetAttribute(int attribute) const;
    GLFWwindow* GetGlfwHandle() const { return handle_; }
    const WindowParams& GetParams() const { return params_; }

private:
    friend struct WindowCallbacks;
    Window() = default;
    struct Registration {
        WindowEventObserver* observer;
        unsigned mask;
    };
    template <class F>
    void Dispatch(unsigned mask, F&& call);
    static void InstallCallbacks(GLFWwindow* handle);

    GLFWwindow* handle_ = nullptr;
    WindowParams params_;
    bool sharing_ = false;
    bool madeCurrentConditionally_ = false;
    std::vector<Registration> observers_;
    /// > 0 while observers are being called; removals then only blank their entry.
    int dispatchDepth_ = 0;
};

} // namespace plor
