#include <vexa/CameraController.h>

#include <vexa/Camera.h>

#include <vexa/draw/Scene.h>

#include <runa/rlog.h>

#include <glm/vec2.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <deque>
#include <limits>
#include <string>

namespace vexa {

namespace {

// Sensitivity 0..1 spans rotation factors 0.2..1.8.
constexpr float kSensitivityScale = 1.5999999f;
constexpr float kSensitivityOffset = 0.2f;
// The factor of sensitivity 0.5, as close to 1 as a float below 1 gets.
constexpr float kDefaultFactor = 0.99999994f;
// Fraction of the target distance zoomed per wheel notch.
constexpr float kWheelZoom = 0.1f;
// Drags may start while the GUI's hold on the mouse is at most this.
constexpr std::uint32_t kMaxCaptureLevelForDrag = 1;

constexpr unsigned int kLeftMouse = CEGUI::LeftMouse;
constexpr unsigned int kRightMouse = CEGUI::RightMouse;
constexpr unsigned int kControl = CEGUI::Control;
constexpr unsigned int kMiddleMouse = CEGUI::MiddleMouse;

struct Binding {
    CEGUI::MouseButton button;
    unsigned int mask;
};

// Indexed by drag mode - 1, and tried in this order.
constexpr std::array<Binding, 4> kBindings = {{
    {CEGUI::LeftButton, kLeftMouse},            // rotate
    {CEGUI::MiddleButton, kMiddleMouse},        // move
    {CEGUI::LeftButton, kLeftMouse | kControl}, // roll
    {CEGUI::RightButton, kRightMouse},          // dolly
}};

// Whole pixel holding a mouse coordinate, truncated toward zero; saturated so that wild input
// cannot overflow.
int ToPixel(float coordinate)
{
    constexpr float kLimit = 1.0e9f;
    if (std::isnan(coordinate))
        return std::numeric_limits<int>::min();
    return static_cast<int>(std::clamp(coordinate, -kLimit, kLimit));
}

} // namespace

struct CameraController::State {
    struct Entry {
        std::shared_ptr<Camera> camera;
        unsigned int index = 0;
        std::shared_ptr<draw::Scene> scene;
        int subscription = 0;
    };

    // A deque keeps `active` valid while entries are appended.
    std::deque<Entry> entries;
    const Entry* active = nullptr;
    std::set<unsigned int> group;
    std::uint32_t dragMode = kDragNone;
    glm::vec2 previous{0.0f};
    glm::vec2 current{0.0f};
    float factor = kDefaultFactor;
    std::array<Binding, 4> bindings = kBindings;
    std::uint32_t captureLevel = 0;
    std::function<void()> viewChanged;
    // Set while members copy a view, so that their own change notifications do not spread it again.
    bool updatingGroup = false;

