// Point cloud benchmarks: building a renderer against the memcpy floor, the first frame after
// adding a cloud, frames while the camera turns, resident memory after upload, and picking a
// point against one read of the positions.
//
// The GL benchmarks need a display; run under
//   xvfb-run -a -s "-screen 0 1280x1024x24" vexa-bench --benchmark_format=json
// Without one they are skipped with an error; the build benchmarks still run.

#include "BenchCloud.h"
#include "Measure.h"

#include <vexa/draw/PointCloudRenderer.h>
#include <vexa/draw/PointCloudStyle.h>
#include <vexa/draw/PointPicking.h>
#include <vexa/draw/RenderSystem.h>
#include <vexa/draw/Scene.h>

#include <plor/ArrayObject.h>
#include <plor/Framebuffer.h>
#include <plor/Program.h>
#include <plor/Window.h>

#include <tesk/PointCloud.h>

#include <benchmark/benchmark.h>
#include <glbinding/gl/gl.h>

#include <glm/ext/matrix_clip_space.hpp>
#include <glm/glm.hpp>

#include <malloc.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace {

using bench::ResidentBytes;
using bench::Seconds;

using bench::CloudOf;
using bench::CopyInput;
using bench::InputBytes;
using Clock = std::chrono::steady_clock;

constexpr int kTargetWidth = 1280;
constexpr int kTargetHeight = 720;

/// Warm destination for the floor: allocated and touched once, outside any timing.
std::byte* FloorBuffer(std::size_t bytes)
{
    static std::vector<std::byte> buffer;
    if (buffer.size() < bytes) {
        std::vector<std::byte>().swap(buffer);
        buffer.resize(bytes);
    }
    return buffer.data();
}

// ---- floor and build ----

void BM_MemcpyFloor(benchmark::State& state)
{
    const tesk::PointCloud& cloud = CloudOf(static_cast<std::size_t>(state.range(0)));
    std::byte* destination = FloorBuffer(InputBytes(cloud));
    for (auto _ : state)
        CopyInput(cloud, destination);
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(InputBytes(cloud)));
    state.counters["input_MB"] = static_cast<double>(InputBytes(cloud)) / 1e6;
}

/// Builds a renderer per iteration (timed by hand, so destruction and the floor copy are left
/// out) and copies the same input once beside it, so the ratio compares runs under the same
/// machine load. With `withColors` the colour property is handed over as well, as a gadget
/// showing per-point colours does.
void BuildRenderer(benchmark::State& state, bool withColors)
{
    const tesk::PointCloud& cloud = CloudOf(static_cast<std::size_t>(state.range(0)));
    std::byte* destination = FloorBuffer(InputBytes(cloud));
    double buildSeconds = 0.0;
    double floorSeconds = 0.0;
    std::size_t pendingBytes = 0;
    for (auto _ : state) {
        const Clock::time_point floorStart = Clock::now();
        CopyInput(cloud, destination);
        floorSeconds += Seconds(Clock::now() - floorStart);

        const Clock::time_point start = Clock::now();
        std::optional<vexa::draw::PointCloudRenderer> renderer(std::in_place, cloud);
        if (withColors)
            renderer->SetColors(cloud.GetColorProperty("rgb"));
        benchmark::DoNotOptimize(renderer->GetBoundingBox());
        const double elapsed = Seconds(Clock::now() - start);
        buildSeconds += elapsed;
        state.SetIterationTime(elapsed);
        pendingBytes = renderer->GetCpuDataBytes();
        renderer.reset();
    }
    const double iterations = static_cast<double>(state.iterations());
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(InputBytes(cloud)));
    state.counters["memcpy_floor_ms"] = floorSeconds / iterations * 1e3;
    state.counters["ratio_to_memcpy"] = buildSeconds / floorSeconds;
    state.counters["target_ratio"] = 2.0;
    state.counters["pending_bytes_per_point"] =
        static_cast<double>(pendingBytes) / static_cast<double>(cloud.Size());
}

void BM_BuildRenderer(benchmark::State& state)
{
    BuildRenderer(state, false);
}

