#include "core/Notifications.h"
#include "core/Viewarea.h"

#include <vexa/Debugger.h>
#include <vexa/draw/GeometryRenderer.h>
#include <vexa/draw/GeometryStyle.h>
#include <vexa/draw/RenderSystem.h>
#include <vexa/draw/Scene.h>

#include <plor/Window.h>
#include <tesk/Image.h>

#include "EngineTestSupport.h"
#include "LogCapture.h"

#include <cstdint>
#include <functional>
#include <stdexcept>

using engine_test::FreshDirectory;
using engine_test::MessageBoxes;
using engine_test::PlainResource;
namespace fs = std::filesystem;

namespace {

using VexaLifecycle = engine_test::EngineCase;
using Engine = engine_test::EngineCase;
using VexaDebug = engine_test::EngineCase;

} // namespace

TEST_F(VexaLifecycle, InitializeIsRefusedWhenRunningAndAfterTerminate)
{
    testing_support::LogCapture log;
    ASSERT_TRUE(StartLibrary());
    EXPECT_FALSE(vexa::Initialize());
    EXPECT_TRUE(
        log.Contains("Cannot initialize system again, it was initialized already.", "vexa::Initialize"));
    // The first engine keeps running.
    EXPECT_TRUE(vexa::IsOpen());
    vexa::Update();
    // Only the library's own debugger, shown in the one view area.
    ASSERT_EQ(vexa::GetActiveResources().size(), 1u);
    EXPECT_EQ(vexa::GetActiveResources()[0].resource->GetId().type, "Debugger");
    // The built-in look has one view area; indices past it are ignored.
    vexa::SetAxesVisible(7, true);
    // That host resources join the list: HostGadgetsMayReachTheirViewArea... below.
    vexa::Terminate();
    log.messages.clear();
    EXPECT_FALSE(vexa::Initialize());
    EXPECT_TRUE(
        log.Contains("Cannot initialize system again, it was initialized already.", "vexa::Initialize"));
    // What the other calls answer then: e2e Lifecycle.
    vexa::Terminate();
}

TEST(VexaBeforeInitialize, GuardedFunctionsDoNothingAndAStartWithoutAssetsFails)
{
    {
        // The exception's text is the install check's host's to read.
        testing_support::LogCapture log;
        EXPECT_THROW(vexa::Debug(), std::runtime_error);
        ASSERT_EQ(log.messages.size(), 1u);
        EXPECT_EQ(log.messages[0].level, rlog::Level::Crash);
        EXPECT_TRUE(log.Contains("Can not return vexa::Debugger. Have you initialized VEXA?", "vexa::Debug"));
    }
    int removed = 0;
    vexa::GetNotifications().Subscribe(&removed, vexa::kResourceRemoved, [&](const void*) { ++removed; });

    vexa::AddResource(std::make_shared<PlainResource>("early"));
    vexa::Update();
    vexa::RemoveAllResources();
    vexa::RemoveResourcesWithPrefix("e");
    EXPECT_FALSE(vexa::IsOpen());
    EXPECT_EQ(removed, 0);
    EXPECT_TRUE(vexa::GetActiveResources().empty());
    // The resource never reached the list.
    EXPECT_EQ(vexa::GetEngineServices().FindResource(vexa::ResourceId("early", "PlainResource")), nullptr);
    vexa::GetNotifications().Unsubscribe(&removed);
    vexa::Terminate();

    // A missing asset directory fails the start-up, and only that: the flag stays clear, so a
    // second attempt is not refused as a double start.
    MessageBoxes boxes;
    testing_support::LogCapture log;
    const fs::path missing = FreshDirectory("assets") / "nowhere";
    vexa::SetAssetDirectory(missing.string()); // warned of as PlatformTest shows
    EXPECT_FALSE(vexa::Initialize());
    EXPECT_TRUE(boxes.Has("VEXA Initialization Error", "Asset directory is invalid."));
    log.messages.clear();
    EXPECT_FALSE(vexa::Initialize());
    EXPECT_FALSE(
        log.Contains("Cannot initialize system again, it was initialized already.", "vexa::Initialize"));
    vexa::Terminate();
}

// The box drawn for its lifetime, seen in a screenshot, is the install check's host's case
// (tests/install/host); here: the message's place and an emptied list. That every view area
// has it is EngineGui's case; the missing debugger before Initialize is checked with the other
// calls made too early (above).
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

