#include <nubo/ArrayPanel.h>

#include <nubo/Buttons.h>
#include <nubo/Combobox.h>
#include <nubo/Spinner.h>

#include <runa/rlog.h>

#include <CEGUI/TplWindowFactory.h>
#include <CEGUI/TplWindowProperty.h>
#include <CEGUI/WindowFactoryManager.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace nubo {

const CEGUI::String ArrayPanel::WidgetTypeName("nubo/ArrayPanel");
const CEGUI::String ArrayPanel::EventNamespace("ArrayPanel");

namespace {

bool IsValidLength(float pixels)
{
    return std::isfinite(pixels) && pixels >= 0.0f;
}

} // namespace

ArrayPanel::ArrayPanel(const CEGUI::String& type, const CEGUI::String& name) : CEGUI::Window(type, name)
{
    const CEGUI::String propertyOrigin = WidgetTypeName;
    CEGUI_DEFINE_PROPERTY(ArrayPanel, float, "Padding", "Space in pixels around the stacked children.",
                          &ArrayPanel::SetPadding, &ArrayPanel::GetPadding, 0.0f);
    CEGUI_DEFINE_PROPERTY(ArrayPanel, float, "ElementSpacing", "Space in pixels after every stacked child.",
                          &ArrayPanel::SetElementSpacing, &ArrayPanel::GetElementSpacing, 0.0f);
    CEGUI_DEFINE_PROPERTY(ArrayPanel, bool, "AutoUpdateLayout",
                          "Whether adding, removing or resizing children re-lays the panel at once.",
                          &ArrayPanel::SetAutoUpdateLayoutEnabled, &ArrayPanel::IsAutoUpdateLayoutEnabled,
                          true);
}

ArrayPanel::~ArrayPanel()
{
    // Children normally leave (and are disconnected) before this; a child that somehow
    // outlives the panel must not call back into it.
    for (auto& entry : childConnections_)
        entry.second->disconnect();
}

void ArrayPanel::SetAutoUpdateLayoutEnabled(bool enabled)
{
    if (autoUpdate_ == enabled)
        return;
    autoUpdate_ = enabled;
    if (autoUpdate_)
        UpdateLayout();
}

void ArrayPanel::SetPadding(float pixels)
{
    if (!IsValidLength(pixels)) {
        rlog::Warn("Padding must be a finite, non-negative number of pixels, got " + std::to_string(pixels) +
                       "; keeping " + std::to_string(padding_),
                   "nubo::ArrayPanel::SetPadding");
        return;
    }
    padding_ = pixels;
    if (autoUpdate_)
        UpdateLayout();
}

void ArrayPanel::SetElementSpacing(float pixels)
{
    if (!IsValidLength(pixels)) {
        rlog::Warn("Element spacing must be a finite, non-negative number of pixels, got " +
                       std::to_string(pixels) + "; keeping " + std::to_string(spacing_),
                   "nubo::ArrayPanel::SetElementSpacing");
        return;
    }
    spacing_ = pixels;
    if (autoUpdate_)
        UpdateLayout();
}

bool ArrayPanel::IsStacked(const CEGUI::Window* child) const
{
    return child && !child->isAutoWindow();
}

float ArrayPanel::GetContentHeight() const
{
    float height = padding_;
    const std::size_t count = getChildCount();
    for (std::size_t i = 0; i < count; ++i) {
        const CEGUI::Window* child = getChildAtIdx(i);
        if (IsStacked(child))
            height += child->getPixelSize().d_height + spacing_;
    }
    return height + padding_;
}

