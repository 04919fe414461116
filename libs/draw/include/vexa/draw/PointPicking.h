#pragma once
// Which point of a cloud is drawn under the pointer, found on the CPU from the positions alone:
// no GL, no allocation, one pass over the points. It answers what the GPU would show there:
// the point nearest the camera among those whose centre is inside the clip volume (as point
// primitives are clipped) and lands within a radius of the pointer.

#include <glm/mat4x4.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <cstddef>
#include <optional>
#include <span>

namespace vexa::draw {

/// Index into `positions` of the point drawn under `cursor`, nothing when no point is there.
///
/// `clipFromPoints` takes the positions to clip space (projection x view x model). `viewport`
/// is the scene's rectangle (x0, y0, x1, y1) and `cursor` the pointer, both in window pixels
/// with the origin at the top-left corner. A point counts when it is finite, inside the clip
/// volume and its pixel position is at most `radius` pixels from the cursor. Of those, the one
/// the depth test keeps wins: the smallest depth as a 24-bit depth buffer stores it. Points
/// that buffer cannot tell apart go to the one nearest the cursor (then to the first), so on a
/// flat cloud seen face-on a click takes the point under the pointer. An empty viewport, a
/// negative radius or a non-finite cursor or matrix finds nothing.
std::optional<std::size_t> PickPoint(std::span<const glm::vec3> positions, const glm::mat4& clipFromPoints,
                                     const glm::ivec4& viewport, glm::vec2 cursor, float radius);

} // namespace vexa::draw
