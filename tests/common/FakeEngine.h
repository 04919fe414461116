#pragma once
// Engine services for tests: a registry of resources, a redraw counter and a private
// intermediate directory that is removed again.

#include "core/EngineServices.h"

#include <vexa/Resource.h>

#include <unistd.h>

#include <filesystem>
#include <map>
#include <string>

namespace testing_support {

class FakeEngine final : public vexa::EngineServices {
public:
    // The process id keeps tests that run in parallel apart: an object's address alone repeats
    // from one process to the next (always so under AddressSanitizer).
    FakeEngine()
        : root_(std::filesystem::temp_directory_path() /
                ("vexa-fake-engine-" + std::to_string(::getpid()) + "-" +
                 std::to_string(reinterpret_cast<std::uintptr_t>(this))))
    {
        std::filesystem::create_directories(root_);
        directory_ = root_.string() + "/";
        vexa::SetEngineServices(this);
    }
    ~FakeEngine() override
    {
        vexa::SetEngineServices(nullptr);
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }
    FakeEngine(const FakeEngine&) = delete;
    FakeEngine& operator=(const FakeEngine&) = delete;

    void RequestRedraw() override { ++redrawRequests; }
    const std::string& GetIntermediateDirectory() const override { return directory_; }
    const std::string& GetAssetDirectory() const override { return assetDirectory; }
    std::shared_ptr<vexa::Resource> FindResource(const vexa::ResourceId& id) const override
    {
        auto it = resources.find(id);
        return it != resources.end() ? it->second : nullptr;
    }
    vexa::draw::RenderSystem* GetRenderSystem() override { return nullptr; }
    vexa::CameraController* GetCameraController() override { return nullptr; }
    std::vector<std::shared_ptr<vexa::draw::Light>> GetLights() const override { return {}; }
    void MarkViewareasDirty() override { ++viewareaMarks; }

    void Register(const std::shared_ptr<vexa::Resource>& resource) { resources[resource->id] = resource; }

    std::map<vexa::ResourceId, std::shared_ptr<vexa::Resource>> resources;
    int redrawRequests = 0;
    /// How often the view areas' state was marked for saving.
    int viewareaMarks = 0;
    /// Tests that read assets point this at the source tree's asset folder.
    std::string assetDirectory;

private:
    std::filesystem::path root_;
    std::string directory_;
};

} // namespace testing_support
