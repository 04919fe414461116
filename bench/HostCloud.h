#pragma once
// A big point cloud as a host program holds it before it shows it: positions as a flat array
// of floats and colours as bytes, nothing the library defines. The same arrays feed the bare
// GL floor and the library, so both draw exactly the same points.

#include <glm/vec3.hpp>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace bench {

struct HostCloud {
    /// x y z of every point in turn: 12 bytes a point.
    std::vector<float> xyz;
    /// r g b of every point in turn: 3 bytes a point.
    std::vector<std::uint8_t> rgb;
    /// Box around every point.
    glm::vec3 minimum{0.0f};
    glm::vec3 maximum{0.0f};

    std::size_t Size() const { return xyz.size() / 3; }
    /// What the host holds: 15 bytes a point.
    std::size_t Bytes() const { return xyz.size() * sizeof(float) + rgb.size(); }
};

/// A terrain scan of exactly `count` points: a height field over a 100 m square (y up),
/// sampled row by row as a scanner sweeps, coloured by height from water blue through grass
/// and rock to snow. Deterministic, so every run and both programs see the same points; the
/// rows keep their order, so an evenly spread subset shows as evenly thinned lines.
HostCloud MakeHostCloud(std::size_t count);

/// MakeHostCloud(count), built once per size and kept (ten million points take longer to
/// make than most of what is measured on them).
const HostCloud& HostCloudOf(std::size_t count);

/// The box the camera frames at step `step` of a slow move: the cloud's box, drifting
/// sideways and breathing by a few percent, so that every step changes the view a little and
/// every point stays in it.
void CameraBox(const HostCloud& cloud, int step, glm::vec3& minimum, glm::vec3& maximum);

} // namespace bench
