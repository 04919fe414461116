#include <nubo/Spinner.h>

#include <CEGUI/widgets/Editbox.h>

namespace nubo {

const CEGUI::String Spinner::WidgetTypeName("nubo/Spinner");

Spinner::Spinner(const CEGUI::String& type, const CEGUI::String& name) : CEGUI::Spinner(type, name) {}

void Spinner::initialiseComponents()
{
    CEGUI::Spinner::initialiseComponents();
    CEGUI::Editbox* editbox = getEditbox();
    editbox->subscribeEvent(CEGUI::Editbox::EventTextAccepted,
                            CEGUI::Event::Subscriber(&Spinner::ShowValue, this));
    editbox->subscribeEvent(CEGUI::Window::EventDeactivated,
                            CEGUI::Event::Subscriber(&Spinner::ShowValue, this));
}

void Spinner::onValueChanged(CEGUI::WindowEventArgs& e)
{
    if (getEditbox()->hasInputFocus()) {
        fireEvent(EventValueChanged, e, EventNamespace);
        return;
    }
    CEGUI::Spinner::onValueChanged(e);
}

bool Spinner::ShowValue(const CEGUI::EventArgs&)
{
    // The field parses back to the same value: no second value change.
    const CEGUI::String shown = getTextFromValue();
    if (getEditbox()->getText() != shown)
        getEditbox()->setText(shown);
    return true;
}

} // namespace nubo
