#include <vexa/GuiGenerator.h>

#include "core/Notifications.h"
#include "gui/CeguiText.h"

#include <nubo/ArrayPanel.h>
#include <nubo/Combobox.h>
#include <nubo/Placement.h>

#include <CEGUI/Exceptions.h>
#include <CEGUI/Font.h>
#include <CEGUI/WindowManager.h>
#include <CEGUI/widgets/PushButton.h>
#include <CEGUI/widgets/Slider.h>
#include <CEGUI/widgets/Spinner.h>
#include <CEGUI/widgets/ToggleButton.h>

#include <runa/rlog.h>

#include <algorithm>
#include <string>
#include <vector>

namespace vexa {

namespace {

constexpr float kPadding = 10.0f;
constexpr float kSpacing = 2.0f;
/// Rows leave room for the sidebar's scroll bar.
constexpr float kRowWidthOffset = -20.0f;
constexpr float kLabelHeight = 20.0f;
constexpr float kControlHeight = 26.0f;
constexpr float kSeparatorHeight = 15.0f;
/// The combobox is taller than its row: the part below the row is the open drop-down list.
constexpr float kComboboxHeight = 50.0f;
/// A checkbox's caption only needs half the row; the extra pixels cover its box.
constexpr float kCheckboxExtraWidth = 15.0f;
/// Where the checkbox look starts its caption, right of the box.
constexpr float kCheckboxCaptionLeft = 22.0f;

/// How tall a row must be to show `window`: its absolute height where it has one, else as far
/// down as its absolutely placed children reach.
float HostedHeight(const CEGUI::Window& window)
{
    constexpr float kFallbackHeight = 120.0f;
    const CEGUI::UDim height = window.getHeight();
    const float top = window.getYPosition().d_scale == 0.0f ? window.getYPosition().d_offset : 0.0f;
    if (height.d_scale == 0.0f && height.d_offset > 0.0f)
        return top + height.d_offset;
    float bottom = 0.0f;
    for (std::size_t i = 0; i < window.getChildCount(); ++i) {
        const CEGUI::Window* child = window.getChildAtIdx(i);
        const CEGUI::UDim y = child->getYPosition();
        const CEGUI::UDim h = child->getHeight();
        if (y.d_scale == 0.0f && h.d_scale == 0.0f)
            bottom = std::max(bottom, y.d_offset + h.d_offset);
    }
    return top + (bottom > 0.0f ? bottom + kSpacing : kFallbackHeight);
}

template <typename W>
W* As(CEGUI::Window* window, const char* typeName)
{
    auto* widget = dynamic_cast<W*>(window);
    if (widget == nullptr)
        throw CEGUI::InvalidRequestException(CEGUI::String("the widget look does not make a ") + typeName);
    return widget;
}

} // namespace

struct GuiGenerator::ElementSlot {
    std::size_t index = 0;
    std::shared_ptr<gui::Element> element;
    CEGUI::Window* control = nullptr;
    CEGUI::Window* row = nullptr;
    /// The control when it stacks rows of its own (a group or a checkbox list).
    nubo::ArrayPanel* container = nullptr;
};

struct GuiGenerator::Impl {
    ResourceId resourceId;
    bool autoTest = false;
    ElementSlot* openPanel = nullptr;
    std::vector<std::unique_ptr<ElementSlot>> slots;
    nubo::ArrayPanel* root = nullptr;
    CEGUI::Window* currentParent = nullptr;
    /// The window given at construction, even when it is no array panel.
    CEGUI::Window* rootWindow = nullptr;

    GuiGenerator* owner = nullptr;
    /// Lets OnValueChange notice that a subscriber of the engine event destroyed us.
    std::shared_ptr<bool> alive = std::make_shared<bool>(true);

    ~Impl() { *alive = false; }

    /// Runs `build` and returns its element, or null (logged) when the generator has no
    /// panel or CEGUI refuses a window; a half-built row is removed again.
    template <typename E, typename Build>
    E* Guarded(const char* label, Build build)
    {
        if (currentParent == nullptr) {
            rlog::Warn("The generator has no panel to add rows to", label);
            return nullptr;
        }
        try {
            return build();
        } catch (const CEGUI::Exception& e) {
            rlog::Fail(std::string("Cannot create the row: ") + e.what(), label);
            if (!slots.empty() && !slots.back()->element) {
                CEGUI::WindowManager::getSingleton().destroyWindow(slots.back()->row);
                slots.pop_back();
            }
            return nullptr;
        }
    }

