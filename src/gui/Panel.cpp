#include <vexa/gui/Panel.h>

#include <nubo/ArrayPanel.h>

namespace vexa::gui {

Panel::Panel(nubo::ArrayPanel* widget) : TElement(widget), widget_(widget) {}
Panel::Panel(const Panel& other) = default;
Panel::Panel(Panel&& other) noexcept = default;
Panel::~Panel() = default;

} // namespace vexa::gui