void BM_BuildRendererWithColors(benchmark::State& state)
{
    BuildRenderer(state, true);
}

// ---- frames ----

/// The hidden window, render system, scene and target the frame benchmarks share.
struct GlRig {
    std::shared_ptr<plor::Window> window;
    vexa::draw::RenderSystem system;
    std::shared_ptr<vexa::draw::Scene> scene;
    plor::Framebuffer target;

    /// The rig, or null after marking `state` skipped when no window can be had.
    static GlRig* GetOrSkip(benchmark::State& state)
    {
        GlRig* rig = Get();
        if (!rig)
            state.SkipWithError("No OpenGL window could be created; run under xvfb-run");
        return rig;
    }

    static GlRig* Get()
    {
        static std::unique_ptr<GlRig> rig;
        static bool tried = false;
        if (!tried) {
            tried = true;
            auto made = std::make_unique<GlRig>();
            if (made->Open())
                rig = std::move(made);
        }
        // The engine benchmarks of this program draw in a window of their own.
        if (rig)
            rig->window->MakeContextCurrent();
        return rig.get();
    }

    bool Open()
    {
        plor::WindowParams params;
        params.width = 64;
        params.height = 64;
        params.caption = "vexa-bench";
        params.visible = false;
        window = plor::Window::Create(params);
        if (!window)
            return false;
        window->MakeContextCurrent();
        if (const char* shaders = std::getenv("VEXA_SHADER_DIR"))
            plor::SetShaderBuildDirectory(shaders);
        else
            plor::SetShaderBuildDirectory(VEXA_SOURCE_ASSET_DIR "shaders/");
        if (!target.Resize(kTargetWidth, kTargetHeight))
            return false;
        // The anti-aliasing resolve is the same for every content; the cloud is what is measured.
        system.SetAntiAliasingMethod(vexa::draw::AntiAliasingMethod::Off);
        scene = std::make_shared<vexa::draw::Scene>(glm::ivec4(0, 0, kTargetWidth, kTargetHeight));
        scene->SetAxesVisible(false);
        scene->SetGridMode(vexa::draw::GridMode::None);
        scene->SetNearFar(0.01f, 100.0f);
        Orbit(0.0f);
        system.AddScene(scene);

        // Builds the programs once, so the first-frame figures hold uploads and drawing only.
        tesk::PointCloud tiny(std::vector<glm::vec3>{{0.0f, 0.0f, 0.0f}});
        auto renderer = std::make_shared<vexa::draw::PointCloudRenderer>(tiny);
        const int handle = scene->AddInstance(renderer, MakeStyle());
        Frame();
        scene->RemoveInstance(handle);
        return true;
    }

    /// Camera on a circle of radius 4 around the cloud, looking at its centre.
    void Orbit(float angle)
    {
        vexa::draw::VisualCamera* camera = scene->GetCamera();
        camera->SetPosition({4.0f * std::sin(angle), 1.5f, 4.0f * std::cos(angle)});
        camera->LookAt(glm::vec3(0.0f), glm::vec3(0.0f, 1.0f, 0.0f));
    }

    /// A frame, waited for: llvmpipe and real drivers alike only finish work at glFinish.
    void Frame()
    {
        system.RenderTo(target);
        gl::glFinish();
    }

    static std::shared_ptr<vexa::draw::PointCloudStyle> MakeStyle()
    {
        auto style = std::make_shared<vexa::draw::PointCloudStyle>();
        style->colorMode = vexa::draw::ColorMode::PerPoint;
        style->pointSize = 2.0f;
        return style;
    }
};

std::shared_ptr<vexa::draw::PointCloudRenderer> MakeColouredRenderer(const tesk::PointCloud& cloud)
{
    auto renderer = std::make_shared<vexa::draw::PointCloudRenderer>(cloud);
    renderer->SetColors(cloud.GetColorProperty("rgb"));
    return renderer;
}

