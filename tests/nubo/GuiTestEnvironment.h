#pragma once
// CEGUI is a process-wide singleton: every test of this program shares one headless GUI
// system, started before the first test. Tests create their windows under its root and
// destroy them (ScopedWindow); tests that need the singleton themselves stop it and
// restart it with RestartSharedGui.

#include <nubo/GuiSystem.h>

#include <CEGUI/Window.h>
#include <CEGUI/WindowManager.h>

#include <string>

namespace nubo_test {

inline const std::string kResourceDirectory = std::string(VEXA_SOURCE_ASSET_DIR) + "resources/";

/// The shared headless GUI system.
nubo::GuiSystem& SharedGui();
/// Starts the shared system again after a test stopped it; true on success.
bool RestartSharedGui();

/// Creates a window of `type` under `parent` (the shared root by default) and destroys it
/// with the scope.
class ScopedWindow {
public:
    explicit ScopedWindow(const CEGUI::String& type, CEGUI::Window* parent = nullptr)
        : window_(CEGUI::WindowManager::getSingleton().createWindow(type))
    {
        (parent ? parent : SharedGui().GetRoot())->addChild(window_);
    }
    ~ScopedWindow() { CEGUI::WindowManager::getSingleton().destroyWindow(window_); }
    ScopedWindow(const ScopedWindow&) = delete;
    ScopedWindow& operator=(const ScopedWindow&) = delete;

    CEGUI::Window* get() const { return window_; }
    CEGUI::Window* operator->() const { return window_; }
    template <class T>
    T* As() const
    {
        return dynamic_cast<T*>(window_);
    }

private:
    CEGUI::Window* window_;
};

/// Gives `window` an absolute pixel area.
inline void Place(CEGUI::Window* window, float x, float y, float width, float height)
{
    window->setArea(CEGUI::UVector2(CEGUI::UDim(0, x), CEGUI::UDim(0, y)),
                    CEGUI::USize(CEGUI::UDim(0, width), CEGUI::UDim(0, height)));
}

} // namespace nubo_test
