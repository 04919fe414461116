#pragma once
// A spinner for real numbers.

#include <vexa/Export.h>
#include <vexa/gui/LinkedElement.h>

namespace CEGUI {
class Spinner;
}

namespace vexa::gui {

class VEXA_API NumericFloat : public LinkedElement<float, NumericFloat> {
public:
    explicit NumericFloat(CEGUI::Spinner* widget);
    NumericFloat(const NumericFloat& other);
    NumericFloat(NumericFloat&& other) noexcept;
    ~NumericFloat() override;

    /// Values outside the range are clamped by the spinner.
    NumericFloat* Set(float value) override;
    float Get() const override;

    NumericFloat* SetMin(float min);
    NumericFloat* SetMax(float max);
    NumericFloat* SetMinMax(float min, float max);
    NumericFloat* SetStep(float step);
    float GetMin() const;
    float GetMax() const;
    float GetStep() const;

    CEGUI::Spinner* GetWidget() const { return widget_; }

private:
    void Connect();

    CEGUI::Spinner* widget_ = nullptr;
};

} // namespace vexa::gui
