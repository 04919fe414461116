#include "core/Engine.h"
#include "core/Notifications.h"
#include "core/Viewarea.h"

#include <vexa/Gadget.h>
#include <vexa/Lifecycle.h>
#include <vexa/Platform.h>
#include <vexa/Resource.h>
#include <vexa/draw/RenderSystem.h>
#include <vexa/draw/GeometryRenderer.h>
#include <vexa/draw/GeometryStyle.h>
#include <vexa/draw/Scene.h>

#include <plor/Window.h>

#include "EngineTestSupport.h"
#include "LogCapture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <utility>

using engine_test::FreshDirectory;
using engine_test::HasDisplay;
using engine_test::MessageBoxes;
using engine_test::PlainResource;
namespace fs = std::filesystem;

TEST(VexaLifecycle, InitializeIsRefusedWhenRunningAndAfterTerminate)
{
    if (!HasDisplay())
        GTEST_SKIP() << "needs a display";
    const fs::path state = FreshDirectory("lifecycle");
    MessageBoxes boxes;
    testing_support::LogCapture log;
    vexa::SetAssetDirectory(VEXA_SOURCE_ASSET_DIR);
    vexa::SetIntermediateDirectory(state.string());

    ASSERT_TRUE(vexa::Initialize());
    EXPECT_TRUE(vexa::IsOpen());
    EXPECT_FALSE(vexa::Initialize());
    EXPECT_TRUE(log.Contains("Cannot initialize system again, it was initialized already.", "vexa::Initialize"));
    // The first engine keeps running.
    EXPECT_TRUE(vexa::IsOpen());
    vexa::Update();
    // Only the library's own debugger, shown in the one view area.
    ASSERT_EQ(vexa::GetActiveResources().size(), 1u);
    EXPECT_EQ(vexa::GetActiveResources()[0].resource->GetId().type, "Debugger");
    // The built-in look has one view area; indices past it are ignored.
    EXPECT_TRUE(vexa::IsAxesVisible(0));
    vexa::SetAxesVisible(0, false);
    EXPECT_FALSE(vexa::IsAxesVisible(0));
    vexa::SetAxesVisible(7, true);

    vexa::AddResource(std::make_shared<PlainResource>("cloud"));
    const auto active = vexa::GetActiveResources();
    ASSERT_EQ(active.size(), 2u);
    EXPECT_EQ(active[1].resource->GetId().name, "cloud");
    EXPECT_EQ(vexa::GetBackgroundColor(), (tesk::Color3b{0x3D, 0x3D, 0x3D}));

    vexa::Terminate();
    log.messages.clear();
    EXPECT_FALSE(vexa::Initialize());
    EXPECT_TRUE(log.Contains("Cannot initialize system again, it was initialized already.", "vexa::Initialize"));
    // A fresh engine without a window answers the guarded functions.
    EXPECT_FALSE(vexa::IsOpen());
    EXPECT_TRUE(vexa::GetActiveResources().empty());
    vexa::Terminate();
    EXPECT_EQ(vexa::GetVersion(), (runa::Version{0, 7, 0}));
    EXPECT_EQ(vexa::GetWindowHandle(), nullptr);
}

TEST(VexaLifecycle, GuardedFunctionsDoNothingBeforeInitialize)
{
    int removed = 0;
    int token = 0;
    vexa::GetNotifications().Subscribe(&token, vexa::kResourceRemoved, [&](const void*) { ++removed; });

    vexa::AddResource(std::make_shared<PlainResource>("early"));
    vexa::Update();
    vexa::RemoveAllResources();
    vexa::RemoveResourcesWithPrefix("e");
    EXPECT_FALSE(vexa::IsOpen());
    EXPECT_EQ(removed, 0);
    EXPECT_TRUE(vexa::GetActiveResources().empty());
    // The resource never reached the list.
    EXPECT_EQ(vexa::GetEngineServices().FindResource(vexa::ResourceId("early", "PlainResource")), nullptr);
    vexa::GetNotifications().Unsubscribe(&token);
    vexa::Terminate();
}

TEST(VexaLifecycle, MissingAssetDirectoryKeepsThePreviousOneAndFailsStartUp)
{
    MessageBoxes boxes;
    testing_support::LogCapture log;
    const fs::path missing = FreshDirectory("assets") / "nowhere";
    vexa::SetAssetDirectory(missing.string());
    EXPECT_TRUE(log.Contains("Specified asset directory does not exist. Assets will not be loaded. \nPath: " +
                                 missing.string(),
                             "vexa::SetAssetDirectory"));
    EXPECT_FALSE(vexa::Initialize());
    EXPECT_TRUE(boxes.Has("VEXA Initialization Error", "Asset directory is invalid."));
    // A failed start-up leaves the flag clear, so a second attempt is not refused as a double start.
    log.messages.clear();
    EXPECT_FALSE(vexa::Initialize());
    EXPECT_FALSE(log.Contains("Cannot initialize system again, it was initialized already.", "vexa::Initialize"));
    vexa::Terminate();
}

