// What the engine keeps in its intermediate directory and finds there again on the next start.

#include "core/GeneralOptions.h"
#include "core/Viewarea.h"
#include "core/ViewareaSettings.h"
#include "core/WindowManager.h"
#include "gui/Sidebar.h"
#include "scene/GadgetManager.h"

#include <vexa/Camera.h>
#include <vexa/draw/Scene.h>

#include "EngineTestSupport.h"
#include "LogCapture.h"

#include "GlmNear.h"

#include <chrono>
#include <functional>
#include <iterator>
#include <thread>

namespace {

using namespace engine_test;
using Bytes = std::vector<char>;

/// Steps the engine until `done` holds or two seconds passed; view changes are written only
/// once the camera has been still for a moment.
bool UpdateUntil(vexa::Engine& engine, const std::function<bool()>& done)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (std::chrono::steady_clock::now() < end) {
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

using EngineState = EngineCase;

} // namespace

TEST_F(EngineState, ViewareaStateSurvivesARestart)
{
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
        area.GetCamera()->SetPose(
            vexa::Camera::Pose({1.0f, 0.5f, -2.0f}, {4.0f, 3.0f, 6.0f}, {0.0f, 1.0f, 0.0f}));
        ASSERT_TRUE(UpdateUntil(engine, [&] { return fs::exists(state / "viewareas.bin"); }));
        EXPECT_FALSE(engine.GetViewareaSettings().IsDirty());

        // Axes and grid as the public functions change them; the sidebar through its own toggle.
        area.SetAxesVisible(false);
        area.GetScene()->SetGridMode(vexa::ViewareaLook::GridZX);
        engine.MarkViewareasDirty();
        area.SetSidebarVisible(false);
        const Bytes before = ReadBytes(state / "viewareas.bin");
        engine.Update();
        EXPECT_NE(ReadBytes(state / "viewareas.bin"), before)
            << "a change without camera motion is written at once";

        // A last camera move just before the end is not lost to the settling delay.
        area.GetCamera()->SetPose(
            vexa::Camera::Pose(finalTarget, finalPosition, glm::vec3(0.0f, 1.0f, 0.0f)));
        up = area.GetCamera()->GetUp();
        engine.Update();
    }
    {
        vexa::Engine engine;
        ASSERT_TRUE(Start(engine, state));
        ASSERT_EQ(engine.GetViewareas().size(), 1u);
        const vexa::Viewarea& area = *engine.GetViewareas()[0];
        EXPECT_TRUE(testing_support::Near(area.GetCamera()->GetTarget(), finalTarget, 1e-4f)) << "target";
        EXPECT_TRUE(testing_support::Near(area.GetCamera()->GetPosition(), finalPosition, 1e-4f))
            << "position";
        EXPECT_TRUE(testing_support::Near(area.GetCamera()->GetUp(), up, 1e-4f)) << "up";
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
        Click(engine.GetLayoutChooser()->getChild("layout3"));
        ASSERT_TRUE(UpdateUntil(engine, [&] { return !engine.GetViewareaSettings().IsDirty(); }));
    }
    vexa::ViewareaSettings saved;
    ASSERT_TRUE(saved.Load(state.string() + "/"));
    EXPECT_EQ(saved.GetRecords().size(), 4u);
    vexa::GeneralOptions options;
    ASSERT_TRUE(options.Load(state.string() + "/"));
    EXPECT_EQ(options.GetViewLayout(), 4);
}
