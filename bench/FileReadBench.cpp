// File reading benchmarks: a reader on a big file against the floor of reading the same file's
// bytes once (FileBytes::Load, the page cache warm). Each iteration times both, so the ratio
// compares runs made under the same load. Formats add a case with BenchFile (writes the input
// once into the temp folder) and ReadAgainstFloor.

#include "FileBytes.h"
#include "ModelFile.h"

#include <tesk/Mesh.h>

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <system_error>

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::int64_t kMillion = 1000000;

/// Removes the written inputs when the program ends.
class BenchFiles {
public:
    ~BenchFiles()
    {
        for (const auto& [name, path] : paths_) {
            std::error_code ignored;
            std::filesystem::remove(path, ignored);
        }
    }

    const std::string& Get(const std::string& name, const std::function<std::string()>& make)
    {
        auto it = paths_.find(name);
        if (it != paths_.end())
            return it->second;
        const std::string path = (std::filesystem::temp_directory_path() / ("vexa-bench-" + name)).string();
        const std::string bytes = make();
        std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return paths_.emplace(name, path).first->second;
    }

private:
    std::map<std::string, std::string> paths_;
};

/// The path of the temp file `name`, written from make() on first use and kept for the run.
const std::string& BenchFile(const std::string& name, const std::function<std::string()>& make)
{
    static BenchFiles files;
    return files.Get(name, make);
}

/// Times `read(path)` and one FileBytes::Load of the same file per iteration; reports the
/// reader's time (manual time), the floor and their ratio.
void ReadAgainstFloor(benchmark::State& state, const std::string& path,
                      const std::function<bool(const std::string&)>& read)
{
    double readSeconds = 0.0;
    double floorSeconds = 0.0;
    std::uintmax_t size = std::filesystem::file_size(path);
    for (auto _ : state) {
        auto start = Clock::now();
        {
            vexa::viewer::FileBytes bytes;
            std::string error;
            if (!bytes.Load(path, error))
                state.SkipWithError(error.c_str());
            benchmark::DoNotOptimize(bytes.View().data());
        }
        floorSeconds += std::chrono::duration<double>(Clock::now() - start).count();

        start = Clock::now();
        const bool ok = read(path);
        const double elapsed = std::chrono::duration<double>(Clock::now() - start).count();
        if (!ok)
            state.SkipWithError("the reader failed");
        readSeconds += elapsed;
        state.SetIterationTime(elapsed);
    }
    const double iterations = static_cast<double>(state.iterations());
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(size));
    state.counters["file_MB"] = static_cast<double>(size) / 1e6;
    state.counters["floor_ms"] = floorSeconds / iterations * 1e3;
    state.counters["ratio_to_floor"] = readSeconds / floorSeconds;
}

/// Point `i` of every input: a deterministic spiral, as float x y z.
void WritePosition(char* out, std::int64_t i)
{
    const float t = static_cast<float>(i) * 1e-5f;
    const float xyz[3] = {t * 0.5f - 1.0f, static_cast<float>(i % 1000) * 1e-3f,
                          static_cast<float>(i % 7919) * 1e-4f};
    std::memcpy(out, xyz, 12);
}

/// A binary little-endian PLY of `count` float x y z points.
std::string BinaryPly(std::int64_t count)
{
    std::string bytes = "ply\nformat binary_little_endian 1.0\ncomment vexa-bench input\nelement vertex " +
                        std::to_string(count) +
                        "\nproperty float x\nproperty float y\nproperty float z\nend_header\n";
    const std::size_t header = bytes.size();
    bytes.resize(header + static_cast<std::size_t>(count) * 12);
    for (std::int64_t i = 0; i < count; ++i)
        WritePosition(bytes.data() + header + i * 12, i);
    return bytes;
}

/// A binary PCD of `count` points "x y z rgb" (floats and a packed colour), as scanners and
/// the Point Cloud Library write them.
std::string BinaryPcd(std::int64_t count)
{
    std::string bytes =
        "# .PCD v0.7 - Point Cloud Data file format\nVERSION 0.7\nFIELDS x y z rgb\nSIZE 4 4 4 4\n"
        "TYPE F F F U\nCOUNT 1 1 1 1\nWIDTH " +
        std::to_string(count) + "\nHEIGHT 1\nVIEWPOINT 0 0 0 1 0 0 0\nPOINTS " + std::to_string(count) +
        "\nDATA binary\n";
    const std::size_t header = bytes.size();
    bytes.resize(header + static_cast<std::size_t>(count) * 16);
    for (std::int64_t i = 0; i < count; ++i) {
        char* out = bytes.data() + header + i * 16;
        WritePosition(out, i);
        const auto rgb = static_cast<std::uint32_t>(i * 2654435761LL) & 0xFFFFFFu;
        std::memcpy(out + 12, &rgb, 4);
    }
    return bytes;
}

/// The viewer's whole path for a file (ReadModelFile) on the temp file `name`.
void ReadModelFileAgainstFloor(benchmark::State& state, const std::string& name,
                               const std::function<std::string()>& make)
{
    ReadAgainstFloor(state, BenchFile(name, make), [](const std::string& path) {
        tesk::Mesh mesh;
        std::string error;
        const bool ok = vexa::viewer::ReadModelFile(path, mesh, error);
        benchmark::DoNotOptimize(mesh.GetVertices().Data());
        return ok;
    });
}

void BM_ReadModelFilePly(benchmark::State& state)
{
    ReadModelFileAgainstFloor(state, "points-" + std::to_string(state.range(0)) + ".ply",
                              [&] { return BinaryPly(state.range(0)); });
}

void BM_ReadModelFilePcd(benchmark::State& state)
{
    ReadModelFileAgainstFloor(state, "points-" + std::to_string(state.range(0)) + ".pcd",
                              [&] { return BinaryPcd(state.range(0)); });
}

} // namespace

BENCHMARK(BM_ReadModelFilePly)->Arg(10 * kMillion)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReadModelFilePcd)->Arg(10 * kMillion)->UseManualTime()->Unit(benchmark::kMillisecond);
