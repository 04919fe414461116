#pragma once
// The column of panels along a view area's right edge: the built-in panels on top, then one
// panel per gadget of the view area, kept in ResourceId order. The selected resource's panel
// is lifted to just below the resource inspector.
//
// The view area's look may carry a rule per resource ("units"), and the sidebar honours it:
// - "gui-enabled" false: the resource is drawn, but gets no panel here. A resource without a
//   panel cannot be selected either: nothing would show the selection, nor let the user undo it.
// - "permanent": the panel has no remove button, so the user cannot take the resource out of
//   this view area; the host still can (removing or replacing the resource).
// - "select-enabled" false: the resource never becomes the selected one, neither by the user
//   (a double click on the panel header selects) nor by the host or an auto-select rule.
// - "auto-select": when the resource's gadget appears here, the resource becomes the selected
//   one; with several such resources the newest wins.
// Without a rule every resource has a removable, selectable panel and nothing is auto-selected.

#include <vexa/ResourceId.h>

#include <functional>
#include <map>
#include <memory>

namespace CEGUI {
class ScrollablePane;
class Window;
} // namespace CEGUI

namespace vexa {

class Gadget;
class GuiPanel;
class GuiResourceInspector;
class GuiStylingPanel;
class Viewarea;

class Sidebar {
public:
    /// `root` is the view area's "sidebar" window holding the "scroll_panel".
    Sidebar(Viewarea& viewarea, CEGUI::Window* root);
    ~Sidebar();
    Sidebar(const Sidebar&) = delete;
    Sidebar& operator=(const Sidebar&) = delete;

    bool IsVisible() const { return visible_; }
    void SetVisible(bool visible);
    void SetVisibilityCallback(std::function<void(bool)> callback)
    {
        visibilityCallback_ = std::move(callback);
    }
    void SetSelectionCallback(std::function<void(const ResourceId&)> callback)
    {
        selectionCallback_ = std::move(callback);
    }

    /// Makes the gadget's panel and lets the gadget fill it (once the gadget is initialised).
    void AddResourcePanel(Gadget& gadget);
    void RemoveResourcePanel(const ResourceId& id);
    /// Null when the resource has no panel here.
    GuiStylingPanel* GetResourcePanel(const ResourceId& id) const;
    std::size_t GetResourcePanelCount() const { return panels_.size(); }

    /// Highlights the resource's panel and lifts it to the top of the resource panels; an
    /// empty id clears the selection. A resource without a panel yet is highlighted once its
    /// panel comes (so a selection survives its gadget being rebuilt). Returns false (and
    /// keeps the selection) when the resource's rule forbids selecting it.
    bool SetSelectedResource(const ResourceId& id);
    /// Whether the view area's rule lets the resource have a panel / be selected.
    bool IsGuiEnabled(const ResourceId& id) const;
    bool IsSelectEnabled(const ResourceId& id) const;

    /// Rebuilding every resource panel from its gadget happens at the engine's next step, so
    /// that a gadget may ask for it from inside one of its own panel's event handlers.
    void RequestRegeneration() { regenerationRequested_ = true; }
    bool IsRegenerationRequested() const { return regenerationRequested_; }
    /// Rebuilds the panels now; each keeps its collapsed state and the selection stays.
    void Regenerate();
    const ResourceId& GetSelectedResource() const { return selected_; }

    GuiPanel& GetOptionsPanel() { return *optionsPanel_; }
    GuiResourceInspector& GetInspectorPanel() { return *inspectorPanel_; }
    /// Once per engine step: rebuilds what changed. Returns whether the sidebar needs drawing.
    bool Update();
    /// Shows the options panel on top of the column, or takes it away.
    void ToggleOptions();
    /// Adds or removes this view area's gadget of the engine's camera-animation resource,
    /// which the engine names here once it has made it.
    void ToggleVideo();
    void SetVideoResource(const ResourceId& id) { videoResource_ = id; }

    CEGUI::Window* GetRoot() const { return root_; }
    CEGUI::Window* GetColumn() const { return column_; }

private:
    void Place(GuiStylingPanel& panel);
    void Deselect(const ResourceId& id);
    void Focus(const ResourceId& id);
    /// The user picked the resource in the inspector: select it, open its panel and scroll
    /// the panel into view.
    void Pick(const ResourceId& id);

    Viewarea& viewarea_;
    CEGUI::Window* root_;
    CEGUI::ScrollablePane* scrollPane_ = nullptr;
    CEGUI::Window* column_ = nullptr;
    CEGUI::Window* toggleOptions_ = nullptr;
    CEGUI::Window* toggleVideo_ = nullptr;
    std::unique_ptr<GuiResourceInspector> inspectorPanel_;
    std::unique_ptr<GuiPanel> optionsPanel_;
    std::map<ResourceId, std::unique_ptr<GuiStylingPanel>> panels_;
    ResourceId selected_;
    ResourceId videoResource_;
    bool visible_ = false;
    bool regenerationRequested_ = false;
    std::function<void(bool)> visibilityCallback_;
    std::function<void(const ResourceId&)> selectionCallback_;
};

} // namespace vexa