void BM_FirstFrame(benchmark::State& state)
{
    GlRig* rig = GlRig::GetOrSkip(state);
    if (!rig)
        return;
    const tesk::PointCloud& cloud = CloudOf(static_cast<std::size_t>(state.range(0)));
    const auto style = GlRig::MakeStyle();
    std::uint64_t uploads = 0;
    std::uint64_t uploadedBytes = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto renderer = MakeColouredRenderer(cloud);
        const int handle = rig->scene->AddInstance(renderer, style);
        const std::uint64_t uploadsBefore = plor::ArrayObject::GetUploadCount();
        const std::uint64_t bytesBefore = plor::ArrayObject::GetUploadedBytes();
        state.ResumeTiming();

        rig->Frame();

        state.PauseTiming();
        uploads += plor::ArrayObject::GetUploadCount() - uploadsBefore;
        uploadedBytes += plor::ArrayObject::GetUploadedBytes() - bytesBefore;
        rig->scene->RemoveInstance(handle);
        renderer.reset();
        state.ResumeTiming();
    }
    const double iterations = static_cast<double>(state.iterations());
    state.counters["uploads_per_frame"] = static_cast<double>(uploads) / iterations;
    state.counters["uploaded_MB_per_frame"] = static_cast<double>(uploadedBytes) / iterations / 1e6;
}

/// The same frame with nothing in it: what the render system itself costs (clear, viewport,
/// read-back free), the baseline to the cloud frames.
void BM_EmptyFrame(benchmark::State& state)
{
    GlRig* rig = GlRig::GetOrSkip(state);
    if (!rig)
        return;
    float angle = 0.0f;
    for (auto _ : state) {
        angle += 0.02f;
        rig->Orbit(angle);
        rig->Frame();
    }
    rig->Orbit(0.0f);
}

void BM_CameraTurnFrame(benchmark::State& state)
{
    GlRig* rig = GlRig::GetOrSkip(state);
    if (!rig)
        return;
    const tesk::PointCloud& cloud = CloudOf(static_cast<std::size_t>(state.range(0)));
    auto renderer = MakeColouredRenderer(cloud);
    const int handle = rig->scene->AddInstance(renderer, GlRig::MakeStyle());
    rig->Frame();

    const std::uint64_t uploadsBefore = plor::ArrayObject::GetUploadCount();
    const std::uint64_t bytesBefore = plor::ArrayObject::GetUploadedBytes();
    float angle = 0.0f;
    for (auto _ : state) {
        angle += 0.02f;
        rig->Orbit(angle);
        rig->Frame();
    }
    const double iterations = static_cast<double>(state.iterations());
    state.counters["uploads_per_frame"] =
        static_cast<double>(plor::ArrayObject::GetUploadCount() - uploadsBefore) / iterations;
    state.counters["uploaded_bytes_per_frame"] =
        static_cast<double>(plor::ArrayObject::GetUploadedBytes() - bytesBefore) / iterations;
    state.counters["renderer_pending_bytes"] = static_cast<double>(renderer->GetCpuDataBytes());
    rig->scene->RemoveInstance(handle);
    rig->Orbit(0.0f);
}