    ElementSlot* CreateRow(const CEGUI::String& controlType, float height)
    {
        auto& windows = CEGUI::WindowManager::getSingleton();
        auto slot = std::make_unique<ElementSlot>();
        slot->index = slots.size();
        const auto id = static_cast<unsigned int>(slot->index);

        slot->row = windows.createWindow("DefaultWindow", "generated_element_" + std::to_string(slot->index));
        slot->row->setID(id);
        slot->row->setMouseInputPropagationEnabled(true);
        nubo::SetSize(slot->row, 1.0f, kRowWidthOffset, 0.0f, height);
        try {
            slot->control = windows.createWindow(controlType, "dynamic_control");
        } catch (...) {
            windows.destroyWindow(slot->row);
            throw;
        }
        slot->control->setID(id);
        slot->control->setMouseInputPropagationEnabled(true);
        nubo::SetPosition(slot->control, 0.0f, 0.0f, 0.0f, 0.0f);
        nubo::SetSize(slot->control, 1.0f, 0.0f, 0.0f, height);
        slot->row->addChild(slot->control);
        currentParent->addChild(slot->row);

        slots.push_back(std::move(slot));
        return slots.back().get();
    }

    /// The label takes the left half of the row, the control the right half.
    ElementSlot* CreateLabelledRow(const CEGUI::String& controlType, float height, const std::string& text)
    {
        ElementSlot* slot = CreateRow(controlType, height);
        nubo::SetPosition(slot->control, 0.5f, 0.0f, 0.0f, 0.0f);
        nubo::SetSize(slot->control, 0.5f, 0.0f, 0.0f, height);

        CEGUI::Window* label =
            CEGUI::WindowManager::getSingleton().createWindow("DarkVexa/Label", "dynamic_label");
        label->setMouseInputPropagationEnabled(true);
        nubo::SetPosition(label, 0.0f, 0.0f, 0.0f, 0.0f);
        nubo::SetSize(label, 0.5f, 0.0f, 0.0f, height);
        label->setText(gui::ToCeguiText(text));
        label->setProperty("HorzFormatting", "LeftAligned");
        slot->row->addChild(label);
        return slot;
    }

    /// Wraps `widget` in its element, keeps it in the slot and, unless told otherwise,
    /// follows its changes.
    template <typename E, typename W>
    E* Finish(ElementSlot* slot, W* widget, bool followChanges = true)
    {
        auto element = std::make_shared<E>(widget);
        E* raw = element.get();
        slot->element = std::move(element);
        if (followChanges) {
            GuiGenerator* generator = owner;
            raw->Subscribe([generator](const E* changed) { generator->OnValueChange(changed); });
        }
        return raw;
    }

