#include "HostPath.h"

#include <vexa/Gadget.h>
#include <vexa/modules/PointCloudGadget.h>
#include <vexa/modules/PointCloudResource.h>

#include <tesk/Color.h>
#include <tesk/PointCloud.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <span>
#include <string>

namespace bench {

namespace {

static_assert(sizeof(tesk::Color3b) == 3, "the host's rgb bytes are read as Color3b");

// Colour source 2 of a point cloud's gadget: its colour sets.
constexpr int kColorsSource = 2;

// Byte colours go in as bytes where the companion library takes them; a tesk without that
// overload gets floats, as hosts had to hand them over before.
template <class Cloud>
bool AddColours(Cloud& cloud, const std::vector<std::uint8_t>& rgb)
{
    const std::span<const tesk::Color3b> bytes(reinterpret_cast<const tesk::Color3b*>(rgb.data()),
                                               rgb.size() / 3);
    if constexpr (requires { cloud.AddColorProperty(std::string(), bytes); }) {
        return cloud.AddColorProperty("rgb", bytes);
    } else {
        std::vector<tesk::Color3f> floats(bytes.size());
        for (std::size_t i = 0; i < bytes.size(); ++i)
            floats[i] = tesk::Color3f(bytes[i].r / 255.0f, bytes[i].g / 255.0f, bytes[i].b / 255.0f);
        return cloud.AddColorProperty("rgb", std::move(floats));
    }
}

} // namespace

namespace {

float handOverPointSize = 0.0f;

/// A host's own resource kind whose view areas draw the points at another size: how a host
/// changes a style through the public headers.
class SizedCloud final : public vexa::modules::PointCloudResource {
public:
    using PointCloudResource::PointCloudResource;
    std::shared_ptr<vexa::Gadget> CreateGadget() override
    {
        std::shared_ptr<vexa::Gadget> gadget = PointCloudResource::CreateGadget();
        if (auto* cloud = dynamic_cast<vexa::modules::PointCloudGadget*>(gadget.get()))
            cloud->GetStyle()->pointSize = handOverPointSize;
        return gadget;
    }
};

} // namespace

void SetHandOverPointSize(float pixels)
{
    handOverPointSize = pixels;
}

std::shared_ptr<vexa::modules::PointCloudResource> HandOver(const HostCloud& host, LibraryDriver& library)
{
    std::shared_ptr<vexa::modules::PointCloudResource> resource;
    {
        tesk::PointCloud cloud(host.xyz.data(), host.Size());
        AddColours(cloud, host.rgb);
        if (handOverPointSize > 0.0f)
            resource = std::make_shared<SizedCloud>("cloud", cloud);
        else
            resource = std::make_shared<vexa::modules::PointCloudResource>("cloud", cloud);
        resource->SetPreferredColorSource(kColorsSource);
    }
    library.AddResource(resource);
    return resource;
}

void Settle(LibraryDriver& library)
{
    library.RemoveAllResources();
    for (int i = 0; i < 3; ++i)
        library.Update();
}

double TimeSeconds(const std::function<void()>& call)
{
    const auto start = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double Median(std::vector<double> values)
{
    if (values.empty())
        return 0.0;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    if (values.size() % 2 == 1)
        return *middle;
    return 0.5 * (*middle + *std::max_element(values.begin(), middle));
}

void RunHandOver(benchmark::State& state, LibraryDriver& library)
{
    const HostCloud& host = HostCloudOf(static_cast<std::size_t>(state.range(0)));
    Settle(library);
    double handOverSeconds = 0.0;
    double memcpySeconds = 0.0;
    for (auto _ : state) {
        std::shared_ptr<vexa::modules::PointCloudResource> resource;
        const double handOver = TimeSeconds([&] { resource = HandOver(host, library); });
        // The least a copy that keeps the host's bytes costs: fresh, untouched memory.
        const double copy = TimeSeconds([&] {
            auto* target = new std::byte[host.Bytes()];
            std::memcpy(target, host.xyz.data(), host.xyz.size() * sizeof(float));
            std::memcpy(target + host.xyz.size() * sizeof(float), host.rgb.data(), host.rgb.size());
            benchmark::DoNotOptimize(target);
            benchmark::ClobberMemory();
            delete[] target;
        });
        state.SetIterationTime(handOver);
        handOverSeconds += handOver;
        memcpySeconds += copy;
        resource.reset();
        Settle(library);
    }
    const auto iterations = static_cast<double>(state.iterations());
    state.counters["handover_ms"] = handOverSeconds / iterations * 1e3;
    state.counters["memcpy_ms"] = memcpySeconds / iterations * 1e3;
    state.counters["ratio_to_memcpy"] = memcpySeconds > 0.0 ? handOverSeconds / memcpySeconds : 0.0;
}

void RunMovingFrame(benchmark::State& state, LibraryDriver& library, int framesPerIteration,
                    const std::function<double(int step)>& floorFrame)
{
    const HostCloud& host = HostCloudOf(static_cast<std::size_t>(state.range(0)));
    Settle(library);
    HandOver(host, library);
    glm::vec3 minimum;
    glm::vec3 maximum;
    CameraBox(host, 0, minimum, maximum);
    library.FrameBox(minimum, maximum);
    library.Update();
    int step = 1;
    std::vector<double> frames;
    double floorSeconds = 0.0;
    for (auto _ : state) {
        std::vector<double> iterationFrames;
        for (int i = 0; i < framesPerIteration; ++i, ++step) {
            CameraBox(host, step, minimum, maximum);
            iterationFrames.push_back(TimeSeconds([&] {
                library.FrameBox(minimum, maximum);
                library.Update();
            }));
        }
        if (floorFrame)
            floorSeconds += floorFrame(step);
        state.SetIterationTime(Median(iterationFrames));
        frames.insert(frames.end(), iterationFrames.begin(), iterationFrames.end());
    }
    state.counters["moving_frame_ms"] = Median(frames) * 1e3;
    state.counters["slowest_moving_frame_ms"] = *std::max_element(frames.begin(), frames.end()) * 1e3;
    state.counters["target_ms"] = host.Size() > 5'000'000 ? 100.0 : 50.0;
    if (floorFrame)
        state.counters["floor_ms"] = floorSeconds / static_cast<double>(state.iterations()) * 1e3;
    Settle(library);
}

} // namespace bench
