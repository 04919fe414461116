// Big clouds side by side: a bare GLFW + GL 3.3 program (BareFloor) and the library, driven
// through its public functions only, show the same host cloud in the same 800 x 600 window
// with the same look (3 px round points, MSAA 4x, the library's background). Each iteration
// times both, so that the ratios compare runs made under the same load on a shared machine.
//
//   vexa-sidebyside [--pictures DIR] [benchmark flags]
//   vexa-sidebyside --resident floor|vexa N    (the memory benchmark's child process)
//   vexa-sidebyside --one-pixel [args]         (both sides at 1 px, anti-aliasing off)
//
// --pictures DIR writes what both programs show of 1M points (still and while moving) into DIR
// instead of benchmarking, to judge the look and the holes of a thinned frame by eye.

#include "BareFloor.h"
#include "HostCloud.h"
#include "HostPath.h"
#include "Measure.h"

#include <vexa/Lifecycle.h>
#include <vexa/Platform.h>
#include <vexa/modules/PointCloudResource.h>

#include <runa/rlog.h>

#include <GLFW/glfw3.h>
#include <benchmark/benchmark.h>

#include <malloc.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int kWidth = 800;
constexpr int kHeight = 600;
// The still time after which the library draws every point again, with room to spare.
constexpr auto kStillPause = std::chrono::milliseconds(250);
// Bottom right of a 1280 x 1024 screen, so that it hides little of the library's window.
constexpr int kFloorX = 1280 - kWidth;
constexpr int kFloorY = 1024 - kHeight;
// A cloud small enough to cost no memory worth counting, for first uses before a measurement.
constexpr std::size_t kWarmUpPoints = 1000;

class PublicDriver : public bench::LibraryDriver {
public:
    void AddResource(const std::shared_ptr<vexa::Resource>& resource) override
    {
        vexa::AddResource(resource);
    }
    void RemoveAllResources() override { vexa::RemoveAllResources(); }
    void Update() override { vexa::Update(); }
    void FrameBox(const glm::vec3& minimum, const glm::vec3& maximum) override
    {
        vexa::FrameBox(minimum, maximum);
    }
};

PublicDriver library;
bool libraryOpen = false;
// Both sides at 1 px with anti-aliasing off instead of the library's own look.
bool onePixel = false;
bench::BareFloor floorWindow;

glm::mat4 FloorCamera(const bench::HostCloud& host, int step)
{
    glm::vec3 minimum;
    glm::vec3 maximum;
    bench::CameraBox(host, step, minimum, maximum);
    return bench::BareFloor::Framing(minimum, maximum, kWidth, kHeight);
}

void FrameLibrary(const bench::HostCloud& host, int step)
{
    glm::vec3 minimum;
    glm::vec3 maximum;
    bench::CameraBox(host, step, minimum, maximum);
    vexa::FrameBox(minimum, maximum);
}

bool Ready(benchmark::State& state)
{
    if (!libraryOpen || !floorWindow.IsOpen()) {
        state.SkipWithError("The library or the floor has no window (no display?)");
        return false;
    }
    return true;
}

/// After giving freed heap memory back, so that only what is held counts.
std::size_t ResidentBytes()
{
    malloc_trim(0);
    return bench::ResidentBytes();
}

// An Update with nothing to do, for telling a drawing Update from an idle one: the public
// functions do not say whether a frame was drawn.
double IdleUpdateSeconds()
{
    std::this_thread::sleep_for(kStillPause);
    library.Update();
    std::vector<double> idle;
    for (int i = 0; i < 5; ++i)
        idle.push_back(bench::TimeSeconds([] { library.Update(); }));
    return bench::Median(idle);
}

void BM_HandOver(benchmark::State& state)
{
    if (Ready(state))
        bench::RunHandOver(state, library);
}

