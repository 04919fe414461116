#include <vexa/gui/NumericFloat.h>

#include <CEGUI/widgets/Spinner.h>

namespace vexa::gui {

NumericFloat::NumericFloat(CEGUI::Spinner* widget) : LinkedElement(widget), widget_(widget)
{
    Connect();
}

NumericFloat::NumericFloat(const NumericFloat& other) : LinkedElement(other), widget_(other.widget_)
{
    Connect();
}

NumericFloat::NumericFloat(NumericFloat&& other) noexcept
    : LinkedElement(std::move(other)), widget_(other.widget_)
{
    Connect();
}

NumericFloat::~NumericFloat() = default;

void NumericFloat::Connect()
{
    if (widget_ == nullptr)
        return;
    widget_->subscribeEvent(CEGUI::Spinner::EventValueChanged,
                            Guard([](NumericFloat* self, const CEGUI::EventArgs&) { self->NotifyChange(); }));
}

NumericFloat* NumericFloat::Set(float value)
{
    if (widget_ != nullptr)
        widget_->setCurrentValue(static_cast<double>(value));
    return this;
}

float NumericFloat::Get() const
{
    return widget_ != nullptr ? static_cast<float>(widget_->getCurrentValue()) : 0.0f;
}

NumericFloat* NumericFloat::SetMin(float min)
{
    if (widget_ != nullptr)
        widget_->setMinimumValue(static_cast<double>(min));
    return this;
}

NumericFloat* NumericFloat::SetMax(float max)
{
    if (widget_ != nullptr)
        widget_->setMaximumValue(static_cast<double>(max));
    return this;
}

NumericFloat* NumericFloat::SetMinMax(float min, float max)
{
    SetMin(min);
    return SetMax(max);
}

NumericFloat* NumericFloat::SetStep(float step)
{
    if (widget_ != nullptr)
        widget_->setStepSize(static_cast<double>(step));
    return this;
}

float NumericFloat::GetMin() const
{
    return widget_ != nullptr ? static_cast<float>(widget_->getMinimumValue()) : 0.0f;
}

float NumericFloat::GetMax() const
{
    return widget_ != nullptr ? static_cast<float>(widget_->getMaximumValue()) : 0.0f;
}

float NumericFloat::GetStep() const
{
    return widget_ != nullptr ? static_cast<float>(widget_->getStepSize()) : 0.0f;
}

} // namespace vexa::gui
