#include "core/Notifications.h"
#include "core/Viewarea.h"
#include "scene/GadgetManager.h"

#include <vexa/Gadget.h>
#include <vexa/Resource.h>

#include <vexa/draw/Scene.h>

#include "FakeEngine.h"
#include "GuiTestSupport.h"

#include <CEGUI/CEGUI.h>

namespace {

using testing_support::FakeEngine;

class PlainResource final : public vexa::Resource {
public:
    PlainResource(const std::string& name, const std::string& type)
        : Resource(name, type)
    {
    }
    std::shared_ptr<vexa::Gadget> CreateGadget() override
    {
        ++made;
        return std::make_shared<vexa::Gadget>(this);
    }
    int made = 0;
};

vexa::ViewareaLook Look(const std::string& position, const std::string& size)
{
    vexa::ViewareaLook look;
    look.position = vexa::StringToCompositePosition(position);
    look.size = vexa::StringToCompositeSize(size);
    return look;
}

TEST(Viewarea, BuiltFromTheLayoutAndPlacedByCompositeCoordinates)
{
    FakeEngine engine;
    vexa::Viewarea area(3, gui_test::Root());
    ASSERT_NE(area.GetWindow(), nullptr);
    ASSERT_NE(area.GetRenderCanvas(), nullptr);

    area.ApplyLook(Look("0.5,0;0,0", "0.5,0;1,0"));
    const glm::ivec4 viewport = area.GetScene()->GetViewport();
    const CEGUI::Sizef display = gui_test::Root()->getPixelSize();
    EXPECT_EQ(viewport.x, static_cast<int>(display.d_width / 2));
    // The scene is drawn beside the sidebar (270 px), not under it.
    EXPECT_EQ(viewport.z, static_cast<int>(display.d_width) - 270);
    EXPECT_TRUE(area.Contains(display.d_width * 0.75f, 10.0f));
    EXPECT_FALSE(area.Contains(display.d_width * 0.25f, 10.0f));

    // Resizing the parent keeps the area on the right half.
    const CEGUI::USize before = gui_test::Root()->getSize();
    gui_test::Root()->setSize(CEGUI::USize(CEGUI::UDim(0, 800), CEGUI::UDim(0, 600)));
    EXPECT_EQ(area.GetScene()->GetViewport(), glm::ivec4(400, 0, 530, 600));
    area.SetSidebarVisible(false);
    EXPECT_EQ(area.GetScene()->GetViewport(), glm::ivec4(400, 0, 800, 600));
    gui_test::Root()->setSize(before);
}

TEST(Viewarea, SidebarAndToolbarFollowTheLook)
{
    FakeEngine engine;
    vexa::Viewarea area(0, gui_test::Root());
    std::vector<bool> changes;
    area.SetSidebarVisibilityCallback([&](bool visible) { changes.push_back(visible); });
    CEGUI::Window* sidebar = area.GetChild("sidebar");
    CEGUI::Window* toggle = area.GetChild("btn_toggle_sidebar");

    vexa::ViewareaLook look;
    look.sidebarEnabled = false;
    look.sidebarVisible = true;
    area.ApplyLook(look);
    EXPECT_FALSE(sidebar->isVisible());
    EXPECT_FALSE(toggle->isVisible());
    EXPECT_EQ(changes, std::vector<bool>{false});
    // The look takes the user's toggle away; the host may still show the sidebar.
    area.SetSidebarVisible(true);
    EXPECT_TRUE(sidebar->isVisible());
    EXPECT_FALSE(toggle->isVisible());
    EXPECT_EQ(changes, (std::vector<bool>{false, true}));
    area.SetSidebarVisible(false);
    changes.clear();

    look.sidebarEnabled = true;
    look.cameraAnimatorEnabled = false;
    look.settingsEnabled = false;
    area.ApplyLook(look);
    EXPECT_TRUE(sidebar->isVisible());
    EXPECT_TRUE(toggle->isVisible());
    EXPECT_EQ(toggle->getProperty("Glyph"), "Icons16px/right");
    EXPECT_FALSE(area.GetChild("sidebar/toolbar")->isVisible());

    gui_test::Click(toggle);
    EXPECT_FALSE(sidebar->isVisible());
    EXPECT_EQ(toggle->getProperty("Glyph"), "Icons16px/left");
    EXPECT_EQ(changes, (std::vector<bool>{true, false}));

    look.settingsEnabled = true;
    area.ApplyLook(look);
    EXPECT_TRUE(area.GetChild("sidebar/toolbar")->isVisible());
    EXPECT_FALSE(area.GetChild("sidebar/toolbar/toggle_video")->isVisible());
    EXPECT_TRUE(area.GetChild("sidebar/toolbar/toggle_options")->isVisible());
}

TEST(Viewarea, ResourceNotificationsCreateRebuildAndRemoveGadgets)
{
    FakeEngine engine;
    auto shown = std::make_shared<PlainResource>("a", "PointCloudResource");
    auto other = std::make_shared<PlainResource>("b", "PointCloudResource");
    engine.Register(shown);
    engine.Register(other);

    vexa::Viewarea all(0, gui_test::Root());
    all.ApplyLook(vexa::ViewareaLook{});
    vexa::Viewarea onlyA(1, gui_test::Root());
    vexa::ViewareaLook rules;
    rules.resourceLooks.resize(1);
    rules.resourceLooks[0].id = shown->id;
    onlyA.ApplyLook(rules);

    for (const auto& resource : {shown, other})
        vexa::GetNotifications().Notify(vexa::kResourceAdded, &resource->id);
    EXPECT_EQ(all.GetGadgetManager().GetGadgets().size(), 2u);
    EXPECT_EQ(onlyA.GetGadgetManager().GetGadgets().size(), 1u);
    EXPECT_TRUE(onlyA.GetGadgetManager().HasGadget(shown->id));

    const auto before = all.GetGadgetManager().GetGadget(shown->id);
    vexa::GetNotifications().Notify(vexa::kResourceGadgetsReset, &shown->id);
    EXPECT_NE(all.GetGadgetManager().GetGadget(shown->id), before);
    EXPECT_EQ(shown->made, 4);

    // Resetting an id a view area does not show creates nothing there.
    vexa::GetNotifications().Notify(vexa::kResourceGadgetsReset, &other->id);
    EXPECT_FALSE(onlyA.GetGadgetManager().HasGadget(other->id));

    engine.redrawRequests = 0;
    vexa::GetNotifications().Notify(vexa::kResourceRemoved, &other->id);
    EXPECT_FALSE(all.GetGadgetManager().HasGadget(other->id));
    EXPECT_GT(engine.redrawRequests, 0);
}

} // namespace
