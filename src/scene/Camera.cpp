#include <vexa/Camera.h>

#include <vexa/draw/Scene.h>
#include <vexa/draw/VisualCamera.h>

#include <runa/BinaryStream.h>
#include <runa/rlog.h>

#include <glm/glm.hpp>
#include <glm/gtc/matrix_transform.hpp>
#include <glm/gtc/quaternion.hpp>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace vexa {

namespace {

// Radians of orbit per pixel of mouse motion.
constexpr float kRotateSpeed = 0.005f;
// The tilt stops 0.01 rad short of the fixed axis' pole: looking straight along the axis
// leaves the upright roll undefined and the camera would spin.
constexpr float kPoleLimit = 1.5607963705062866f;
// Fraction of the target distance moved per pixel of dolly.
constexpr float kDollySpeed = 0.001f;
// Closest the camera gets to its target; at zero distance the view direction is lost.
constexpr float kMinZoomDistance = 0.0002f;
// Squared lengths up to this are not a direction.
constexpr float kMinAxisLengthSquared = 1.1920929e-7f;
constexpr float kUpEqualTolerance = 1.1920929e-7f;
// Below this sine of the angle between two up vectors the spherical blend divides by noise.
constexpr float kMinSlerpSine = 1e-6f;

bool IsFinite(const glm::vec3& v)
{
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

// Angle from `from` to `to` (unit vectors), positive when their cross product points along
// `axis`. NaN when either is not a direction.
float SignedAngle(const glm::vec3& from, const glm::vec3& to, const glm::vec3& axis)
{
    const float cosine = glm::dot(from, to);
    if (std::isnan(cosine))
        return cosine;
    const float angle = std::acos(std::clamp(cosine, -1.0f, 1.0f));
    return glm::dot(glm::cross(from, to), axis) < 0.0f ? -angle : angle;
}

glm::vec3 CatmullRom(const glm::vec3& p0, const glm::vec3& p1, const glm::vec3& p2, const glm::vec3& p3,
                     float t)
{
    const float t2 = t * t;
    const float t3 = t2 * t;
    return 0.5f * ((2.0f * t2 - t3 - t) * p0 + (3.0f * t3 - 5.0f * t2 + 2.0f) * p1 +
                   (4.0f * t2 - 3.0f * t3 + t) * p2 + (t3 - t2) * p3);
}

} // namespace

struct Camera::State {
    draw::Scene* scene = nullptr;
    draw::VisualCamera* visualCamera = nullptr;
    glm::vec3 target{0.0f};
    bool fixedRotationEnabled = false;
    glm::vec3 fixedRotationAxis{0.0f, 1.0f, 0.0f};
    // Only when the camera was given no scene: a detached one keeps every operation valid.
    std::unique_ptr<draw::Scene> ownScene;

    void Attach(draw::Scene* s)
    {
        scene = s;
        visualCamera = s->GetCamera();
    }

