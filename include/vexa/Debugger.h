#pragma once
// Short-lived debug drawing for hosts: one box, one sphere, one set of line segments and one
// text line, each shown in every view area for a number of seconds, without the host making
// resources of its own. The library keeps one debugger, reachable through vexa::Debug().
//
// There is one slot per kind: a second DrawBox replaces the first box, also within one update.
//
// Lifetimes count down in the library's update, which first looks and then subtracts: a shape
// is hidden by the first update that finds its remaining lifetime below zero. So a duration of
// 0 still shows it for one more update, and a negative duration hides it at the next one.

#include <vexa/Export.h>
#include <vexa/Gadget.h>
#include <vexa/Resource.h>

#include <tesk/Color.h>
#include <tesk/geom/Aabb.h>
#include <tesk/geom/LineSegment.h>
#include <tesk/geom/Sphere.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

namespace vexa {

namespace draw {
class Renderer;
class Style;
class TextRenderer;
} // namespace draw

class VEXA_API Debugger : public Resource {
public:
    enum SlotIndex : unsigned int { BoxSlot = 0, SphereSlot = 1, LinesSlot = 2 };

    /// One kind of shape: its renderer, its style (visibility, transform, colour) and the
    /// seconds it has left.
    struct Slot {
        std::shared_ptr<draw::Renderer> renderer;
        std::shared_ptr<draw::Style> style;
        float lifetime = 0.0f;
    };

    /// The name of the library's own debugger; its type is "Debugger".
    static constexpr const char* kBuiltInName = "VEXA/Debugger";

    explicit Debugger(const std::string& name);
    ~Debugger();
    Debugger(const Debugger&) = delete;
    Debugger& operator=(const Debugger&) = delete;

    /// A solid box filling `box`.
    void DrawBox(const geom::TAabb<3, float>& box, const tesk::Color3f& color, float duration);
    void DrawSphere(const geom::TSphere<3, float>& sphere, const tesk::Color3f& color, float duration);
    void DrawLines(const std::vector<geom::LineSegment3>& lines, const tesk::Color3f& color, float duration);
    /// Shows `text` ('\n' starts a new line) at the top left of every view area.
    void LogMessage(const std::string& text, float duration);

    const Slot& GetSlot(SlotIndex index) const { return slots_[index]; }
    /// Empty when no message is shown.
    const std::string& GetMessage() const { return message_; }
    float GetMessageTime() const { return messageTime_; }

private:
    std::shared_ptr<Gadget> CreateGadget() override;
    void Update(float timeStep) override;

    void Show(Slot& slot, const tesk::Color3f& color, float duration);

    std::array<Slot, 3> slots_;
    std::string message_;
    float messageTime_ = -1.0f;
};

/// Puts the debugger's shapes into one view area's scene and prints its message there.
class VEXA_API DebuggerGadget : public Gadget {
public:
    explicit DebuggerGadget(const Debugger* debugger);
    ~DebuggerGadget() override;

    void Initialize() override;
    void RenderTexts(draw::TextRenderer& textRenderer) override;

private:
    const Debugger* debugger_;
};

/// The library's debugger. Before Initialize (and after Terminate) there is none: the failure
/// is logged as a crash and std::runtime_error is thrown.
VEXA_API Debugger& Debug();

} // namespace vexa
