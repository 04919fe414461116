#pragma once
// The built-in scene of `vexa-viewer --demo`: something to look at and to try every control on
// before opening one's own files.

#include <tesk/Mesh.h>
#include <tesk/PointCloud.h>
#include <tesk/Scan.h>

#include <cstddef>

namespace vexa::viewer {

/// A rolling height field on the XZ plane (4 x 4 units, `side` x `side` points) with normals
/// and the float data "Height" and "Slope".
tesk::PointCloud MakeTerrain(std::size_t side);

/// A two-armed spiral of `count` points floating above the terrain, with the colour sets
/// "Rainbow" (hue along the arms) and "Arms" (one colour per arm), and the float data
/// "Radius".
tesk::PointCloud MakeSpiral(std::size_t count);

/// A tube along a trefoil knot (`segments` rings of `sides` vertices), with vertex normals
/// and the float data "Curve" (position along the knot, 0..1) and "Depth" (distance below
/// the knot's upper side).
tesk::Mesh MakeKnot(std::size_t segments, std::size_t sides);

/// What a depth camera `side` x `side` pixels wide sees of a bumpy bowl: one point per pixel
/// with the scanner's colour "RGB" and the float data "Range", and the camera placed above
/// and in front of it, looking at it.
tesk::Scan MakeBowlScan(std::size_t side);

/// Shows the demo content for the three view areas of the demo look (clouds; a mesh; a scan
/// with its camera) and frames the first.
void ShowDemoScene();

} // namespace vexa::viewer
