#include "scene/GadgetManager.h"

#include "core/Notifications.h"
#include "core/Viewarea.h"

#include <vexa/Gadget.h>
#include <vexa/Resource.h>

#include <vexa/draw/GeometryRenderer.h>
#include <vexa/draw/GeometryStyle.h>
#include <vexa/draw/Scene.h>

#include "FakeEngine.h"
#include "LogCapture.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using testing_support::FakeEngine;
using testing_support::LogCapture;

std::vector<std::string>* terminations = nullptr;

class BoxGadget final : public vexa::Gadget {
public:
    explicit BoxGadget(const vexa::Resource* resource)
        : Gadget(resource)
    {
    }
    void Initialize() override
    {
        LoadState();
        Gadget::Initialize();
        AddRenderer(std::make_shared<vexa::draw::GeometryRenderer>(vexa::draw::GeometryName::Box),
                    std::make_shared<vexa::draw::GeometryStyle>(), 0);
    }
    void Terminate() override
    {
        if (terminations != nullptr)
            terminations->push_back(GetId().ToString());
        Gadget::Terminate();
    }
    vexa::EventStatus MouseWheel(float, vexa::EventStatus status) override
    {
        ++wheelCalls;
        return status == vexa::EventStatus::NotConsumed ? vexa::EventStatus::Consumed : status;
    }
    int wheelCalls = 0;
};

class BoxResource final : public vexa::Resource {
public:
    BoxResource(const std::string& name, const std::string& type, bool makesGadget = true)
        : Resource(name, type)
        , makesGadget_(makesGadget)
    {
    }
    std::shared_ptr<vexa::Gadget> CreateGadget() override
    {
        return makesGadget_ ? std::make_shared<BoxGadget>(this) : nullptr;
    }

private:
    bool makesGadget_;
};

TEST(GadgetManager, CreatesGadgetsPerWholeIdAndCleansTheSceneOnRemoval)
{
    FakeEngine engine;
    auto cloud = std::make_shared<BoxResource>("same", "PointCloudResource");
    auto mesh = std::make_shared<BoxResource>("same", "MeshResource");
    engine.Register(cloud);
    engine.Register(mesh);

    std::vector<std::string> created;
    int owner = 0;
    vexa::GetNotifications().Subscribe(&owner, vexa::kGadgetCreated, [&](const void* data) {
        created.push_back(static_cast<const vexa::ResourceId*>(data)->ToString());
    });

    vexa::Viewarea viewarea(0);
    vexa::GadgetManager& manager = viewarea.GetGadgetManager();
    EXPECT_TRUE(manager.Create(cloud->id));
    EXPECT_TRUE(manager.Create(mesh->id));
    EXPECT_EQ(manager.GetGadgets().size(), 2u);
    EXPECT_EQ(created, (std::vector<std::string>{"PointCloudResource:same", "MeshResource:same"}));
    EXPECT_EQ(viewarea.GetScene()->GetInstanceCount(), 2u);
    EXPECT_EQ(manager.GetGadget(mesh->id)->GetViewarea(), &viewarea);

    manager.Remove(cloud->id);
    EXPECT_FALSE(manager.HasGadget(cloud->id));
    EXPECT_TRUE(manager.HasGadget(mesh->id));
    EXPECT_EQ(viewarea.GetScene()->GetInstanceCount(), 1u);

    // Creating again replaces the gadget without leaking its old instance.
    EXPECT_TRUE(manager.Create(mesh->id));
    EXPECT_EQ(viewarea.GetScene()->GetInstanceCount(), 1u);

    try
    {
        manager.GetGadget(cloud->id);
        ADD_FAILURE() << "no exception";
    }
    catch (const std::exception& e)
    {
        EXPECT_EQ(std::string(e.what()), "View with id 'PointCloudResource:same' do not exist.");
    }
    vexa::GetNotifications().Unsubscribe(&owner);
}

TEST(GadgetManager, NullGadgetIsReportedAndUnknownIdsCreateNothing)
{
    FakeEngine engine;
    auto broken = std::make_shared<BoxResource>("b", "GraphResource", false);
    engine.Register(broken);
    vexa::Viewarea viewarea(0);

    LogCapture log;
    EXPECT_FALSE(viewarea.GetGadgetManager().Create(broken->id));
    EXPECT_TRUE(log.Contains("Gadget instantiated by \"GraphResource:b\" is nullptr.", "vexa::GadgetManager::Create"));
    EXPECT_FALSE(viewarea.GetGadgetManager().Create(vexa::ResourceId("nobody", "MeshResource")));
    EXPECT_TRUE(viewarea.GetGadgetManager().GetGadgets().empty());
}

TEST(GadgetManager, EventsWalkGadgetsInIdOrderAndDestructionTerminatesAll)
{
    FakeEngine engine;
    std::vector<std::string> terminated;
    terminations = &terminated;
    auto b = std::make_shared<BoxResource>("b", "PointCloudResource");
    auto a = std::make_shared<BoxResource>("a", "PointCloudResource");
    engine.Register(b);
    engine.Register(a);
    {
        vexa::Viewarea viewarea(1);
        viewarea.GetGadgetManager().Create(b->id);
        viewarea.GetGadgetManager().Create(a->id);
        EXPECT_EQ(viewarea.MouseWheel(1.0f), vexa::EventStatus::Consumed);
        for (const auto& [id, gadget] : viewarea.GetGadgetManager().GetGadgets())
            EXPECT_EQ(static_cast<BoxGadget&>(*gadget).wheelCalls, 1);
    }
    terminations = nullptr;
    EXPECT_EQ(terminated, (std::vector<std::string>{"PointCloudResource:a", "PointCloudResource:b"}));
}

} // namespace
