#include <vexa/gui/NumericInt.h>

#include <CEGUI/widgets/Spinner.h>

namespace vexa::gui {

NumericInt::NumericInt(CEGUI::Spinner* widget) : LinkedElement(widget), widget_(widget)
{
    if (widget_ != nullptr)
        widget_->setTextInputMode(CEGUI::Spinner::Integer);
    Connect();
}

NumericInt::NumericInt(const NumericInt& other) : LinkedElement(other), widget_(other.widget_)
{
    Connect();
}

NumericInt::NumericInt(NumericInt&& other) noexcept : LinkedElement(std::move(other)), widget_(other.widget_)
{
    Connect();
}

NumericInt::~NumericInt() = default;

void NumericInt::Connect()
{
    if (widget_ == nullptr)
        return;
    widget_->subscribeEvent(CEGUI::Spinner::EventValueChanged,
                            Guard([](NumericInt* self, const CEGUI::EventArgs&) { self->NotifyChange(); }));
}

NumericInt* NumericInt::Set(int value)
{
    if (widget_ != nullptr)
        widget_->setCurrentValue(static_cast<double>(value));
    return this;
}

int NumericInt::Get() const
{
    return widget_ != nullptr ? static_cast<int>(widget_->getCurrentValue()) : 0;
}

NumericInt* NumericInt::SetMin(int min)
{
    if (widget_ != nullptr)
        widget_->setMinimumValue(static_cast<double>(min));
    return this;
}

NumericInt* NumericInt::SetMax(int max)
{
    if (widget_ != nullptr)
        widget_->setMaximumValue(static_cast<double>(max));
    return this;
}

NumericInt* NumericInt::SetMinMax(int min, int max)
{
    SetMin(min);
    return SetMax(max);
}

NumericInt* NumericInt::SetStep(int step)
{
    if (widget_ != nullptr)
        widget_->setStepSize(static_cast<double>(step));
    return this;
}

int NumericInt::GetMin() const
{
    return widget_ != nullptr ? static_cast<int>(widget_->getMinimumValue()) : 0;
}

int NumericInt::GetMax() const
{
    return widget_ != nullptr ? static_cast<int>(widget_->getMaximumValue()) : 0;
}

int NumericInt::GetStep() const
{
    return widget_ != nullptr ? static_cast<int>(widget_->getStepSize()) : 0;
}

} // namespace vexa::gui