/// Resident memory the process keeps for a cloud it shows once the source cloud is let go:
/// building, colouring and the first frame, then dropping the cloud. llvmpipe keeps the
/// "GPU" buffers in process memory, so under Xvfb this includes the vertex buffers.
void BM_ResidentMemoryAfterUpload(benchmark::State& state)
{
    GlRig* rig = GlRig::GetOrSkip(state);
    if (!rig)
        return;
    const std::size_t count = static_cast<std::size_t>(state.range(0));
    const double points = static_cast<double>(count);
    const auto style = GlRig::MakeStyle();
    const auto show = [&](auto&& measure) {
        auto renderer = MakeColouredRenderer(CloudOf(count));
        const std::size_t pending = renderer->GetCpuDataBytes();
        const int handle = rig->scene->AddInstance(renderer, style);
        rig->Frame();
        CloudOf(1);
        malloc_trim(0);
        measure(*renderer, pending);
        rig->scene->RemoveInstance(handle);
        renderer.reset();
        rig->Frame();
    };
    // One whole cycle first, so the driver's one-off allocations for a draw this size are
    // made before anything is measured.
    show([](const vexa::draw::PointCloudRenderer&, std::size_t) {});

    double rssPerPoint = 0.0;
    double pendingPerPoint = 0.0;
    double heldPerPoint = 0.0;
    for (auto _ : state) {
        // Nothing of a cloud is held at the start, and freed blocks go back to the system.
        CloudOf(1);
        malloc_trim(0);
        const std::size_t before = ResidentBytes();
        show([&](const vexa::draw::PointCloudRenderer& renderer, std::size_t pending) {
            rssPerPoint = (static_cast<double>(ResidentBytes()) - static_cast<double>(before)) / points;
            pendingPerPoint = static_cast<double>(pending) / points;
            heldPerPoint = static_cast<double>(renderer.GetCpuDataBytes()) / points;
        });
    }
    // What the renderer must keep after upload is its bookkeeping (counts, bounds, flags);
    // point data it still holds on the CPU comes on top.
    const double mustKeep = static_cast<double>(sizeof(vexa::draw::PointCloudRenderer));
    state.counters["rss_bytes_per_point"] = rssPerPoint;
    state.counters["renderer_cpu_bytes_per_point_before_upload"] = pendingPerPoint;
    state.counters["renderer_cpu_bytes_per_point_after_upload"] = heldPerPoint;
    state.counters["renderer_held_to_must_keep"] = (mustKeep + heldPerPoint * points) / mustKeep;
    state.counters["position_bytes_per_point"] = static_cast<double>(sizeof(glm::vec3));
    state.counters["gpu_buffer_bytes_per_point"] =
        static_cast<double>(sizeof(glm::vec3) + sizeof(tesk::Color3f));
}

// ---- picking ----

/// A view of the benchmark cloud over the 1280 x 720 target from the orbit's start: `far`
/// moves the camera a thousand times further out, where the whole cloud lands within a pixel
/// or two of the cursor: every point is within the radius, and the depth decides.
struct PickView {
    glm::mat4 clip;
    glm::ivec4 viewport{0, 0, kTargetWidth, kTargetHeight};
    glm::vec2 cursor{0.5f * kTargetWidth, 0.5f * kTargetHeight};
    float radius = 5.0f;

    explicit PickView(bool far)
    {
        const glm::vec3 eye = glm::vec3(0.0f, 1.5f, 4.0f) * (far ? 1000.0f : 1.0f);
        const float distance = glm::length(eye);
        vexa::draw::VisualCamera camera;
        camera.SetPosition(eye);
        camera.LookAt(glm::vec3(0.0f), glm::vec3(0.0f, 1.0f, 0.0f));
        clip = glm::perspective(glm::radians(45.0f), static_cast<float>(kTargetWidth) / kTargetHeight,
                                0.01f * distance, 10.0f * distance) *
               camera.GetViewMatrix();
    }
};

/// One read of every position byte, summed in eight lanes the compiler vectorises: the least
/// any search through the points could cost.
float SumPositions(std::span<const glm::vec3> positions)
{
    const float* values = &positions[0].x;
    const std::size_t count = 3 * positions.size();
    float lanes[8] = {};
    std::size_t i = 0;
    for (; i + 8 <= count; i += 8)
        for (std::size_t j = 0; j < 8; ++j)
            lanes[j] += values[i + j];
    for (; i < count; ++i)
        lanes[0] += values[i];
    float sum = 0.0f;
    for (const float lane : lanes)
        sum += lane;
    return sum;
}

