#include <vexa/Gadget.h>
#include <vexa/Resource.h>

#include "core/Notifications.h"
#include "core/Viewarea.h"
#include "scene/GadgetManager.h"

#include <vexa/draw/GeometryRenderer.h>
#include <vexa/draw/GeometryStyle.h>
#include <vexa/draw/Scene.h>

#include "FakeEngine.h"
#include "LogCapture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using testing_support::FakeEngine;
using testing_support::LogCapture;

// A gadget with its own versioned record after the base record, as content gadgets write.
class CountingGadget final : public vexa::Gadget {
public:
    explicit CountingGadget(const vexa::Resource* resource, bool callBaseInitialize = true)
        : Gadget(resource), callBaseInitialize_(callBaseInitialize)
    {
    }
    /// Placed in `viewarea` and initialised, as the gadget manager starts a gadget.
    CountingGadget(const vexa::Resource* resource, vexa::Viewarea& viewarea) : CountingGadget(resource)
    {
        SetViewarea(&viewarea);
        Initialize();
    }

    void Initialize() override
    {
        LoadState();
        if (callBaseInitialize_)
            Gadget::Initialize();
        handle = AddRenderer(std::make_shared<vexa::draw::GeometryRenderer>(vexa::draw::GeometryName::Box),
                             std::make_shared<vexa::draw::GeometryStyle>(), 0);
    }

    std::uint32_t value = 7;
    bool loaded = false;
    int handle = -1;

protected:
    bool ReadFromStream(std::istream& stream) override
    {
        if (!Gadget::ReadFromStream(stream) || !ReadStateVersion(stream, 3))
            return false;
        std::uint32_t v = 0;
        if (!stream.read(reinterpret_cast<char*>(&v), sizeof v))
            return false;
        value = v;
        loaded = true;
        return true;
    }
    void WriteToStream(std::ostream& stream) const override
    {
        Gadget::WriteToStream(stream);
        WriteStateVersion(stream, 3);
        stream.write(reinterpret_cast<const char*>(&value), sizeof value);
    }

private:
    bool callBaseInitialize_;
};

class FakeResource final : public vexa::Resource {
public:
    FakeResource(const std::string& name, const std::string& type, bool makesGadget = true)
        : Resource(name, type), makesGadget_(makesGadget)
    {
    }
    std::shared_ptr<vexa::Gadget> CreateGadget() override
    {
        if (!makesGadget_)
            return nullptr;
        return std::make_shared<CountingGadget>(this);
    }

private:
    bool makesGadget_;
};

