#include "vexa/draw/VisualCamera.h"

#include <runa/BinaryStream.h>
#include <runa/rlog.h>

#include <glm/glm.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <string>

namespace vexa::draw {

namespace {

constexpr glm::vec3 kLocalRight(1.0f, 0.0f, 0.0f);
constexpr glm::vec3 kLocalUp(0.0f, 1.0f, 0.0f);
constexpr glm::vec3 kLocalBack(0.0f, 0.0f, 1.0f);

// Below this sine between two unit vectors they are taken as parallel: the cross product would
// be mostly rounding noise and the frame built from it could point anywhere.
constexpr float kParallelSine = 1e-5f;

bool IsFinite(const glm::vec3& v)
{
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

bool IsFinite(const glm::quat& q)
{
    return std::isfinite(q.w) && std::isfinite(q.x) && std::isfinite(q.y) && std::isfinite(q.z);
}

// A rotation quaternion is only usable when finite and clearly away from zero length.
bool IsUsableRotation(const glm::quat& q)
{
    return IsFinite(q) && glm::dot(q, q) > 1e-12f;
}

// Unit length for storing. A quaternion that is already unit length up to rounding is kept
// bit for bit, so that handing a camera its own orientation is not mistaken for a change.
glm::quat Unit(const glm::quat& q)
{
    const float lengthSquared = glm::dot(q, q);
    if (std::abs(lengthSquared - 1.0f) <= 4.0f * std::numeric_limits<float>::epsilon())
        return q;
    return q / std::sqrt(lengthSquared);
}

std::string ToText(const glm::vec3& v)
{
    return "(" + std::to_string(v.x) + ", " + std::to_string(v.y) + ", " + std::to_string(v.z) + ")";
}

std::string ToText(const glm::quat& q)
{
    return "(w " + std::to_string(q.w) + ", x " + std::to_string(q.x) + ", y " + std::to_string(q.y) +
           ", z " + std::to_string(q.z) + ")";
}

// Orientation whose camera looks along `forward` with up `up`; both unit length, perpendicular
// enough for a stable cross product.
glm::quat OrientationFromFrame(const glm::vec3& forward, const glm::vec3& up)
{
    const glm::vec3 right = glm::normalize(glm::cross(forward, up));
    const glm::vec3 trueUp = glm::cross(right, forward);
    return glm::normalize(glm::quat_cast(glm::mat3(right, trueUp, -forward)));
}

// Smallest rotation taking unit vector `from` onto unit vector `to`. Opposite vectors have no
// unique smallest rotation; they turn half way round `fallbackAxis` (unit, perpendicular to both).
glm::quat ShortestArc(const glm::vec3& from, const glm::vec3& to, const glm::vec3& fallbackAxis)
{
    const float cosine = glm::dot(from, to);
    if (cosine < -1.0f + 1e-6f)
        return glm::angleAxis(std::numbers::pi_v<float>, fallbackAxis);
    const glm::vec3 axis = glm::cross(from, to);
    return glm::normalize(glm::quat(1.0f + cosine, axis.x, axis.y, axis.z));
}

} // namespace

void VisualCamera::Reset()
{
    Apply(glm::vec3(0.0f), glm::quat(1.0f, 0.0f, 0.0f, 0.0f));
}

void VisualCamera::SetPosition(const glm::vec3& position)
{
    if (!IsFinite(position)) {
        rlog::Warn("Position " + ToText(position) + " is not finite; kept the current one",
                   "vexa::draw::VisualCamera::SetPosition");
        return;
    }
    Apply(position, orientation_);
}

void VisualCamera::SetOrientation(const glm::quat& orientation)
{
    if (!IsUsableRotation(orientation)) {
        rlog::Warn("Orientation " + ToText(orientation) + " is not a rotation; kept the current one",
                   "vexa::draw::VisualCamera::SetOrientation");
        return;
    }
    Apply(position_, Unit(orientation));
}

void VisualCamera::SetView(const glm::vec3& position, const glm::quat& orientation)
{
    if (!IsFinite(position) || !IsUsableRotation(orientation)) {
        rlog::Warn("View at " + ToText(position) + " with orientation " + ToText(orientation) +
                       " is not usable; kept the current one",
                   "vexa::draw::VisualCamera::SetView");
        return;
    }
    Apply(position, Unit(orientation));
}

glm::vec3 VisualCamera::GetForward() const
{
    return orientation_ * -kLocalBack;
}

glm::vec3 VisualCamera::GetRight() const
{
    return orientation_ * kLocalRight;
}

glm::vec3 VisualCamera::GetUp() const
{
    return orientation_ * kLocalUp;
}

glm::mat4 VisualCamera::GetViewMatrix() const
{
    // The inverse of the rigid camera-to-world transform: transposed rotation, rotated
    // and negated translation.
    const glm::mat3 worldToCamera = glm::transpose(glm::mat3_cast(orientation_));
    glm::mat4 view(worldToCamera);
    view[3] = glm::vec4(-(worldToCamera * position_), 1.0f);
    return view;
}

void VisualCamera::LookAt(const glm::vec3& target, const glm::vec3& up)
{
    static const char* const label = "vexa::draw::VisualCamera::LookAt";
    if (!IsFinite(target) || !IsFinite(up)) {
        rlog::Warn("Target " + ToText(target) + " or up " + ToText(up) + " is not finite", label);
        return;
    }
    const glm::vec3 offset = target - position_;
    const float distance = glm::length(offset);
    if (!(distance > 0.0f) || !std::isfinite(distance)) {
        rlog::Warn("Target " + ToText(target) + " is the camera position; kept the orientation", label);
        return;
    }
    const glm::vec3 forward = offset / distance;

    const float upLength = glm::length(up);
    if (upLength > 0.0f && std::isfinite(upLength) &&
        glm::length(glm::cross(forward, up / upLength)) > kParallelSine) {
        Apply(position_, OrientationFromFrame(forward, up / upLength));
        return;
    }
    // No usable up: turn the least possible, which keeps the roll wherever the view allows.
    const glm::quat turn = ShortestArc(GetForward(), forward, GetUp());
    Apply(position_, Unit(turn * orientation_));
}

void VisualCamera::Pan(float angle)
{
    TurnLocal(angle, kLocalUp, "vexa::draw::VisualCamera::Pan");
}

void VisualCamera::Tilt(float angle)
{
    TurnLocal(angle, kLocalRight, "vexa::draw::VisualCamera::Tilt");
}

void VisualCamera::Roll(float angle)
{
    TurnLocal(angle, kLocalBack, "vexa::draw::VisualCamera::Roll");
}

void VisualCamera::TurnLocal(float angle, const glm::vec3& axis, const char* label)
{
    if (!std::isfinite(angle)) {
        rlog::Warn("Angle " + std::to_string(angle) + " is not finite", label);
        return;
    }
    if (angle == 0.0f)
        return;
    // Right-multiplying applies the turn in camera space, i.e. about the camera's own axis.
    Apply(position_, Unit(orientation_ * glm::angleAxis(angle, axis)));
}

void VisualCamera::Rotate(const glm::quat& rotation)
{
    if (!IsUsableRotation(rotation)) {
        rlog::Warn("Rotation " + ToText(rotation) + " is not a rotation", "vexa::draw::VisualCamera::Rotate");
        return;
    }
    const glm::quat unit = Unit(rotation);
    if (unit.x == 0.0f && unit.y == 0.0f && unit.z == 0.0f)
        return; // identity: renormalising alone must not count as a change
    Apply(position_, Unit(unit * orientation_));
}

void VisualCamera::Move(const glm::vec3& delta)
{
    if (!IsFinite(delta)) {
        rlog::Warn("Translation " + ToText(delta) + " is not finite", "vexa::draw::VisualCamera::Move");
        return;
    }
    const glm::vec3 moved = position_ + delta;
    if (!IsFinite(moved)) {
        rlog::Warn("Translation " + ToText(delta) + " leaves the representable range",
                   "vexa::draw::VisualCamera::Move");
        return;
    }
    Apply(moved, orientation_);
}

void VisualCamera::Dolly(float distance)
{
    if (!std::isfinite(distance)) {
        rlog::Warn("Distance " + std::to_string(distance) + " is not finite",
                   "vexa::draw::VisualCamera::Dolly");
        return;
    }
    const glm::vec3 moved = position_ + distance * GetForward();
    if (!IsFinite(moved)) {
        rlog::Warn("Distance " + std::to_string(distance) + " leaves the representable range",
                   "vexa::draw::VisualCamera::Dolly");
        return;
    }
    Apply(moved, orientation_);
}

void VisualCamera::AlignUpVector(const glm::vec3& up)
{
    const float upLength = glm::length(up);
    if (!(upLength > 0.0f) || !std::isfinite(upLength)) {
        rlog::Warn("Up vector " + ToText(up) + " has no direction",
                   "vexa::draw::VisualCamera::AlignUpVector");
        return;
    }
    const glm::vec3 unitUp = up / upLength;
    const glm::vec3 forward = GetForward();
    if (glm::length(glm::cross(forward, unitUp)) <= kParallelSine)
        return; // every roll is equally upright when looking along the axis
    // Already upright: rebuilding the frame would only add rounding and a spurious change.
    if (std::abs(glm::dot(GetRight(), unitUp)) <= 1e-6f && glm::dot(GetUp(), unitUp) > 0.0f)
        return;
    Apply(position_, OrientationFromFrame(forward, unitUp));
}

void VisualCamera::CopyView(const VisualCamera& other)
{
    if (&other == this)
        return;
    Apply(other.position_, other.orientation_);
}

int VisualCamera::SubscribeChange(ChangeCallback callback)
{
    if (!callback) {
        rlog::Warn("Empty change callback; not subscribed", "vexa::draw::VisualCamera::SubscribeChange");
        return 0;
    }
    const int id = nextSubscriberId_++;
    subscribers_.push_back({id, std::make_shared<const ChangeCallback>(std::move(callback))});
    return id;
}

void VisualCamera::UnsubscribeChange(int id)
{
    const auto found = std::find_if(subscribers_.begin(), subscribers_.end(),
                                    [id](const Subscriber& s) { return id > 0 && s.id == id; });
    if (found == subscribers_.end()) {
        rlog::Warn("No change subscription with id " + std::to_string(id),
                   "vexa::draw::VisualCamera::UnsubscribeChange");
        return;
    }
    if (notifying_) {
        // The round in progress walks the list by index; drop the entry after it.
        found->id = 0;
        found->callback.reset();
    } else {
        subscribers_.erase(found);
    }
}

bool VisualCamera::WriteToStream(std::ostream& out) const
{
    runa::BinaryWriter writer(out);
    writer.WriteVersion(kStreamVersion);
    writer.Write(position_.x).Write(position_.y).Write(position_.z);
    writer.Write(orientation_.w).Write(orientation_.x).Write(orientation_.y).Write(orientation_.z);
    return writer.Good();
}

bool VisualCamera::ReadFromStream(std::istream& in)
{
    static const char* const label = "vexa::draw::VisualCamera::ReadFromStream";
    runa::BinaryReader reader(in, label);
    std::uint32_t version = 0;
    if (!reader.Read(version))
        return false;
    if (version != kStreamVersion) {
        rlog::Warn("Camera record version " + std::to_string(version) + " is not supported (expected " +
                       std::to_string(kStreamVersion) + ")",
                   label);
        return false;
    }
    glm::vec3 position(0.0f);
    glm::quat orientation(1.0f, 0.0f, 0.0f, 0.0f);
    reader.Read(position.x);
    reader.Read(position.y);
    reader.Read(position.z);
    reader.Read(orientation.w);
    reader.Read(orientation.x);
    reader.Read(orientation.y);
    reader.Read(orientation.z);
    if (!reader.Good())
        return false; // the reader has reported the truncation
    if (!IsFinite(position) || !IsUsableRotation(orientation)) {
        rlog::Warn("Camera record holds position " + ToText(position) + " and orientation " +
                       ToText(orientation) + ", which is not a usable view",
                   label);
        return false;
    }
    Apply(position, Unit(orientation));
    return true;
}

void VisualCamera::Apply(const glm::vec3& position, const glm::quat& orientation)
{
    if (position == position_ && orientation == orientation_)
        return;
    position_ = position;
    orientation_ = orientation;
    NotifyChange();
}

void VisualCamera::NotifyChange()
{
    ++revision_;
    if (notifying_)
        return; // the round in progress already tells every subscriber; nesting could loop
    notifying_ = true;
    struct RoundEnd {
        VisualCamera& camera;
        ~RoundEnd()
        {
            camera.notifying_ = false;
            std::erase_if(camera.subscribers_, [](const Subscriber& s) { return s.id == 0; });
        }
    } roundEnd{*this};

    // Only those subscribed when the change happened; the list may grow meanwhile, so walk by
    // index and hold the callback by its own reference while it runs.
    const std::size_t count = subscribers_.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (subscribers_[i].id == 0)
            continue;
        const std::shared_ptr<const ChangeCallback> callback = subscribers_[i].callback;
        (*callback)();
    }
}

} // namespace vexa::draw
