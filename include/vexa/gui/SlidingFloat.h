#pragma once
// A slider over a real range [min, max]. CEGUI sliders always start at 0, so the element
// keeps the minimum itself and the slider covers the span above it.

#include <vexa/Export.h>
#include <vexa/gui/LinkedElement.h>

namespace CEGUI {
class Slider;
}

namespace vexa::gui {

class VEXA_API SlidingFloat : public LinkedElement<float, SlidingFloat> {
public:
    explicit SlidingFloat(CEGUI::Slider* widget);
    SlidingFloat(const SlidingFloat& other);
    SlidingFloat(SlidingFloat&& other) noexcept;
    ~SlidingFloat() override;

    /// Clamps `value` to [min, max].
    SlidingFloat* Set(float value) override;
    float Get() const override;

    /// A minimum above the current maximum is lowered to it. The shown value stays where it
    /// was when it still fits, else it moves to the new minimum.
    SlidingFloat* SetMin(float min);
    /// A maximum below the minimum collapses the range onto the minimum.
    SlidingFloat* SetMax(float max);
    /// SetMin(min), then SetMax(max).
    SlidingFloat* SetMinMax(float min, float max);
    /// How far a click beside the thumb moves the value.
    SlidingFloat* SetStep(float step);
    float GetMin() const { return min_; }
    float GetMax() const;
    float GetStep() const;

    CEGUI::Slider* GetWidget() const { return widget_; }

private:
    void Connect();

    float min_ = 0.0f;
    CEGUI::Slider* widget_ = nullptr;
};

} // namespace vexa::gui
