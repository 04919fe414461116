#include <vexa/gui/Separator.h>

#include <CEGUI/Window.h>

namespace vexa::gui {

Separator::Separator(CEGUI::Window* widget) : TElement(widget), widget_(widget) {}
Separator::Separator(const Separator& other) = default;
Separator::Separator(Separator&& other) noexcept = default;
Separator::~Separator() = default;

} // namespace vexa::gui
