#include "GuiTestSupport.h"

#include <nubo/GuiSystem.h>

#include <CEGUI/GUIContext.h>
#include <CEGUI/widgets/ComboDropList.h>
#include <CEGUI/widgets/Combobox.h>
#include <CEGUI/System.h>
#include <CEGUI/WindowManager.h>

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

[[maybe_unused]] testing::Environment* const environment = testing::AddGlobalTestEnvironment(new GuiEnvironment);

} // namespace

CEGUI::Window* Root()
{
    return CEGUI::System::getSingleton().getDefaultGUIContext().getRootWindow();
}

void Fire(CEGUI::Window* window, const CEGUI::String& event, const CEGUI::String& eventNamespace)
{
    CEGUI::WindowEventArgs args(window);
    window->fireEvent(event, args, eventNamespace);
}

void Choose(CEGUI::Combobox* combobox, std::size_t index)
{
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
