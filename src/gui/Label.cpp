#include <vexa/gui/Label.h>

#include "gui/CeguiText.h"

#include <CEGUI/Window.h>

namespace vexa::gui {

Label::Label(CEGUI::Window* widget) : TElement(widget), widget_(widget) {}
Label::Label(const Label& other) = default;
Label::Label(Label&& other) noexcept = default;
Label::~Label() = default;

Label* Label::Set(const std::string& text)
{
    if (widget_ != nullptr)
        widget_->setText(ToCeguiText(text));
    return this;
}

std::string Label::Get() const
{
    return widget_ != nullptr ? FromCeguiText(widget_->getText()) : std::string();
}

} // namespace vexa::gui
