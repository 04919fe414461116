#include "gui/Sidebar.h"

#include "core/EngineServices.h"
#include "core/Viewarea.h"
#include "gui/GuiGlobalOptions.h"
#include "gui/GuiResourceBrowser.h"
#include "gui/GuiStylingPanel.h"
#include "scene/GadgetManager.h"

#include <vexa/Camera.h>
#include <vexa/Gadget.h>
#include <vexa/GuiGenerator.h>

#include <nubo/Placement.h>

#include <runa/rlog.h>

#include <CEGUI/CEGUI.h>

#include <glm/glm.hpp>

#include <algorithm>

namespace vexa {

namespace {

CEGUI::Window* FindBelow(CEGUI::Window* root, const char* name)
{
    return root == nullptr ? nullptr : root->getChildRecursive(name);
}

} // namespace

Sidebar::Sidebar(Viewarea& viewarea, CEGUI::Window* root) : viewarea_(viewarea), root_(root)
{
    inspectorPanel_ = std::make_unique<GuiResourceInspector>();
    inspectorPanel_->FollowResources(GetEngineServices().GetResourceIds());
    inspectorPanel_->SetSelectionCallback([this](const ResourceId& id) { Pick(id); });
    optionsPanel_ = std::make_unique<GuiGlobalOptions>(GetEngineServices().GetGeneralOptions());
    optionsPanel_->SetAttached(false);
    optionsPanel_->SetRemoveCallback([this] {
        if (optionsPanel_->IsAttached())
            ToggleOptions();
    });

    if (root_ == nullptr) {
        rlog::Warn("No sidebar window; the panels stay unplaced", "vexa::Sidebar::Sidebar");
        return;
    }
    visible_ = root_->isVisible();
    scrollPane_ = dynamic_cast<CEGUI::ScrollablePane*>(FindBelow(root_, "scroll_panel"));
    if (scrollPane_ == nullptr) {
        rlog::Fail("The sidebar window has no scroll pane \"scroll_panel\"", "vexa::Sidebar::Sidebar");
        return;
    }
    column_ =
        CEGUI::WindowManager::getSingleton().createWindow("VerticalLayoutContainer", "layout_container");
    scrollPane_->addChild(column_);
    for (GuiPanel* panel : {static_cast<GuiPanel*>(inspectorPanel_.get()), optionsPanel_.get()}) {
        panel->SetScrollPane(scrollPane_);
        panel->AttachTo(column_);
    }

    toggleOptions_ = FindBelow(root_, "toggle_options");
    if (toggleOptions_ != nullptr)
        toggleOptions_->subscribeEvent(CEGUI::PushButton::EventClicked, [this](const CEGUI::EventArgs&) {
            ToggleOptions();
            return true;
        });
    toggleVideo_ = FindBelow(root_, "toggle_video");
    if (toggleVideo_ != nullptr)
        toggleVideo_->subscribeEvent(CEGUI::PushButton::EventClicked, [this](const CEGUI::EventArgs&) {
            ToggleVideo();
            return true;
        });
    // A dragged slider should show its effect while dragging, not at the next frame request.
    root_->subscribeEvent(CEGUI::Slider::EventValueChanged, [](const CEGUI::EventArgs&) {
        GetEngineServices().RequestRedraw();
        return false;
    });
}

Sidebar::~Sidebar()
{
    panels_.clear();
    optionsPanel_.reset();
    inspectorPanel_.reset();
    if (column_ != nullptr && CEGUI::WindowManager::getSingletonPtr() != nullptr &&
        CEGUI::WindowManager::getSingleton().isAlive(column_))
        CEGUI::WindowManager::getSingleton().destroyWindow(column_);
}

void Sidebar::SetVisible(bool visible)
{
    if (visible == visible_)
        return;
    visible_ = visible;
    if (root_ != nullptr)
        root_->setVisible(visible);
    if (visibilityCallback_)
        visibilityCallback_(visible);
}

bool Sidebar::IsGuiEnabled(const ResourceId& id) const
{
    // The debugger has nothing to set: its panel would be an empty header in every sidebar.
    if (id.type == "Debugger")
        return false;
    const ResourceLook* rule = viewarea_.FindResourceLook(id);
    return rule == nullptr || rule->guiEnabled;
}

bool Sidebar::IsSelectEnabled(const ResourceId& id) const
{
    if (!IsGuiEnabled(id))
        return false;
    const ResourceLook* rule = viewarea_.FindResourceLook(id);
    return rule == nullptr || rule->selectEnabled;
}

void Sidebar::AddResourcePanel(Gadget& gadget)
{
    const ResourceId id = gadget.GetId();
    RemoveResourcePanel(id);
    if (!IsGuiEnabled(id))
        return;
    const ResourceLook* rule = viewarea_.FindResourceLook(id);
    auto panel = std::make_unique<GuiStylingPanel>(id);
    if (rule != nullptr && rule->permanent)
        panel->HideRemoveButton();
    panel->SetScrollPane(scrollPane_);
    if (column_ != nullptr)
        panel->AttachTo(column_);
    if (gadget.IsInitialized())
        gadget.GenerateGui(panel->GetGenerator());
    panel->GetGenerator().TestElementConditions();
    panel->GetGenerator().SetAutoTestConditionsEnabled(true);
    panel->SetHighlighted(selected_.IsValid() && selected_ == id);
    panel->SetRemoveCallback([this, id] { viewarea_.GetGadgetManager().Remove(id); });
    panel->SetPinCallback([this, id] { Deselect(id); });
    panel->GetHeader()->subscribeEvent(
        CEGUI::Window::EventMouseDoubleClick, [this, id](const CEGUI::EventArgs&) {
            if (selected_ != id && SetSelectedResource(id) && selectionCallback_)
                selectionCallback_(id);
            return true;
        });
    if (CEGUI::Window* focus = panel->GetButton("btn_focus"))
        focus->subscribeEvent(CEGUI::PushButton::EventClicked, [this, id](const CEGUI::EventArgs&) {
            Focus(id);
            return true;
        });
    GuiStylingPanel& placed = *panel;
    panels_[id] = std::move(panel);
    Place(placed);
}

void Sidebar::RemoveResourcePanel(const ResourceId& id)
{
    panels_.erase(id);
}

GuiStylingPanel* Sidebar::GetResourcePanel(const ResourceId& id) const
{
    auto it = panels_.find(id);
    return it == panels_.end() ? nullptr : it->second.get();
}

void Sidebar::Place(GuiStylingPanel& panel)
{
    auto* column = dynamic_cast<CEGUI::SequentialLayoutContainer*>(column_);
    if (column == nullptr || !column->isChild(panel.GetWindow()))
        return;
    if (panel.IsHighlighted()) {
        std::size_t position = 0;
        if (inspectorPanel_->IsAttached() && column->isChild(inspectorPanel_->GetWindow()))
            position = column->getPositionOfChild(inspectorPanel_->GetWindow()) + 1;
        column->moveChildToPosition(panel.GetWindow(), position);
    } else {
        // Below the selected panel the others keep their resources' order, wherever in that
        // order a new one comes.
        CEGUI::Window* next = nullptr;
        for (auto it = panels_.upper_bound(panel.GetResourceId()); it != panels_.end() && next == nullptr;
             ++it)
            if (!it->second->IsHighlighted() && column->isChild(it->second->GetWindow()))
                next = it->second->GetWindow();
        if (next != nullptr)
            column->moveChildToPosition(panel.GetWindow(), column->getPositionOfChild(next));
        else
            column->moveChildToPosition(panel.GetWindow(), column->getChildCount() - 1);
    }
    column->layout();
}

bool Sidebar::SetSelectedResource(const ResourceId& id)
{
    if (id.IsValid() && !IsSelectEnabled(id))
        return false;
    if (selected_.IsValid())
        if (GuiStylingPanel* previous = GetResourcePanel(selected_))
            previous->SetHighlighted(false);
    selected_ = id;
    inspectorPanel_->SetSelected(id);
    if (GuiStylingPanel* panel = GetResourcePanel(id)) {
        panel->SetHighlighted(true);
        Place(*panel);
    }
    return true;
}

bool Sidebar::Update()
{
    return inspectorPanel_->Update();
}

void Sidebar::Pick(const ResourceId& id)
{
    if (selected_ != id) {
        if (!SetSelectedResource(id))
            return;
        if (selectionCallback_)
            selectionCallback_(id);
    }
    GuiStylingPanel* panel = GetResourcePanel(id);
    if (panel == nullptr)
        return;
    panel->SetCollapsed(false);
    if (scrollPane_ == nullptr)
        return;
    // Scrolls only when the panel's head is out of sight, and then just far enough to show it
    // at the top, so the inspector the user clicked in stays put when it can.
    CEGUI::Scrollbar* scrollbar = scrollPane_->getVertScrollbar();
    const float offset = scrollbar->getScrollPosition();
    const float viewHeight = scrollPane_->getViewableArea().getHeight();
    const float top = panel->GetWindow()->getPixelPosition().d_y;
    const float shown = std::min(panel->GetExpandedHeight(), viewHeight);
    if (top < offset || top + shown > offset + viewHeight)
        scrollbar->setScrollPosition(top);
    GetEngineServices().RequestRedraw();
}

void Sidebar::Regenerate()
{
    regenerationRequested_ = false;
    std::vector<std::pair<ResourceId, bool>> shown;
    shown.reserve(panels_.size());
    for (const auto& [id, panel] : panels_)
        shown.emplace_back(id, panel->IsCollapsed());
    GadgetManager& gadgets = viewarea_.GetGadgetManager();
    for (const auto& [id, collapsed] : shown) {
        if (!gadgets.HasGadget(id)) {
            RemoveResourcePanel(id);
            continue;
        }
        AddResourcePanel(*gadgets.GetGadget(id));
        if (GuiStylingPanel* panel = GetResourcePanel(id); panel != nullptr && collapsed)
            panel->SetCollapsed(true);
    }
}

void Sidebar::Deselect(const ResourceId& id)
{
    if (GuiStylingPanel* panel = GetResourcePanel(id))
        panel->SetHighlighted(false);
    selected_ = ResourceId();
    inspectorPanel_->SetSelected(selected_);
    if (selectionCallback_)
        selectionCallback_(id);
}

void Sidebar::Focus(const ResourceId& id)
{
    viewarea_.GetGadgetManager().FocusCamera(id);
}

void Sidebar::ToggleOptions()
{
    auto* column = dynamic_cast<CEGUI::SequentialLayoutContainer*>(column_);
    if (column == nullptr)
        return;
    CEGUI::Window* window = optionsPanel_->GetWindow();
    if (optionsPanel_->IsAttached()) {
        optionsPanel_->SetAttached(false);
        if (column->isChild(window))
            column->removeChild(window);
        nubo::SetTheme(nubo::PushButtonTheme::Default, toggleOptions_);
    } else {
        optionsPanel_->SetAttached(true);
        optionsPanel_->AttachTo(column_);
        column->moveChildToPosition(window, 0);
        nubo::SetTheme(nubo::PushButtonTheme::Positive, toggleOptions_);
    }
    column->layout();
}

void Sidebar::ToggleVideo()
{
    if (!videoResource_.IsValid()) {
        rlog::Warn("No camera animation resource to show", "vexa::Sidebar::ToggleVideo");
        return;
    }
    GadgetManager& gadgets = viewarea_.GetGadgetManager();
    if (gadgets.HasGadget(videoResource_))
        gadgets.Remove(videoResource_);
    else
        gadgets.Create(videoResource_);
}

} // namespace vexa
