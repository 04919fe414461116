#include <vexa/gui/CheckboxList.h>

#include "gui/CeguiText.h"

#include <nubo/ArrayPanel.h>
#include <nubo/Placement.h>

#include <CEGUI/Exceptions.h>
#include <CEGUI/WindowManager.h>
#include <CEGUI/widgets/PushButton.h>
#include <CEGUI/widgets/ToggleButton.h>

#include <runa/rlog.h>

#include <limits>

namespace vexa::gui {

namespace {

constexpr float kButtonHeight = 22.0f;
constexpr float kItemHeight = 22.0f;
constexpr float kStripeWidth = 6.0f;
constexpr float kStripeHeight = 16.0f;
constexpr float kCheckboxIndent = 12.0f;
constexpr float kSpacing = 2.0f;

/// The property of "DarkVexa/ColorRect" that holds its fill colour.
const CEGUI::String kFillColourProperty("Colour");

CEGUI::PushButton* CreateButton(CEGUI::Window* parent, const char* name, const char* caption)
{
    CEGUI::Window* window = CEGUI::WindowManager::getSingleton().createWindow("DarkVexa/PushButton", name);
    auto* button = dynamic_cast<CEGUI::PushButton*>(window);
    if (button == nullptr) {
        CEGUI::WindowManager::getSingleton().destroyWindow(window);
        throw CEGUI::InvalidRequestException("\"DarkVexa/PushButton\" is not a push button");
    }
    button->setText(caption);
    button->setMouseInputPropagationEnabled(true);
    nubo::SetSize(button, 1.0f, 0.0f, 0.0f, kButtonHeight);
    parent->addChild(button);
    return button;
}

} // namespace

CheckboxList::CheckboxList(nubo::ArrayPanel* widget) : TElement(widget), widget_(widget)
{
    if (widget_ == nullptr)
        return;
    widget_->SetElementSpacing(kSpacing);
    try {
        selectAll_ = CreateButton(widget_, "sel-all", "Select all");
        unselectAll_ = CreateButton(widget_, "unsel-all", "Unselect all");
    } catch (const CEGUI::Exception& e) {
        rlog::Fail(std::string("Cannot build the select buttons: ") + e.what(),
                   "vexa::gui::CheckboxList::CheckboxList");
    }
    Connect();
}

CheckboxList::CheckboxList(const CheckboxList& other)
    : TElement(other), items_(other.items_), itemCallbacks_(other.itemCallbacks_),
      selectAll_(other.selectAll_), unselectAll_(other.unselectAll_), widget_(other.widget_)
{
    Connect();
}

CheckboxList::CheckboxList(CheckboxList&& other) noexcept
    : TElement(std::move(other)), items_(std::move(other.items_)),
      itemCallbacks_(std::move(other.itemCallbacks_)), selectAll_(other.selectAll_),
      unselectAll_(other.unselectAll_), widget_(other.widget_)
{
    Connect();
}

CheckboxList::~CheckboxList() = default;

void CheckboxList::Connect()
{
    if (selectAll_ != nullptr)
        selectAll_->subscribeEvent(
            CEGUI::PushButton::EventClicked,
            Guard([](CheckboxList* self, const CEGUI::EventArgs&) { self->SetAllChecked(true); }));
    if (unselectAll_ != nullptr)
        unselectAll_->subscribeEvent(
            CEGUI::PushButton::EventClicked,
            Guard([](CheckboxList* self, const CEGUI::EventArgs&) { self->SetAllChecked(false); }));
    for (const Item& item : items_)
        ConnectItem(item);
}

void CheckboxList::ConnectItem(const Item& item)
{
    CEGUI::ToggleButton* checkbox = item.checkbox;
    checkbox->subscribeEvent(CEGUI::ToggleButton::EventSelectStateChanged,
                             Guard([checkbox](CheckboxList* self, const CEGUI::EventArgs&) {
                                 self->OnItemToggled(checkbox->getID(), checkbox->isSelected());
                             }));
}

std::size_t CheckboxList::AddItem(const std::string& text, bool checked, std::optional<std::size_t> id)
{
    const std::size_t itemId = id.value_or(items_.size());
    if (widget_ == nullptr)
        return itemId;
    if (itemId > std::numeric_limits<unsigned int>::max()) {
        rlog::Warn("Item id " + std::to_string(itemId) + " does not fit a window id, no item added",
                   "vexa::gui::CheckboxList::AddItem");
        return itemId;
    }
    if (FindItem(itemId) != nullptr) {
        rlog::Warn("The list already has an item " + std::to_string(itemId) + ", no item added",
                   "vexa::gui::CheckboxList::AddItem");
        return itemId;
    }

    auto& windows = CEGUI::WindowManager::getSingleton();
    const auto windowId = static_cast<unsigned int>(itemId);
    Item item;
    try {
        item.row = windows.createWindow("DefaultWindow", "item-" + std::to_string(itemId));
        item.row->setID(windowId);
        item.row->setMouseInputPropagationEnabled(true);
        nubo::SetSize(item.row, 1.0f, 0.0f, 0.0f, kItemHeight);

        item.colorStripe = windows.createWindow("DarkVexa/ColorRect", "colorstripe");
        item.colorStripe->setMouseInputPropagationEnabled(true);
        nubo::SetPosition(item.colorStripe, 0.0f, 0.0f, 0.0f, (kItemHeight - kStripeHeight) / 2.0f);
        nubo::SetSize(item.colorStripe, 0.0f, kStripeWidth, 0.0f, kStripeHeight);
        item.row->addChild(item.colorStripe);

        CEGUI::Window* box = windows.createWindow("DarkVexa/Checkbox", "checkbox");
        item.row->addChild(box);
        item.checkbox = dynamic_cast<CEGUI::ToggleButton*>(box);
        if (item.checkbox == nullptr)
            throw CEGUI::InvalidRequestException("\"DarkVexa/Checkbox\" is not a toggle button");
        item.checkbox->setID(windowId);
        item.checkbox->setMouseInputPropagationEnabled(true);
        item.checkbox->setText(ToCeguiText(text));
        // Set before subscribing: building the list is not a change of the user's.
        item.checkbox->setSelected(checked);
        nubo::SetPosition(item.checkbox, 0.0f, kCheckboxIndent, 0.0f, 0.0f);
        nubo::SetSize(item.checkbox, 1.0f, -kCheckboxIndent, 0.0f, kItemHeight);
    } catch (const CEGUI::Exception& e) {
        rlog::Fail(std::string("Cannot build the item row: ") + e.what(), "vexa::gui::CheckboxList::AddItem");
        if (item.row != nullptr)
            windows.destroyWindow(item.row);
        return itemId;
    }
    widget_->addChild(item.row);
    items_.push_back(item);
    ConnectItem(item);
    return itemId;
}

CheckboxList* CheckboxList::SetItemColor(std::size_t id, const tesk::Color3f& color)
{
    const Item* item = FindItem(id);
    if (item == nullptr) {
        rlog::Warn("No item " + std::to_string(id) + " in the list", "vexa::gui::CheckboxList::SetItemColor");
        return this;
    }
    item->colorStripe->setProperty(kFillColourProperty, "FF" + color.ToHex());
    return this;
}

CheckboxList* CheckboxList::SubscribeItems(ItemCallback callback)
{
    if (!callback) {
        rlog::Warn("Empty item callback ignored", "vexa::gui::CheckboxList::SubscribeItems");
        return this;
    }
    itemCallbacks_.push_back(std::move(callback));
    return this;
}

bool CheckboxList::IsItemChecked(std::size_t id) const
{
    const Item* item = FindItem(id);
    return item != nullptr && item->checkbox->isSelected();
}

CheckboxList* CheckboxList::SetItemChecked(std::size_t id, bool checked)
{
    if (const Item* item = FindItem(id))
        item->checkbox->setSelected(checked);
    else
        rlog::Warn("No item " + std::to_string(id) + " in the list",
                   "vexa::gui::CheckboxList::SetItemChecked");
    return this;
}

CheckboxList* CheckboxList::SetAllChecked(bool checked)
{
    // Every checkbox raises its own toggle event; by index, because a callback may add items.
    const std::size_t count = items_.size();
    for (std::size_t i = 0; i < count; ++i)
        items_[i].checkbox->setSelected(checked);
    return this;
}

void CheckboxList::OnItemToggled(unsigned int id, bool checked) const
{
    const std::size_t count = itemCallbacks_.size();
    for (std::size_t i = 0; i < count; ++i) {
        ItemCallback callback = itemCallbacks_[i];
        callback(id, checked);
    }
    NotifyChange();
}

const CheckboxList::Item* CheckboxList::FindItem(std::size_t id) const
{
    if (id > std::numeric_limits<unsigned int>::max())
        return nullptr;
    for (const Item& item : items_)
        if (item.checkbox->getID() == id)
            return &item;
    return nullptr;
}

} // namespace vexa::gui
