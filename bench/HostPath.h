#pragma once
// The library's side of the side-by-side benchmarks, as a host program takes it: its arrays
// handed over as a tesk::PointCloud and a PointCloudResource, frames while the camera moves.
// Compiled into vexa-sidebyside, which drives the library through its public functions, and
// into vexa-bench, which drives its own engine, so that a regression shows in both.

#include "HostCloud.h"

#include <benchmark/benchmark.h>

#include <glm/vec3.hpp>

#include <functional>
#include <memory>
#include <vector>

namespace vexa {
class Resource;
namespace modules {
class PointCloudResource;
}
} // namespace vexa

namespace bench {

/// The few calls the host path makes into the library.
class LibraryDriver {
public:
    virtual ~LibraryDriver() = default;
    virtual void AddResource(const std::shared_ptr<vexa::Resource>& resource) = 0;
    virtual void RemoveAllResources() = 0;
    virtual void Update() = 0;
    /// Turns every view area's camera onto the box, as vexa::FrameBox does.
    virtual void FrameBox(const glm::vec3& minimum, const glm::vec3& maximum) = 0;
};

/// Host arrays to the resource the library shows: the tesk::PointCloud is built, turned into a
/// resource that starts coloured by its colours, handed to the library and dropped again, as a
/// host that keeps only its own arrays would do.
std::shared_ptr<vexa::modules::PointCloudResource> HandOver(const HostCloud& cloud, LibraryDriver& library);
/// The point size the hand-over's clouds are drawn with (the library's default is 3 px).
void SetHandOverPointSize(float pixels);

/// Removes every resource and lets the library settle (its frame after the removal included).
void Settle(LibraryDriver& library);

/// Wall time of one call in seconds.
double TimeSeconds(const std::function<void()>& call);

/// Median of the values (0 for none).
double Median(std::vector<double> values);

/// BM_HandOver/N: the hand-over beside one memcpy of the host's bytes into fresh memory, in
/// the same iteration. Counters handover_ms, memcpy_ms, ratio_to_memcpy.
void RunHandOver(benchmark::State& state, LibraryDriver& library);

/// How every big-cloud benchmark runs: `iterations` per repetition, three repetitions with
/// only their aggregates reported, manual time in milliseconds.
inline benchmark::internal::Benchmark* BigCloudRuns(benchmark::internal::Benchmark* b, int iterations)
{
    return b->Iterations(iterations)
        ->Repetitions(3)
        ->ReportAggregatesOnly(true)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

/// BM_MovingFrame/N: camera moves (FrameBox on a slowly changing box) each followed by an
/// Update, without pause, so the library stays in its moving mode. Counter moving_frame_ms
/// (median of the frames); `floorFrame`, when given, is timed once an iteration beside them
/// and reported as floor_ms.
void RunMovingFrame(benchmark::State& state, LibraryDriver& library, int framesPerIteration,
                    const std::function<double(int step)>& floorFrame = {});

} // namespace bench
