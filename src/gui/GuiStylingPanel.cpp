#include "gui/GuiStylingPanel.h"

#include <vexa/GuiGenerator.h>

#include <CEGUI/Window.h>

namespace vexa {

GuiStylingPanel::GuiStylingPanel(const ResourceId& id) : id_(id)
{
    SetTitle(id.name);
    SetFocusVisible(true);
    SetPinVisible(true);
    SetClientLayout("");
    generator_ = std::make_unique<GuiGenerator>(id_, GetClientWindow());
}

// The rows' elements go before the windows they watch.
GuiStylingPanel::~GuiStylingPanel()
{
    generator_.reset();
}

void GuiStylingPanel::SetHighlighted(bool highlighted)
{
    highlighted_ = highlighted;
    SetPinVisible(highlighted);
    GetHeader()->setProperty("Color", highlighted ? "FF435B72" : "FF5D5D5D");
}

} // namespace vexa
