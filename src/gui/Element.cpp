#include <vexa/gui/Element.h>

#include <CEGUI/Window.h>

namespace vexa::gui {

Element::Element(const CEGUI::Window* widget) : id_(widget != nullptr ? widget->getID() : 0u) {}

Element::Element(const Element& other) = default;
Element::Element(Element&& other) noexcept = default;
Element::~Element() = default;

bool Element::TestCondition() const
{
    return !condition_ || condition_();
}

void Element::SetConditionFuncImpl(std::function<bool()> condition)
{
    condition_ = std::move(condition);
}

} // namespace vexa::gui