void BM_FirstFrame(benchmark::State& state)
{
    if (!Ready(state))
        return;
    const bench::HostCloud& host = bench::HostCloudOf(static_cast<std::size_t>(state.range(0)));
    bench::Settle(library);
    double floorSeconds = 0.0;
    double librarySeconds = 0.0;
    double refineSeconds = 0.0;
    int iteration = 0;
    for (auto _ : state) {
        const auto floorPart = [&] {
            floorSeconds += floorWindow.FirstFrame(host, FloorCamera(host, 0));
            floorWindow.DropCloud();
        };
        const auto libraryPart = [&] {
            // The camera is set and still before the cloud comes, so that the first frame is
            // not taken for one of a moving camera.
            FrameLibrary(host, 0);
            library.Update();
            std::this_thread::sleep_for(kStillPause);
            library.Update();
            bench::HandOver(host, library);
            const double seconds = bench::TimeSeconds([] { library.Update(); });
            std::this_thread::sleep_for(kStillPause);
            const double refine = bench::TimeSeconds([] { library.Update(); });
            librarySeconds += seconds;
            refineSeconds += refine;
            state.SetIterationTime(seconds);
            bench::Settle(library);
        };
        // Whoever goes second finds the caches the first one left; taking turns shares that.
        if (iteration++ % 2 == 0) {
            floorPart();
            libraryPart();
        } else {
            libraryPart();
            floorPart();
        }
    }
    const auto iterations = static_cast<double>(state.iterations());
    state.counters["floor_ms"] = floorSeconds / iterations * 1e3;
    state.counters["vexa_ms"] = librarySeconds / iterations * 1e3;
    state.counters["ratio_to_floor"] = floorSeconds > 0.0 ? librarySeconds / floorSeconds : 0.0;
    state.counters["floor_samples"] = floorWindow.GetSamples();
    // Above an idle Update's microseconds when the first frame left points to draw later.
    state.counters["next_update_ms"] = refineSeconds / iterations * 1e3;
}

// Arguments: points, sidebar shown (0 or 1).
void BM_CameraFrame(benchmark::State& state)
{
    if (!Ready(state))
        return;
    const bench::HostCloud& host = bench::HostCloudOf(static_cast<std::size_t>(state.range(0)));
    const bool sidebar = state.range(1) != 0;
    bench::Settle(library);
    vexa::SetSidebarVisible(0, sidebar);
    bench::HandOver(host, library);
    FrameLibrary(host, 0);
    library.Update();
    floorWindow.FirstFrame(host, FloorCamera(host, 0));
    const double idle = IdleUpdateSeconds();
    // An Update that took this long drew a frame; the idle ones take microseconds.
    const double drawing = std::max(1e-3, 20.0 * idle);
    double floorSeconds = 0.0;
    double librarySeconds = 0.0;
    double moveSeconds = 0.0;
    double refineSeconds = 0.0;
    double refines = 0.0;
    int step = 1;
    for (auto _ : state) {
        floorSeconds += floorWindow.Frame(FloorCamera(host, step));
        FrameLibrary(host, step);
        const double move = bench::TimeSeconds([] { library.Update(); });
        std::this_thread::sleep_for(kStillPause);
        const double refine = bench::TimeSeconds([] { library.Update(); });
        // A library that draws every point at once after a move has nothing left to refine.
        const bool refined = refine > drawing;
        const double full = refined ? refine : move;
        state.SetIterationTime(full);
        librarySeconds += full;
        moveSeconds += move;
        refineSeconds += refine;
        refines += refined ? 1.0 : 0.0;
        ++step;
    }
    const auto iterations = static_cast<double>(state.iterations());
    state.counters["floor_ms"] = floorSeconds / iterations * 1e3;
    state.counters["vexa_ms"] = librarySeconds / iterations * 1e3;
    state.counters["ratio_to_floor"] = floorSeconds > 0.0 ? librarySeconds / floorSeconds : 0.0;
    state.counters["move_update_ms"] = moveSeconds / iterations * 1e3;
    state.counters["refine_update_ms"] = refineSeconds / iterations * 1e3;
    state.counters["refined"] = refines / iterations;
    state.counters["idle_update_ms"] = idle * 1e3;
    floorWindow.DropCloud();
    bench::Settle(library);
    vexa::SetSidebarVisible(0, false);
}

