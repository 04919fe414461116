#include <vexa/gui/SlidingFloat.h>

#include "gui/SliderSupport.h"

#include <runa/rlog.h>

#include <algorithm>
#include <cmath>

namespace vexa::gui {

SlidingFloat::SlidingFloat(CEGUI::Slider* widget) : LinkedElement(widget), widget_(widget)
{
    Connect();
}

SlidingFloat::SlidingFloat(const SlidingFloat& other)
    : LinkedElement(other), min_(other.min_), widget_(other.widget_)
{
    Connect();
}

SlidingFloat::SlidingFloat(SlidingFloat&& other) noexcept
    : LinkedElement(std::move(other)), min_(other.min_), widget_(other.widget_)
{
    Connect();
}

SlidingFloat::~SlidingFloat() = default;

void SlidingFloat::Connect()
{
    if (widget_ == nullptr)
        return;
    widget_->subscribeEvent(CEGUI::Slider::EventValueChanged,
                            Guard([](SlidingFloat* self, const CEGUI::EventArgs&) {
                                detail::MarkGuiDirty();
                                self->NotifyChange();
                            }));
}

SlidingFloat* SlidingFloat::Set(float value)
{
    if (widget_ == nullptr)
        return this;
    const float upper = min_ + detail::LogicalSpan(widget_);
    // max(min, min(v, upper)) rather than std::clamp: a NaN lands on the minimum.
    value = std::max(min_, std::min(value, upper));
    widget_->setCurrentValue(value - min_);
    return this;
}

float SlidingFloat::Get() const
{
    return widget_ != nullptr ? widget_->getCurrentValue() + min_ : min_;
}

SlidingFloat* SlidingFloat::SetMin(float min)
{
    if (!std::isfinite(min)) {
        rlog::Warn("The minimum must be a finite number, the range stays as it was",
                   "vexa::gui::SlidingFloat::SetMin");
        return this;
    }
    if (widget_ == nullptr) {
        min_ = min;
        return this;
    }
    const float upper = min_ + detail::LogicalSpan(widget_);
    min = std::min(min, upper);
    const float shown = Get();
    detail::ChangeRangeQuietly(
        widget_, shown,
        [&] {
            widget_->setMaxValue(detail::DrawableSpan(upper - min));
            widget_->setCurrentValue(shown - min);
            min_ = min;
        },
        [this] { return Get(); });
    return this;
}

SlidingFloat* SlidingFloat::SetMax(float max)
{
    if (!std::isfinite(max)) {
        rlog::Warn("The maximum must be a finite number, the range stays as it was",
                   "vexa::gui::SlidingFloat::SetMax");
        return this;
    }
    if (widget_ != nullptr)
        widget_->setMaxValue(detail::DrawableSpan(std::max(min_, max) - min_));
    return this;
}

SlidingFloat* SlidingFloat::SetMinMax(float min, float max)
{
    SetMin(min);
    return SetMax(max);
}

SlidingFloat* SlidingFloat::SetStep(float step)
{
    if (widget_ != nullptr)
        widget_->setClickStep(step);
    return this;
}

float SlidingFloat::GetMax() const
{
    return widget_ != nullptr ? min_ + detail::LogicalSpan(widget_) : min_;
}

float SlidingFloat::GetStep() const
{
    return widget_ != nullptr ? widget_->getClickStep() : 0.0f;
}

} // namespace vexa::gui