TEST(EngineResources, ListRaisesNotificationsInListOrder)
{
    vexa::Engine engine;
    std::vector<std::pair<unsigned int, std::string>> raised;
    int token = 0;
    for (unsigned int number : {0u, 1u, 2u})
        vexa::GetNotifications().Subscribe(&token, number, [&raised, number](const void* data) {
            raised.emplace_back(number, static_cast<const vexa::ResourceId*>(data)->name);
        });

    for (const char* name : {"scan/a", "mesh", "scan/b", "Scan/c", "scan/d"})
        engine.AddResource(std::make_shared<PlainResource>(name));
    const auto replacement = std::make_shared<PlainResource>("mesh");
    engine.AddResource(replacement);
    EXPECT_EQ(raised.back(), (std::pair<unsigned int, std::string>{1u, "mesh"}));
    EXPECT_EQ(engine.FindResource(replacement->GetId()), replacement);
    EXPECT_EQ(engine.GetResources().size(), 5u);

    using Raised = std::vector<std::pair<unsigned int, std::string>>;
    raised.clear();
    engine.RemoveResourcesWithPrefix("scan/");
    EXPECT_EQ(raised, (Raised{{2u, "scan/a"}, {2u, "scan/b"}, {2u, "scan/d"}}));
    ASSERT_EQ(engine.GetResources().size(), 2u);
    EXPECT_EQ(engine.GetResources()[0]->GetId().name, "mesh");
    EXPECT_EQ(engine.GetResources()[1]->GetId().name, "Scan/c");

    raised.clear();
    engine.RemoveAllResources();
    EXPECT_EQ(raised, (Raised{{2u, "mesh"}, {2u, "Scan/c"}}));
    EXPECT_TRUE(engine.GetResources().empty());
    vexa::GetNotifications().Unsubscribe(&token);
}

TEST_F(Engine, IdleStepsDrawNothingAndEachChangeOrDragDrawsTheNextStep)
{
    ASSERT_TRUE(StartLibrary());
    vexa::Engine& engine = *vexa::Engine::GetCurrent();
    ASSERT_TRUE(engine.GetOptions().IsOptimizedRendering());
    const vexa::draw::RenderSystem& renderSystem = *engine.GetRenderSystem();

    // Start-up wants a first frame; let the GUI settle.
    for (int i = 0; i < 5; ++i)
        vexa::Update();
    std::uint64_t expected = renderSystem.GetFrameCount();
    EXPECT_GT(expected, 0u);
    for (int i = 0; i < 3; ++i)
        vexa::Update();
    ASSERT_EQ(renderSystem.GetFrameCount(), expected) << "optimised rendering draws nothing while idle";

    // A redraw request, and the host calls that change the picture: one frame each.
    for (const auto& change : std::vector<std::function<void()>>{
             [&] { engine.RequestRedraw(); },
             [] { vexa::SetAxesVisible(0, false); },
             [&] { vexa::SetSidebarVisible(0, !engine.GetViewareas()[0]->IsSidebarVisible()); },
             [] {
                 vexa::FrameBox({0, 0, 0}, {1, 2, 3});
             },
         }) {
        change();
        vexa::Update();
        EXPECT_EQ(renderSystem.GetFrameCount(), ++expected);
        EXPECT_FALSE(engine.IsRedrawRequested());
        vexa::Update();
        EXPECT_EQ(renderSystem.GetFrameCount(), expected) << "one frame per change";
    }

    // A drag over the scene turns the camera: that step draws one frame, the end of the drag
    // one more, and then nothing.
    const glm::vec3 before = engine.GetViewareas()[0]->GetScene()->GetCamera()->GetPosition();
    engine.OnMouseMove(100.0f, 200.0f);
    engine.OnMouseDown(plor::MouseButton::Left, plor::Modifiers{});
    engine.OnMouseMove(140.0f, 215.0f);
    vexa::Update();
    EXPECT_EQ(renderSystem.GetFrameCount(), ++expected);
    EXPECT_NE(engine.GetViewareas()[0]->GetScene()->GetCamera()->GetPosition(), before)
        << "a plain left drag turns";
    engine.OnMouseUp(plor::MouseButton::Left, plor::Modifiers{});
    vexa::Update();
    vexa::Update();
    EXPECT_EQ(renderSystem.GetFrameCount(), ++expected);

    // Without optimised rendering every step draws.
    engine.GetOptions().SetOptimizedRendering(false);
    vexa::Update();
    vexa::Update();
    EXPECT_EQ(renderSystem.GetFrameCount(), expected + 2);
    // The first start had no options.bin yet: the GPU check (if it warned) used a box.
    EXPECT_TRUE(fs::exists(state / "options.bin"));
    vexa::Terminate();
}

