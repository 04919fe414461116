// Gadget state files (the base record, the style block and each gadget's own fields), fed to
// every kind of gadget that keeps one: the same bytes are one gadget's file and another's
// damaged one.

#include "FuzzSupport.h"
#include "OpenedGadget.h"

#include <vexa/modules/CameraAnimGadget.h>
#include <vexa/modules/GraphGadget.h>
#include <vexa/modules/MeshGadget.h>
#include <vexa/modules/PointCloudGadget.h>
#include <vexa/modules/PointCloudResource.h>
#include <vexa/modules/SkeletonGadget.h>
#include <vexa/modules/TextureGadget.h>

#include <functional>
#include <memory>
#include <vector>

namespace {

using vexa::fuzz::Opened;
using vexa::fuzz::StateHolder;

// A cloud with colours and float data, so that a restored colouring choice is checked
// against something real.
const vexa::modules::PointCloudResource& ColouredCloud()
{
    static const vexa::modules::PointCloudResource resource = [] {
        tesk::PointCloud cloud;
        cloud.AddPoint({0.0f, 0.0f, 0.0f});
        cloud.AddPoint({1.0f, 2.0f, 3.0f});
        cloud.AddColorProperty("RGB", std::vector<tesk::Color3f>{{1.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f}});
        cloud.AddFloatProperty("Intensity", std::vector<float>{0.25f, 0.75f});
        return vexa::modules::PointCloudResource("fuzz cloud", cloud);
    }();
    return resource;
}

const std::vector<std::function<std::shared_ptr<StateHolder>()>>& Makers()
{
    using namespace vexa::modules;
    static const std::vector<std::function<std::shared_ptr<StateHolder>()>> makers = {
        [] { return std::make_shared<Opened<CameraAnimGadget>>(nullptr); },
        [] { return std::make_shared<Opened<PointCloudGadget>>(&ColouredCloud()); },
        [] { return std::make_shared<Opened<PointCloudGadget>>(nullptr); },
        [] { return std::make_shared<Opened<MeshGadget>>(nullptr); },
        [] { return std::make_shared<Opened<SkeletonGadget>>(nullptr); },
        [] { return std::make_shared<Opened<TextureGadget>>(nullptr); },
        [] { return std::make_shared<Opened<GraphGadget>>(nullptr); },
    };
    return makers;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    vexa::fuzz::QuietLog();
    for (const auto& make : Makers()) {
        vexa::fuzz::CheckReadsBack(
            make,
            [](const std::shared_ptr<StateHolder>& gadget, std::istream& in) { return gadget->Read(in); },
            [](const std::shared_ptr<StateHolder>& gadget, std::ostream& out) { gadget->Write(out); }, data,
            size);
    }
    return 0;
}
