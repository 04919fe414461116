// The engine's camera animation: each sidebar's camera button adds and removes its panel in
// that view area only, and a look can take the button away.

#include "EngineTestSupport.h"
#include "LogCapture.h"

#include "core/Viewarea.h"
#include "gui/GuiStylingPanel.h"
#include "gui/Sidebar.h"
#include "scene/GadgetManager.h"

#include <vexa/modules/CameraAnimGadget.h>

namespace {

using namespace engine_test;

using CameraAnimation = EngineCase;

TEST_F(CameraAnimation, TheVideoButtonTogglesThePanelInItsOwnViewArea)
{
    vexa::Engine engine;
    ASSERT_TRUE(Start(engine, state, WriteLook(R"({"vexa": {"version": "1.0", "views": [
        {"position": "0,0;0,0", "size": "0.5,0;1,0"},
        {"position": "0.5,0;0,0", "size": "0.5,0;1,0", "enable-camera-animator": false}]}})")));
    const auto animation = engine.GetBuiltInResource(vexa::Engine::kCameraAnimationResource);
    ASSERT_NE(animation, nullptr);
    const vexa::ResourceId id = animation->GetId();
    EXPECT_EQ(id.type, "CameraAnimResource");
    // Not a listed resource: it would get a gadget in every view area.
    for (const auto& resource : engine.GetResources())
        EXPECT_NE(resource->GetId(), id);

    vexa::Viewarea& left = *engine.GetViewareas()[0];
    vexa::Viewarea& right = *engine.GetViewareas()[1];
    EXPECT_FALSE(left.GetGadgetManager().HasGadget(id)) << "the panel is hidden until asked for";
    CEGUI::Window* button = left.GetChild("sidebar/toolbar/toggle_video");
    ASSERT_NE(button, nullptr);
    Click(button);
    ASSERT_TRUE(left.GetGadgetManager().HasGadget(id));
    EXPECT_NE(dynamic_cast<vexa::modules::CameraAnimGadget*>(left.GetGadgetManager().GetGadget(id).get()), nullptr);
    EXPECT_NE(left.GetSidebar()->GetResourcePanel(id), nullptr);
    EXPECT_FALSE(right.GetGadgetManager().HasGadget(id));
    engine.Update();

    // A host clearing its resources leaves the panel alone.
    engine.RemoveAllResources();
    EXPECT_TRUE(left.GetGadgetManager().HasGadget(id));

    Click(button);
    EXPECT_FALSE(left.GetGadgetManager().HasGadget(id));
    EXPECT_EQ(left.GetSidebar()->GetResourcePanel(id), nullptr);

    // Where the look switches the animator off there is no button, and no panel to toggle.
    EXPECT_FALSE(right.GetChild("sidebar/toolbar/toggle_video")->isVisible());
    testing_support::LogCapture log;
    right.GetSidebar()->ToggleVideo();
    EXPECT_FALSE(right.GetGadgetManager().HasGadget(id));
}

} // namespace
