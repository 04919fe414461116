// The road of a big point cloud through the point cloud module: from a host's
// tesk::PointCloud (one colour and one float property) to the resource registered with the
// engine, and on to the first frame drawn. Each is timed beside one memcpy of the same bytes
// in the same iterations, so the ratio survives a noisy machine.

#include "BenchCloud.h"
#include "BenchEngine.h"
#include "Measure.h"

#include "core/Engine.h"

#include <vexa/draw/RenderSystem.h>
#include <vexa/modules/PointCloudResource.h>

#include <tesk/PointCloud.h>

#include <runa/HugePages.h>

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

namespace {

using bench::Seconds;

using Clock = std::chrono::steady_clock;

// One memcpy of the input's bytes into new memory, as any copy that keeps the data must make:
// the allocation and its first touch are part of it. Huge pages are asked for, as the library
// does for its own big arrays.
double TimeMemcpy(const tesk::PointCloud& cloud)
{
    const auto start = Clock::now();
    std::vector<unsigned char> target;
    runa::ReserveFresh(target, bench::InputBytes(cloud));
    bench::CopyInput(cloud, reinterpret_cast<std::byte*>(target.data()));
    return Seconds(Clock::now() - start);
}

// The same copy into memory written before: the bandwidth floor, for reference.
double TimeWarmMemcpy(const tesk::PointCloud& cloud, std::vector<unsigned char>& target)
{
    target.resize(bench::InputBytes(cloud));
    const auto start = Clock::now();
    bench::CopyInput(cloud, reinterpret_cast<std::byte*>(target.data()));
    return Seconds(Clock::now() - start);
}

// What vexa::modules::AddPointCloud does, on the benchmark's engine: make the resource (its
// copies of the data) and register it (gadgets and panels in every view area).
void BM_AddPointCloud(benchmark::State& state)
{
    vexa::Engine* engine = bench::BenchEngine();
    if (engine == nullptr) {
        state.SkipWithError("No engine (no display?)");
        return;
    }
    const tesk::PointCloud& cloud = bench::CloudOf(static_cast<std::size_t>(state.range(0)));
    std::vector<unsigned char> copy(bench::InputBytes(cloud), 1);
    double addSeconds = 0.0;
    double memcpySeconds = 0.0;
    double warmSeconds = 0.0;
    for (auto _ : state) {
        const auto start = Clock::now();
        auto resource = std::make_shared<vexa::modules::PointCloudResource>("bench/cloud", cloud);
        engine->AddResource(resource);
        addSeconds += Seconds(Clock::now() - start);
        memcpySeconds += TimeMemcpy(cloud);
        warmSeconds += TimeWarmMemcpy(cloud, copy);
        state.PauseTiming();
        engine->RemoveAllResources();
        engine->Update();
        state.ResumeTiming();
    }
    const auto iterations = static_cast<double>(state.iterations());
    state.counters["add_ms"] = addSeconds / iterations * 1e3;
    state.counters["memcpy_ms"] = memcpySeconds / iterations * 1e3;
    state.counters["warm_memcpy_ms"] = warmSeconds / iterations * 1e3;
    state.counters["add_per_memcpy"] = addSeconds / memcpySeconds;
    state.counters["add_per_warm_memcpy"] = addSeconds / warmSeconds;
    state.counters["target_ratio"] = 3.0;
}

// From the call that adds the cloud to the end of the update that drew it (uploads included).
void BM_AddPointCloudToFirstFrame(benchmark::State& state)
{
    vexa::Engine* engine = bench::BenchEngine();
    if (engine == nullptr) {
        state.SkipWithError("No engine (no display?)");
        return;
    }
    const tesk::PointCloud& cloud = bench::CloudOf(static_cast<std::size_t>(state.range(0)));
    double frameSeconds = 0.0;
    double memcpySeconds = 0.0;
    for (auto _ : state) {
        const std::uint64_t frames = engine->GetRenderSystem()->GetFrameCount();
        const auto start = Clock::now();
        auto resource = std::make_shared<vexa::modules::PointCloudResource>("bench/cloud", cloud);
        engine->AddResource(resource);
        while (engine->GetRenderSystem()->GetFrameCount() == frames)
            engine->Update();
        frameSeconds += Seconds(Clock::now() - start);
        memcpySeconds += TimeMemcpy(cloud);
        state.PauseTiming();
        engine->RemoveAllResources();
        engine->Update();
        state.ResumeTiming();
    }
    const auto iterations = static_cast<double>(state.iterations());
    state.counters["first_frame_ms"] = frameSeconds / iterations * 1e3;
    state.counters["memcpy_ms"] = memcpySeconds / iterations * 1e3;
    state.counters["frame_per_memcpy"] = frameSeconds / memcpySeconds;
}

} // namespace

BENCHMARK(BM_AddPointCloud)->Arg(10'000'000)->Unit(benchmark::kMillisecond)->Iterations(5)->UseRealTime();
BENCHMARK(BM_AddPointCloudToFirstFrame)
    ->Arg(1'000'000)
    ->Arg(10'000'000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3)
    ->UseRealTime();
