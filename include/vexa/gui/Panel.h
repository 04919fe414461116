#pragma once
// A group of rows inside a sidebar panel: rows added between GuiGenerator::PanelBegin and
// PanelEnd go into it, and hiding it hides them all.

#include <vexa/Export.h>
#include <vexa/gui/TElement.h>

namespace nubo {
class ArrayPanel;
}

namespace vexa::gui {

class VEXA_API Panel : public TElement<Panel> {
public:
    explicit Panel(nubo::ArrayPanel* widget);
    Panel(const Panel& other);
    Panel(Panel&& other) noexcept;
    ~Panel() override;

    nubo::ArrayPanel* GetWidget() const { return widget_; }

private:
    nubo::ArrayPanel* widget_ = nullptr;
};

} // namespace vexa::gui