TEST(Engine, DirectorySettersFollowTheirOwnSlashRules)
{
    const fs::path base = FreshDirectory("dirs");
    vexa::Engine engine;

    EXPECT_TRUE(engine.SetIntermediateDirectory((base / "plain").string()));
    EXPECT_TRUE(fs::is_directory(base / "plain"));
    // {given, kept}: a slash is added unless there is one; a backslash is part of the name.
    for (const auto& [given, kept] : {std::pair{"plain", "plain/"}, {"slash/", "slash/"}, {"back\\", "back\\/"}}) {
        engine.SetIntermediateDirectory(base.string() + "/" + given);
        EXPECT_EQ(engine.GetIntermediateDirectory(), base.string() + "/" + kept);
    }

    // On this system a backslash is part of the name; the asset rule still takes it as a separator.
    const fs::path withBackslash = base / "assets\\";
    fs::create_directories(withBackslash);
    EXPECT_TRUE(engine.SetAssetDirectory(withBackslash.string()));
    EXPECT_EQ(engine.GetAssetDirectory(), withBackslash.string());
    EXPECT_TRUE(engine.SetAssetDirectory(base.string()));
    EXPECT_EQ(engine.GetAssetDirectory(), base.string() + "/");
    testing_support::LogCapture log;
    EXPECT_FALSE(engine.SetAssetDirectory((base / "missing").string()));
    EXPECT_EQ(engine.GetAssetDirectory(), base.string() + "/");
}

TEST(Engine, ResourceListRaisesNotificationsInListOrder)
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

    raised.clear();
    engine.RemoveResourcesWithPrefix("scan/");
    const std::vector<std::pair<unsigned int, std::string>> expected{{2u, "scan/a"}, {2u, "scan/b"}, {2u, "scan/d"}};
    EXPECT_EQ(raised, expected);
    ASSERT_EQ(engine.GetResources().size(), 2u);
    EXPECT_EQ(engine.GetResources()[0]->GetId().name, "mesh");
    EXPECT_EQ(engine.GetResources()[1]->GetId().name, "Scan/c");

    raised.clear();
    engine.RemoveAllResources();
    const std::vector<std::pair<unsigned int, std::string>> all{{2u, "mesh"}, {2u, "Scan/c"}};
    EXPECT_EQ(raised, all);
    EXPECT_TRUE(engine.GetResources().empty());
    vexa::GetNotifications().Unsubscribe(&token);
}

TEST(Engine, IdleUpdatesDrawNothingUntilARedrawOrADrag)
{
    if (!HasDisplay())
        GTEST_SKIP() << "needs a display";
    const fs::path state = FreshDirectory("idle");
    MessageBoxes boxes;
    vexa::Engine engine;
    ASSERT_TRUE(engine_test::Start(engine, state));
    ASSERT_TRUE(engine.GetOptions().IsOptimizedRendering());
    vexa::draw::RenderSystem* renderSystem = engine.GetRenderSystem();
    ASSERT_NE(renderSystem, nullptr);

    // Start-up wants a first frame; let the GUI settle.
    for (int i = 0; i < 5; ++i)
        engine.Update();
    const std::uint64_t settled = renderSystem->GetFrameCount();
    EXPECT_GT(settled, 0u);
    for (int i = 0; i < 3; ++i)
        engine.Update();
    EXPECT_EQ(renderSystem->GetFrameCount(), settled);

    engine.RequestRedraw();
    engine.Update();
    EXPECT_EQ(renderSystem->GetFrameCount(), settled + 1);
    EXPECT_FALSE(engine.IsRedrawRequested());

    // A drag over the scene turns the camera: that step draws one frame, the end of the drag
    // one more, and then nothing.
    const glm::vec3 before = engine.GetViewareas()[0]->GetScene()->GetCamera()->GetPosition();
    engine.OnMouseMove(100.0f, 200.0f);
    engine.OnMouseDown(plor::MouseButton::Left, plor::Modifiers{});
    engine.OnMouseMove(140.0f, 215.0f);
    engine.Update();
    EXPECT_EQ(renderSystem->GetFrameCount(), settled + 2);
    EXPECT_NE(engine.GetViewareas()[0]->GetScene()->GetCamera()->GetPosition(), before) << "a plain left drag turns";
    engine.OnMouseUp(plor::MouseButton::Left, plor::Modifiers{});
    engine.Update();
    engine.Update();
    EXPECT_EQ(renderSystem->GetFrameCount(), settled + 3);

    // Without optimised rendering every step draws.
    engine.GetOptions().SetOptimizedRendering(false);
    engine.Update();
    engine.Update();
    EXPECT_EQ(renderSystem->GetFrameCount(), settled + 5);
    // The first start had no options.bin yet: the GPU check (if it warned) used a box.
    EXPECT_TRUE(fs::exists(state / "options.bin"));
}

