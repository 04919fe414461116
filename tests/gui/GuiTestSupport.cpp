#include "GuiTestSupport.h"

#include <nubo/GuiSystem.h>

#include <CEGUI/CEGUI.h>

#include <memory>

namespace gui_test {

namespace {

class GuiEnvironment : public testing::Environment {
public:
    void SetUp() override
    {
        system_ = std::make_unique<nubo::GuiSystem>();
        ASSERT_TRUE(system_->InitializeHeadless(VEXA_SOURCE_ASSET_DIR "resources/"));
    }

    void TearDown() override { system_.reset(); }

private:
    std::unique_ptr<nubo::GuiSystem> system_;
};

[[maybe_unused]] testing::Environment* const environment =
    testing::AddGlobalTestEnvironment(new GuiEnvironment);

} // namespace

CEGUI::Window* Root()
{
    return CEGUI::System::getSingleton().getDefaultGUIContext().getRootWindow();
}

void Fire(CEGUI::Window* window, const CEGUI::String& event, const CEGUI::String& eventNamespace)
{
    if (window == nullptr) {
        ADD_FAILURE() << "no window to fire " << event.c_str() << " on";
        return;
    }
    CEGUI::WindowEventArgs args(window);
    window->fireEvent(event, args, eventNamespace);
}

void Click(CEGUI::Window* button)
{
    Fire(button, CEGUI::PushButton::EventClicked, CEGUI::PushButton::EventNamespace);
}

float Height(const CEGUI::Window* window)
{
    return window->getPixelSize().d_height;
}

CEGUI::Window* Row(const CEGUI::Window* panel, int n)
{
    return panel->getChildRecursive("generated_element_" + CEGUI::PropertyHelper<std::int32_t>::toString(n));
}

namespace {

std::string Caption(const CEGUI::Window* row)
{
    std::string text;
    if (const CEGUI::Window* label = row->getChildRecursive("dynamic_label"))
        text = label->getText().c_str();
    const CEGUI::Window* control = row->getChildRecursive("dynamic_control");
    if (text.empty() && control != nullptr)
        text = control->getText().c_str();
    return text;
}

} // namespace

std::vector<std::string> Texts(const CEGUI::Window* panel)
{
    std::vector<std::string> texts;
    for (int n = 0; const CEGUI::Window* row = Row(panel, n); ++n) {
        std::string text = Caption(row);
        if (CEGUI::Window* combo = row->getChildRecursive("combo_element")) {
            auto* list = static_cast<CEGUI::Combobox*>(combo);
            for (std::size_t i = 0; i < list->getItemCount(); ++i)
                text += "|" + std::string(list->getListboxItemFromIndex(i)->getText().c_str());
        }
        texts.push_back(text);
    }
    return texts;
}

std::string Joined(const CEGUI::Window* panel)
{
    std::string all;
    for (const std::string& text : Texts(panel))
        all += text + "\n";
    return all;
}

CEGUI::Window* FindRow(const CEGUI::Window* panel, const std::string& caption)
{
    for (int n = 0; CEGUI::Window* row = Row(panel, n); ++n)
        if (Caption(row) == caption)
            return row;
    return nullptr;
}

bool Shown(const CEGUI::Window* panel, const std::string& caption)
{
    const CEGUI::Window* row = FindRow(panel, caption);
    for (const CEGUI::Window* w = row; w != nullptr && w != panel; w = w->getParent())
        if (!w->isVisible() || Height(w) <= 0.0f)
            return false;
    return row != nullptr;
}

void Choose(CEGUI::Combobox* combobox, std::size_t index)
{
    if (combobox == nullptr) {
        ADD_FAILURE() << "no drop list to choose from";
        return;
    }
    CEGUI::ComboDropList* list = combobox->getDropList();
    list->setItemSelectState(index, true);
    Fire(list, CEGUI::ComboDropList::EventListSelectionAccepted, CEGUI::ComboDropList::EventNamespace);
}

void PanelTest::SetUp()
{
    panel_ = CEGUI::WindowManager::getSingleton().createWindow("DarkVexa/ArrayPanel", "test_panel");
    panel_->setSize(CEGUI::USize(CEGUI::UDim(0.0f, 300.0f), CEGUI::UDim(0.0f, 0.0f)));
    Root()->addChild(panel_);
}

void PanelTest::TearDown()
{
    auto& windows = CEGUI::WindowManager::getSingleton();
    windows.destroyWindow(panel_);
    windows.cleanDeadPool();
}

} // namespace gui_test
