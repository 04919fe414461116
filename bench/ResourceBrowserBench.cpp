// The resource inspector of a host with 10,000 resources under nested paths
// ("group3/sub7/item42"): an idle update must not rebuild the list, and a rebuild (what every
// change, browse or search step costs) must stay under 50 ms.
//
// The inspector is measured on its own, over the GUI of the benchmarks' engine, so that the
// engine's idle-step benchmark does not carry 10,000 gadgets.

#include "BenchEngine.h"

#include "gui/GuiResourceBrowser.h"

#include <benchmark/benchmark.h>

#include <CEGUI/CEGUI.h>

#include <chrono>
#include <memory>
#include <string>

namespace {

constexpr int kGroups = 10;
constexpr int kSubgroups = 10;
constexpr int kItems = 100;

vexa::ResourceId Id(int group, int sub, int item)
{
    return vexa::ResourceId("group" + std::to_string(group) + "/sub" + std::to_string(sub) + "/item" +
                                std::to_string(item),
                            "PointCloudResource");
}

std::unique_ptr<vexa::GuiResourceInspector> MakeInspector()
{
    auto inspector = std::make_unique<vexa::GuiResourceInspector>();
    CEGUI::System::getSingleton().getDefaultGUIContext().getRootWindow()->addChild(inspector->GetWindow());
    inspector->GetWindow()->setWidth(CEGUI::UDim(0, 263));
    for (int g = 0; g < kGroups; ++g)
        for (int s = 0; s < kSubgroups; ++s)
            for (int i = 0; i < kItems; ++i)
                inspector->InsertResource(Id(g, s, i));
    inspector->Update();
    return inspector;
}

bool HaveGui(benchmark::State& state)
{
    if (bench::BenchEngine() != nullptr && CEGUI::System::getSingletonPtr() != nullptr)
        return true;
    state.SkipWithError("No GUI (no display?)");
    return false;
}

void BM_InspectorInsert10k(benchmark::State& state)
{
    if (!HaveGui(state))
        return;
    for (auto _ : state) {
        std::unique_ptr<vexa::GuiResourceInspector> inspector = MakeInspector();
        state.PauseTiming();
        inspector.reset();
        CEGUI::WindowManager::getSingleton().cleanDeadPool();
        state.ResumeTiming();
    }
}

void BM_InspectorIdleUpdate(benchmark::State& state)
{
    if (!HaveGui(state))
        return;
    std::unique_ptr<vexa::GuiResourceInspector> inspector = MakeInspector();
    const std::size_t before = inspector->GetRebuildCount();
    for (auto _ : state)
        benchmark::DoNotOptimize(inspector->Update());
    state.counters["rebuilds_per_update"] =
        static_cast<double>(inspector->GetRebuildCount() - before) / static_cast<double>(state.iterations());
}

// Rebuilds the list where arg 0 says: 0 the root (10 folders), 1 a leaf folder (100
// resources), 2 a search matching "item1" (1,100 hits of 10,000, the first 1,000 listed), 3 a search
// matching every resource ("item", again 1,000 listed).
void BM_InspectorRebuild(benchmark::State& state)
{
    if (!HaveGui(state))
        return;
    std::unique_ptr<vexa::GuiResourceInspector> inspector = MakeInspector();
    CEGUI::Window* client = inspector->GetClientWindow();
    const auto pick = [&](const char* text) {
        inspector->GetList()->findItemWithText(text, nullptr)->setSelected(true);
        inspector->Update();
    };
    if (state.range(0) == 1) {
        pick("group4/");
        pick("sub4/");
    } else if (state.range(0) >= 2) {
        client->getChild("EditSearch")->setText(state.range(0) == 2 ? "item1" : "item");
    }
    inspector->Update();
    double maxMs = 0.0;
    for (auto _ : state) {
        // Selecting (nothing) is a change: the next update rebuilds.
        inspector->SetSelected(vexa::ResourceId());
        const auto start = std::chrono::steady_clock::now();
        inspector->Update();
        // CEGUI destroys the old items at the next frame; that belongs to the rebuild's cost.
        CEGUI::WindowManager::getSingleton().cleanDeadPool();
        const double ms =
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
        maxMs = std::max(maxMs, ms);
    }
    state.counters["items"] = static_cast<double>(inspector->GetList()->getItemCount());
    state.counters["max_ms"] = maxMs;
}

BENCHMARK(BM_InspectorInsert10k)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(5)
    ->Repetitions(3)
    ->ReportAggregatesOnly(true);
BENCHMARK(BM_InspectorIdleUpdate)->Repetitions(5)->ReportAggregatesOnly(true);
BENCHMARK(BM_InspectorRebuild)
    ->Arg(0)
    ->Arg(1)
    ->Arg(2)
    ->Arg(3)
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);

} // namespace
