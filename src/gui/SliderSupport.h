#pragma once
// What the two slider elements share: redrawing at once when the value moves, and telling
// every listener of the slider when a range change moved the value behind its back.

#include <CEGUI/Exceptions.h>
#include <CEGUI/GUIContext.h>
#include <CEGUI/System.h>
#include <CEGUI/widgets/Slider.h>
#include <CEGUI/widgets/Thumb.h>

#include <runa/rlog.h>

namespace vexa::gui::detail {

/// A dragged thumb moves the value many times per frame; ask for a redraw right away instead
/// of waiting for the next input event to mark the GUI dirty.
inline void MarkGuiDirty()
{
    if (CEGUI::System* system = CEGUI::System::getSingletonPtr())
        system->getDefaultGUIContext().markAsDirty();
}

/// Runs `change` on the slider with its events muted, then raises one value-changed event
/// when `valueBefore` differs from `valueAfter()`. Changing the range steps through states
/// that mean nothing to a listener (the maximum shrunk under the old minimum), so only the
/// final value is reported.
template <typename Change, typename ValueAfter, typename Value>
void ChangeRangeQuietly(CEGUI::Slider* slider, Value valueBefore, Change change, ValueAfter valueAfter)
{
    const bool wasMuted = slider->isMuted();
    slider->setMutedState(true);
    change();
    slider->setMutedState(wasMuted);
    if (valueAfter() != valueBefore) {
        CEGUI::WindowEventArgs args(slider);
        slider->fireEvent(CEGUI::Slider::EventValueChanged, args, CEGUI::Slider::EventNamespace);
    }
}

/// CEGUI divides by the slider's span to place the thumb, and a span of zero leaves the
/// thumb off its track even after the span grows again. An empty range therefore keeps a
/// span far below any step a user can make.
inline constexpr float kSmallestSpan = 1e-6f;

inline float DrawableSpan(float span)
{
    return span > kSmallestSpan ? span : kSmallestSpan;
}

/// The span the element stands for: the stand-in of an empty range reads as zero.
inline float LogicalSpan(const CEGUI::Slider* slider)
{
    const float span = slider->getMaxValue();
    return span > kSmallestSpan ? span : 0.0f;
}

/// The slider's thumb, or null (logged) when the widget look does not give it one.
inline CEGUI::Thumb* FindThumb(CEGUI::Slider* slider, const char* label)
{
    try {
        return slider->getThumb();
    } catch (const CEGUI::Exception& e) {
        rlog::Warn(std::string("The slider has no thumb to follow: ") + e.what(), label);
        return nullptr;
    }
}

} // namespace vexa::gui::detail