    int FindEntryUnderMouse() const
    {
        const int x = ToPixel(current.x);
        const int y = ToPixel(current.y);
        for (const Entry& entry : entries) {
            const glm::ivec4& viewport = entry.scene->GetViewport();
            if (viewport.x <= x && x < viewport.z && viewport.y <= y && y < viewport.w)
                return static_cast<int>(entry.index);
        }
        return -1;
    }
};

CameraController::CameraController() : state_(std::make_unique<State>()) {}

CameraController::~CameraController()
{
    for (const State::Entry& entry : state_->entries)
        entry.camera->UnsubscribeChange(entry.subscription);
}

void CameraController::AddScene(const std::shared_ptr<draw::Scene>& scene, std::shared_ptr<Camera> camera)
{
    if (!scene || !camera) {
        rlog::Fail(std::string("Cannot add a view area without a ") + (scene ? "camera" : "scene"),
                   "vexa::CameraController::AddScene");
        return;
    }
    State::Entry& entry = state_->entries.emplace_back();
    entry.camera = std::move(camera);
    entry.index = static_cast<unsigned int>(state_->entries.size() - 1);
    entry.scene = scene;
    const unsigned int index = entry.index;
    entry.subscription = entry.camera->SubscribeChange([this, index] { OnCameraChange(index); });
}

void CameraController::RemoveScenes(unsigned int count)
{
    State& s = *state_;
    if (count > s.entries.size()) {
        rlog::Warn("Cannot remove " + std::to_string(count) + " view areas, there are only " +
                       std::to_string(s.entries.size()) + "; removed all",
                   "vexa::CameraController::RemoveScenes");
        count = static_cast<unsigned int>(s.entries.size());
    }
    for (unsigned int i = 0; i < count; ++i) {
        const State::Entry& entry = s.entries.back();
        if (s.active == &entry) {
            s.active = nullptr;
            s.dragMode = kDragNone;
        }
        entry.camera->UnsubscribeChange(entry.subscription);
        s.entries.pop_back();
    }
}

unsigned int CameraController::GetSceneCount() const
{
    return static_cast<unsigned int>(state_->entries.size());
}

int CameraController::GetSceneUnderMouse() const
{
    return state_->FindEntryUnderMouse();
}

void CameraController::ActivateSceneUnderMouse(CEGUI::MouseButton button, unsigned int mask)
{
    State& s = *state_;
    if (s.dragMode != kDragNone || s.captureLevel > kMaxCaptureLevelForDrag)
        return;
    const int under = s.FindEntryUnderMouse();
    if (under < 0)
        return;
    for (std::size_t i = 0; i < s.bindings.size(); ++i) {
        if (s.bindings[i].button == button && s.bindings[i].mask == mask) {
            s.dragMode = static_cast<std::uint32_t>(i + 1);
            s.active = &s.entries[static_cast<std::size_t>(under)];
            return;
        }
    }
}

std::optional<unsigned int> CameraController::DeactivateArea()
{
    State& s = *state_;
    if (s.dragMode == kDragNone)
        return std::nullopt;
    s.dragMode = kDragNone;
    std::optional<unsigned int> index;
    if (s.active != nullptr)
        index = s.active->index;
    s.active = nullptr;
    return index;
}

void CameraController::InjectMouseMove(double x, double y)
{
    State& s = *state_;
    // Also without a drag, so that a drag's first move starts from where the mouse really was.
    s.previous = s.current;
    s.current = glm::vec2(static_cast<float>(x), static_cast<float>(y));
    if (s.active == nullptr || s.dragMode == kDragNone)
        return;
    // Hold the camera: a callback run by its change may remove the view area.
    const std::shared_ptr<Camera> camera = s.active->camera;
    switch (s.dragMode) {
    case kDragRotate:
        camera->ScreenRotate(s.factor * s.previous, s.factor * s.current);
        break;
    case kDragMove:
        camera->ScreenMove(s.previous, s.current);
        break;
    case kDragRoll:
        camera->ScreenRoll(s.previous, s.current);
        break;
    case kDragDolly:
        camera->ScreenDolly(s.previous, s.current);
        break;
    default:
        break;
    }
}

std::optional<unsigned int> CameraController::ZoomSceneUnderMouse(float wheel)
{
    State& s = *state_;
    if (s.dragMode != kDragNone || s.active != nullptr)
        return std::nullopt;
    const int under = s.FindEntryUnderMouse();
    if (under < 0)
        return std::nullopt;
    const std::shared_ptr<Camera> camera = s.entries[static_cast<std::size_t>(under)].camera;
    camera->Zoom(wheel * kWheelZoom);
    return static_cast<unsigned int>(under);
}

std::uint32_t CameraController::GetDragMode() const
{
    return state_->dragMode;
}

std::optional<unsigned int> CameraController::GetActiveIndex() const
{
    if (state_->active == nullptr)
        return std::nullopt;
    return state_->active->index;
}

void CameraController::SetMouseSensitivity(float sensitivity)
{
    if (!std::isfinite(sensitivity)) {
        rlog::Warn("Mouse sensitivity is not finite; kept " + std::to_string(GetCameraSensitivity()),
                   "vexa::CameraController::SetMouseSensitivity");
        return;
    }
    state_->factor = sensitivity * kSensitivityScale + kSensitivityOffset;
}

float CameraController::GetCameraSensitivity() const
{
    return (state_->factor - kSensitivityOffset) / kSensitivityScale;
}

void CameraController::SetCameraGroup(const std::set<unsigned int>& group)
{
    State& s = *state_;
    for (const unsigned int member : group) {
        if (member >= s.entries.size()) {
            rlog::Warn("Camera group member " + std::to_string(member) + " has no view area (there are " +
                           std::to_string(s.entries.size()) + "); it joins once one is added",
                       "vexa::CameraController::SetCameraGroup");
        }
    }
    s.group = group;
    if (!s.group.empty())
        UpdateGroupedCameras(*s.group.begin());
}

const std::set<unsigned int>& CameraController::GetCameraGroup() const
{
    return state_->group;
}

void CameraController::SetViewChangedCallback(std::function<void()> callback)
{
    state_->viewChanged = std::move(callback);
}

void CameraController::SetMouseCaptureLevel(std::uint32_t level)
{
    state_->captureLevel = level;
}

std::uint32_t CameraController::GetMouseCaptureLevel() const
{
    return state_->captureLevel;
}

void CameraController::OnCameraChange(unsigned int index)
{
    if (state_->viewChanged)
        state_->viewChanged();
    UpdateGroupedCameras(index);
}

void CameraController::UpdateGroupedCameras(unsigned int index)
{
    State& s = *state_;
    if (s.updatingGroup || s.group.empty() || s.group.count(index) == 0 || index >= s.entries.size())
        return;
    s.updatingGroup = true;
    struct Reset {
        bool& flag;
        ~Reset() { flag = false; }
    } reset{s.updatingGroup};

    // Copies of the source and the group: a view-changed callback may edit either.
    const std::shared_ptr<Camera> source = s.entries[index].camera;
    const std::set<unsigned int> group = s.group;
    for (const unsigned int member : group) {
        if (member == index || member >= s.entries.size())
            continue;
        s.entries[member].camera->CopyView(*source);
    }
}

} // namespace vexa
