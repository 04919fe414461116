#pragma once
// The built-in scene of `vexa-viewer --demo`: something to look at and to try every control on
// before opening one's own files.

#include <tesk/PointCloud.h>

#include <cstddef>

namespace vexa::viewer {

/// A rolling height field on the XZ plane (4 x 4 units, `side` x `side` points) with normals
/// and the float data "Height" and "Slope".
tesk::PointCloud MakeTerrain(std::size_t side);

/// A two-armed spiral of `count` points floating above the terrain, with the colour sets
/// "Rainbow" (hue along the arms) and "Arms" (one colour per arm), and the float data
/// "Radius".
tesk::PointCloud MakeSpiral(std::size_t count);

/// `count` points spread evenly over a sphere of radius 0.8, with outward normals.
tesk::PointCloud MakeSphere(std::size_t count);

/// Shows the demo clouds and a torus (for the two view areas of the demo look) and frames
/// them.
void ShowDemoScene();

} // namespace vexa::viewer
