#include <vexa/Debugger.h>

#include <vexa/draw/GeometryName.h>
#include <vexa/draw/GeometryRenderer.h>
#include <vexa/draw/GeometryStyle.h>
#include <vexa/draw/LineFieldRenderer.h>
#include <vexa/draw/LineFieldStyle.h>

#include <runa/rlog.h>

#include <cmath>

namespace vexa {

namespace {

std::shared_ptr<draw::Style> HiddenGeometryStyle()
{
    auto style = std::make_shared<draw::GeometryStyle>();
    style->visible = false;
    return style;
}

bool IsFinite(const glm::vec3& v)
{
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

} // namespace

Debugger::Debugger(const std::string& name) : Resource(name, "Debugger")
{
    slots_[BoxSlot].renderer = std::make_shared<draw::GeometryRenderer>(draw::GeometryName::Box);
    slots_[BoxSlot].style = HiddenGeometryStyle();
    slots_[SphereSlot].renderer = std::make_shared<draw::GeometryRenderer>(draw::GeometryName::Sphere);
    slots_[SphereSlot].style = HiddenGeometryStyle();
    auto lineStyle = std::make_shared<draw::LineFieldStyle>();
    lineStyle->visible = false;
    // Debug lines often run through the content they point at.
    lineStyle->onTop = true;
    slots_[LinesSlot].renderer = std::make_shared<draw::LineFieldRenderer>();
    slots_[LinesSlot].style = std::move(lineStyle);
}

Debugger::~Debugger() = default;

void Debugger::Show(Slot& slot, const tesk::Color3f& color, float duration)
{
    slot.style->visible = true;
    slot.lifetime = duration;
    slot.style->color = color;
    // Shapes take their colour from the material; the style's colour is what the lines use.
    if (auto* geometry = dynamic_cast<draw::GeometryStyle*>(slot.style.get()))
        geometry->material.color = color;
    DrawOnNextUpdate();
}

void Debugger::DrawBox(const geom::TAabb<3, float>& box, const tesk::Color3f& color, float duration)
{
    // An empty box (min above max) or a non-finite corner would give the shape a transform the
    // renderer cannot draw, and hide the previous box for nothing.
    if (!IsFinite(box.min) || !IsFinite(box.max) || glm::any(glm::greaterThan(box.min, box.max))) {
        rlog::Warn("The box is empty or not finite; it is not drawn.", "vexa::Debugger::DrawBox");
        return;
    }
    // The box shape is the unit cube around the origin.
    const glm::vec3 extent = box.max - box.min;
    Slot& slot = slots_[BoxSlot];
    slot.style->transform =
        tesk::Transform(box.min + extent * 0.5f, glm::quat(1.0f, 0.0f, 0.0f, 0.0f), extent);
    Show(slot, color, duration);
}

void Debugger::DrawSphere(const geom::TSphere<3, float>& sphere, const tesk::Color3f& color, float duration)
{
    if (!IsFinite(sphere.center) || !std::isfinite(sphere.radius) || sphere.radius < 0.0f) {
        rlog::Warn("The sphere has a negative or non-finite radius or centre; it is not drawn.",
                   "vexa::Debugger::DrawSphere");
        return;
    }
    // The sphere shape has radius 1.
    Slot& slot = slots_[SphereSlot];
    slot.style->transform =
        tesk::Transform(sphere.center, glm::quat(1.0f, 0.0f, 0.0f, 0.0f), glm::vec3(sphere.radius));
    Show(slot, color, duration);
}

void Debugger::DrawLines(const std::vector<geom::LineSegment3>& lines, const tesk::Color3f& color,
                         float duration)
{
    Slot& slot = slots_[LinesSlot];
    static_cast<draw::LineFieldRenderer&>(*slot.renderer).SetLines(lines);
    slot.style->color = color;
    slot.lifetime = duration;
    slot.style->visible = true;
    DrawOnNextUpdate();
}

void Debugger::LogMessage(const std::string& text, float duration)
{
    message_ = text;
    messageTime_ = duration;
    DrawOnNextUpdate();
}

std::shared_ptr<Gadget> Debugger::CreateGadget()
{
    return std::make_shared<DebuggerGadget>(this);
}

void Debugger::Update(float timeStep)
{
    // Test before subtracting: whatever was drawn stays for the update that follows it, even
    // with a lifetime of zero.
    for (Slot& slot : slots_) {
        if (!slot.style->visible)
            continue;
        if (slot.lifetime < 0.0f) {
            slot.style->visible = false;
            DrawOnNextUpdate();
        } else {
            slot.lifetime -= timeStep;
        }
    }
    if (!message_.empty()) {
        if (messageTime_ < 0.0f) {
            message_.clear();
            DrawOnNextUpdate();
        } else {
            messageTime_ -= timeStep;
        }
    }
}

} // namespace vexa
