#pragma once
// The eye of a scene: a position and an orientation, nothing else. Orbiting, targets and
// mouse gestures belong to whoever steers it; this class only offers the elementary motions
// and tells subscribers when the view changed. Plain math, usable with no GL context.
//
// Conventions
// - The orientation is a unit quaternion taking camera coordinates to world coordinates.
//   In camera coordinates the camera looks along -Z, its up is +Y and its right is +X.
// - The view matrix is right-handed and world-to-camera, exactly what glm::lookAt gives for
//   the same eye, forward and up.
// - Turns are right-handed about the camera's own axes, so all three follow the same rule:
//     Tilt(a): about right (+X): positive looks up (forward turns towards up).
//     Pan(a):  about up (+Y): counter-clockwise seen from above, positive looks left.
//     Roll(a): about the view axis, right-handed about +Z (pointing back out of the screen):
//              positive turns the camera's up towards its left, so the picture on screen
//              turns clockwise. A pointer dragged clockwise round the view centre (y down)
//              thus makes a positive angle and the picture follows it.
//   After +90 degrees: Pan: forward = old -right, right = old forward. Tilt: forward = old
//   up, up = old -forward. Roll: up = old -right, right = old up.
// - Moves and rotations given in world space (Move, Rotate) are applied as given; Dolly moves
//   the position only.
//
// Change notification
// Every operation that changes the position or the orientation bumps the revision and then
// calls each subscriber once. Operations that leave the view as it was (a zero angle, CopyView
// of an identical view, AlignUpVector on an upright camera) notify nobody. While a camera is
// notifying, further changes made to it by its own subscribers bump the revision but do not
// start a nested round, so cameras that copy each other's view stop after one round each.
// Subscribers added during a round are first called on the next change; unsubscribing during
// a round (also a subscriber removing itself) is safe and takes effect at once.

#include <glm/gtc/quaternion.hpp>
#include <glm/mat4x4.hpp>
#include <glm/vec3.hpp>

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <vector>

namespace vexa::draw {

class VisualCamera {
public:
    using ChangeCallback = std::function<void()>;

    /// Stream record version written by WriteToStream.
    static constexpr std::uint32_t kStreamVersion = 1;

    /// At the origin with the identity orientation: looking along -Z with +Y up.
    VisualCamera() = default;
    // Subscribers typically capture the camera's address, and a scene hands out pointers to
    // its camera; a copy or move would leave them dangling. Use CopyView to copy a view.
    VisualCamera(const VisualCamera&) = delete;
    VisualCamera& operator=(const VisualCamera&) = delete;

    /// Back to the origin with the identity orientation. Subscriptions are kept.
    void Reset();

    void SetPosition(const glm::vec3& position);
    const glm::vec3& GetPosition() const { return position_; }

    /// Normalised before it is stored; a non-finite or zero quaternion is refused (logged).
    void SetOrientation(const glm::quat& orientation);
    const glm::quat& GetOrientation() const { return orientation_; }

    /// Position and orientation at once, with a single notification.
    void SetView(const glm::vec3& position, const glm::quat& orientation);

    /// Unit vectors in world space.
    glm::vec3 GetForward() const;
    glm::vec3 GetRight() const;
    glm::vec3 GetUp() const;

    /// World-to-camera transform.
    glm::mat4 GetViewMatrix() const;

    /// Turns the camera to look at `target`, its up as close to `up` as the view allows.
    /// When `up` is zero or parallel to the view direction the camera takes the smallest turn
    /// from its current forward to the new one, so it keeps its roll as far as it can. When
    /// `target` is the position the orientation is kept (logged). The position never changes.
    void LookAt(const glm::vec3& target, const glm::vec3& up);

    void Pan(float angle);
    void Tilt(float angle);
    void Roll(float angle);

    /// Applies a world-space rotation to the orientation (orientation = rotation * orientation);
    /// the position stays. The rotation is normalised; a zero or non-finite one is refused.
    void Rotate(const glm::quat& rotation);

    /// World-space translation.
    void Move(const glm::vec3& delta);

    /// Moves the position along the forward direction; positive moves forward.
    void Dolly(float distance);

    /// Removes roll: keeps forward and turns the camera about it so that its up lies in the plane
    /// of forward and `up`, on the side of `up`. No change when forward is parallel to `up`.
    void AlignUpVector(const glm::vec3& up);

    /// Takes the other camera's position and orientation (exact copies).
    void CopyView(const VisualCamera& other);

    /// Registers a callback for view changes; returns its id (positive). An empty callback is
    /// refused with 0.
    int SubscribeChange(ChangeCallback callback);
    /// Unknown ids are logged and ignored.
    void UnsubscribeChange(int id);

    /// Counts the changes of position or orientation since construction; renderers compare it
    /// with the value they last drew.
    std::uint64_t GetRevision() const { return revision_; }

    /// Record: u32 version (1), position as 3 float32, orientation as w, x, y, z float32,
    /// little-endian. Returns false when the stream failed.
    bool WriteToStream(std::ostream& out) const;
    /// Reads a record written by WriteToStream. A wrong version, a truncated record or a
    /// non-finite or zero-length orientation fails (logged) and leaves the camera unchanged;
    /// a successful read notifies when the view changed.
    bool ReadFromStream(std::istream& in);

private:
    struct Subscriber {
        int id = 0; // 0 once unsubscribed during a round; removed after it
        std::shared_ptr<const ChangeCallback> callback;
    };

    /// Stores the view and notifies when it differs from the current one.
    void Apply(const glm::vec3& position, const glm::quat& orientation);
    /// Turn about a camera-space axis.
    void TurnLocal(float angle, const glm::vec3& axis, const char* label);
    void NotifyChange();

    glm::vec3 position_{0.0f};
    glm::quat orientation_{1.0f, 0.0f, 0.0f, 0.0f};
    std::uint64_t revision_ = 0;
    std::vector<Subscriber> subscribers_;
    int nextSubscriberId_ = 1;
    bool notifying_ = false;
};

} // namespace vexa::draw
