#pragma once
// The GLFW callbacks of a Window, reachable from inside the library (and from white-box tests,
// since GLFW itself cannot inject events). Each looks the Window up through the GLFW user
// pointer and routes the event to the observers whose mask asks for it.

struct GLFWwindow;

namespace plor {

struct WindowCallbacks {
    static void CursorPosition(GLFWwindow* handle, double x, double y);
    static void MouseButton(GLFWwindow* handle, int button, int action, int mods);
    static void Scroll(GLFWwindow* handle, double dx, double dy);
    static void Key(GLFWwindow* handle, int key, int scancode, int action, int mods);
    static void Char(GLFWwindow* handle, unsigned int codepoint);
    static void Drop(GLFWwindow* handle, int count, const char** paths);
    static void Refresh(GLFWwindow* handle);
    static void FramebufferSize(GLFWwindow* handle, int width, int height);
    static void Position(GLFWwindow* handle, int x, int y);
    static void Size(GLFWwindow* handle, int width, int height);
    static void Iconify(GLFWwindow* handle, int iconified);
};

} // namespace plor
