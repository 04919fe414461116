#include "gui/Sidebar.h"
#include "core/Notifications.h"
#include "core/Viewarea.h"
#include "gui/GuiPanel.h"
#include "gui/GuiResourceBrowser.h"
#include "gui/GuiStylingPanel.h"
#include "scene/GadgetManager.h"

#include <vexa/GuiGenerator.h>
#include <vexa/draw/Material.h>
#include <vexa/gui/StylingRows.h>

#include "FakeEngine.h"
#include "GuiTestSupport.h"

#include <CEGUI/CEGUI.h>

namespace {

using gui_test::Fire;
using gui_test::Height;
using testing_support::FakeEngine;

class MaterialGadget final : public vexa::Gadget {
public:
    explicit MaterialGadget(const vexa::Resource* resource) : Gadget(resource) {}
    void Initialize() override
    {
        LoadState();
        Gadget::Initialize();
    }
    void GenerateGui(vexa::GuiGenerator& generator) override
    {
        Gadget::GenerateGui(generator);
        vexa::gui::AddGuiMaterial(generator, &material, false);
    }
    vexa::draw::Material material;
};

class MaterialResource final : public vexa::Resource {
public:
    explicit MaterialResource(const std::string& name) : Resource(name, "MeshResource") {}
    std::shared_ptr<vexa::Gadget> CreateGadget() override { return std::make_shared<MaterialGadget>(this); }
};

unsigned int Counter(const CEGUI::Window* panel)
{
    const std::string name = panel->getName().c_str();
    const std::string prefix = "sidebar_panel_win_";
    EXPECT_EQ(name.rfind(prefix, 0), 0u) << name;
    return static_cast<unsigned int>(std::stoul(name.substr(prefix.size())));
}

using GuiPanelTest = gui_test::PanelTest;

TEST_F(GuiPanelTest, PanelsAreNumberedStartAsHeaderOnlyAndKeepTheHeaderHeightWhileCollapsed)
{
    vexa::GuiPanel first;
    vexa::GuiPanel second;
    EXPECT_EQ(Counter(second.GetWindow()), Counter(first.GetWindow()) + 1);
    EXPECT_FLOAT_EQ(first.GetWindow()->getHeight().d_offset, 24.0f);

    first.AttachTo(panel_);
    ASSERT_NE(first.GetClientWindow(), nullptr) << "attaching supplies the default client";
    EXPECT_TRUE(panel_->isChild(first.GetWindow()));

    second.SetAttached(false);
    second.AttachTo(panel_);
    EXPECT_FALSE(panel_->isChild(second.GetWindow()));

    // Collapsed, a panel keeps its header height until expanded.
    vexa::GuiPanel panel;
    panel.SetClientLayout(R"(<?xml version="1.0" ?><GUILayout version="4">
        <Window type="DefaultWindow" name="custom"/></GUILayout>)");
    panel.AttachTo(panel_);
    CEGUI::Window* client = panel.GetClientWindow();
    ASSERT_NE(client, nullptr);
    EXPECT_EQ(client->getName(), "client_window");
    client->setHeight(CEGUI::UDim(0, 100));
    EXPECT_FLOAT_EQ(Height(panel.GetWindow()), 124.0f);

    const auto clickHeader = [&] {
        Fire(panel.GetHeader(), CEGUI::Window::EventMouseButtonUp, CEGUI::Window::EventNamespace);
    };
    clickHeader();
    EXPECT_TRUE(panel.IsCollapsed());
    EXPECT_FALSE(client->isVisible());
    client->setHeight(CEGUI::UDim(0, 150));
    EXPECT_FLOAT_EQ(Height(panel.GetWindow()), 24.0f);
    EXPECT_FLOAT_EQ(panel.GetExpandedHeight(), 174.0f);

    clickHeader();
    EXPECT_FALSE(panel.IsCollapsed());
    EXPECT_FLOAT_EQ(Height(panel.GetWindow()), 174.0f);
    EXPECT_TRUE(client->isVisible());
}

// A view area with two resources whose gadgets fill their panels with material rows.
class SidebarTest : public testing::Test {
protected:
    void SetUp() override
    {
        engine_.Register(a_);
        engine_.Register(b_);
        area_.ApplyLook(vexa::ViewareaLook{});
        sidebar_ = area_.GetSidebar();
        ASSERT_NE(sidebar_, nullptr);
        column_ = sidebar_->GetColumn();
        ASSERT_NE(column_, nullptr);
    }

    void AddBoth()
    {
        // The later resource first: panels stand in id order whatever order they come in.
        for (const auto& resource : {b_, a_})
            vexa::GetNotifications().Notify(vexa::kResourceAdded, &resource->id);
    }

    std::size_t PositionOf(const vexa::GuiPanel& panel) const
    {
        return static_cast<CEGUI::SequentialLayoutContainer*>(column_)->getPositionOfChild(panel.GetWindow());
    }

    FakeEngine engine_;
    std::shared_ptr<MaterialResource> a_ = std::make_shared<MaterialResource>("a");
    std::shared_ptr<MaterialResource> b_ = std::make_shared<MaterialResource>("b");
    vexa::Viewarea area_{0, gui_test::Root()};
    vexa::Sidebar* sidebar_ = nullptr;
    CEGUI::Window* column_ = nullptr;
};

TEST_F(SidebarTest, GadgetsBringTheirPanelsAndTakeThemAway)
{
    EXPECT_TRUE(column_->isAncestor(area_.GetChild("sidebar/scroll_panel")));
    const std::size_t builtIn = column_->getChildCount();
    AddBoth();
    ASSERT_EQ(sidebar_->GetResourcePanelCount(), 2u);
    vexa::GuiStylingPanel* panel = sidebar_->GetResourcePanel(a_->id);
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ(column_->getChildCount(), builtIn + 2);
    EXPECT_LT(PositionOf(*panel), PositionOf(*sidebar_->GetResourcePanel(b_->id)));
    EXPECT_EQ(panel->GetHeader()->getChild("lab_title")->getText(), "a");
    EXPECT_TRUE(panel->GetButton("btn_focus")->isVisible());
    EXPECT_FALSE(panel->GetButton("btn_pin")->isVisible()) << "only the selected resource shows its pin";

    // Without its colour the material starts at "Use lighting" (its rows: StylingRowsTest).
    auto* lighting = static_cast<CEGUI::ToggleButton*>(
        panel->GetClientWindow()->getChild("generated_element_0/dynamic_control"));
    const float lit = Height(panel->GetWindow());
    lighting->setSelected(false);
    EXPECT_LT(Height(panel->GetWindow()), lit) << "the panel follows its shrinking client";

    for (const auto& resource : {a_, b_})
        vexa::GetNotifications().Notify(vexa::kResourceRemoved, &resource->id);
    EXPECT_EQ(sidebar_->GetResourcePanelCount(), 0u);
    EXPECT_EQ(column_->getChildCount(), builtIn);
}

} // namespace
