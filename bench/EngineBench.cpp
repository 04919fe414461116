// The cost of an idle main-loop step: optimised rendering on, nothing changing, one view area
// showing a few resources. An idle Update should cost little more than the event poll it
// starts with, so both are timed here in the same iterations and reported as a ratio, along
// with the heap allocations and frames that idle steps caused (both should be 0).

#include "BenchEngine.h"
#include "Measure.h"

#include "core/Engine.h"
#include "core/Viewarea.h"

#include <vexa/Gadget.h>
#include <vexa/Platform.h>
#include <vexa/Resource.h>
#include <vexa/draw/GeometryRenderer.h>
#include <vexa/draw/RenderSystem.h>

#include <plor/Window.h>

#include <runa/rlog.h>

#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <new>
#include <thread>

namespace {

using bench::Seconds;

std::atomic<std::uint64_t> allocations{0};

} // namespace

// Counting every allocation of the process is the simplest way to see one in the loop. GCC
// takes the free() in the replaced delete for a mismatch with the replaced new; it is not.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void* operator new(std::size_t size)
{
    allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* p = std::malloc(size == 0 ? 1 : size))
        return p;
    throw std::bad_alloc();
}
void operator delete(void* p) noexcept
{
    std::free(p);
}
void operator delete(void* p, std::size_t) noexcept
{
    std::free(p);
}
#pragma GCC diagnostic pop

namespace {

class BoxGadget final : public vexa::Gadget {
public:
    explicit BoxGadget(const vexa::Resource* resource) : Gadget(resource) {}
    void Initialize() override
    {
        LoadState();
        Gadget::Initialize();
        AddRenderer(std::make_shared<vexa::draw::GeometryRenderer>(vexa::draw::GeometryName::Box),
                    std::make_shared<vexa::draw::GeometryStyle>(), 0);
    }
};

class BoxResource final : public vexa::Resource {
public:
    explicit BoxResource(const std::string& name) : Resource(name, "BoxResource") {}
    std::shared_ptr<vexa::Gadget> CreateGadget() override { return std::make_shared<BoxGadget>(this); }
};

std::unique_ptr<vexa::Engine> owned;
bool tried = false;
const std::filesystem::path stateDirectory = std::filesystem::temp_directory_path() / "vexa-bench-engine";

// Alone, for reference: what any GLFW program pays per loop turn.
void BM_PollEvents(benchmark::State& state)
{
    if (bench::BenchEngine() == nullptr) {
        state.SkipWithError("No window (no display?)");
        return;
    }
    for (auto _ : state)
        plor::Window::PollEvents();
}

// Each iteration times one idle Update and one bare poll right after it, so both see the same
// load on this shared machine; the ratio is the figure to read.
void BM_IdleUpdate(benchmark::State& state)
{
    vexa::Engine* engine = bench::BenchEngine();
    if (engine == nullptr) {
        state.SkipWithError("No engine (no display?)");
        return;
    }
    double updateSeconds = 0.0;
    double pollSeconds = 0.0;
    const std::uint64_t framesBefore = engine->GetRenderSystem()->GetFrameCount();
    const std::uint64_t allocationsBefore = allocations.load();
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        engine->Update();
        const auto middle = std::chrono::steady_clock::now();
        plor::Window::PollEvents();
        const auto end = std::chrono::steady_clock::now();
        updateSeconds += Seconds(middle - start);
        pollSeconds += Seconds(end - middle);
    }
    const std::uint64_t allocationsAfter = allocations.load();
    const std::uint64_t framesAfter = engine->GetRenderSystem()->GetFrameCount();
    const auto iterations = static_cast<double>(state.iterations());
    // A bare poll with no events pending allocates nothing, so what is counted is the Update's.
    state.counters["update_us"] = updateSeconds / iterations * 1e6;
    state.counters["poll_us"] = pollSeconds / iterations * 1e6;
    state.counters["ratio_to_poll"] = pollSeconds > 0.0 ? updateSeconds / pollSeconds : 0.0;
    state.counters["allocs_per_update"] =
        static_cast<double>(allocationsAfter - allocationsBefore) / iterations;
    state.counters["frames_per_update"] = static_cast<double>(framesAfter - framesBefore) / iterations;
}

BENCHMARK(BM_PollEvents)->Repetitions(5)->ReportAggregatesOnly(true);
BENCHMARK(BM_IdleUpdate)->Repetitions(5)->ReportAggregatesOnly(true);

} // namespace

vexa::Engine* bench::BenchEngine()
{
    if (tried)
        return owned.get();
    tried = true;
    vexa::SetMessageBoxHandler([](const std::string&, const std::string&, vexa::MessageIcon) {});
    std::filesystem::remove_all(stateDirectory);
    auto engine = std::make_unique<vexa::Engine>();
    engine->SetAssetDirectory(VEXA_SOURCE_ASSET_DIR);
    engine->SetIntermediateDirectory(stateDirectory.string());
    if (!engine->Initialize("")) {
        std::fprintf(stderr, "The engine could not start (no display?); its benchmarks are skipped\n");
        return nullptr;
    }
    for (int i = 0; i < 3; ++i)
        engine->AddResource(std::make_shared<BoxResource>("box" + std::to_string(i)));
    // Let the first frames, the uploads and the settings files happen before measuring.
    for (int i = 0; i < 20; ++i) {
        engine->Update();
        std::this_thread::sleep_for(std::chrono::milliseconds(40));
    }
    owned = std::move(engine);
    return owned.get();
}

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    rlog::ScopedSink quiet([](rlog::Level, const std::string&, const std::string&) {});
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    owned.reset();
    std::filesystem::remove_all(stateDirectory);
    return 0;
}
