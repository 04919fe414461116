#pragma once
// The input the point cloud benchmarks are defined on.

#include <tesk/PointCloud.h>

#include <cstddef>

namespace bench {

/// A deterministic cloud in the cube [-1, 1]^3 with the colour property "rgb" and the float
/// property "range". Built once per size and kept (making ten million points takes longer
/// than what is measured); asking for another size drops the previous one.
const tesk::PointCloud& CloudOf(std::size_t count);

/// Bytes of the positions, the colour and the float property: 28 a point.
std::size_t InputBytes(const tesk::PointCloud& cloud);

/// One copy of the positions, the colours and the floats into `destination` (InputBytes()
/// long): the least any build from this input could cost.
void CopyInput(const tesk::PointCloud& cloud, std::byte* destination);

} // namespace bench
