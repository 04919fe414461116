// One whole life of the library as a host lives it: start, a resource of every kind, debug
// shapes and log lines, a few steps, the end. Terminate must let go of everything the host
// handed over; in the sanitizer build LeakSanitizer checks the rest of the process at exit.

#include <vexa/vexa.h>

#include "EngineTestSupport.h"
#include "LogCapture.h"

#include <CEGUI/CEGUI.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using EngineCycle = engine_test::EngineCase;

const char* const kPanelLayout = R"(<?xml version="1.0" encoding="UTF-8"?>
<GUILayout version="4">
  <Window type="DefaultWindow" name="Tools">
    <Property name="Area" value="{{0,0},{0,0},{1,0},{0,40}}" />
    <Window type="DarkVexa/PushButton" name="Apply">
      <Property name="Area" value="{{0,0},{0,4},{1,0},{0,30}}" />
      <Property name="Text" value="Apply" />
    </Window>
  </Window>
</GUILayout>)";

tesk::PointCloud Triangle()
{
    tesk::PointCloud cloud(
        std::vector<glm::vec3>{{0.0f, 0.0f, 0.0f}, {1.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f}});
    cloud.AddFloatProperty("Height", std::vector<float>{0.0f, 0.0f, 1.0f});
    return cloud;
}

} // namespace

TEST_F(EngineCycle, TerminateLetsGoOfEveryKindOfResource)
{
    ASSERT_TRUE(StartLibrary());
    testing_support::LogCapture log;
    std::vector<std::pair<std::string, std::weak_ptr<vexa::Resource>>> handedOver;
    const auto keep = [&](const std::shared_ptr<vexa::Resource>& resource) {
        ASSERT_NE(resource, nullptr);
        handedOver.emplace_back(resource->GetId().name, resource);
    };

    int applied = 0;
    keep(vexa::modules::AddPointCloud("Cycle/Cloud", Triangle()));
    keep(vexa::modules::AddMesh("Cycle/Mesh", tesk::Mesh(Triangle(), {{0u, 1u, 2u}})));
    keep(vexa::modules::AddScan("Cycle/Scan", tesk::Scan(Triangle())));
    keep(vexa::modules::AddGeometry("Cycle/Marker", vexa::draw::GeometryName::Sphere));
    tesk::Skeleton arm;
    arm.AddJoint("shoulder", -1);
    arm.AddJoint("hand", 0, {0.0f, 0.5f, 0.0f});
    tesk::SkeletonAction wave("wave");
    wave.AddKeyframe(0.0f, arm.GetRestPose());
    wave.AddKeyframe(1.0f, arm.GetRestPose());
    keep(vexa::modules::AddSkeleton("Cycle/Arm", arm, wave));
    keep(vexa::modules::AddImage("Cycle/Picture", tesk::Image(4, 4, 3, std::vector<std::uint8_t>(48, 200))));
    {
        auto graph = std::make_shared<vexa::modules::GraphResource>("Cycle/Graph");
        graph->SetData(std::vector<float>{0.0f, 2.0f, 1.0f});
        vexa::AddResource(graph);
        keep(graph);
        auto panel = std::make_shared<vexa::modules::GuiResource>("Cycle/Tools");
        ASSERT_TRUE(panel->Setup(kPanelLayout));
        panel->GetWindow("Apply")->subscribeEvent(CEGUI::PushButton::EventClicked,
                                                  [&applied](const CEGUI::EventArgs&) {
                                                      ++applied;
                                                      return true;
                                                  });
        vexa::AddResource(panel);
        keep(panel);
    }
    vexa::Debug().DrawBox({{0.0f, 0.0f, 0.0f}, {1.0f, 1.0f, 1.0f}}, {1.0f, 0.0f, 0.0f}, 5.0f);
    vexa::Debug().DrawSphere({{0.5f, 0.5f, 0.5f}, 0.2f}, {0.0f, 1.0f, 0.0f}, 5.0f);
    vexa::Debug().DrawLines({{{0.0f, 0.0f, 0.0f}, {1.0f, 1.0f, 1.0f}}}, {1.0f, 1.0f, 0.0f}, 5.0f);
    vexa::Debug().LogMessage("cycle", 5.0f);
    rlog::Info("every kind is in", "EngineCycle");
    for (int step = 0; step < 3; ++step)
        vexa::Update();

    // Everything is listed beside the library's own debugger, and nothing failed on the way.
    EXPECT_EQ(vexa::GetActiveResources().size(), handedOver.size() + 1);
    for (const auto& message : log.messages)
        EXPECT_LT(message.level, rlog::Level::Failure) << message.label << ": " << message.message;

    vexa::Terminate();
    for (const auto& [name, resource] : handedOver)
        EXPECT_TRUE(resource.expired()) << name << " outlived Terminate";
    EXPECT_TRUE(vexa::GetActiveResources().empty());
}
