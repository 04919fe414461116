#include <vexa/gui/SlidingInt.h>

#include "gui/SliderSupport.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace vexa::gui {

namespace {

int ToInt(std::int64_t value)
{
    return static_cast<int>(
        std::clamp<std::int64_t>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

std::int64_t Round(float value)
{
    return std::isfinite(value) ? static_cast<std::int64_t>(std::llround(value)) : 0;
}

} // namespace

SlidingInt::SlidingInt(CEGUI::Slider* widget) : LinkedElement(widget), widget_(widget)
{
    Connect();
}

SlidingInt::SlidingInt(const SlidingInt& other)
    : LinkedElement(other), min_(other.min_), widget_(other.widget_)
{
    Connect();
}

SlidingInt::SlidingInt(SlidingInt&& other) noexcept
    : LinkedElement(std::move(other)), min_(other.min_), widget_(other.widget_)
{
    Connect();
}

SlidingInt::~SlidingInt() = default;

void SlidingInt::Connect()
{
    if (widget_ == nullptr)
        return;
    widget_->subscribeEvent(CEGUI::Slider::EventValueChanged,
                            Guard([](SlidingInt* self, const CEGUI::EventArgs&) {
                                detail::MarkGuiDirty();
                                self->NotifyChange();
                            }));
    auto snap = Guard([](SlidingInt* self, const CEGUI::EventArgs&) { self->SnapToWholeNumber(); });
    widget_->subscribeEvent(CEGUI::Slider::EventThumbTrackEnded, snap);
    // The slider follows its thumb through its own handler, subscribed when the slider was
    // made; this one comes after it and sees the value the thumb just gave.
    if (CEGUI::Thumb* thumb = detail::FindThumb(widget_, "vexa::gui::SlidingInt::Connect"))
        thumb->subscribeEvent(CEGUI::Thumb::EventThumbPositionChanged, snap);
}

void SlidingInt::SnapToWholeNumber()
{
    Set(ToInt(Round(GetAsFloat())));
}

float SlidingInt::GetAsFloat() const
{
    return widget_ != nullptr ? static_cast<float>(min_) + widget_->getCurrentValue()
                              : static_cast<float>(min_);
}

SlidingInt* SlidingInt::Set(int value)
{
    if (widget_ == nullptr)
        return this;
    const std::int64_t upper = static_cast<std::int64_t>(min_) + Round(widget_->getMaxValue());
    const std::int64_t clamped = std::max<std::int64_t>(min_, std::min<std::int64_t>(value, upper));
    widget_->setCurrentValue(static_cast<float>(clamped - min_));
    return this;
}

int SlidingInt::Get() const
{
    return widget_ != nullptr ? ToInt(Round(widget_->getCurrentValue()) + min_) : min_;
}

SlidingInt* SlidingInt::SetMin(int min)
{
    if (widget_ == nullptr) {
        min_ = min;
        return this;
    }
    const std::int64_t upper = static_cast<std::int64_t>(min_) + Round(widget_->getMaxValue());
    const std::int64_t newMin = std::min<std::int64_t>(min, upper);
    const int shown = Get();
    detail::ChangeRangeQuietly(
        widget_, shown,
        [&] {
            widget_->setMaxValue(detail::DrawableSpan(static_cast<float>(upper - newMin)));
            widget_->setCurrentValue(static_cast<float>(shown - newMin));
            min_ = static_cast<int>(newMin);
        },
        [this] { return Get(); });
    return this;
}

SlidingInt* SlidingInt::SetMax(int max)
{
    if (widget_ != nullptr)
        widget_->setMaxValue(
            detail::DrawableSpan(static_cast<float>(static_cast<std::int64_t>(std::max(min_, max)) - min_)));
    return this;
}

SlidingInt* SlidingInt::SetMinMax(int min, int max)
{
    SetMin(min);
    return SetMax(max);
}

SlidingInt* SlidingInt::SetStep(int step)
{
    if (widget_ != nullptr)
        widget_->setClickStep(static_cast<float>(step));
    return this;
}

int SlidingInt::GetMax() const
{
    return widget_ != nullptr ? ToInt(static_cast<std::int64_t>(min_) + Round(widget_->getMaxValue())) : min_;
}

int SlidingInt::GetStep() const
{
    return widget_ != nullptr ? ToInt(Round(widget_->getClickStep())) : 0;
}

} // namespace vexa::gui
