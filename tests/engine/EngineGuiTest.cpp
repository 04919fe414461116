// The engine's own GUI: the notice, sidebar regeneration and the rules a look gives each
// resource's panel, driven through a real engine and its window.

#include "core/Viewarea.h"
#include "gui/GuiStylingPanel.h"
#include "gui/Sidebar.h"
#include "scene/GadgetManager.h"

#include <vexa/Debugger.h>
#include <vexa/draw/RenderSystem.h>
#include <vexa/draw/Scene.h>

#include <plor/Window.h>

#include "EngineTestSupport.h"

#include <chrono>

namespace {

using namespace engine_test;

using EngineGui = EngineCase;

vexa::ResourceId Plain(const std::string& name)
{
    return vexa::ResourceId(name, "PlainResource");
}

} // namespace

TEST_F(EngineGui, NoticesFadeSidebarsRegenerateShiftClicksPickAndIconifiedStepsDoNothing)
{
    vexa::Engine engine;
    ASSERT_TRUE(Start(engine, state));
    engine.Update();

    engine.ShowNotice("Layout saved", 0.2f);
    CEGUI::Window* notice =
        CEGUI::System::getSingleton().getDefaultGUIContext().getRootWindow()->getChild("vexa_notice");
    // Notices shown and faded: e2e Window and Picking.
    EXPECT_LE(notice->getAlpha(), 0.2f / 2.5f + 1e-3f);
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (engine.GetNoticeCountdown() > 0.0f && std::chrono::steady_clock::now() < end) {
        engine.Update();
        // Short notices never reach full opacity: they start fading at once.
        EXPECT_LE(notice->getAlpha(), 0.2f / 2.5f + 1e-3f);
    }
    EXPECT_FALSE(notice->isVisible());

    engine.AddResource(std::make_shared<PlainResource>("a"));
    vexa::Sidebar* sidebar = engine.GetViewareas()[0]->GetSidebar();
    ASSERT_NE(sidebar, nullptr);
    sidebar->GetResourcePanel(Plain("a"))->SetCollapsed(true);
    const CEGUI::Window* before = sidebar->GetResourcePanel(Plain("a"))->GetWindow();
    sidebar->RequestRegeneration();
    EXPECT_EQ(sidebar->GetResourcePanel(Plain("a"))->GetWindow(), before) << "not from inside the request";
    engine.Update();
    EXPECT_FALSE(sidebar->IsRegenerationRequested());
    ASSERT_NE(sidebar->GetResourcePanel(Plain("a")), nullptr);
    EXPECT_NE(sidebar->GetResourcePanel(Plain("a"))->GetWindow(), before);
    EXPECT_TRUE(sidebar->GetResourcePanel(Plain("a"))->IsCollapsed());

    const plor::Modifiers shift = plor::Modifiers::FromBits(1);
    // A drag with Shift held is no pick (that it does not turn the camera: e2e CameraGestures).
    engine.OnMouseMove(100.0f, 200.0f);
    engine.OnMouseDown(plor::MouseButton::Left, shift);
    engine.OnMouseMove(160.0f, 230.0f);
    engine.OnMouseUp(plor::MouseButton::Left, shift);
    EXPECT_EQ(engine.GetNoticeCountdown(), 0.0f);

    // A click (a pixel of jitter allowed) answers, even where nothing is.
    engine.OnMouseMove(100.0f, 200.0f);
    engine.OnMouseDown(plor::MouseButton::Left, shift);
    engine.OnMouseMove(101.0f, 201.0f);
    engine.OnMouseUp(plor::MouseButton::Left, shift);
    EXPECT_GT(engine.GetNoticeCountdown(), 0.0f);
    EXPECT_EQ(notice->getText(), "Nothing to pick under the pointer");

    // A plain click is no pick.
    engine.ShowNotice("other", 1.0f);
    engine.OnMouseDown(plor::MouseButton::Left, {});
    engine.OnMouseUp(plor::MouseButton::Left, {});
    EXPECT_EQ(notice->getText(), "other");

    // An iconified window skips the whole step.
    engine.GetOptions().SetOptimizedRendering(false);
    engine.Update();
    const std::uint64_t frames = engine.GetRenderSystem()->GetFrameCount();

    engine.OnWindowIconified(true);
    engine.ShowNotice("still here", 1.0f);
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 20; ++i)
        engine.Update();
    const auto elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(engine.GetRenderSystem()->GetFrameCount(), frames)
        << "nothing is drawn, even without optimised rendering";
    EXPECT_FLOAT_EQ(engine.GetNoticeCountdown(), 1.0f) << "time does not run for the hidden window's widgets";
    EXPECT_LT(elapsed, std::chrono::milliseconds(200)) << "an iconified step returns at once";

    engine.OnWindowIconified(false);
    engine.Update();
    EXPECT_EQ(engine.GetRenderSystem()->GetFrameCount(), frames + 1);
}

