#include <vexa/gui/Droplist.h>

#include <nubo/Combobox.h>

namespace vexa::gui {

Droplist::Droplist(nubo::Combobox* widget) : LinkedElement(widget), widget_(widget)
{
    Connect();
}

Droplist::Droplist(const Droplist& other) : LinkedElement(other), widget_(other.widget_)
{
    Connect();
}

Droplist::Droplist(Droplist&& other) noexcept : LinkedElement(std::move(other)), widget_(other.widget_)
{
    Connect();
}

Droplist::~Droplist() = default;

void Droplist::Connect()
{
    if (widget_ == nullptr)
        return;
    widget_->subscribeEvent(CEGUI::Combobox::EventListSelectionAccepted,
                            Guard([](Droplist* self, const CEGUI::EventArgs&) { self->NotifyChange(); }));
}

Droplist* Droplist::AddItem(const std::string& text, int value)
{
    if (widget_ != nullptr)
        widget_->AddItem(text, value);
    return this;
}

Droplist* Droplist::AddItemIndexed(const std::string& text)
{
    if (widget_ != nullptr)
        widget_->AddItem(text);
    return this;
}

Droplist* Droplist::AddItems(const std::vector<std::pair<std::string, int>>& items)
{
    for (const auto& [text, value] : items)
        AddItem(text, value);
    return this;
}

Droplist* Droplist::AddItemsIndexed(const std::vector<std::string>& texts)
{
    for (const auto& text : texts)
        AddItemIndexed(text);
    return this;
}

Droplist* Droplist::Set(int value)
{
    if (widget_ != nullptr)
        widget_->SelectByValue(value);
    return this;
}

int Droplist::Get() const
{
    if (widget_ == nullptr)
        return -1;
    return widget_->GetSelectedValue().value_or(-1);
}

std::string Droplist::GetText() const
{
    return widget_ != nullptr ? widget_->GetSelectedText() : std::string();
}

} // namespace vexa::gui
