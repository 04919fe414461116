#pragma once
// The pop-up with a view area's display and camera settings: ground grid plane and cell size,
// the global axes, the camera's orbit mode, the clipping planes and a camera reset. It is a
// fixed layout rather than generated rows, opens from the camera button at the top-left of
// the view area and closes itself when the pointer leaves it.

#include <glm/vec3.hpp>

#include <functional>

namespace CEGUI {
class Window;
}

namespace nubo {
class Combobox;
}

namespace vexa {

class Viewarea;

class GuiViewareaOptions {
public:
    /// Builds the (hidden) pop-up inside `parent`, the view area's window.
    GuiViewareaOptions(Viewarea& area, CEGUI::Window* parent);
    ~GuiViewareaOptions();
    GuiViewareaOptions(const GuiViewareaOptions&) = delete;
    GuiViewareaOptions& operator=(const GuiViewareaOptions&) = delete;

    /// Shows the pop-up on top with the view area's current state.
    void Open();
    /// Hides the pop-up and calls the close callback.
    void Close();
    bool IsOpen() const;
    /// Writes the view area's current state into the controls without acting on it.
    void Refresh();
    void SetCloseCallback(std::function<void()> callback) { closeCallback_ = std::move(callback); }

    CEGUI::Window* GetWindow() const { return window_; }

    /// The fixed rotation axis of a camera mode item: 1..6 are +X, -X, +Y, -Y, +Z, -Z (the
    /// negative ones with negative zeros); anything else gives (0, 0, 0).
    static glm::vec3 ModeAxis(int mode);

private:
    void OnGround();
    void OnCameraMode();
    void OnDrawAxes();
    void OnGridUnits();
    void OnNear();
    void OnFar();
    void OnReset();
    /// Every change: the view area's state is saved and the window redrawn.
    void Changed() const;

    Viewarea& area_;
    CEGUI::Window* window_ = nullptr;
    nubo::Combobox* ground_ = nullptr;
    nubo::Combobox* cameraMode_ = nullptr;
    /// False while Refresh writes into the controls, so their events change nothing.
    bool updating_ = true;
    std::function<void()> closeCallback_;
};

} // namespace vexa
