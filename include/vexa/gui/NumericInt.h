#pragma once
// A spinner for whole numbers; the text field accepts integers only.

#include <vexa/Export.h>
#include <vexa/gui/LinkedElement.h>

namespace CEGUI {
class Spinner;
}

namespace vexa::gui {

class VEXA_API NumericInt : public LinkedElement<int, NumericInt> {
public:
    explicit NumericInt(CEGUI::Spinner* widget);
    NumericInt(const NumericInt& other);
    NumericInt(NumericInt&& other) noexcept;
    ~NumericInt() override;

    /// Values outside the range are clamped by the spinner.
    NumericInt* Set(int value) override;
    /// The spinner's value truncated towards zero.
    int Get() const override;

    NumericInt* SetMin(int min);
    NumericInt* SetMax(int max);
    NumericInt* SetMinMax(int min, int max);
    NumericInt* SetStep(int step);
    int GetMin() const;
    int GetMax() const;
    int GetStep() const;

    CEGUI::Spinner* GetWidget() const { return widget_; }

private:
    void Connect();

    CEGUI::Spinner* widget_ = nullptr;
};

} // namespace vexa::gui
