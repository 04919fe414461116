#pragma once
// A drop-down list whose items carry integer values, so that a selection maps to a setting
// value independent of the item's position in the list. Its edit box is read-only: the
// user picks, never types.
//
// The look of the list items is set on the combobox (items are not windows a looknfeel
// could reach): CEGUI properties "ItemTextColour", "ItemSelectionColour" (colours such as
// "FFE6E6E6") and "ItemSelectionBrush" (an image name; an undefined image draws no
// selection background).

#include <CEGUI/Colour.h>
#include <CEGUI/widgets/Combobox.h>

#include <optional>
#include <string>

namespace nubo {

class Combobox : public CEGUI::Combobox {
public:
    static const CEGUI::String WidgetTypeName; ///< "nubo/Combobox"

    Combobox(const CEGUI::String& type, const CEGUI::String& name);
    ~Combobox() override;

    /// Appends an item carrying `value`.
    void AddItem(const std::string& text, int value);
    /// Appends an item whose value is its position (0, 1, ...).
    void AddItem(const std::string& text);
    void ClearItems();

    /// Selects the first item carrying `value` and shows its text; false (selection
    /// unchanged) when no item carries it.
    bool SelectByValue(int value);
    /// Value of the selected item; nothing when none is selected.
    std::optional<int> GetSelectedValue() const;
    /// Text of the selected item; "" when none is selected.
    std::string GetSelectedText() const;
    std::size_t GetItemCount() const;

    /// Appearance of the items, applied to existing and future items.
    void SetItemTextColour(const CEGUI::Colour& colour);
    CEGUI::Colour GetItemTextColour() const { return itemTextColour_; }
    void SetItemSelectionColour(const CEGUI::Colour& colour);
    CEGUI::Colour GetItemSelectionColour() const { return selectionColour_; }
    void SetItemSelectionBrush(const CEGUI::String& imageName);
    CEGUI::String GetItemSelectionBrush() const { return selectionBrush_; }

protected:
    /// Makes the edit box read-only once the look has created it.
    void initialiseComponents() override;

private:
    /// False, logged under `label` unless it is null, when no look created the drop list.
    bool HasList(const char* label) const;
    void StyleItem(CEGUI::ListboxItem* item) const;
    void StyleAllItems();

    CEGUI::Colour itemTextColour_;
    CEGUI::Colour selectionColour_;
    CEGUI::String selectionBrush_;
};

} // namespace nubo
