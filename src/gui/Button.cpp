#include <vexa/gui/Button.h>

#include "gui/CeguiText.h"

#include <CEGUI/widgets/PushButton.h>

namespace vexa::gui {

Button::Button(CEGUI::PushButton* widget) : TElement(widget), widget_(widget)
{
    Connect();
}

Button::Button(const Button& other) : TElement(other), widget_(other.widget_)
{
    Connect();
}

Button::Button(Button&& other) noexcept : TElement(std::move(other)), widget_(other.widget_)
{
    Connect();
}

Button::~Button() = default;

void Button::Connect()
{
    if (widget_ == nullptr)
        return;
    widget_->subscribeEvent(CEGUI::PushButton::EventClicked,
                            Guard([](Button* self, const CEGUI::EventArgs&) { self->NotifyChange(); }));
}

Button* Button::SetCaption(const std::string& caption)
{
    if (widget_ != nullptr)
        widget_->setText(ToCeguiText(caption));
    return this;
}

std::string Button::GetCaption() const
{
    return widget_ != nullptr ? FromCeguiText(widget_->getText()) : std::string();
}

} // namespace vexa::gui