TEST_F(EngineGui, ResourceRulesOfTheLookShapeTheSidebar)
{
    const std::string look =
        WriteLook(R"({"vexa": {"version": "1.0", "views": [{"position": "0,0;0,0", "size": "1,0;1,0",
        "units": [{"id": "PlainResource:fixed", "permanent": true},
                  {"id": "PlainResource:quiet", "gui-enabled": false, "auto-select": true},
                  {"id": "PlainResource:locked", "select-enabled": false, "auto-select": true},
                  {"id": "PlainResource:first", "auto-select": true},
                  {"id": "PlainResource:second", "auto-select": true},
                  {"id": "PlainResource:plain"}]}]}})");
    vexa::Engine engine;
    ASSERT_TRUE(Start(engine, state, look));
    vexa::Viewarea& area = *engine.GetViewareas()[0];
    vexa::Sidebar& sidebar = *area.GetSidebar();
    std::vector<vexa::ResourceId> reported;
    sidebar.SetSelectionCallback([&](const vexa::ResourceId& id) { reported.push_back(id); });
    for (const char* name : {"fixed", "quiet", "locked", "first", "plain", "second", "unlisted"})
        engine.AddResource(std::make_shared<PlainResource>(name));

    // Rules only admit what they name; a resource without a panel is still drawn.
    EXPECT_FALSE(area.GetGadgetManager().HasGadget(Plain("unlisted")));
    EXPECT_TRUE(area.GetGadgetManager().HasGadget(Plain("quiet")));
    EXPECT_EQ(sidebar.GetResourcePanel(Plain("quiet")), nullptr);
    EXPECT_EQ(sidebar.GetResourcePanelCount(), 5u);

    // The newest auto-selected resource wins; the ones that may not be selected never do.
    EXPECT_EQ(sidebar.GetSelectedResource(), Plain("second"));
    EXPECT_TRUE(sidebar.GetResourcePanel(Plain("second"))->IsHighlighted());
    EXPECT_FALSE(sidebar.GetResourcePanel(Plain("first"))->IsHighlighted());

    // Permanent: no remove button, the pin takes its place at the edge.
    vexa::GuiStylingPanel& fixed = *sidebar.GetResourcePanel(Plain("fixed"));
    EXPECT_FALSE(fixed.GetButton("btn_remove")->isVisible());
    EXPECT_EQ(fixed.GetButton("btn_pin")->getXPosition(), CEGUI::UDim(1, -24));
    EXPECT_TRUE(sidebar.GetResourcePanel(Plain("plain"))->GetButton("btn_remove")->isVisible());

    // A double click on a header selects, unless the rule says no.
    Fire(sidebar.GetResourcePanel(Plain("locked"))->GetHeader(), CEGUI::Window::EventMouseDoubleClick,
         CEGUI::Window::EventNamespace);
    EXPECT_EQ(sidebar.GetSelectedResource(), Plain("second"));
    EXPECT_FALSE(sidebar.SetSelectedResource(Plain("locked")));
    EXPECT_FALSE(sidebar.SetSelectedResource(Plain("quiet")));
    EXPECT_TRUE(reported.empty());
    Fire(fixed.GetHeader(), CEGUI::Window::EventMouseDoubleClick, CEGUI::Window::EventNamespace);
    EXPECT_EQ(sidebar.GetSelectedResource(), Plain("fixed"));
    EXPECT_TRUE(fixed.IsHighlighted());
    EXPECT_FALSE(sidebar.GetResourcePanel(Plain("second"))->IsHighlighted());
    EXPECT_EQ(reported, std::vector<vexa::ResourceId>{Plain("fixed")});

    // The host may still remove a permanent resource.
    engine.RemoveResourcesWithPrefix("fixed");
    EXPECT_EQ(sidebar.GetResourcePanel(Plain("fixed")), nullptr);
    EXPECT_FALSE(area.GetGadgetManager().HasGadget(Plain("fixed")));
}

// With the key on (the default) the gear shows: the viewer's own case (e2e BuiltInPanels).
// The debugger is drawn in every view area whatever its rules, and has no panel to show.
TEST_F(EngineGui, OptionsEnabledFalseTakesTheGlobalOptionsFromEverySidebarAndTheDebuggerIsInEveryArea)
{
    vexa::Engine engine;
    ASSERT_TRUE(
        Start(engine, state, WriteLook(R"({"vexa": {"version": "1.0", "options-enabled": false, "views": [
        {"position": "0,0;0,0", "size": "0.5,0;1,0", "units": [{"id": "PlainResource:only"}]},
        {"position": "0.5,0;0,0", "size": "0.5,0;1,0"}]}})")));
    const vexa::ResourceId debugger(vexa::Debugger::kBuiltInName, "Debugger");
    ASSERT_EQ(engine.GetViewareas().size(), 2u);
    for (const auto& area : engine.GetViewareas()) {
        EXPECT_FALSE(area->GetChild("sidebar/toolbar/toggle_options")->isVisible());
        EXPECT_TRUE(area->GetChild("sidebar/toolbar")->isVisible()) << "the camera button stays";
        EXPECT_TRUE(area->GetGadgetManager().HasGadget(debugger)) << "view area " << area->GetId();
        EXPECT_EQ(area->GetSidebar()->GetResourcePanelCount(), 0u) << "the debugger has nothing to set";
    }
}
