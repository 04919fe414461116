#pragma once
// A list of captioned checkboxes with "Select all" / "Unselect all" buttons, each row with a
// colour stripe (for example the colour a class of points is drawn in).

#include <vexa/Export.h>
#include <vexa/gui/TElement.h>

#include <tesk/Color.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace CEGUI {
class ToggleButton;
class PushButton;
} // namespace CEGUI

namespace nubo {
class ArrayPanel;
}

namespace vexa::gui {

class VEXA_API CheckboxList : public TElement<CheckboxList> {
public:
    using ItemCallback = std::function<void(unsigned int id, bool checked)>;

    /// Builds the select / unselect buttons inside `widget`.
    explicit CheckboxList(nubo::ArrayPanel* widget);
    CheckboxList(const CheckboxList& other);
    CheckboxList(CheckboxList&& other) noexcept;
    ~CheckboxList() override;

    /// Appends a row "item-<id>" and returns its id: `id` when given, else the number of
    /// items before it. An id already in the list adds nothing and returns that id.
    std::size_t AddItem(const std::string& text, bool checked = false,
                        std::optional<std::size_t> id = std::nullopt);
    /// Fills the row's colour stripe.
    CheckboxList* SetItemColor(std::size_t id, const tesk::Color3f& color);
    /// Appends a callback that receives the id and new state of every toggled item; item
    /// callbacks run before the change callbacks.
    CheckboxList* SubscribeItems(ItemCallback callback);

    /// False for an unknown id.
    bool IsItemChecked(std::size_t id) const;
    /// Toggles like a click would, raising the item's callbacks when the state changes.
    CheckboxList* SetItemChecked(std::size_t id, bool checked);
    /// Sets every item like the "Select all" / "Unselect all" buttons.
    CheckboxList* SetAllChecked(bool checked);
    std::size_t GetItemCount() const { return items_.size(); }

    nubo::ArrayPanel* GetWidget() const { return widget_; }

private:
    struct Item {
        CEGUI::Window* row = nullptr;
        CEGUI::ToggleButton* checkbox = nullptr;
        CEGUI::Window* colorStripe = nullptr;
    };

    void Connect();
    void ConnectItem(const Item& item);
    void OnItemToggled(unsigned int id, bool checked) const;
    const Item* FindItem(std::size_t id) const;

    std::vector<Item> items_;
    std::vector<ItemCallback> itemCallbacks_;
    CEGUI::PushButton* selectAll_ = nullptr;
    CEGUI::PushButton* unselectAll_ = nullptr;
    nubo::ArrayPanel* widget_ = nullptr;
};

} // namespace vexa::gui
