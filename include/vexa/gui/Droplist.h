#pragma once
// A drop-down choice whose items carry integer values, so that a linked setting holds the
// value (an enumeration, say) and not the item's position in the list.

#include <vexa/Export.h>
#include <vexa/gui/LinkedElement.h>

#include <string>
#include <utility>
#include <vector>

namespace nubo {
class Combobox;
}

namespace vexa::gui {

class VEXA_API Droplist : public LinkedElement<int, Droplist> {
public:
    explicit Droplist(nubo::Combobox* widget);
    Droplist(const Droplist& other);
    Droplist(Droplist&& other) noexcept;
    ~Droplist() override;

    /// Appends an item carrying `value`.
    Droplist* AddItem(const std::string& text, int value);
    /// Appends an item whose value is its position in the list (0, 1, ...).
    Droplist* AddItemIndexed(const std::string& text);
    Droplist* AddItems(const std::vector<std::pair<std::string, int>>& items);
    Droplist* AddItemsIndexed(const std::vector<std::string>& texts);

    /// Selects the item carrying `value`; without one the selection stays as it is.
    Droplist* Set(int value) override;
    /// The selected item's value, -1 when nothing is selected.
    int Get() const override;
    /// The selected item's text, "" when nothing is selected.
    std::string GetText() const;

    nubo::Combobox* GetWidget() const { return widget_; }

private:
    void Connect();

    nubo::Combobox* widget_ = nullptr;
};

} // namespace vexa::gui
