#include <vexa/Debugger.h>

#include <vexa/draw/ProjectionParams.h>
#include <vexa/draw/TextRenderer.h>

#include <algorithm>

namespace vexa {

namespace {

// Amber on a dark outline reads over a black, a white and a busy background alike.
constexpr tesk::Color3f kMessageColor{1.0f, 0.8f, 0.25f};
constexpr tesk::Color3f kOutlineColor{0.0f, 0.0f, 0.0f};
// Along the top edge, right of the view options button in the top-left corner: the sidebar
// and its toggle sit at the right edge, the info text at the bottom.
constexpr float kLeft = 36.0f;
constexpr float kTop = 8.0f;

} // namespace

DebuggerGadget::DebuggerGadget(const Debugger* debugger) : Gadget(debugger), debugger_(debugger) {}

DebuggerGadget::~DebuggerGadget() = default;

void DebuggerGadget::Initialize()
{
    Gadget::Initialize();
    for (unsigned int i = 0; i < 3; ++i) {
        const Debugger::Slot& slot = debugger_->GetSlot(static_cast<Debugger::SlotIndex>(i));
        AddRenderer(slot.renderer, slot.style, 0);
    }
}

void DebuggerGadget::RenderTexts(draw::TextRenderer& textRenderer)
{
    const std::string& message = debugger_->GetMessage();
    if (message.empty())
        return;
    const draw::ProjectionParams projection = GetProjectionParams();
    const int height = projection.ViewportHeight();
    if (projection.ViewportWidth() <= 0 || height <= 0)
        return;
    // Readable in a small view, not shouting in a large one.
    const float size = std::clamp(static_cast<float>(height) * 0.035f, 16.0f, 24.0f);
    const float x = kLeft;
    const float y = kTop + size;
    // The renderer is shared by every gadget of every view area: leave it as it was found.
    const draw::TextAlignment alignment = textRenderer.GetAlignment();
    const tesk::Color3f color = textRenderer.GetColor();
    const float previousSize = textRenderer.GetSize();
    textRenderer.SetAlignment(draw::TextAlignment::Left);
    textRenderer.SetSize(size);
    textRenderer.SetColor(kOutlineColor);
    for (const float dx : {-1.0f, 1.0f})
        for (const float dy : {-1.0f, 1.0f})
            textRenderer.Print(message, x + dx, y + dy);
    textRenderer.SetColor(kMessageColor);
    textRenderer.Print(message, x, y);
    textRenderer.SetAlignment(alignment);
    textRenderer.SetColor(color);
    textRenderer.SetSize(previousSize);
}

} // namespace vexa
