#include <vexa/GuiGenerator.h>
#include <vexa/modules/GuiGadget.h>
#include <vexa/modules/GuiResource.h>

#include "GuiTestSupport.h"
#include "IgnoredLeaks.h"

#include <CEGUI/CEGUI.h>

namespace {

using vexa::modules::GuiGadget;
using vexa::modules::GuiResource;

const char* const kLayout = R"(<?xml version="1.0" encoding="UTF-8"?>
<GUILayout version="4">
  <Window type="DefaultWindow" name="Tools">
    <Property name="Area" value="{{0,0},{0,0},{1,0},{0,64}}" />
    <Window type="DarkVexa/PushButton" name="Apply">
      <Property name="Area" value="{{0,0},{0,0},{1,0},{0,26}}" />
      <Property name="Text" value="Apply" />
    </Window>
  </Window>
</GUILayout>)";

class GuiResourceModuleTest : public gui_test::PanelTest {};

TEST_F(GuiResourceModuleTest, WindowsAreFoundByNameAndASecondSetupReplacesTheTree)
{
    GuiResource resource("Tools");
    EXPECT_EQ(resource.GetWindow("Tools"), nullptr) << "no tree before Setup";
    EXPECT_EQ(resource.GetRootWindow(), nullptr);

    ASSERT_TRUE(resource.Setup(kLayout));
    CEGUI::Window* first = resource.GetRootWindow();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(resource.GetWindow("Tools"), first);
    EXPECT_EQ(resource.GetWindow("Apply"), first->getChild("Apply"));
    EXPECT_EQ(resource.GetWindow("Cancel"), nullptr);

    ASSERT_TRUE(resource.Setup(kLayout));
    EXPECT_FALSE(CEGUI::WindowManager::getSingleton().isAlive(first)) << "the first tree was kept";
    EXPECT_NE(resource.GetRootWindow(), nullptr);

    // A broken layout leaves no window, and says so. (CEGUI's XML reader loses its own state
    // when the unknown type throws inside it; that is CEGUI's, and the parser module is unloaded
    // before exit, so no suppression could name it.)
    testing_support::LogCapture log;
    {
        testing_support::IgnoredLeaks cegui;
        EXPECT_FALSE(
            resource.Setup("<GUILayout version=\"4\"><Window type=\"NoSuchType\" name=\"x\"/></GUILayout>"));
    }
    EXPECT_EQ(resource.GetRootWindow(), nullptr);
    ASSERT_FALSE(log.messages.empty());
    EXPECT_NE(log.messages.back().message.find("GuiDataUnit:Tools"), std::string::npos)
        << log.messages.back().message;
    for (const auto& message : log.messages)
        EXPECT_NE(message.message.rfind("#", 0), 0u) << "CEGUI's stack dump reached the log";
}

TEST_F(GuiResourceModuleTest, ThePanelHoldsTheHostsWindowAndLetsGoOfItUnharmed)
{
    GuiResource resource("Tools");
    ASSERT_TRUE(resource.Setup(kLayout));
    int clicks = 0;
    resource.GetWindow("Apply")->subscribeEvent(CEGUI::PushButton::EventClicked,
                                                [&clicks](const CEGUI::EventArgs&) {
                                                    ++clicks;
                                                    return true;
                                                });

    auto holding = gui_test::InitializedGadget<GuiGadget>(resource);
    auto other = gui_test::InitializedGadget<GuiGadget>(resource);
    {
        vexa::GuiGenerator generator(panel_);
        holding->GenerateGui(generator);
        generator.TestElementConditions();
    }
    EXPECT_TRUE(holding->IsHolding());
    CEGUI::Window* row = gui_test::Row(panel_, 0);
    ASSERT_NE(row, nullptr);
    EXPECT_TRUE(row->isAncestor(resource.GetRootWindow()) || resource.GetRootWindow()->isAncestor(row));
    EXPECT_FLOAT_EQ(gui_test::Height(row), 64.0f) << "the row is as tall as the host's panel";

    // Only one sidebar can hold a window: the other view area says where it is.
    CEGUI::Window* second =
        CEGUI::WindowManager::getSingleton().createWindow("DarkVexa/ArrayPanel", "second");
    gui_test::Root()->addChild(second);
    {
        vexa::GuiGenerator generator(second);
        other->GenerateGui(generator);
    }
    EXPECT_EQ(gui_test::Texts(second), std::vector<std::string>{"Shown in another view area's sidebar"});

    // Dropping the panel leaves the host's windows alive; the next panel takes them up.
    Renew();
    ASSERT_NE(resource.GetWindow("Apply"), nullptr);
    EXPECT_EQ(resource.GetRootWindow()->getParent(), nullptr);
    holding->Terminate();
    EXPECT_FALSE(holding->IsHolding());
    CEGUI::WindowManager::getSingleton().destroyWindow(second);
    {
        vexa::GuiGenerator generator(panel_);
        other->GenerateGui(generator);
    }
    EXPECT_TRUE(other->IsHolding());
    gui_test::Click(resource.GetWindow("Apply"));
    EXPECT_EQ(clicks, 1);
    other->Terminate();
}

} // namespace