void BM_MovingFrame(benchmark::State& state)
{
    if (!Ready(state))
        return;
    const bench::HostCloud& host = bench::HostCloudOf(static_cast<std::size_t>(state.range(0)));
    floorWindow.FirstFrame(host, FloorCamera(host, 0));
    bench::RunMovingFrame(state, library, 10,
                          [&host](int step) { return floorWindow.Frame(FloorCamera(host, step)); });
    floorWindow.DropCloud();
}

// The resident bytes a program gains by showing `count` points, measured in a process of its
// own: two GL contexts in one process hand each other freed memory (llvmpipe keeps its vertex
// working memory), so neither would be measured alone. -1 when the child failed.
double ChildResidentBytes(const char* kind, std::size_t count)
{
    // Read here: in the shell popen starts, /proc/self is the shell.
    const std::string self = std::filesystem::read_symlink("/proc/self/exe").string();
    const std::string command =
        "'" + self + "' --resident " + std::string(kind) + " " + std::to_string(count);
    FILE* child = popen(command.c_str(), "r");
    if (child == nullptr)
        return -1.0;
    double bytes = -1.0;
    char line[256];
    while (std::fgets(line, sizeof(line), child) != nullptr)
        std::sscanf(line, "resident_bytes=%lf", &bytes);
    const int status = pclose(child);
    if (status != 0 || bytes < 0.0) {
        rlog::Fail("\"" + command + "\" failed (status " + std::to_string(status) + ")", "vexa-sidebyside");
        return -1.0;
    }
    return bytes;
}

void BM_ResidentMemory(benchmark::State& state)
{
    if (!Ready(state))
        return;
    const auto count = static_cast<std::size_t>(state.range(0));
    double floorBytes = 0.0;
    double libraryBytes = 0.0;
    for (auto _ : state) {
        const double floorGain = ChildResidentBytes("floor", count);
        double libraryGain = 0.0;
        const double seconds = bench::TimeSeconds([&] { libraryGain = ChildResidentBytes("vexa", count); });
        if (floorGain < 0.0 || libraryGain < 0.0) {
            state.SkipWithError("A measuring child process failed");
            return;
        }
        floorBytes += floorGain;
        libraryBytes += libraryGain;
        state.SetIterationTime(seconds);
    }
    const double points = static_cast<double>(count) * static_cast<double>(state.iterations());
    state.counters["floor_bytes_per_point"] = floorBytes / points;
    state.counters["vexa_bytes_per_point"] = libraryBytes / points;
    state.counters["extra_bytes_per_point"] = (libraryBytes - floorBytes) / points;
    state.counters["host_bytes_per_point"] = 15.0;
    state.counters["target_extra_bytes_per_point"] = 16.0;
}

BENCHMARK(BM_HandOver)->Apply([](benchmark::internal::Benchmark* b) {
    bench::BigCloudRuns(b->Arg(1'000'000)->Arg(10'000'000), 3);
});
BENCHMARK(BM_FirstFrame)->Apply([](benchmark::internal::Benchmark* b) {
    bench::BigCloudRuns(b->Arg(1'000'000)->Arg(10'000'000), 1);
});
BENCHMARK(BM_CameraFrame)->Apply([](benchmark::internal::Benchmark* b) {
    bench::BigCloudRuns(b->Args({1'000'000, 0})->Args({1'000'000, 1})->Args({10'000'000, 0}), 1);
});
BENCHMARK(BM_MovingFrame)->Apply([](benchmark::internal::Benchmark* b) {
    bench::BigCloudRuns(b->Arg(1'000'000)->Arg(10'000'000), 1);
});
BENCHMARK(BM_ResidentMemory)->Apply([](benchmark::internal::Benchmark* b) {
    bench::BigCloudRuns(b->Arg(1'000'000)->Arg(10'000'000), 1);
});