TEST_F(Engine, EveryFailedLookIsReportedAndOnlyAReadLookPlacesTheWindow)
{
    const char* const kCaption = "VEXA Initialization";
    const char* const kText = "Errors occurred when parsing look json. See log for more info.";
    // Thrown (unreadable) or merely failed (a view without its place): the user hears
    // of each the same way. Every way a look fails is LookParserTest's.
    const std::vector<std::string> broken = {
        "{ not json",
        R"({"vexa": {"version": "1.0", "views": [{"size": "1,0;1,0"}]}})",
    };
    for (std::size_t i = 0; i < broken.size(); ++i) {
        SCOPED_TRACE(broken[i]);
        const std::string look = WriteLook(broken[i], "look" + std::to_string(i) + ".json");
        MessageBoxes seen;
        testing_support::LogCapture log;
        vexa::Engine engine;
        ASSERT_TRUE(engine_test::Start(engine, state / std::to_string(i), look));
        EXPECT_TRUE(seen.Has(kCaption, kText));
        // Without a look, the window keeps its own caption and place.
        const plor::WindowParams& params = engine.GetWindowManager().GetWindowParams();
        EXPECT_EQ(params.caption, "PLOR Window");
        EXPECT_TRUE(params.positionSet);
        EXPECT_EQ(engine.GetViewareas().size(), 1u);
    }

    // A good look: no box, its caption, and the window system places the window.
    MessageBoxes seen;
    vexa::Engine engine;
    ASSERT_TRUE(
        engine_test::Start(engine, state / "good",
                           WriteLook(R"({"vexa": {"version": "1.0", "caption": "Scanner"}})", "good.json")));
    EXPECT_FALSE(seen.Has(kCaption, kText));
    EXPECT_EQ(engine.GetWindowManager().GetWindowParams().caption, "Scanner");
    EXPECT_FALSE(engine.GetWindowManager().GetWindowParams().positionSet);
}

namespace {

// A host's own gadget: it keeps a renderer, and on its way out (Terminate) still reaches its
// renderer and its view area's camera, as a host's clean-up code would. Its key handler
// rebuilds its own gadgets or removes resources while the view area is walking its gadgets.
class HostGadget final : public vexa::Gadget {
public:
    HostGadget(const vexa::Resource* resource, std::vector<std::string>& log) : Gadget(resource), log_(log) {}

    void Initialize() override
    {
        LoadState();
        Gadget::Initialize();
        handle_ = AddRenderer(std::make_shared<vexa::draw::GeometryRenderer>(vexa::draw::GeometryName::Box),
                              std::make_shared<vexa::draw::GeometryStyle>(), 0);
    }

    void Terminate() override
    {
        RemoveRenderer(handle_);
        log_.push_back("terminate " + GetId().name +
                       (GetCamera() != nullptr ? " with camera" : " without camera"));
        Gadget::Terminate();
    }

    vexa::EventStatus KeyPressed(vexa::Key key, const vexa::ModKeys&, vexa::EventStatus status) override
    {
        log_.push_back("key " + GetId().name);
        if (key == vexa::Key::G)
            const_cast<vexa::Resource*>(GetResource())->ResetGadgets();
        if (key == vexa::Key::D)
            vexa::RemoveAllResources();
        return status;
    }

private:
    std::vector<std::string>& log_;
    int handle_ = 0;
};

class HostResource final : public vexa::Resource {
public:
    HostResource(const std::string& name, std::vector<std::string>& log)
        : Resource(name, "HostResource"), log_(log)
    {
    }
    std::shared_ptr<vexa::Gadget> CreateGadget() override { return std::make_shared<HostGadget>(this, log_); }

private:
    std::vector<std::string>& log_;
};

} // namespace

TEST_F(Engine, HostGadgetsMayReachTheirViewAreaOnTheWayOutAndChangeGadgetsFromAHandler)
{
    std::vector<std::string> log;
    ASSERT_TRUE(StartLibrary());
    vexa::AddResource(std::make_shared<HostResource>("a", log));
    vexa::AddResource(std::make_shared<HostResource>("b", log));
    vexa::Update();
    vexa::SetKeyDownCallback([&](const vexa::Key&, const vexa::ModKeys&) { log.push_back("host"); });
    vexa::Engine* engine = vexa::Engine::GetCurrent();
    ASSERT_NE(engine, nullptr);

    const auto hostGadgets = [] {
        std::size_t count = 0;
        for (const vexa::ActiveResourceInfo& info : vexa::GetActiveResources())
            count += info.resource && info.resource->GetId().type == "HostResource";
        return count;
    };

    // Each rebuilds its gadgets while the area walks them: the new gadgets are not asked
    // again, and "b" still hears the key after "a" was replaced.
    log.clear();
    engine->OnKeyDown(static_cast<int>(vexa::Key::G), {}, false);
    EXPECT_EQ(log, (std::vector<std::string>{"key a", "terminate a with camera", "key b",
                                             "terminate b with camera", "host"}));
    EXPECT_EQ(hostGadgets(), 2u);

    // Removing everything from a handler: nobody is asked after being removed.
    log.clear();
    engine->OnKeyDown(static_cast<int>(vexa::Key::D), {}, false);
    EXPECT_EQ(log, (std::vector<std::string>{"key a", "terminate a with camera", "terminate b with camera",
                                             "host"}));
    EXPECT_EQ(hostGadgets(), 0u);

    // Gadgets that are still there when the library ends reach their view area too.
    vexa::AddResource(std::make_shared<HostResource>("c", log));
    vexa::Update();
    log.clear();
    vexa::Terminate();
    EXPECT_EQ(log, (std::vector<std::string>{"terminate c with camera"}));
}