    // Copies the steering fields; a camera whose scene was private gets its own private scene
    // with the same view instead of a pointer into the other's.
    void CopyFrom(const State& other)
    {
        target = other.target;
        fixedRotationEnabled = other.fixedRotationEnabled;
        fixedRotationAxis = other.fixedRotationAxis;
        if (other.ownScene) {
            if (!ownScene)
                ownScene = std::make_unique<draw::Scene>(other.ownScene->GetViewport());
            Attach(ownScene.get());
            visualCamera->CopyView(*other.visualCamera);
        } else {
            ownScene.reset();
            scene = other.scene;
            visualCamera = other.visualCamera;
        }
    }
};

Camera::Pose::Pose() : target(0.0f), position(0.0f), up(0.0f) {}

Camera::Pose::Pose(const glm::vec3& poseTarget, const glm::vec3& posePosition, const glm::vec3& poseUp)
    : target(poseTarget), position(posePosition), up(poseUp)
{
}

glm::mat4 Camera::Pose::GetViewMatrix() const
{
    return glm::lookAt(position, target, up);
}

Camera::Camera(draw::Scene* scene) : state_(std::make_unique<State>())
{
    if (scene == nullptr) {
        rlog::Fail("No scene given; the camera steers a detached one", "vexa::Camera::Camera");
        state_->ownScene = std::make_unique<draw::Scene>();
        scene = state_->ownScene.get();
    }
    state_->Attach(scene);
    Reset();
}

Camera::Camera(const Camera& other) : state_(std::make_unique<State>())
{
    state_->CopyFrom(*other.state_);
}

Camera& Camera::operator=(const Camera& other)
{
    if (this != &other)
        state_->CopyFrom(*other.state_);
    return *this;
}

Camera::~Camera() = default;

void Camera::Reset()
{
    State& s = *state_;
    s.target = glm::vec3(0.0f);
    s.fixedRotationAxis = glm::vec3(0.0f, 1.0f, 0.0f);
    s.fixedRotationEnabled = false;
    s.visualCamera->Reset();
    s.visualCamera->SetPosition(glm::vec3(2.0f));
    s.visualCamera->LookAt(s.target, glm::vec3(0.0f, 1.0f, 0.0f));
}

draw::Scene* Camera::GetScene() const
{
    return state_->scene;
}

draw::VisualCamera* Camera::GetVisualCamera() const
{
    return state_->visualCamera;
}

glm::vec3 Camera::GetTarget() const
{
    return state_->target;
}

glm::vec3 Camera::GetPosition() const
{
    return state_->visualCamera->GetPosition();
}

glm::vec3 Camera::GetForward() const
{
    return state_->visualCamera->GetForward();
}

glm::vec3 Camera::GetRight() const
{
    return state_->visualCamera->GetRight();
}

glm::vec3 Camera::GetUp() const
{
    return state_->visualCamera->GetUp();
}

glm::mat4 Camera::GetViewMatrix() const
{
    return state_->visualCamera->GetViewMatrix();
}

void Camera::SetTarget(const glm::vec3& target)
{
    if (!IsFinite(target)) {
        rlog::Warn("Target is not finite; kept the current one", "vexa::Camera::SetTarget");
        return;
    }
    state_->target = target;
    state_->visualCamera->LookAt(target, GetUp());
    CorrectUpVectorIfRequired();
}

void Camera::SetPosition(const glm::vec3& position)
{
    state_->visualCamera->SetPosition(position);
    state_->visualCamera->LookAt(state_->target, GetUp());
    CorrectUpVectorIfRequired();
}

void Camera::SetFixedRotationAxis(const glm::vec3& axis)
{
    const float lengthSquared = glm::dot(axis, axis);
    if (!(lengthSquared > kMinAxisLengthSquared) || !std::isfinite(lengthSquared))
        return;
    state_->fixedRotationAxis = axis / std::sqrt(lengthSquared);
    CorrectUpVectorIfRequired();
}

glm::vec3 Camera::GetFixedRotationAxis() const
{
    return state_->fixedRotationAxis;
}

void Camera::SetFixedRotationEnabled(bool enabled)
{
    if (enabled == state_->fixedRotationEnabled)
        return;
    state_->fixedRotationEnabled = enabled;
    CorrectUpVectorIfRequired();
}

bool Camera::IsFixedRotationEnabled() const
{
    return state_->fixedRotationEnabled;
}

void Camera::AlignUp(const glm::vec3& up)
{
    state_->visualCamera->AlignUpVector(up);
}

void Camera::CorrectUpVectorIfRequired()
{
    if (state_->fixedRotationEnabled)
        state_->visualCamera->AlignUpVector(state_->fixedRotationAxis);
}

void Camera::ScreenRotate(const glm::vec2& from, const glm::vec2& to)
{
    State& s = *state_;
    draw::VisualCamera& camera = *s.visualCamera;
    // Earlier minus later: dragging right turns the camera left about the target, so the
    // content seems to follow the pointer.
    const float dx = (from.x - to.x) * kRotateSpeed;
    float dy = (from.y - to.y) * kRotateSpeed;

    if (!s.fixedRotationEnabled) {
        camera.Pan(dx);
    } else {
        const glm::vec3 right = camera.GetRight();
        const glm::vec3 tilted = glm::angleAxis(dy, right) * camera.GetForward();
        const glm::vec3 horizon = glm::normalize(glm::cross(s.fixedRotationAxis, right));
        if (std::abs(SignedAngle(horizon, tilted, right)) >= kPoleLimit)
            dy = 0.0f;
        camera.Rotate(glm::angleAxis(dx, s.fixedRotationAxis));
    }
    camera.Tilt(dy);
    CorrectUpVectorIfRequired();

    // The turns happened about the camera itself; putting it back on its sphere round the
    // target makes them an orbit.
    const float distance = glm::length(s.target - camera.GetPosition());
    camera.SetPosition(s.target - distance * camera.GetForward());
}

void Camera::ScreenRoll(const glm::vec2& from, const glm::vec2& to)
{
    if (state_->fixedRotationEnabled)
        return;
    const glm::ivec4& viewport = state_->scene->GetViewport();
    const glm::vec2 centre(static_cast<float>((viewport.x + viewport.z) / 2),
                           static_cast<float>((viewport.y + viewport.w) / 2));
    const glm::vec3 u = glm::normalize(glm::vec3(to - centre, 0.0f));
    const glm::vec3 v = glm::normalize(glm::vec3(from - centre, 0.0f));
    // Screen y points down, so (0, 0, -1) makes a clockwise sweep positive, which is the roll
    // that turns the picture clockwise with the pointer.
    const float angle = SignedAngle(u, v, glm::vec3(0.0f, 0.0f, -1.0f));
    if (std::isnan(angle))
        return; // a point at the very centre gives no direction
    state_->visualCamera->Roll(angle);
}

glm::vec3 Camera::MoveInProjectionSpace(const glm::vec3& point, const glm::vec2& from,
                                        const glm::vec2& to) const
{
    const draw::Scene& scene = *state_->scene;
    const draw::VisualCamera& camera = *state_->visualCamera;
    const glm::ivec4& viewport = scene.GetViewport();
    const int width = viewport.z - viewport.x;
    const int height = viewport.w - viewport.y;
    if (width <= 0 || height <= 0)
        return glm::vec3(0.0f); // a view area with no pixels cannot be dragged in
    // The motion is measured on the near plane and then scaled up by the ratio of depths,
    // thousands of times for the usual planes: in single precision the unprojected points carry
    // enough rounding to make the pan jitter by a fraction of a pixel, so this runs in double.
    const glm::dmat4 inverse =
        glm::inverse(glm::dmat4(scene.GetProjectionMatrix()) * glm::dmat4(camera.GetViewMatrix()));
    // The window point goes in as it is, scaled by the view area's size: the difference of
    // the two points, and so the direction of the pan, does not depend on where the area sits.
    const auto unproject = [&](const glm::vec2& screen) {
        const double x = static_cast<double>(screen.x);
        const double y = static_cast<double>(screen.y);
        const glm::dvec4 ndc(2.0 * x / width - 1.0, -(2.0 * y / height - 1.0), -1.0, 1.0);
        const glm::dvec4 world = inverse * ndc;
        return glm::dvec3(world) / world.w;
    };
    const glm::dvec3 a = unproject(from);
    const glm::dvec3 b = unproject(to);
    const glm::dvec3 eye(camera.GetPosition());
    const double nearDistance = glm::length(a - eye);
    if (!(nearDistance > 0.0))
        return glm::vec3(0.0f);
    return glm::vec3((b - a) * (glm::length(glm::dvec3(point) - eye) / nearDistance));
}

void Camera::ScreenMove(const glm::vec2& from, const glm::vec2& to)
{
    const glm::vec3 delta = MoveInProjectionSpace(state_->target, from, to);
    if (!IsFinite(delta))
        return;
    state_->target -= delta;
    state_->visualCamera->Move(-delta);
}

void Camera::ScreenDolly(const glm::vec2& from, const glm::vec2& to)
{
    const float distance = glm::length(GetPosition() - state_->target);
    const float step = distance * kDollySpeed * (from.y - to.y);
    if (!std::isfinite(step))
        return;
    state_->target += step * GetForward();
    state_->visualCamera->Dolly(step);
}

void Camera::Zoom(float fraction)
{
    if (!std::isfinite(fraction)) {
        rlog::Warn("Zoom fraction is not finite", "vexa::Camera::Zoom");
        return;
    }
    const glm::vec3& target = state_->target;
    const float distance = glm::length(target - GetPosition());
    const float zoomed = std::max(kMinZoomDistance, distance - distance * fraction);
    state_->visualCamera->SetPosition(target - zoomed * GetForward());
}

void Camera::CopyView(const Camera& other)
{
    if (this == &other)
        return;
    State& s = *state_;
    const State& o = *other.state_;
    s.target = o.target;
    s.fixedRotationEnabled = o.fixedRotationEnabled;
    s.fixedRotationAxis = o.fixedRotationAxis;
    s.visualCamera->CopyView(*o.visualCamera);
}

Camera::Pose Camera::GetPose() const
{
    return Pose(state_->target, GetPosition(), GetUp());
}

void Camera::SetPose(const Pose& pose)
{
    if (!IsFinite(pose.target) || !IsFinite(pose.position) || !IsFinite(pose.up)) {
        rlog::Warn("Pose is not finite; kept the current view", "vexa::Camera::SetPose");
        return;
    }
    state_->target = pose.target;
    state_->fixedRotationEnabled = false;
    state_->visualCamera->SetPosition(pose.position);
    state_->visualCamera->LookAt(pose.target, pose.up);
}

tesk::Frustum Camera::ComputeViewFrustum() const
{
    const draw::Scene& scene = *state_->scene;
    const glm::vec3 position = GetPosition();
    return tesk::Frustum(position, glm::normalize(state_->target - position), GetUp(), scene.GetNear(),
                         scene.GetFar(), scene.GetFovX(), scene.GetFovY());
}

int Camera::SubscribeChange(ChangeCallback callback)
{
    return state_->visualCamera->SubscribeChange(std::move(callback));
}

void Camera::UnsubscribeChange(int id)
{
    state_->visualCamera->UnsubscribeChange(id);
}

bool Camera::WriteToStream(std::ostream& out) const
{
    const State& s = *state_;
    if (!s.visualCamera->WriteToStream(out))
        return false;
    runa::BinaryWriter writer(out);
    writer.Write(s.target.x).Write(s.target.y).Write(s.target.z);
    writer.Write(s.fixedRotationEnabled);
    writer.Write(s.fixedRotationAxis.x).Write(s.fixedRotationAxis.y).Write(s.fixedRotationAxis.z);
    return writer.Good();
}

bool Camera::ReadFromStream(std::istream& in)
{
    static const char* const label = "vexa::Camera::ReadFromStream";
    // Everything is read into a scratch camera first so that a broken record leaves this one
    // as it was and the view changes (and notifies) only once, with the target already set.
    draw::VisualCamera view;
    view.CopyView(*state_->visualCamera);
    if (!view.ReadFromStream(in))
        return false;
    runa::BinaryReader reader(in, label);
    glm::vec3 target(0.0f);
    bool fixedRotation = false;
    glm::vec3 axis(0.0f);
    reader.Read(target.x);
    reader.Read(target.y);
    reader.Read(target.z);
    reader.Read(fixedRotation);
    reader.Read(axis.x);
    reader.Read(axis.y);
    reader.Read(axis.z);
    if (!reader.Good())
        return false;
    if (!IsFinite(target) || !IsFinite(axis)) {
        rlog::Warn("Camera record holds a non-finite target or axis; kept the current camera", label);
        return false;
    }
    State& s = *state_;
    s.target = target;
    s.fixedRotationEnabled = fixedRotation;
    s.fixedRotationAxis = axis;
    s.visualCamera->CopyView(view);
    return true;
}

Camera::Pose Interpolate(const Camera::Pose& a, const Camera::Pose& b, float t)
{
    Camera::Pose result;
    result.target = a.target + (b.target - a.target) * t;
    result.position = a.position + (b.position - a.position) * t;
    const glm::vec3 difference = a.up - b.up;
    if (std::abs(difference.x) <= kUpEqualTolerance && std::abs(difference.y) <= kUpEqualTolerance &&
        std::abs(difference.z) <= kUpEqualTolerance) {
        result.up = a.up;
    } else {
        const float theta = std::acos(std::clamp(glm::dot(a.up, b.up), -1.0f, 1.0f));
        const float sine = std::sin(theta);
        if (sine > kMinSlerpSine) {
            result.up = a.up * (std::sin((1.0f - t) * theta) / sine) + b.up * (std::sin(t * theta) / sine);
        } else {
            // Parallel or opposite ups span no arc to follow; a straight blend stays finite.
            result.up = a.up + (b.up - a.up) * t;
        }
    }
    return result;
}

Camera::Pose InterpolateCubic(const Camera::Pose& p0, const Camera::Pose& p1, const Camera::Pose& p2,
                              const Camera::Pose& p3, float t)
{
    Camera::Pose result;
    result.position = CatmullRom(p0.position, p1.position, p2.position, p3.position, t);
    result.up = CatmullRom(p0.up, p1.up, p2.up, p3.up, t);
    result.target = CatmullRom(p0.target, p1.target, p2.target, p3.target, t);
    return result;
}

} // namespace vexa
