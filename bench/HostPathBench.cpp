// The library side of the side-by-side benchmarks (see SideBySideBench.cpp) on the engine the
// other benchmarks of this program share: the host's hand-over and frames while the camera
// moves, so that a regression in either shows here too.

#include "BenchEngine.h"
#include "HostPath.h"

#include "core/Engine.h"
#include "core/Viewarea.h"
#include "scene/GadgetManager.h"

#include <vexa/Resource.h>

namespace {

class EngineDriver : public bench::LibraryDriver {
public:
    explicit EngineDriver(vexa::Engine& engine) : engine_(engine) {}
    void AddResource(const std::shared_ptr<vexa::Resource>& resource) override
    {
        engine_.AddResource(resource);
    }
    void RemoveAllResources() override { engine_.RemoveAllResources(); }
    void Update() override { engine_.Update(); }
    void FrameBox(const glm::vec3& minimum, const glm::vec3& maximum) override
    {
        for (const auto& area : engine_.GetViewareas())
            area->GetGadgetManager().FrameBox(minimum, maximum);
    }

private:
    vexa::Engine& engine_;
};

void BM_HandOver(benchmark::State& state)
{
    vexa::Engine* engine = bench::BenchEngine();
    if (engine == nullptr) {
        state.SkipWithError("No engine (no display?)");
        return;
    }
    EngineDriver driver(*engine);
    bench::RunHandOver(state, driver);
}

void BM_MovingFrame(benchmark::State& state)
{
    vexa::Engine* engine = bench::BenchEngine();
    if (engine == nullptr) {
        state.SkipWithError("No engine (no display?)");
        return;
    }
    EngineDriver driver(*engine);
    bench::RunMovingFrame(state, driver, 10);
}

} // namespace

BENCHMARK(BM_HandOver)->Apply([](benchmark::internal::Benchmark* b) {
    bench::BigCloudRuns(b->Arg(1'000'000)->Arg(10'000'000), 3);
});
BENCHMARK(BM_MovingFrame)->Apply([](benchmark::internal::Benchmark* b) {
    bench::BigCloudRuns(b->Arg(1'000'000)->Arg(10'000'000), 1);
});
