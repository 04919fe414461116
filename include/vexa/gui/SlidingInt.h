#pragma once
// A slider over a whole-number range [min, max]; the thumb snaps to whole numbers while it
// is dragged and when it is let go.

#include <vexa/Export.h>
#include <vexa/gui/LinkedElement.h>

namespace CEGUI {
class Slider;
}

namespace vexa::gui {

class VEXA_API SlidingInt : public LinkedElement<int, SlidingInt> {
public:
    explicit SlidingInt(CEGUI::Slider* widget);
    SlidingInt(const SlidingInt& other);
    SlidingInt(SlidingInt&& other) noexcept;
    ~SlidingInt() override;

    /// Clamps `value` to [min, max].
    SlidingInt* Set(int value) override;
    /// The slider's position rounded to the nearest whole number.
    int Get() const override;

    /// A minimum above the current maximum is lowered to it. The shown value stays where it
    /// was when it still fits, else it moves to the new minimum.
    SlidingInt* SetMin(int min);
    /// A maximum below the minimum collapses the range onto the minimum.
    SlidingInt* SetMax(int max);
    /// SetMin(min), then SetMax(max).
    SlidingInt* SetMinMax(int min, int max);
    /// How far a click beside the thumb moves the value.
    SlidingInt* SetStep(int step);
    int GetMin() const { return min_; }
    int GetMax() const;
    int GetStep() const;

    CEGUI::Slider* GetWidget() const { return widget_; }

private:
    void Connect();
    /// The position between whole numbers while the thumb is dragged.
    float GetAsFloat() const;
    void SnapToWholeNumber();

    int min_ = 0;
    CEGUI::Slider* widget_ = nullptr;
};

} // namespace vexa::gui
