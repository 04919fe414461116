// The library's debugger through the public functions, as a host uses it: there is none
// before Initialize; after it, what is drawn shows in every view area, for its lifetime.

#include "EngineTestSupport.h"
#include "LogCapture.h"

#include "core/Viewarea.h"
#include "gui/Sidebar.h"
#include "scene/GadgetManager.h"

#include <vexa/Debugger.h>

#include <tesk/Image.h>

#include <stdexcept>

namespace {

using namespace engine_test;

using VexaDebug = EngineCase;

// The box drawn for its lifetime, seen in a screenshot, is the install check's host's case
// (tests/install/host); here: the message's place and an emptied list. The missing debugger
// before Initialize is checked with the other calls made too early (EngineTest.cpp).
TEST_F(VexaDebug, MessageSitsTopLeftAndEmptyingTheListRemovesTheDebugger)
{
    ASSERT_TRUE(StartLibrary());
    vexa::Debug().LogMessage("debugging", 5.0f);
    vexa::Update();
    const fs::path file = state / "message.png";
    ASSERT_TRUE(vexa::SaveScreenshot(file.string()));
    tesk::Image shown;
    ASSERT_TRUE(shown.LoadPng(file.string()));
    // Bright amber glyphs in the top-left corner, clear of the sidebar on the right.
    int amber = 0;
    for (std::uint32_t y = 0; y < 60; ++y)
        for (std::uint32_t x = 0; x < 200; ++x)
            amber += shown.At(x, y, 0) > 0.8f && shown.At(x, y, 1) > 0.6f && shown.At(x, y, 2) < 0.5f;
    EXPECT_GT(amber, 20) << "no message at the top left";

    // The debugger is listed like every resource: emptying the list removes it too.
    vexa::RemoveAllResources();
    testing_support::LogCapture quiet;
    EXPECT_THROW(vexa::Debug(), std::runtime_error) << "the debugger was removed with the others";
    vexa::Terminate();
}

TEST_F(VexaDebug, EveryViewAreaShowsTheDebuggerWhateverItsRulesAndWithoutAPanel)
{
    vexa::Engine engine;
    ASSERT_TRUE(Start(engine, state, WriteLook(R"({"vexa": {"version": "1.0", "views": [
        {"position": "0,0;0,0", "size": "0.5,0;1,0", "units": [{"id": "PlainResource:only"}]},
        {"position": "0.5,0;0,0", "size": "0.5,0;1,0"}]}})")));
    const vexa::ResourceId debugger(vexa::Debugger::kBuiltInName, "Debugger");
    ASSERT_EQ(engine.GetViewareas().size(), 2u);
    for (const auto& area : engine.GetViewareas())
    {
        EXPECT_TRUE(area->GetGadgetManager().HasGadget(debugger)) << "view area " << area->GetId();
        EXPECT_EQ(area->GetSidebar()->GetResourcePanelCount(), 0u) << "the debugger has nothing to set";
    }
}

} // namespace
