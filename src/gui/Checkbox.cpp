#include <vexa/gui/Checkbox.h>

#include <CEGUI/widgets/ToggleButton.h>

namespace vexa::gui {

Checkbox::Checkbox(CEGUI::ToggleButton* widget) : LinkedElement(widget), widget_(widget)
{
    Connect();
}

Checkbox::Checkbox(const Checkbox& other) : LinkedElement(other), widget_(other.widget_)
{
    Connect();
}

Checkbox::Checkbox(Checkbox&& other) noexcept : LinkedElement(std::move(other)), widget_(other.widget_)
{
    Connect();
}

Checkbox::~Checkbox() = default;

void Checkbox::Connect()
{
    if (widget_ == nullptr)
        return;
    widget_->subscribeEvent(CEGUI::ToggleButton::EventSelectStateChanged,
                            Guard([](Checkbox* self, const CEGUI::EventArgs&) { self->NotifyChange(); }));
}

Checkbox* Checkbox::Set(bool checked)
{
    if (widget_ != nullptr)
        widget_->setSelected(checked);
    return this;
}

bool Checkbox::Get() const
{
    return widget_ != nullptr && widget_->isSelected();
}

} // namespace vexa::gui