std::vector<unsigned char> ReadBytes(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// The ids carried by every notification `number` while it lives.
struct Heard {
    explicit Heard(unsigned int number)
    {
        vexa::GetNotifications().Subscribe(this, number, [this](const void* data) {
            ids.push_back(static_cast<const vexa::ResourceId*>(data)->ToString());
        });
    }
    ~Heard() { vexa::GetNotifications().Unsubscribe(this); }
    std::vector<std::string> ids;
};

TEST(Gadget, ForgottenBaseInitializeWarnsOnEveryGuardedCallAndAddsNothing)
{
    FakeEngine engine;
    auto resource = std::make_shared<FakeResource>("clouds/a", "PointCloudResource");
    vexa::Viewarea viewarea(2);
    CountingGadget gadget(resource.get(), false);
    gadget.SetViewarea(&viewarea);

    LogCapture log;
    gadget.Initialize();
    EXPECT_EQ(gadget.handle, 0);
    EXPECT_EQ(viewarea.GetScene()->GetInstanceCount(), 0u);
    const std::string expected =
        "PointCloudResource:clouds/a - Can not execute function \"Gadget::AddRenderer\" "
        "before Gadget is initialized.\nDid you forget to call Initialize for super class "
        "at the start of your method?";
    EXPECT_TRUE(log.Contains(expected, "vexa::Gadget::TestInitialization"));

    // No once-only latch: each guarded call warns again.
    EXPECT_FALSE(gadget.SaveState());
    gadget.RemoveRenderer(1);
    ASSERT_EQ(log.messages.size(), 3u);
    EXPECT_NE(log.messages[1].message.find("\"Gadget::SaveState\""), std::string::npos);
    EXPECT_NE(log.messages[2].message.find("\"Gadget::RemoveRenderer\""), std::string::npos);
}

TEST(Gadget, RenderersAndStateFileGoByViewareaAndAGuiChangeSavesOnlyThatResource)
{
    FakeEngine engine;
    auto resource = std::make_shared<FakeResource>("a", "PointCloudResource");
    vexa::Viewarea viewarea(12);
    const std::string path = engine.GetIntermediateDirectory() + "PointCloudResourceState12.bin";

    {
        CountingGadget gadget(resource.get());
        gadget.SetViewarea(&viewarea);
        // Never loaded: nothing is written even after initialisation.
        gadget.Gadget::Initialize();
        EXPECT_FALSE(gadget.SaveState());
        EXPECT_FALSE(std::filesystem::exists(path));
    }

    CountingGadget writer(resource.get(), viewarea);
    EXPECT_FALSE(writer.loaded);
    // Its renderer goes into the view area's scene, recorded under the gadget's id.
    ASSERT_GT(writer.handle, 0);
    EXPECT_EQ(viewarea.GetGadgetManager().GetRendererHandles(resource->id), std::set<int>{writer.handle});
    writer.RemoveRenderer(writer.handle);
    EXPECT_EQ(viewarea.GetScene()->GetInstanceCount(), 0u);
    EXPECT_TRUE(viewarea.GetGadgetManager().GetRendererHandles(resource->id).empty());
    EXPECT_GT(engine.redrawRequests, 0);
    writer.value = 0x01020304;
    ASSERT_TRUE(writer.SaveState());
    EXPECT_EQ(ReadBytes(path), (std::vector<unsigned char>{0, 0, 0, 0, 3, 0, 0, 0, 4, 3, 2, 1}));

    // Another resource of the same type in the same view area starts from these settings.
    auto other = std::make_shared<FakeResource>("b", "PointCloudResource");
    CountingGadget reader(other.get(), viewarea);
    EXPECT_TRUE(reader.loaded);
    EXPECT_EQ(reader.value, 0x01020304u);

    // A GUI change saves the gadgets of exactly that resource; terminated ones no longer listen.
    writer.value = 11;
    reader.value = 22;
    const vexa::ResourceId changed("a", "PointCloudResource"); // equal to the resource's, not it
    vexa::GetNotifications().Notify(vexa::kResourceGuiChanged, &changed);
    ASSERT_EQ(ReadBytes(path).size(), 12u);
    EXPECT_EQ(ReadBytes(path)[8], 11);
    writer.Terminate();
    writer.value = 33;
    vexa::GetNotifications().Notify(vexa::kResourceGuiChanged, &changed);
    EXPECT_EQ(ReadBytes(path)[8], 11);
}

TEST(Gadget, ForeignOrTruncatedStateFilesKeepDefaultsAndAnUnwritableOneIsQuiet)
{
    FakeEngine engine;
    auto resource = std::make_shared<FakeResource>("a", "MeshResource");
    vexa::Viewarea viewarea(0);
    const std::string path = engine.GetIntermediateDirectory() + "MeshResourceState0.bin";
    const std::vector<std::vector<char>> garbage = {
        {1, 0, 0, 0, 3, 0, 0, 0, 9, 9, 9, 9}, // non-zero base record
        {0, 0, 0, 0, 4, 0, 0, 0, 9, 9, 9, 9}, // other subclass version
        {0, 0, 0, 0, 3, 0},                   // truncated
        {},
    };
    for (const auto& bytes : garbage) {
        std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        LogCapture log;
        const CountingGadget gadget(resource.get(), viewarea);
        EXPECT_FALSE(gadget.loaded);
        EXPECT_EQ(gadget.value, 7u);
        // Defaults are kept in silence; only a record cut short gets the reader's one word.
        EXPECT_EQ(log.messages.size(), bytes.size() == 6 ? 1u : 0u) << bytes.size() << " bytes";
    }

    // A directory where the file should be cannot be opened for writing: no save, no message.
    std::filesystem::remove(path);
    std::filesystem::create_directories(path);
    CountingGadget gadget(resource.get(), viewarea);
    LogCapture log;
    EXPECT_FALSE(gadget.SaveState());
    EXPECT_TRUE(log.messages.empty());
}

TEST(GadgetManager, CreatesGadgetsPerWholeIdCleansTheSceneOnRemovalAndRefusesNullOrUnknown)
{
    FakeEngine engine;
    auto cloud = std::make_shared<FakeResource>("same", "PointCloudResource");
    auto mesh = std::make_shared<FakeResource>("same", "MeshResource");
    auto broken = std::make_shared<FakeResource>("b", "GraphResource", false);
    for (const auto& resource : {cloud, mesh, broken})
        engine.Register(resource);

    Heard created(vexa::kGadgetCreated);
    vexa::Viewarea viewarea(0);
    vexa::GadgetManager& manager = viewarea.GetGadgetManager();
    EXPECT_TRUE(manager.Create(cloud->id));
    EXPECT_TRUE(manager.Create(mesh->id));
    EXPECT_EQ(manager.GetGadgets().size(), 2u);
    EXPECT_EQ(created.ids, (std::vector<std::string>{"PointCloudResource:same", "MeshResource:same"}));
    EXPECT_EQ(viewarea.GetScene()->GetInstanceCount(), 2u);
    EXPECT_EQ(manager.GetGadget(mesh->id)->GetViewarea(), &viewarea);

    manager.Remove(cloud->id);
    EXPECT_FALSE(manager.HasGadget(cloud->id));
    EXPECT_TRUE(manager.HasGadget(mesh->id));
    EXPECT_EQ(viewarea.GetScene()->GetInstanceCount(), 1u);

    // Creating again replaces the gadget without leaking its old instance.
    EXPECT_TRUE(manager.Create(mesh->id));
    EXPECT_EQ(viewarea.GetScene()->GetInstanceCount(), 1u);

    EXPECT_THAT([&] { manager.GetGadget(cloud->id); },
                testing::ThrowsMessage<std::exception>(
                    testing::StrEq("View with id 'PointCloudResource:same' do not exist.")));

    LogCapture log;
    EXPECT_FALSE(manager.Create(broken->id));
    EXPECT_TRUE(log.Contains("Gadget instantiated by \"GraphResource:b\" is nullptr.",
                             "vexa::GadgetManager::Create"));
    EXPECT_FALSE(manager.Create(vexa::ResourceId("nobody", "MeshResource")));
    EXPECT_EQ(manager.GetGadgets().size(), 1u);
}

} // namespace