TEST(Engine, WindowFileWithZeroHeightIsIgnored)
{
    if (!HasDisplay())
        GTEST_SKIP() << "needs a display";
    const fs::path state = FreshDirectory("windowbin");
    {
        std::ofstream file(state / "window.bin", std::ios::binary);
        const std::uint32_t version = vexa::WindowManager::kFormatVersion;
        const std::int32_t placement[4] = {10, 20, 900, 0};
        const std::uint8_t flags[4] = {0, 0, 0, 0};
        file.write(reinterpret_cast<const char*>(&version), sizeof version);
        file.write(reinterpret_cast<const char*>(placement), sizeof placement);
        file.write(reinterpret_cast<const char*>(flags), sizeof flags);
    }
    MessageBoxes boxes;
    testing_support::LogCapture log;
    vexa::Engine engine;
    ASSERT_TRUE(engine_test::Start(engine, state));
    // The built-in look's size stands.
    EXPECT_EQ(engine.GetWindowManager().GetWindowParams().width, 640);
    EXPECT_EQ(engine.GetWindowManager().GetWindowParams().height, 480);
    EXPECT_EQ(engine.GetWindow()->GetWindowSize().y, 480);
}

TEST(Engine, EveryFailedLookIsReportedAndOnlyAReadLookPlacesTheWindow)
{
    if (!HasDisplay())
        GTEST_SKIP() << "needs a display";
    const fs::path state = FreshDirectory("looks");
    const char* const kCaption = "VEXA Initialization";
    const char* const kText = "Errors occurred when parsing look json. See log for more info.";
    // Thrown (unreadable, no version) or merely failed (no "vexa", another version, a view
    // without its place, a unit without id): the user hears of each the same way.
    const std::vector<std::string> broken = {
        "{ not json",
        R"({"vexa": {"caption": "x"}})",
        R"({"other": {}})",
        R"({"vexa": {"version": "9.9", "caption": "x"}})",
        R"({"vexa": {"version": "1.0", "views": [{"size": "1,0;1,0"}]}})",
        R"({"vexa": {"version": "1.0", "views": [{"position": "0,0;0,0", "size": "1,0;1,0", "units": [{}]}]}})",
    };
    for (std::size_t i = 0; i < broken.size(); ++i)
    {
        SCOPED_TRACE(broken[i]);
        const fs::path look = state / ("look" + std::to_string(i) + ".json");
        std::ofstream(look) << broken[i];
        MessageBoxes boxes;
        testing_support::LogCapture log;
        vexa::Engine engine;
        ASSERT_TRUE(engine_test::Start(engine, state / std::to_string(i), look.string()));
        EXPECT_TRUE(boxes.Has(kCaption, kText));
        // Without a look, the window keeps its own caption and place.
        const plor::WindowParams& params = engine.GetWindowManager().GetWindowParams();
        EXPECT_EQ(params.caption, "PLOR Window");
        EXPECT_TRUE(params.positionSet);
        EXPECT_EQ(engine.GetViewareas().size(), 1u);
    }

    // A good look: no box, its caption, and the window system places the window.
    const fs::path look = state / "good.json";
    std::ofstream(look) << R"({"vexa": {"version": "1.0", "caption": "Scanner"}})";
    MessageBoxes boxes;
    vexa::Engine engine;
    ASSERT_TRUE(engine_test::Start(engine, state / "good", look.string()));
    EXPECT_TRUE(boxes.shown.empty() || !boxes.Has(kCaption, kText));
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
        log_.push_back("terminate " + GetId().name + (GetCamera() != nullptr ? " with camera" : " without camera"));
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
    HostResource(const std::string& name, std::vector<std::string>& log) : Resource(name, "HostResource"), log_(log) {}
    std::shared_ptr<vexa::Gadget> CreateGadget() override { return std::make_shared<HostGadget>(this, log_); }

private:
    std::vector<std::string>& log_;
};

} // namespace

