// A host that changes the view and ends at once, then, run again, finds the view it left.
// Usage: vexa-persist-host write|check STATE_DIR
#include <vexa/vexa.h>

#include <cmath>
#include <cstdio>
#include <memory>
#include <string>

namespace {

// The host's way to its view area's camera: a gadget of its own.
class ProbeResource final : public vexa::Resource {
public:
    ProbeResource() : Resource("probe", "ProbeResource") {}
    std::shared_ptr<vexa::Gadget> CreateGadget() override
    {
        auto created = std::make_shared<vexa::Gadget>(this);
        gadget = created;
        return created;
    }
    std::weak_ptr<vexa::Gadget> gadget;
};

const vexa::Camera::Pose kPose(glm::vec3(0.5f, 0.0f, 0.0f), glm::vec3(3.0f, 1.0f, -2.0f),
                               glm::vec3(0.0f, 1.0f, 0.0f));

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
        return 64;
    const std::string mode = argv[1];
    vexa::SetAssetDirectory(VEXA_ASSET_DIR);
    vexa::SetIntermediateDirectory(argv[2]);
    if (!vexa::Initialize())
        return 10;
    auto probe = std::make_shared<ProbeResource>();
    vexa::AddResource(probe);
    vexa::Update();
    std::shared_ptr<vexa::Gadget> gadget = probe->gadget.lock();
    vexa::Camera* camera = gadget ? gadget->GetCamera() : nullptr;
    if (camera == nullptr)
        return 11;

    int status = 0;
    if (mode == "write") {
        camera->SetPose(kPose);
        vexa::SetAxesVisible(0, false);
        vexa::Update();
    } else {
        const glm::vec3 position = camera->GetPose().position;
        const glm::vec3 target = camera->GetPose().target;
        std::printf("persist: camera at (%g, %g, %g) looking at (%g, %g, %g), axes %s\n", position.x,
                    position.y, position.z, target.x, target.y, target.z,
                    vexa::IsAxesVisible(0) ? "shown" : "hidden");
        if (glm::length(position - kPose.position) > 1e-3f || glm::length(target - kPose.target) > 1e-3f)
            status = 1;
        if (vexa::IsAxesVisible(0))
            status |= 2;
    }
    gadget.reset();
    vexa::Terminate();
    return status;
}
