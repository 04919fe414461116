#pragma once
// Builds the rows of one sidebar panel. Gadgets and the built-in panels call the Add*
// operations in the order the rows are to appear; each returns the element that drives the
// new control, valid as long as the generator.
//
// Every row is a window "generated_element_<n>" (n = 0, 1, ... in creation order, also its
// window id and its element's id) holding the control "dynamic_control". A generator that
// belongs to a resource re-tests the rows' visibility conditions after every user change,
// once auto-testing is on, and tells the engine that the resource's panel changed.

#include <vexa/Export.h>
#include <vexa/ResourceId.h>
#include <vexa/gui/Elements.h>

#include <memory>
#include <string>

namespace CEGUI {
class Window;
}

namespace vexa {

class VEXA_API GuiGenerator {
public:
    /// `arrayPanel` is the panel's "DarkVexa/ArrayPanel" the rows go into; its layout is
    /// paused until SetAutoTestConditionsEnabled(true).
    explicit GuiGenerator(CEGUI::Window* arrayPanel);
    GuiGenerator(const ResourceId& id, CEGUI::Window* arrayPanel);
    virtual ~GuiGenerator();
    GuiGenerator(const GuiGenerator&) = delete;
    GuiGenerator& operator=(const GuiGenerator&) = delete;

    /// A line of text; not interactive.
    gui::Label* AddLabel(const std::string& text);
    gui::Button* AddButton(const std::string& caption);
    gui::Checkbox* AddCheckbox(const std::string& caption);
    gui::NumericInt* AddNumericInt(const std::string& label);
    gui::NumericFloat* AddNumericFloat(const std::string& label);
    gui::SlidingInt* AddSlidingInt(const std::string& label);
    gui::SlidingFloat* AddSlidingFloat(const std::string& label);
    gui::Droplist* AddDroplist(const std::string& label);
    gui::CheckboxList* AddCheckboxList();
    gui::Separator* AddSeparator();
    /// A row holding `window`, which the caller keeps owning: dropping the panel only takes
    /// the window out of it. The row is as tall as the window's absolute height, or, for a
    /// window sized relative to its parent, as tall as its children reach. Null (logged) for
    /// a null window.
    gui::HostedWindow* AddWindow(CEGUI::Window* window);

    /// Opens a group: the following rows go into it until PanelEnd. Groups do not nest:
    /// while one is open this returns null and adds nothing.
    gui::Panel* PanelBegin();
    /// Closes the open group; does nothing when none is open.
    void PanelEnd();

    /// Shows the rows whose condition holds (at their control's height) and collapses the
    /// others to zero height, then lays the panel out again.
    void TestElementConditions();
    /// Switch on after all rows are built. Re-testing after user changes needs a resource id.
    void SetAutoTestConditionsEnabled(bool enabled);

private:
    struct Impl;
    struct ElementSlot;

    void Construct(CEGUI::Window* arrayPanel);
    void OnValueChange(const gui::Element* element);

    std::unique_ptr<Impl> impl_;
};

} // namespace vexa
