#pragma once
// The orbiting camera of one view area. It draws nothing: it steers the visual camera of a
// drawing scene and adds what that camera does not keep, the orbit target (the point looked
// at and turned about) and an optional fixed rotation axis that keeps the camera upright.
//
// Mouse gestures arrive as two window positions in pixels, `from` (earlier) and `to` (later);
// the camera turns them into rotation, roll, pan, dolly and zoom:
// - ScreenRotate orbits the target at a constant distance, 0.005 rad per pixel. With fixed
//   rotation on, horizontal motion turns about the fixed axis and the tilt stops 0.01 rad short
//   of looking straight along it.
// - ScreenRoll turns about the view axis by the angle the pointer sweeps round the viewport
//   centre (ignored while fixed rotation is on).
// - ScreenMove pans so that the point under the pointer at the target's depth follows it.
// - ScreenDolly moves camera and target together along the view, 0.1 % of the distance per
//   pixel of vertical motion (upwards moves forward).
// - Zoom(f) moves the camera the fraction f of the way to the target, stopping 0.0002 short.
//
// The target is updated before the visual camera moves, so change subscribers always see a
// consistent camera.

#include <vexa/Export.h>

#include <tesk/Frustum.h>

#include <glm/mat4x4.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>

#include <functional>
#include <iosfwd>
#include <memory>

namespace vexa {

namespace draw {
class Scene;
class VisualCamera;
} // namespace draw

class VEXA_API Camera {
public:
    /// Snapshot of a camera for animation.
    struct VEXA_API Pose {
        glm::vec3 target;
        glm::vec3 position;
        glm::vec3 up;

        /// All zero.
        Pose();
        Pose(const glm::vec3& poseTarget, const glm::vec3& posePosition, const glm::vec3& poseUp);

        /// Right-handed look-at from `position` towards `target` with `up`.
        glm::mat4 GetViewMatrix() const;
    };

    using ChangeCallback = std::function<void()>;

    /// Steers `scene`'s visual camera and starts in the reset state. A null scene is logged and
    /// replaced by a private one, so the camera still works (it just shows nothing).
    explicit Camera(draw::Scene* scene);
    /// The copy steers the same visual camera with the same target and fixed rotation.
    Camera(const Camera& other);
    Camera& operator=(const Camera& other);
    ~Camera();

    /// At (2, 2, 2) looking at the origin with up (0, 1, 0); fixed axis (0, 1, 0), switched off.
    void Reset();

    draw::Scene* GetScene() const;
    draw::VisualCamera* GetVisualCamera() const;

    glm::vec3 GetTarget() const;
    glm::vec3 GetPosition() const;
    glm::vec3 GetForward() const;
    glm::vec3 GetRight() const;
    glm::vec3 GetUp() const;
    glm::mat4 GetViewMatrix() const;

    /// Looks at the new target from where the camera is.
    void SetTarget(const glm::vec3& target);
    /// Moves the camera and turns it back to the target.
    void SetPosition(const glm::vec3& position);

    /// Stored normalised; a (nearly) zero vector is ignored.
    void SetFixedRotationAxis(const glm::vec3& axis);
    glm::vec3 GetFixedRotationAxis() const;
    /// Switching it on turns the camera upright about the axis at once.
    void SetFixedRotationEnabled(bool enabled);
    bool IsFixedRotationEnabled() const;

    /// Turns the camera about its view axis so that its up lies towards `up`.
    void AlignUp(const glm::vec3& up);

    void ScreenRotate(const glm::vec2& from, const glm::vec2& to);
    void ScreenRoll(const glm::vec2& from, const glm::vec2& to);
    void ScreenMove(const glm::vec2& from, const glm::vec2& to);
    void ScreenDolly(const glm::vec2& from, const glm::vec2& to);
    void Zoom(float fraction);

    /// World-space motion that carries `point` from window pixel `from` to window pixel `to`:
    /// the motion between the two pixels on the near plane, scaled to the point's distance.
    glm::vec3 MoveInProjectionSpace(const glm::vec3& point, const glm::vec2& from, const glm::vec2& to) const;

    /// Takes the other camera's view, target and fixed rotation.
    void CopyView(const Camera& other);

    Pose GetPose() const;
    /// Also switches fixed rotation off: an animated pose may roll freely.
    void SetPose(const Pose& pose);

    /// What the camera sees, with the scene's clipping planes and fields of view.
    tesk::Frustum ComputeViewFrustum() const;

    /// Called after every change of the visual camera's view. Returns the subscription id
    /// (0 when `callback` is empty).
    int SubscribeChange(ChangeCallback callback);
    void UnsubscribeChange(int id);

    /// The visual camera's record, then the target (3 float32), the fixed-rotation flag (1 byte)
    /// and the fixed axis (3 float32), little-endian.
    bool WriteToStream(std::ostream& out) const;
    /// Reads a record written by WriteToStream. The values are taken as stored (no up
    /// correction); a truncated, malformed or non-finite record is logged and changes nothing.
    bool ReadFromStream(std::istream& in);

private:
    struct State;

    /// Keeps the camera upright while fixed rotation is on.
    void CorrectUpVectorIfRequired();

    std::unique_ptr<State> state_;
};

/// Linear in target and position; the up vectors are interpolated on the sphere.
VEXA_API Camera::Pose Interpolate(const Camera::Pose& a, const Camera::Pose& b, float t);

/// Catmull-Rom through four poses, running from p1 (t = 0) to p2 (t = 1).
VEXA_API Camera::Pose InterpolateCubic(const Camera::Pose& p0, const Camera::Pose& p1, const Camera::Pose& p2,
                                       const Camera::Pose& p3, float t);

} // namespace vexa
