#pragma once
// Push buttons and check boxes that take every click. CEGUI turns the second press of a quick
// pair into a double-click event instead of a press, so a button clicked twice in a row (a
// spinner's arrow, "Add" pressed twice) acted only once. These treat every further press of a
// double or triple click as a press of its own.

#include <CEGUI/widgets/PushButton.h>
#include <CEGUI/widgets/ToggleButton.h>

namespace nubo {

template <class Base>
class EveryClick : public Base {
public:
    using Base::Base;

protected:
    void onMouseDoubleClicked(CEGUI::MouseEventArgs& e) override { this->onMouseButtonDown(e); }
    void onMouseTripleClicked(CEGUI::MouseEventArgs& e) override { this->onMouseButtonDown(e); }
};

class PushButton : public EveryClick<CEGUI::PushButton> {
public:
    static const CEGUI::String WidgetTypeName; ///< "nubo/PushButton"
    using EveryClick::EveryClick;
};

class ToggleButton : public EveryClick<CEGUI::ToggleButton> {
public:
    static const CEGUI::String WidgetTypeName; ///< "nubo/ToggleButton"
    using EveryClick::EveryClick;
};

} // namespace nubo
