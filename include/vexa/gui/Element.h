#pragma once
// The part every GUI element shares: the id of its widget (its row's position in the
// generator that made it) and the condition that decides whether its row is shown.

#include <vexa/Export.h>

#include <functional>

namespace CEGUI {
class Window;
}

namespace vexa::gui {

class VEXA_API Element {
public:
    Element(const Element& other);
    Element(Element&& other) noexcept;
    // Elements are bound to their widget for life; assigning one over another would leave
    // its event handlers on the old widget.
    Element& operator=(const Element&) = delete;
    Element& operator=(Element&&) = delete;
    ~Element();

    /// The CEGUI window id of the element's widget.
    unsigned int GetId() const { return id_; }
    /// True when no condition is set, else what the condition returns.
    bool TestCondition() const;

protected:
    /// Takes the id from `widget` (0 for null).
    explicit Element(const CEGUI::Window* widget);
    void SetConditionFuncImpl(std::function<bool()> condition);

private:
    unsigned int id_ = 0;
    std::function<bool()> condition_;
};

} // namespace vexa::gui
