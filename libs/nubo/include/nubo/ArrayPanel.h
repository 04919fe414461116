#pragma once
// A window that stacks its children vertically: padding around, a fixed spacing between
// children, child heights as they are (a zero-height child still takes its spacing). Its own
// height follows its content, so array panels nest inside each other and inside scroll panes.
//
// Layout rule, with padding p and spacing s: the first child sits at y = p, every child is
// followed by s (also the last one and those of height 0), and the panel is p + sum of
// (child height + s) + p high; an empty panel is 2p high. Only y and the panel's own height
// are set: a child left at x = 0 moves to x = p (and follows later padding changes), a
// child its creator placed elsewhere keeps its x, and no width is touched. Hidden children
// are laid out like visible ones (collapse a row by giving it height 0). Windows a look
// creates itself (auto windows) are not stacked.
//
// The settings are also CEGUI properties, for layouts: "Padding", "ElementSpacing" (floats)
// and "AutoUpdateLayout" (bool).

#include <CEGUI/Event.h>
#include <CEGUI/Window.h>

#include <utility>
#include <vector>

namespace nubo {

class ArrayPanel : public CEGUI::Window {
public:
    static const CEGUI::String WidgetTypeName; ///< "nubo/ArrayPanel"
    static const CEGUI::String EventNamespace;

    ArrayPanel(const CEGUI::String& type, const CEGUI::String& name);
    ~ArrayPanel() override;

    /// While enabled, adding, removing or resizing children re-lays the panel at once.
    /// Enabling it catches up with the changes made while it was off.
    void SetAutoUpdateLayoutEnabled(bool enabled);
    bool IsAutoUpdateLayoutEnabled() const { return autoUpdate_; }
    void SetPadding(float pixels);
    float GetPadding() const { return padding_; }
    void SetElementSpacing(float pixels);
    float GetElementSpacing() const { return spacing_; }

    /// Places every child below the previous one and sets this panel's height to
    /// padding + children + spacings + padding. A parent that is an array panel re-lays
    /// too (whatever its automatic setting: this is an explicit request).
    void UpdateLayout();
    /// Height the content needs, as UpdateLayout would set it.
    float GetContentHeight() const;

protected:
    void onChildAdded(CEGUI::ElementEventArgs& e) override;
    void onChildRemoved(CEGUI::ElementEventArgs& e) override;
    void onSized(CEGUI::ElementEventArgs& e) override;

private:
    bool ChildSized(const CEGUI::EventArgs& e);
    void DisconnectChild(const CEGUI::Element* child);
    /// Children whose placement this panel manages.
    bool IsStacked(const CEGUI::Window* child) const;

    /// Size subscriptions on the children, dropped when a child leaves.
    std::vector<std::pair<const CEGUI::Element*, CEGUI::Event::Connection>> childConnections_;
    bool autoUpdate_ = true;
    bool updating_ = false;
    float padding_ = 0.0f;
    float spacing_ = 0.0f;
    /// The padding of the last layout: children still at that x were placed by this panel.
    float laidOutPadding_ = 0.0f;
};

/// Registers the ArrayPanel, Combobox and Spinner window types with CEGUI (done by GuiSystem).
void RegisterWindowTypes();

} // namespace nubo