/// Times `pick` per iteration (by hand) with the read floor beside it in the same iteration,
/// so the ratio compares runs under the same machine load.
template <class Pick>
void TimePicks(benchmark::State& state, std::span<const glm::vec3> positions, Pick&& pick)
{
    double pickSeconds = 0.0;
    double floorSeconds = 0.0;
    bool found = false;
    for (auto _ : state) {
        const Clock::time_point floorStart = Clock::now();
        benchmark::DoNotOptimize(SumPositions(positions));
        floorSeconds += Seconds(Clock::now() - floorStart);

        const Clock::time_point start = Clock::now();
        const std::optional<std::size_t> index = pick();
        const double elapsed = Seconds(Clock::now() - start);
        benchmark::DoNotOptimize(index);
        found = index.has_value();
        pickSeconds += elapsed;
        state.SetIterationTime(elapsed);
    }
    const double iterations = static_cast<double>(state.iterations());
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(positions.size_bytes()));
    state.counters["read_floor_ms"] = floorSeconds / iterations * 1e3;
    state.counters["ratio_to_read"] = pickSeconds / floorSeconds;
    state.counters["target_ms"] = 100.0;
    state.counters["found"] = found ? 1.0 : 0.0;
}

/// vexa::draw::PickPoint over the positions in memory. Second argument: 0 the cloud fills the
/// view, 1 it is a speck far away.
void BM_PickPointCpu(benchmark::State& state)
{
    const tesk::PointCloud& cloud = CloudOf(static_cast<std::size_t>(state.range(0)));
    const PickView view(state.range(1) != 0);
    TimePicks(state, cloud.GetPositions(), [&] {
        return vexa::draw::PickPoint(cloud.GetPositions(), view.clip, view.viewport, view.cursor,
                                     view.radius);
    });
}

/// PointCloudRenderer::Pick after the first frame: the positions are read from the mapped
/// vertex buffer (mapping and unmapping included), with no CPU copy left in the renderer.
void BM_PickPointMapped(benchmark::State& state)
{
    GlRig* rig = GlRig::GetOrSkip(state);
    if (!rig)
        return;
    const tesk::PointCloud& cloud = CloudOf(static_cast<std::size_t>(state.range(0)));
    const PickView view(state.range(1) != 0);
    auto renderer = std::make_shared<vexa::draw::PointCloudRenderer>(cloud);
    // The frame that uploads looks away from the cloud: llvmpipe rasterising ten million
    // sprites is not what is measured here.
    vexa::draw::VisualCamera* camera = rig->scene->GetCamera();
    camera->SetPosition({0.0f, 0.0f, 4.0f});
    camera->LookAt({0.0f, 0.0f, 10.0f}, {0.0f, 1.0f, 0.0f});
    const int handle = rig->scene->AddInstance(renderer, GlRig::MakeStyle());
    rig->Frame();
    if (renderer->HasPendingData()) {
        state.SkipWithError("The cloud was not uploaded");
    } else {
        TimePicks(state, cloud.GetPositions(),
                  [&] { return renderer->Pick(view.clip, view.viewport, view.cursor, view.radius); });
        state.counters["renderer_cpu_bytes"] = static_cast<double>(renderer->GetCpuDataBytes());
    }
    rig->scene->RemoveInstance(handle);
    rig->Orbit(0.0f);
}

constexpr std::int64_t kMillion = 1000000;

BENCHMARK(BM_MemcpyFloor)
    ->Arg(kMillion)
    ->Arg(10 * kMillion)
    ->Unit(benchmark::kMillisecond)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);
BENCHMARK(BM_BuildRenderer)
    ->Arg(kMillion)
    ->Arg(10 * kMillion)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);
BENCHMARK(BM_BuildRendererWithColors)
    ->Arg(kMillion)
    ->Arg(10 * kMillion)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);
BENCHMARK(BM_FirstFrame)
    ->Arg(kMillion)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);
BENCHMARK(BM_EmptyFrame)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);
BENCHMARK(BM_CameraTurnFrame)
    ->Arg(kMillion)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);
BENCHMARK(BM_ResidentMemoryAfterUpload)
    ->Arg(kMillion)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(1)
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);
BENCHMARK(BM_PickPointCpu)
    ->Args({10 * kMillion, 0})
    ->Args({10 * kMillion, 1})
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);
BENCHMARK(BM_PickPointMapped)
    ->Args({10 * kMillion, 0})
    ->Args({10 * kMillion, 1})
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Repetitions(5)
    ->ReportAggregatesOnly(true);

} // namespace