void ArrayPanel::UpdateLayout()
{
    // Moving children and resizing this panel fires size events back at us; one pass is enough.
    if (updating_ || d_destructionStarted)
        return;
    updating_ = true;

    float y = padding_;
    const std::size_t count = getChildCount();
    for (std::size_t i = 0; i < count; ++i) {
        CEGUI::Window* child = getChildAtIdx(i);
        if (!IsStacked(child))
            continue;
        CEGUI::UDim x = child->getPosition().d_x;
        const bool placedByPanel = x.d_scale == 0.0f && (x.d_offset == 0.0f || x.d_offset == laidOutPadding_);
        if (placedByPanel)
            x = CEGUI::UDim(0.0f, padding_);
        child->setPosition(CEGUI::UVector2(x, CEGUI::UDim(0.0f, y)));
        y += child->getPixelSize().d_height + spacing_;
    }
    laidOutPadding_ = padding_;

    const CEGUI::USize size = getSize();
    const CEGUI::UDim height(0.0f, y + padding_);
    if (size.d_height != height)
        setSize(CEGUI::USize(size.d_width, height));
    updating_ = false;

    if (auto* parent = dynamic_cast<ArrayPanel*>(getParent()))
        parent->UpdateLayout();
}

void ArrayPanel::onChildAdded(CEGUI::ElementEventArgs& e)
{
    CEGUI::Window::onChildAdded(e);
    if (!e.element)
        return;
    DisconnectChild(e.element);
    childConnections_.emplace_back(
        e.element, e.element->subscribeEvent(CEGUI::Element::EventSized,
                                             CEGUI::Event::Subscriber(&ArrayPanel::ChildSized, this)));
    if (autoUpdate_)
        UpdateLayout();
}

void ArrayPanel::onChildRemoved(CEGUI::ElementEventArgs& e)
{
    CEGUI::Window::onChildRemoved(e);
    DisconnectChild(e.element);
    if (autoUpdate_)
        UpdateLayout();
}

void ArrayPanel::onSized(CEGUI::ElementEventArgs& e)
{
    CEGUI::Window::onSized(e);
    // Resized from outside (not by our own layout): an enclosing array panel must make room.
    // Its size subscription skips array panels, because UpdateLayout notifies it directly.
    if (updating_ || d_destructionStarted)
        return;
    auto* parent = dynamic_cast<ArrayPanel*>(getParent());
    if (parent && parent->autoUpdate_)
        parent->UpdateLayout();
}

bool ArrayPanel::ChildSized(const CEGUI::EventArgs& e)
{
    const auto& args = static_cast<const CEGUI::ElementEventArgs&>(e);
    if (!autoUpdate_ || updating_ || dynamic_cast<const ArrayPanel*>(args.element))
        return false;
    UpdateLayout();
    return false;
}

void ArrayPanel::DisconnectChild(const CEGUI::Element* child)
{
    auto it = std::remove_if(childConnections_.begin(), childConnections_.end(), [child](auto& entry) {
        if (entry.first != child)
            return false;
        entry.second->disconnect();
        return true;
    });
    childConnections_.erase(it, childConnections_.end());
}

void RegisterWindowTypes()
{
    auto& factories = CEGUI::WindowFactoryManager::getSingleton();
    if (!factories.isFactoryPresent(ArrayPanel::WidgetTypeName))
        CEGUI::WindowFactoryManager::addFactory<CEGUI::TplWindowFactory<ArrayPanel>>();
    if (!factories.isFactoryPresent(Combobox::WidgetTypeName))
        CEGUI::WindowFactoryManager::addFactory<CEGUI::TplWindowFactory<Combobox>>();
    if (!factories.isFactoryPresent(Spinner::WidgetTypeName))
        CEGUI::WindowFactoryManager::addFactory<CEGUI::TplWindowFactory<Spinner>>();
    if (!factories.isFactoryPresent(PushButton::WidgetTypeName))
        CEGUI::WindowFactoryManager::addFactory<CEGUI::TplWindowFactory<PushButton>>();
    if (!factories.isFactoryPresent(ToggleButton::WidgetTypeName))
        CEGUI::WindowFactoryManager::addFactory<CEGUI::TplWindowFactory<ToggleButton>>();
}

} // namespace nubo
