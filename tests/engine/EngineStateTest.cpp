// What the engine keeps in its intermediate directory and finds there again on the next start.

#include "core/Engine.h"
#include "core/GeneralOptions.h"
#include "core/Viewarea.h"
#include "core/ViewareaSettings.h"
#include "core/WindowManager.h"
#include "gui/Sidebar.h"
#include "scene/GadgetManager.h"

#include <vexa/Camera.h>
#include <vexa/Gadget.h>
#include <vexa/Resource.h>
#include <vexa/draw/Scene.h>

#include <CEGUI/CEGUI.h>

#include "EngineTestSupport.h"
#include "LogCapture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>
#include <thread>

namespace {

using namespace engine_test;
using Bytes = std::vector<char>;

constexpr float kTolerance = 1e-4f;

void ExpectNear(const glm::vec3& actual, const glm::vec3& expected, const char* what)
{
    EXPECT_NEAR(actual.x, expected.x, kTolerance) << what;
    EXPECT_NEAR(actual.y, expected.y, kTolerance) << what;
    EXPECT_NEAR(actual.z, expected.z, kTolerance) << what;
}

/// Steps the engine until `done` holds or two seconds passed; view changes are written only
/// once the camera has been still for a moment.
bool UpdateUntil(vexa::Engine& engine, const std::function<bool()>& done)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (std::chrono::steady_clock::now() < end)
    {
        engine.Update();
        if (done())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return false;
}

Bytes ReadBytes(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void WriteBytes(const fs::path& path, const Bytes& bytes)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

/// A gadget with one remembered number in its state file, read all-or-nothing.
class CounterGadget final : public vexa::Gadget {
public:
    static constexpr std::uint32_t kDefault = 7;
    explicit CounterGadget(const vexa::Resource* resource)
        : Gadget(resource)
    {
    }
    void Initialize() override
    {
        LoadState();
        Gadget::Initialize();
    }
    bool ReadFromStream(std::istream& stream) override
    {
        std::uint32_t read = 0;
        if (!Gadget::ReadFromStream(stream) || !ReadStateVersion(stream, 1) ||
            !stream.read(reinterpret_cast<char*>(&read), sizeof read))
            return false;
        value = read;
        return true;
    }
    std::uint32_t value = kDefault;
};

class CounterResource final : public vexa::Resource {
public:
    explicit CounterResource(const std::string& name)
        : Resource(name, "CounterResource")
    {
    }
    std::shared_ptr<vexa::Gadget> CreateGadget() override { return std::make_shared<CounterGadget>(this); }
};

} // namespace

TEST(EngineState, ViewareaStateSurvivesARestart)
{
    if (!HasDisplay())
        GTEST_SKIP() << "needs a display";
    const fs::path state = FreshDirectory("restart");
    MessageBoxes boxes;
    const glm::vec3 target(1.0f, 0.5f, -2.0f);
    const glm::vec3 position(4.0f, 3.0f, 6.0f);
    const glm::vec3 finalTarget(-1.0f, 0.0f, 0.5f);
    const glm::vec3 finalPosition(-3.0f, 2.0f, 5.0f);
    glm::vec3 up;
    {
        vexa::Engine engine;
        ASSERT_TRUE(Start(engine, state));
        ASSERT_EQ(engine.GetViewareas().size(), 1u);
        vexa::Viewarea& area = *engine.GetViewareas()[0];
        engine.Update();
        // Only the camera moves: the view change alone must reach the file.
        area.GetCamera()->SetPose(vexa::Camera::Pose(target, position, glm::vec3(0.0f, 1.0f, 0.0f)));
        up = area.GetCamera()->GetUp();
        ASSERT_TRUE(UpdateUntil(engine, [&] { return fs::exists(state / "viewareas.bin"); }));
        EXPECT_FALSE(engine.GetViewareaSettings().IsDirty());

        // Axes and grid as the public functions change them; the sidebar through its own toggle.
        area.SetAxesVisible(false);
        area.GetScene()->SetGridMode(vexa::ViewareaLook::GridZX);
        engine.MarkViewareasDirty();
        area.SetSidebarVisible(false);
        const Bytes before = ReadBytes(state / "viewareas.bin");
        engine.Update();
        EXPECT_NE(ReadBytes(state / "viewareas.bin"), before) << "a change without camera motion is written at once";

        // A last camera move just before the end is not lost to the settling delay.
        area.GetCamera()->SetPose(vexa::Camera::Pose(finalTarget, finalPosition, glm::vec3(0.0f, 1.0f, 0.0f)));
        up = area.GetCamera()->GetUp();
        engine.Update();
    }
    {
        vexa::Engine engine;
        ASSERT_TRUE(Start(engine, state));
        ASSERT_EQ(engine.GetViewareas().size(), 1u);
        const vexa::Viewarea& area = *engine.GetViewareas()[0];
        ExpectNear(area.GetCamera()->GetTarget(), finalTarget, "target");
        ExpectNear(area.GetCamera()->GetPosition(), finalPosition, "position");
        ExpectNear(area.GetCamera()->GetUp(), up, "up");
        EXPECT_FALSE(area.IsAxesVisible());
        EXPECT_EQ(area.GetScene()->GetGridMode(), static_cast<int>(vexa::ViewareaLook::GridZX));
        EXPECT_FALSE(area.IsSidebarVisible());
        ASSERT_NE(area.GetChild("sidebar"), nullptr);
        EXPECT_FALSE(area.GetChild("sidebar")->isVisible());
        EXPECT_TRUE(area.IsSidebarToggleShown()) << "a hidden sidebar can still be brought back";
        // Restoring is no change: nothing is written until the user changes something.
        engine.Update();
        EXPECT_FALSE(engine.GetViewareaSettings().IsDirty());

        // A layout chosen by the user replaces the records with the new layout's areas.
        engine.ToggleLayoutChooser();
        ASSERT_NE(engine.GetLayoutChooser(), nullptr);
        CEGUI::WindowEventArgs args(engine.GetLayoutChooser()->getChild("layout3"));
        engine.GetLayoutChooser()->getChild("layout3")->fireEvent(CEGUI::PushButton::EventClicked, args,
                                                                  CEGUI::PushButton::EventNamespace);
        ASSERT_TRUE(UpdateUntil(engine, [&] { return !engine.GetViewareaSettings().IsDirty(); }));
    }
    vexa::ViewareaSettings saved;
    ASSERT_TRUE(saved.Load(state.string() + "/"));
    EXPECT_EQ(saved.GetRecords().size(), 4u);
    vexa::GeneralOptions options;
    ASSERT_TRUE(options.Load(state.string() + "/"));
    EXPECT_EQ(options.GetViewLayout(), 4);
}

TEST(EngineState, DamagedStateFilesKeepDefaultsAndAreReported)
{
    if (!HasDisplay())
        GTEST_SKIP() << "needs a display";
    const fs::path state = FreshDirectory("damaged");
    const std::string directory = state.string() + "/";
    MessageBoxes boxes;
    const std::string gadgetFile = "CounterResourceState0.bin";

    // Valid files that differ from every default, so that a file read by mistake shows.
    std::map<std::string, Bytes> valid;
    {
        vexa::WindowManager window;
        window.GetWindowParams().width = 900;
        window.GetWindowParams().height = 700;
        window.CopyPlacementFromParams();
        ASSERT_TRUE(window.Save(directory));
        vexa::GeneralOptions options;
        options.SetOptimizedRendering(false);
        options.SetViewLayout(2);
        ASSERT_TRUE(options.Save(directory));
        vexa::ViewareaLook record;
        record.axes = false;
        record.camera.position = glm::vec3(9.0f, 9.0f, 9.0f);
        vexa::ViewareaSettings areas;
        areas.SetRecords({record});
        ASSERT_TRUE(areas.Save(directory));
        WriteBytes(state / gadgetFile, {0, 0, 0, 0, 1, 0, 0, 0, 42, 0, 0, 0});
        for (const char* name : {"window.bin", "options.bin", "viewareas.bin"})
            valid[name] = ReadBytes(state / name);
        valid[gadgetFile] = ReadBytes(state / gadgetFile);
    }

    std::mt19937 random(2024);
    const std::vector<std::pair<std::string, std::function<Bytes(const Bytes&)>>> damages = {
        {"random bytes",
         [&](const Bytes& good) {
             Bytes bytes(good.size() + 5);
             for (char& byte : bytes)
                 byte = static_cast<char>(random());
             bytes[3] = static_cast<char>(0x80); // never a version word of ours
             return bytes;
         }},
        {"truncated", [](const Bytes& good) { return Bytes(good.begin(), good.begin() + static_cast<long>(good.size() / 2)); }},
        {"wrong version word",
         [](const Bytes& good) {
             Bytes bytes = good;
             bytes[0] = static_cast<char>(bytes[0] + 5);
             return bytes;
         }},
        {"empty", [](const Bytes&) { return Bytes{}; }},
    };
    for (const auto& [what, damage] : damages)
    {
        SCOPED_TRACE(what);
        for (const auto& [name, good] : valid)
            WriteBytes(state / name, damage(good));

        testing_support::LogCapture log;
        vexa::Engine engine;
        ASSERT_TRUE(Start(engine, state));
        engine.AddResource(std::make_shared<CounterResource>("counted"));
        engine.Update();

        EXPECT_EQ(engine.GetWindowManager().GetWindowParams().width, 640);
        EXPECT_EQ(engine.GetWindowManager().GetWindowParams().height, 480);
        EXPECT_TRUE(engine.GetOptions().IsOptimizedRendering());
        EXPECT_EQ(engine.GetOptions().GetViewLayout(), 0);
        ASSERT_EQ(engine.GetViewareas().size(), 1u);
        const vexa::Viewarea& area = *engine.GetViewareas()[0];
        EXPECT_TRUE(area.IsAxesVisible());
        ExpectNear(area.GetCamera()->GetPosition(), vexa::CameraLook{}.position, "camera position");
        const auto& gadgets = area.GetGadgetManager().GetGadgets();
        ASSERT_EQ(gadgets.size(), 1u);
        EXPECT_EQ(static_cast<const CounterGadget&>(*gadgets.begin()->second).value, CounterGadget::kDefault);

        for (const auto& [name, good] : valid)
        {
            bool reported = false;
            for (const auto& message : log.messages)
                reported |= message.level == rlog::Level::Warning &&
                            message.message.find(name) != std::string::npos;
            EXPECT_TRUE(reported) << name << " was not reported";
        }
    }
}