// What both show of 1M points: still (full detail) and right after a camera move.
bool SavePictures(const std::filesystem::path& folder)
{
    std::filesystem::create_directories(folder);
    const bench::HostCloud& host = bench::HostCloudOf(1'000'000);
    bench::HandOver(host, library);
    FrameLibrary(host, 0);
    library.Update();
    floorWindow.FirstFrame(host, FloorCamera(host, 0));
    bool ok = floorWindow.SavePicture(FloorCamera(host, 0), (folder / "floor-1M.ppm").string());
    std::this_thread::sleep_for(kStillPause);
    library.Update();
    ok = vexa::SaveScreenshot((folder / "vexa-1M-still.png").string()) && ok;
    FrameLibrary(host, 5);
    library.Update();
    ok = vexa::SaveScreenshot((folder / "vexa-1M-moving.png").string()) && ok;
    vexa::SetSidebarVisible(0, true);
    std::this_thread::sleep_for(kStillPause);
    library.Update();
    ok = vexa::SaveScreenshot((folder / "vexa-1M-sidebar.png").string()) && ok;
    vexa::SetSidebarVisible(0, false);
    floorWindow.DropCloud();
    bench::Settle(library);
    return ok;
}

std::filesystem::path WriteLook(const std::filesystem::path& folder)
{
    const std::filesystem::path look = folder / "sidebyside-look.json";
    std::ofstream out(look);
    out << R"({"vexa": {"version": "1.0", "caption": "vexa-sidebyside", "width": )" << kWidth
        << R"(, "height": )" << kHeight
        << R"(, "views": [{"position": "0,0;0,0", "size": "1,0;1,0", "axes": false, "sidebar-visible": false}]}})";
    return look;
}

// The library's settings file as its format is written down (version word 2; anti-aliasing,
// white background, stored sensitivity, optimised rendering, shortcuts, view layout), with
// anti-aliasing off and the rest at their defaults: how a host starts the library so without
// a panel.
void WriteOptionsWithoutAntiAliasing(const std::filesystem::path& folder)
{
    std::filesystem::create_directories(folder);
    std::ofstream out(folder / "options.bin", std::ios::binary);
    const std::uint32_t version = 2;
    const std::uint8_t off = 0, white = 0, optimised = 1, shortcuts = 1, layout = 0;
    const float sensitivity = (1.0f - 0.2f) / 1.5999999f;
    out.write(reinterpret_cast<const char*>(&version), 4);
    out.write(reinterpret_cast<const char*>(&off), 1);
    out.write(reinterpret_cast<const char*>(&white), 1);
    out.write(reinterpret_cast<const char*>(&sensitivity), 4);
    out.write(reinterpret_cast<const char*>(&optimised), 1);
    out.write(reinterpret_cast<const char*>(&shortcuts), 1);
    out.write(reinterpret_cast<const char*>(&layout), 1);
}

bool StartLibrary(const std::filesystem::path& folder)
{
    vexa::SetMessageBoxHandler([](const std::string& caption, const std::string& text, vexa::MessageIcon) {
        std::fprintf(stderr, "%s: %s\n", caption.c_str(), text.c_str());
    });
    const char* assets = std::getenv("VEXA_ASSET_DIR");
    vexa::SetAssetDirectory(assets != nullptr ? assets : VEXA_SOURCE_ASSET_DIR);
    vexa::SetIntermediateDirectory((folder / "state").string());
    if (onePixel)
        WriteOptionsWithoutAntiAliasing(folder / "state");
    if (!vexa::Initialize(WriteLook(folder).string())) {
        rlog::Fail("The library could not start (no display?)", "vexa-sidebyside");
        return false;
    }
    for (int i = 0; i < 10; ++i)
        library.Update();
    return true;
}