TEST(Engine, HostGadgetsMayReachTheirViewAreaOnTheWayOutAndChangeGadgetsFromAHandler)
{
    if (!HasDisplay())
        GTEST_SKIP() << "needs a display";
    const fs::path state = FreshDirectory("hostgadget");
    MessageBoxes boxes;
    std::vector<std::string> log;
    vexa::SetAssetDirectory(VEXA_SOURCE_ASSET_DIR);
    vexa::SetIntermediateDirectory(state.string());
    ASSERT_TRUE(vexa::Initialize());
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
    EXPECT_EQ(log, (std::vector<std::string>{"key a", "terminate a with camera", "key b", "terminate b with camera",
                                             "host"}));
    EXPECT_EQ(hostGadgets(), 2u);

    // Removing everything from a handler: nobody is asked after being removed.
    log.clear();
    engine->OnKeyDown(static_cast<int>(vexa::Key::D), {}, false);
    EXPECT_EQ(log, (std::vector<std::string>{"key a", "terminate a with camera", "terminate b with camera", "host"}));
    EXPECT_EQ(hostGadgets(), 0u);

    // Gadgets that are still there when the library ends reach their view area too.
    vexa::AddResource(std::make_shared<HostResource>("c", log));
    vexa::Update();
    log.clear();
    vexa::Terminate();
    EXPECT_EQ(log, (std::vector<std::string>{"terminate c with camera"}));
}

namespace {

// Remembers the last size its view area reported.
class SizeGadget final : public vexa::Gadget {
public:
    explicit SizeGadget(const vexa::Resource* resource) : Gadget(resource) {}
    vexa::EventStatus ViewResized(unsigned int width, unsigned int height, vexa::EventStatus status) override
    {
        size = {width, height};
        return status;
    }
    glm::uvec2 size{0, 0};
};

class SizeResource final : public vexa::Resource {
public:
    SizeResource() : Resource("sized", "SizeResource") {}
    std::shared_ptr<vexa::Gadget> CreateGadget() override
    {
        auto created = std::make_shared<SizeGadget>(this);
        gadget = created;
        return created;
    }
    std::shared_ptr<SizeGadget> gadget;
};

} // namespace

TEST(VexaLifecycle, HostCallsThatChangeThePictureDrawTheNextStep)
{
    if (!HasDisplay())
        GTEST_SKIP() << "needs a display";
    const fs::path state = FreshDirectory("hostredraw");
    MessageBoxes boxes;
    vexa::SetAssetDirectory(VEXA_SOURCE_ASSET_DIR);
    vexa::SetIntermediateDirectory(state.string());
    ASSERT_TRUE(vexa::Initialize());
    const vexa::draw::RenderSystem& renderSystem = *vexa::Engine::GetCurrent()->GetRenderSystem();
    for (int i = 0; i < 5; ++i)
        vexa::Update();
    const std::uint64_t idle = renderSystem.GetFrameCount();
    vexa::Update();
    ASSERT_EQ(renderSystem.GetFrameCount(), idle) << "optimised rendering draws nothing while idle";

    std::uint64_t expected = idle;
    for (const auto& change : std::vector<std::function<void()>>{
             [] { vexa::SetAxesVisible(0, false); },
             [] { vexa::SetSidebarVisible(0, !vexa::Engine::GetCurrent()->GetViewareas()[0]->IsSidebarVisible()); },
             [] { vexa::FrameBox({0, 0, 0}, {1, 2, 3}); },
         })
    {
        change();
        vexa::Update();
        EXPECT_EQ(renderSystem.GetFrameCount(), ++expected);
        vexa::Update();
        EXPECT_EQ(renderSystem.GetFrameCount(), expected) << "one frame per change";
    }
    vexa::Terminate();
}

TEST(Engine, GadgetsHearTheSizeOfTheCanvasTheyAreDrawnIn)
{
    if (!HasDisplay())
        GTEST_SKIP() << "needs a display";
    const fs::path state = FreshDirectory("sizes");
    MessageBoxes boxes;
    vexa::Engine engine;
    ASSERT_TRUE(engine_test::Start(engine, state));
    auto resource = std::make_shared<SizeResource>();
    engine.AddResource(resource);
    const glm::ivec2 window = engine.GetWindow()->GetFramebufferSize();
    vexa::Viewarea& area = *engine.GetViewareas()[0];

    // The sidebar takes its width from the canvas, and the gadget hears both changes.
    area.SetSidebarVisible(true);
    engine.OnFramebufferResized(window.x, window.y);
    EXPECT_EQ(resource->gadget->size, glm::uvec2(window.x - 270, window.y));
    area.SetSidebarVisible(false);
    EXPECT_EQ(resource->gadget->size, glm::uvec2(window.x, window.y));
    area.SetSidebarVisible(true);
    EXPECT_EQ(resource->gadget->size, glm::uvec2(window.x - 270, window.y));
}
