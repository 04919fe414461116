#include "core/EngineServices.h"

#include "core/GeneralOptions.h"

namespace vexa {

namespace {

class DetachedServices final : public EngineServices {
public:
    void RequestRedraw() override {}
    const std::string& GetIntermediateDirectory() const override { return directory_; }
    const std::string& GetAssetDirectory() const override { return assetDirectory_; }
    std::shared_ptr<Resource> FindResource(const ResourceId&) const override { return nullptr; }
    draw::RenderSystem* GetRenderSystem() override { return nullptr; }
    CameraController* GetCameraController() override { return nullptr; }
    std::vector<std::shared_ptr<draw::Light>> GetLights() const override { return {}; }

private:
    std::string directory_ = "./vexa/";
    std::string assetDirectory_;
};

DetachedServices& Detached()
{
    static DetachedServices detached;
    return detached;
}

EngineServices* installed = nullptr;

} // namespace

GeneralOptions& EngineServices::GetGeneralOptions()
{
    static GeneralOptions detached;
    return detached;
}

EngineServices& GetEngineServices()
{
    return installed != nullptr ? *installed : Detached();
}

void SetEngineServices(EngineServices* services)
{
    installed = services;
}

} // namespace vexa
