#include "BenchCloud.h"

#include <benchmark/benchmark.h>

#include <glm/geometric.hpp>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <vector>

namespace bench {

/// A deterministic cloud in the cube [-1, 1]^3 with one colour and one float property, the
/// input the renderer benchmarks are defined on. Built once per size and kept, since making
/// ten million points takes longer than what is measured.
const tesk::PointCloud& CloudOf(std::size_t count)
{
    static std::size_t cachedCount = 0;
    static std::unique_ptr<tesk::PointCloud> cached;
    if (cached && cachedCount == count)
        return *cached;
    cached.reset();
    std::vector<glm::vec3> positions(count);
    std::vector<tesk::Color3f> colors(count);
    std::vector<float> values(count);
    std::uint32_t state = 12345u;
    const auto next = [&state]() {
        state = state * 1664525u + 1013904223u;
        return static_cast<float>(state >> 8) / static_cast<float>(1u << 24);
    };
    for (std::size_t i = 0; i < count; ++i) {
        const glm::vec3 p(next() * 2.0f - 1.0f, next() * 2.0f - 1.0f, next() * 2.0f - 1.0f);
        positions[i] = p;
        colors[i] = {p.x * 0.5f + 0.5f, p.y * 0.5f + 0.5f, p.z * 0.5f + 0.5f};
        values[i] = glm::length(p);
    }
    cached = std::make_unique<tesk::PointCloud>(std::move(positions));
    cached->AddColorProperty("rgb", std::move(colors));
    cached->AddFloatProperty("range", std::move(values));
    cachedCount = count;
    return *cached;
}

std::size_t InputBytes(const tesk::PointCloud& cloud)
{
    return cloud.Size() * (sizeof(glm::vec3) + sizeof(tesk::Color3f) + sizeof(float));
}

/// One copy of every input byte (positions, colours, floats) into memory that already exists:
/// the least any build from this input could cost.
void CopyInput(const tesk::PointCloud& cloud, std::byte* destination)
{
    const std::span<const glm::vec3> positions = cloud.GetPositions();
    const std::span<const tesk::Color3f> colors = cloud.GetColorProperty("rgb");
    const std::span<const float> values = cloud.GetFloatProperty("range");
    std::memcpy(destination, positions.data(), positions.size_bytes());
    destination += positions.size_bytes();
    std::memcpy(destination, colors.data(), colors.size_bytes());
    destination += colors.size_bytes();
    std::memcpy(destination, values.data(), values.size_bytes());
    benchmark::ClobberMemory();
}

} // namespace bench