    void UpdateLayout() const
    {
        if (root != nullptr)
            root->UpdateLayout();
    }
};

GuiGenerator::GuiGenerator(CEGUI::Window* arrayPanel) : impl_(std::make_unique<Impl>())
{
    Construct(arrayPanel);
}

GuiGenerator::GuiGenerator(const ResourceId& id, CEGUI::Window* arrayPanel) : impl_(std::make_unique<Impl>())
{
    impl_->resourceId = id;
    Construct(arrayPanel);
}

GuiGenerator::~GuiGenerator() = default;

void GuiGenerator::Construct(CEGUI::Window* arrayPanel)
{
    impl_->owner = this;
    impl_->rootWindow = arrayPanel;
    impl_->currentParent = arrayPanel;
    if (arrayPanel == nullptr) {
        rlog::Fail("No panel window given, no rows can be added", "vexa::GuiGenerator::Construct");
        return;
    }
    impl_->root = dynamic_cast<nubo::ArrayPanel*>(arrayPanel);
    if (impl_->root == nullptr) {
        rlog::Warn("The panel window \"" + gui::FromCeguiText(arrayPanel->getNamePath()) +
                       "\" is not an array panel; rows will not be laid out",
                   "vexa::GuiGenerator::Construct");
        return;
    }
    impl_->root->SetAutoUpdateLayoutEnabled(false);
    impl_->root->SetPadding(kPadding);
    impl_->root->SetElementSpacing(kSpacing);
}

gui::Label* GuiGenerator::AddLabel(const std::string& text)
{
    return impl_->Guarded<gui::Label>("vexa::GuiGenerator::AddLabel", [&] {
        ElementSlot* slot = impl_->CreateRow("DarkVexa/Label", kLabelHeight);
        slot->control->setText(gui::ToCeguiText(text));
        slot->control->setProperty("HorzFormatting", "LeftAligned");
        slot->control->setEnabled(false);
        return impl_->Finish<gui::Label>(slot, slot->control);
    });
}

gui::Button* GuiGenerator::AddButton(const std::string& caption)
{
    return impl_->Guarded<gui::Button>("vexa::GuiGenerator::AddButton", [&] {
        ElementSlot* slot = impl_->CreateRow("DarkVexa/PushButton", kControlHeight);
        auto* button = As<CEGUI::PushButton>(slot->control, "push button");
        button->setText(gui::ToCeguiText(caption));
        return impl_->Finish<gui::Button>(slot, button);
    });
}

gui::Checkbox* GuiGenerator::AddCheckbox(const std::string& caption)
{
    return impl_->Guarded<gui::Checkbox>("vexa::GuiGenerator::AddCheckbox", [&] {
        ElementSlot* slot = impl_->CreateRow("DarkVexa/Checkbox", kControlHeight);
        auto* checkbox = As<CEGUI::ToggleButton>(slot->control, "toggle button");
        checkbox->setText(gui::ToCeguiText(caption));
        // Half the row keeps a click beside a short caption from toggling; a longer caption
        // gets what it needs, or it would be cut off.
        const CEGUI::Font* font = checkbox->getFont();
        const float needed = font != nullptr ? kCheckboxCaptionLeft +
                                                   font->getTextExtent(checkbox->getText()) + 4.0f * kSpacing
                                             : 0.0f;
        if (needed > 0.5f * slot->row->getPixelSize().d_width + kCheckboxExtraWidth)
            nubo::SetSize(checkbox, 0.0f, needed, 0.0f, kControlHeight);
        else
            nubo::SetSize(checkbox, 0.5f, kCheckboxExtraWidth, 0.0f, kControlHeight);
        return impl_->Finish<gui::Checkbox>(slot, checkbox);
    });
}

gui::NumericInt* GuiGenerator::AddNumericInt(const std::string& label)
{
    return impl_->Guarded<gui::NumericInt>("vexa::GuiGenerator::AddNumericInt", [&] {
        ElementSlot* slot = impl_->CreateLabelledRow("DarkVexa/Spinner", kControlHeight, label);
        return impl_->Finish<gui::NumericInt>(slot, As<CEGUI::Spinner>(slot->control, "spinner"));
    });
}

gui::NumericFloat* GuiGenerator::AddNumericFloat(const std::string& label)
{
    return impl_->Guarded<gui::NumericFloat>("vexa::GuiGenerator::AddNumericFloat", [&] {
        ElementSlot* slot = impl_->CreateLabelledRow("DarkVexa/Spinner", kControlHeight, label);
        return impl_->Finish<gui::NumericFloat>(slot, As<CEGUI::Spinner>(slot->control, "spinner"));
    });
}

gui::SlidingInt* GuiGenerator::AddSlidingInt(const std::string& label)
{
    return impl_->Guarded<gui::SlidingInt>("vexa::GuiGenerator::AddSlidingInt", [&] {
        ElementSlot* slot = impl_->CreateLabelledRow("DarkVexa/Slider", kControlHeight, label);
        return impl_->Finish<gui::SlidingInt>(slot, As<CEGUI::Slider>(slot->control, "slider"));
    });
}

gui::SlidingFloat* GuiGenerator::AddSlidingFloat(const std::string& label)
{
    return impl_->Guarded<gui::SlidingFloat>("vexa::GuiGenerator::AddSlidingFloat", [&] {
        ElementSlot* slot = impl_->CreateLabelledRow("DarkVexa/Slider", kControlHeight, label);
        return impl_->Finish<gui::SlidingFloat>(slot, As<CEGUI::Slider>(slot->control, "slider"));
    });
}

gui::Droplist* GuiGenerator::AddDroplist(const std::string& label)
{
    return impl_->Guarded<gui::Droplist>("vexa::GuiGenerator::AddDroplist", [&] {
        ElementSlot* slot = impl_->CreateLabelledRow("DefaultWindow", kControlHeight, label);
        CEGUI::Window* window =
            CEGUI::WindowManager::getSingleton().createWindow("DarkVexa/Combobox", "combo_element");
        slot->control->addChild(window);
        auto* combobox = As<nubo::Combobox>(window, "nubo::Combobox");
        combobox->setID(static_cast<unsigned int>(slot->index));
        nubo::SetPosition(combobox, 0.0f, 0.0f, 0.0f, 0.0f);
        nubo::SetSize(combobox, 1.0f, 0.0f, 0.0f, kComboboxHeight);
        return impl_->Finish<gui::Droplist>(slot, combobox);
    });
}

gui::CheckboxList* GuiGenerator::AddCheckboxList()
{
    return impl_->Guarded<gui::CheckboxList>("vexa::GuiGenerator::AddCheckboxList", [&] {
        ElementSlot* slot = impl_->CreateRow("DarkVexa/ArrayPanel", 0.0f);
        slot->container = As<nubo::ArrayPanel>(slot->control, "nubo::ArrayPanel");
        return impl_->Finish<gui::CheckboxList>(slot, slot->container);
    });
}

gui::Separator* GuiGenerator::AddSeparator()
{
    return impl_->Guarded<gui::Separator>("vexa::GuiGenerator::AddSeparator", [&] {
        ElementSlot* slot = impl_->CreateRow("DarkVexa/SeparatorHor", kSeparatorHeight);
        return impl_->Finish<gui::Separator>(slot, slot->control, false);
    });
}

gui::HostedWindow* GuiGenerator::AddWindow(CEGUI::Window* window)
{
    if (window == nullptr) {
        rlog::Warn("No window given, no row added", "vexa::GuiGenerator::AddWindow");
        return nullptr;
    }
    return impl_->Guarded<gui::HostedWindow>("vexa::GuiGenerator::AddWindow", [&] {
        ElementSlot* slot = impl_->CreateRow("DefaultWindow", HostedHeight(*window));
        // The caller owns the window: when the panel goes, CEGUI only takes it out of the row.
        window->setDestroyedByParent(false);
        slot->control->addChild(window);
        auto element = std::make_shared<gui::HostedWindow>(slot->control, window);
        gui::HostedWindow* raw = element.get();
        slot->element = std::move(element);
        return raw;
    });
}

gui::Panel* GuiGenerator::PanelBegin()
{
    if (impl_->openPanel != nullptr) {
        rlog::Warn("A group is already open; groups do not nest", "vexa::GuiGenerator::PanelBegin");
        return nullptr;
    }
    return impl_->Guarded<gui::Panel>("vexa::GuiGenerator::PanelBegin", [&] {
        ElementSlot* slot = impl_->CreateRow("DarkVexa/ArrayPanel", 0.0f);
        slot->container = As<nubo::ArrayPanel>(slot->control, "nubo::ArrayPanel");
        slot->container->SetPadding(kPadding);
        slot->container->SetElementSpacing(kSpacing);
        gui::Panel* panel = impl_->Finish<gui::Panel>(slot, slot->container);
        impl_->currentParent = slot->container;
        impl_->openPanel = slot;
        return panel;
    });
}

void GuiGenerator::PanelEnd()
{
    if (impl_->openPanel == nullptr)
        return;
    impl_->openPanel = nullptr;
    impl_->currentParent = impl_->rootWindow;
}

void GuiGenerator::TestElementConditions()
{
    auto& slots = impl_->slots;
    std::vector<char> visible(slots.size());
    for (std::size_t i = 0; i < slots.size(); ++i)
        visible[i] = slots[i]->element->TestCondition();
    // Backwards: a group's height is read after the rows inside it (created after it) have
    // been shown or collapsed and the group has been laid out again.
    for (std::size_t i = slots.size(); i-- > 0;) {
        ElementSlot& slot = *slots[i];
        if (slot.container != nullptr)
            slot.container->UpdateLayout();
        const float height = visible[i] ? slot.control->getPixelSize().d_height : 0.0f;
        slot.row->setHeight(CEGUI::UDim(0.0f, height));
    }
    impl_->UpdateLayout();
}

void GuiGenerator::SetAutoTestConditionsEnabled(bool enabled)
{
    impl_->autoTest = enabled;
    if (impl_->root == nullptr)
        return;
    impl_->root->SetAutoUpdateLayoutEnabled(enabled);
    if (enabled)
        impl_->root->UpdateLayout();
}

void GuiGenerator::OnValueChange(const gui::Element* /*element*/)
{
    if (!impl_->autoTest || !impl_->resourceId.IsValid())
        return;
    // Subscribers get their own copy of the id and may drop this generator (and its panel)
    // while they run.
    const ResourceId id = impl_->resourceId;
    const std::shared_ptr<bool> alive = impl_->alive;
    GetNotifications().Notify(kResourceGuiChanged, &id);
    if (*alive)
        TestElementConditions();
}

} // namespace vexa
