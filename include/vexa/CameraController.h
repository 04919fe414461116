#pragma once
// Turns the mouse into camera motion for every view area of a window. Each view area is added
// with its scene and camera; the index it gets (0, 1, ... in the order of AddScene) names it in
// the camera group and in the results of DeactivateArea and ZoomSceneUnderMouse.
//
// Mouse bindings. A drag starts when a button goes down over a view area and the held mouse
// buttons and keys (CEGUI system-key flags at the press) are exactly:
//   left button alone            rotate (orbit the target)
//   middle button alone          move (pan with the content under the pointer)
//   Control + left button        roll about the view axis
//   right button alone           dolly (camera and target along the view; drag up moves in)
// Any other combination starts nothing: Shift + left, Alt + left, or a press while another
// mouse button is already down, so a second button never hijacks a drag in progress.
// The wheel zooms the camera under the pointer by 10 % of the distance per notch (wheel
// delta 1), but only while no drag is on. Only rotation is scaled by the mouse sensitivity.
//
// Camera group. Cameras whose indices are in the group always show the same view: whenever one
// of them changes, the others copy its view, target and fixed rotation. A change made while the
// group is being brought in step is not passed on again, so every change spreads exactly once.
//
// Every camera change also calls the view-changed callback, which is how the window learns
// that it has to be drawn again.

#include <vexa/Export.h>

#include <CEGUI/InputEvent.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>

namespace vexa {

namespace draw {
class Scene;
} // namespace draw

class Camera;

class VEXA_API CameraController {
public:
    /// Values of GetDragMode().
    enum DragMode : std::uint32_t {
        kDragNone = 0,
        kDragRotate = 1,
        kDragMove = 2,
        kDragRoll = 3,
        kDragDolly = 4,
    };

    CameraController();
    ~CameraController();
    // The cameras' change subscriptions refer to this controller.
    CameraController(const CameraController&) = delete;
    CameraController& operator=(const CameraController&) = delete;

    /// Appends a view area. Its camera's changes now redraw the window and keep the group in
    /// step. A null scene or camera is logged and not added.
    void AddScene(const std::shared_ptr<draw::Scene>& scene, std::shared_ptr<Camera> camera);
    /// Removes the last `count` view areas (all of them when there are fewer; logged). A drag
    /// on a removed area ends.
    void RemoveScenes(unsigned int count);
    unsigned int GetSceneCount() const;

    /// Index of the first view area whose viewport holds the mouse position (truncated to whole
    /// pixels), or -1.
    int GetSceneUnderMouse() const;

    /// Starts a drag on the view area under the mouse when (button, mask) is one of the bindings
    /// above, no drag is on and the mouse capture level is 0 or 1.
    void ActivateSceneUnderMouse(CEGUI::MouseButton button, unsigned int mask);
    /// Ends the drag; returns the index of the dragged view area, or nothing when no drag was on.
    std::optional<unsigned int> DeactivateArea();
    /// Records the mouse position (window pixels) and steers the dragged camera.
    void InjectMouseMove(double x, double y);
    /// Zooms the camera under the mouse by wheel * 0.1 when no drag is on; returns its index.
    std::optional<unsigned int> ZoomSceneUnderMouse(float wheel);

    /// The current drag (DragMode) and its view area.
    std::uint32_t GetDragMode() const;
    std::optional<unsigned int> GetActiveIndex() const;

    /// Sensitivity 0..1 maps to a rotation speed factor of 0.2..1.8 (0.5 is about 1).
    void SetMouseSensitivity(float sensitivity);
    float GetCameraSensitivity() const;

    /// Replaces the group and brings all members in step with the smallest index. Indices
    /// without a view area are kept (the area may be added later) but skipped meanwhile.
    void SetCameraGroup(const std::set<unsigned int>& group);
    const std::set<unsigned int>& GetCameraGroup() const;

    /// Called after every change of any camera added here.
    void SetViewChangedCallback(std::function<void()> callback);

    /// How firmly the GUI holds the mouse: 0 it does not, 1 a pass-through layer over the view
    /// areas has it, 2 or more a widget or window owns it (a dragged slider, a modal dialog).
    /// Camera drags start only at 0 or 1. Starts at 0.
    void SetMouseCaptureLevel(std::uint32_t level);
    std::uint32_t GetMouseCaptureLevel() const;

private:
    struct State;

    void OnCameraChange(unsigned int index);
    void UpdateGroupedCameras(unsigned int index);

    std::unique_ptr<State> state_;
};

} // namespace vexa
