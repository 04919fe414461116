#include <nubo/Combobox.h>

#include <runa/rlog.h>

#include <CEGUI/ImageManager.h>
#include <CEGUI/TplWindowProperty.h>
#include <CEGUI/widgets/ComboDropList.h>
#include <CEGUI/widgets/Editbox.h>
#include <CEGUI/widgets/ListboxTextItem.h>

namespace nubo {

const CEGUI::String Combobox::WidgetTypeName("nubo/Combobox");

namespace {

CEGUI::String ToCegui(const std::string& utf8)
{
    return CEGUI::String(reinterpret_cast<const CEGUI::utf8*>(utf8.c_str()));
}

// Item ids are unsigned; values round-trip through them bit for bit, negatives included.
CEGUI::uint ToItemId(int value)
{
    return static_cast<CEGUI::uint>(value);
}

int ToValue(CEGUI::uint id)
{
    return static_cast<int>(id);
}

} // namespace

Combobox::Combobox(const CEGUI::String& type, const CEGUI::String& name)
    : CEGUI::Combobox(type, name), itemTextColour_(0xFFE6E6E6), selectionColour_(0xFF4A90D9),
      selectionBrush_("DarkVexa/Fill")
{
    const CEGUI::String propertyOrigin = WidgetTypeName;
    CEGUI_DEFINE_PROPERTY(Combobox, CEGUI::Colour, "ItemTextColour", "Text colour of the list items.",
                          &Combobox::SetItemTextColour, &Combobox::GetItemTextColour,
                          CEGUI::Colour(0xFFE6E6E6));
    CEGUI_DEFINE_PROPERTY(Combobox, CEGUI::Colour, "ItemSelectionColour",
                          "Colour of the selected list item's background.", &Combobox::SetItemSelectionColour,
                          &Combobox::GetItemSelectionColour, CEGUI::Colour(0xFF4A90D9));
    CEGUI_DEFINE_PROPERTY(Combobox, CEGUI::String, "ItemSelectionBrush",
                          "Image drawn behind the selected list item, tinted with ItemSelectionColour.",
                          &Combobox::SetItemSelectionBrush, &Combobox::GetItemSelectionBrush,
                          "DarkVexa/Fill");
}

Combobox::~Combobox() = default;

void Combobox::initialiseComponents()
{
    CEGUI::Combobox::initialiseComponents();
    setReadOnly(true);
}

bool Combobox::HasList(const char* label) const
{
    if (isChild(DropListName))
        return true;
    if (label)
        rlog::Fail("Combobox \"" + std::string(getNamePath().c_str()) +
                       "\" has no drop list: it must be created through a look (\"DarkVexa/Combobox\")",
                   label);
    return false;
}

void Combobox::AddItem(const std::string& text, int value)
{
    if (!HasList("nubo::Combobox::AddItem"))
        return;
    auto* item = new CEGUI::ListboxTextItem(ToCegui(text), ToItemId(value));
    StyleItem(item);
    addItem(item); // the drop list owns and deletes its items
}

void Combobox::AddItem(const std::string& text)
{
    if (!HasList("nubo::Combobox::AddItem"))
        return;
    AddItem(text, static_cast<int>(getItemCount()));
}

void Combobox::ClearItems()
{
    if (!HasList("nubo::Combobox::ClearItems"))
        return;
    resetList();
    setText("");
}

bool Combobox::SelectByValue(int value)
{
    if (!HasList("nubo::Combobox::SelectByValue"))
        return false;
    const std::size_t count = getItemCount();
    for (std::size_t i = 0; i < count; ++i) {
        CEGUI::ListboxItem* item = getListboxItemFromIndex(i);
        if (item->getID() != ToItemId(value))
            continue;
        // Showing the text makes CEGUI select the first item with that text; items may share
        // a text, so select the wanted item on the list itself afterwards.
        setText(item->getText());
        getDropList()->setItemSelectState(item, true);
        return true;
    }
    return false;
}

std::optional<int> Combobox::GetSelectedValue() const
{
    if (!HasList(nullptr))
        return std::nullopt;
    const CEGUI::ListboxItem* item = getSelectedItem();
    if (!item)
        return std::nullopt;
    return ToValue(item->getID());
}

std::string Combobox::GetSelectedText() const
{
    if (!HasList(nullptr))
        return std::string();
    const CEGUI::ListboxItem* item = getSelectedItem();
    return item ? std::string(item->getText().c_str()) : std::string();
}

std::size_t Combobox::GetItemCount() const
{
    return HasList(nullptr) ? getItemCount() : 0;
}

void Combobox::SetItemTextColour(const CEGUI::Colour& colour)
{
    itemTextColour_ = colour;
    StyleAllItems();
}

void Combobox::SetItemSelectionColour(const CEGUI::Colour& colour)
{
    selectionColour_ = colour;
    StyleAllItems();
}

void Combobox::SetItemSelectionBrush(const CEGUI::String& imageName)
{
    selectionBrush_ = imageName;
    StyleAllItems();
}

void Combobox::StyleItem(CEGUI::ListboxItem* item) const
{
    if (auto* textItem = dynamic_cast<CEGUI::ListboxTextItem*>(item))
        textItem->setTextColours(itemTextColour_);
    item->setSelectionColours(selectionColour_);
    const bool haveBrush =
        !selectionBrush_.empty() && CEGUI::ImageManager::getSingleton().isDefined(selectionBrush_);
    item->setSelectionBrushImage(haveBrush ? &CEGUI::ImageManager::getSingleton().get(selectionBrush_)
                                           : nullptr);
}

void Combobox::StyleAllItems()
{
    // Properties from a looknfeel arrive before the look has created the drop list.
    if (!HasList(nullptr))
        return;
    const std::size_t count = getItemCount();
    for (std::size_t i = 0; i < count; ++i)
        StyleItem(getListboxItemFromIndex(i));
    getDropList()->handleUpdatedItemData();
}

} // namespace nubo
