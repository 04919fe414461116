// The library's debugger through the public functions, as a host uses it: there is none
// before Initialize; after it, what is drawn shows in every view area, for its lifetime.

#include "EngineTestSupport.h"
#include "LogCapture.h"

#include "core/Viewarea.h"
#include "gui/Sidebar.h"
#include "scene/GadgetManager.h"

#include <vexa/Debugger.h>
#include <vexa/Lifecycle.h>

#include <tesk/Image.h>

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <stdexcept>
#include <thread>

namespace {

using namespace engine_test;

constexpr const char* kNoDebugger = "Can not return vexa::Debugger. Have you initialized VEXA?";

// Pixels of the picture inside the rectangle that are clearly red.
int CountRed(const tesk::Image& image, std::uint32_t x0, std::uint32_t y0, std::uint32_t x1, std::uint32_t y1)
{
    int count = 0;
    for (std::uint32_t y = y0; y < y1; ++y)
        for (std::uint32_t x = x0; x < x1; ++x)
            if (image.At(x, y, 0) > 0.35f && image.At(x, y, 1) < 0.15f && image.At(x, y, 2) < 0.15f)
                ++count;
    return count;
}

tesk::Image Shoot(const fs::path& file)
{
    tesk::Image image;
    EXPECT_TRUE(vexa::SaveScreenshot(file.string()));
    EXPECT_TRUE(image.LoadPng(file.string()));
    return image;
}

// Updates until `seconds` of library time have passed (the library measures real time).
void UpdateFor(double seconds)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    while (std::chrono::steady_clock::now() < end)
    {
        vexa::Update();
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

TEST(VexaDebug, ThereIsNoDebuggerBeforeInitialize)
{
    testing_support::LogCapture log;
    try
    {
        vexa::Debug();
        FAIL() << "Debug() returned before Initialize";
    }
    catch (const std::runtime_error& e)
    {
        EXPECT_EQ(std::string(e.what()), kNoDebugger);
    }
    ASSERT_EQ(log.messages.size(), 1u);
    EXPECT_EQ(log.messages[0].level, rlog::Level::Crash);
    EXPECT_TRUE(log.Contains(kNoDebugger, "vexa::Debug"));
    vexa::Terminate();
}

TEST(VexaDebug, ABoxShowsInTheWindowForItsLifetimeAndSurvivesAnEmptiedList)
{
    if (!HasDisplay())
        GTEST_SKIP() << "needs a display";
    const fs::path state = FreshDirectory("debug-box");
    MessageBoxes boxes;
    vexa::SetAssetDirectory(VEXA_SOURCE_ASSET_DIR);
    vexa::SetIntermediateDirectory(state.string());
    ASSERT_TRUE(vexa::Initialize());
    vexa::SetSidebarVisible(0, false);
    vexa::SetAxesVisible(0, false);
    vexa::Update();

    // The default camera looks at the origin from (2, 2, 2).
    vexa::Debug().DrawBox({{-0.5f, -0.5f, -0.5f}, {0.5f, 0.5f, 0.5f}}, {1, 0, 0}, 0.3f);
    vexa::Debug().LogMessage("debugging", 0.3f);
    vexa::Update();
    tesk::Image shown = Shoot(state / "box.png");
    const std::uint32_t w = shown.GetWidth();
    const std::uint32_t h = shown.GetHeight();
    EXPECT_GT(CountRed(shown, w * 2 / 5, h * 2 / 5, w * 3 / 5, h * 3 / 5), static_cast<int>(w * h / 50))
        << "no red box in the middle of the window";
    // The message: bright amber glyphs in the top-left corner.
    int amber = 0;
    for (std::uint32_t y = 0; y < 60; ++y)
        for (std::uint32_t x = 0; x < 200; ++x)
            if (shown.At(x, y, 0) > 0.8f && shown.At(x, y, 1) > 0.6f && shown.At(x, y, 2) < 0.5f)
                ++amber;
    EXPECT_GT(amber, 20) << "no message at the top left";

    UpdateFor(0.6);
    tesk::Image gone = Shoot(state / "gone.png");
    EXPECT_EQ(CountRed(gone, 0, 0, w, h), 0) << "the box outlived its 0.3 s";

    // The debugger is listed like every resource: emptying the list removes it too.
    vexa::RemoveAllResources();
    vexa::Update();
    {
        testing_support::LogCapture quiet;
        EXPECT_THROW(vexa::Debug(), std::runtime_error) << "the debugger was removed with the others";
    }
    vexa::Terminate();

    testing_support::LogCapture log;
    EXPECT_THROW(vexa::Debug(), std::runtime_error) << "after Terminate there is no debugger";
    vexa::Terminate();
}

TEST(VexaDebug, EveryViewAreaShowsTheDebuggerWhateverItsRulesAndWithoutAPanel)
{
    if (!HasDisplay())
        GTEST_SKIP() << "needs a display";
    const fs::path state = FreshDirectory("debug-rules");
    const fs::path look = state / "look.json";
    std::ofstream(look) << R"({"vexa": {"version": "1.0", "views": [
        {"position": "0,0;0,0", "size": "0.5,0;1,0", "units": [{"id": "PlainResource:only"}]},
        {"position": "0.5,0;0,0", "size": "0.5,0;1,0"}]}})";
    MessageBoxes boxes;
    vexa::Engine engine;
    ASSERT_TRUE(Start(engine, state, look.string()));
    const vexa::ResourceId debugger(vexa::Debugger::kBuiltInName, "Debugger");
    ASSERT_EQ(engine.GetViewareas().size(), 2u);
    for (const auto& area : engine.GetViewareas())
    {
        EXPECT_TRUE(area->GetGadgetManager().HasGadget(debugger)) << "view area " << area->GetId();
        EXPECT_EQ(area->GetSidebar()->GetResourcePanelCount(), 0u) << "the debugger has nothing to set";
    }
}

} // namespace