// The child of ChildResidentBytes: shows `count` points with the floor or the library, from a
// settled start, and prints the resident bytes gained (host arrays, hand-over, first frame;
// the library's tesk::PointCloud is dropped after the hand-over, as a host would).
int ResidentChild(const std::string& kind, std::size_t count, const std::filesystem::path& folder)
{
    std::size_t start = 0;
    std::size_t held = 0;
    if (kind == "vexa") {
        if (!StartLibrary(folder))
            return 1;
        // Its shaders are compiled and its GL state made on first use, which no size pays twice.
        bench::HandOver(bench::MakeHostCloud(kWarmUpPoints), library);
        library.Update();
        bench::Settle(library);
        start = ResidentBytes();
        const bench::HostCloud host = bench::MakeHostCloud(count);
        bench::HandOver(host, library);
        FrameLibrary(host, 0);
        library.Update();
        held = ResidentBytes();
        vexa::Terminate();
    } else if (kind == "floor") {
        // Alone in this process, the floor initialises GLFW itself.
        if (glfwInit() != GLFW_TRUE ||
            !floorWindow.Open(kWidth, kHeight, bench::FloorLook{}, kFloorX, kFloorY))
            return 1;
        {
            const bench::HostCloud warmUp = bench::MakeHostCloud(kWarmUpPoints);
            floorWindow.FirstFrame(warmUp, FloorCamera(warmUp, 0));
            floorWindow.DropCloud();
        }
        start = ResidentBytes();
        const bench::HostCloud host = bench::MakeHostCloud(count);
        floorWindow.FirstFrame(host, FloorCamera(host, 0));
        held = ResidentBytes();
        floorWindow.Close();
        glfwTerminate();
    } else {
        rlog::Fail("--resident takes floor or vexa, not \"" + kind + "\"", "vexa-sidebyside");
        return 2;
    }
    std::printf("resident_bytes=%.0f\n", static_cast<double>(held) - static_cast<double>(start));
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    std::string pictures;
    std::string residentKind;
    std::size_t residentCount = 0;
    std::vector<char*> arguments;
    for (int i = 0; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--pictures" && i + 1 < argc) {
            pictures = argv[++i];
        } else if (argument == "--one-pixel") {
            onePixel = true;
            bench::SetHandOverPointSize(1.0f);
        } else if (argument == "--resident" && i + 2 < argc) {
            residentKind = argv[++i];
            residentCount = std::strtoull(argv[++i], nullptr, 10);
        } else {
            arguments.push_back(argv[i]);
        }
    }
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("vexa-sidebyside-" + std::to_string(getpid()));
    std::filesystem::create_directories(folder);
    std::error_code ignored;
    if (!residentKind.empty()) {
        const int status = ResidentChild(residentKind, residentCount, folder);
        std::filesystem::remove_all(folder, ignored);
        return status;
    }

    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    if (benchmark::ReportUnrecognizedArguments(count, arguments.data()))
        return 2;

    libraryOpen = StartLibrary(folder);
    if (libraryOpen) {
        // The library initialised GLFW; the floor's window comes after it, and goes before the
        // library terminates GLFW.
        const tesk::Color3b background = vexa::GetBackgroundColor();
        bench::FloorLook look;
        look.background = glm::vec3(background.r, background.g, background.b) / 255.0f;
        if (onePixel) {
            look.samples = 0;
            look.pointSize = 1.0f;
        }
        floorWindow.Open(kWidth, kHeight, look, kFloorX, kFloorY);
    }

    int status = 0;
    if (!pictures.empty())
        status = libraryOpen && floorWindow.IsOpen() && SavePictures(pictures) ? 0 : 1;
    else
        benchmark::RunSpecifiedBenchmarks();

    floorWindow.Close();
    if (libraryOpen)
        vexa::Terminate();
    benchmark::Shutdown();
    std::filesystem::remove_all(folder, ignored);
    return status;
}
