#pragma once
// The built-in scene of `vexa-viewer --demo`: something to look at and to try every control on
// before opening one's own files.

#include <vexa/modules/GraphResource.h>
#include <vexa/modules/GuiResource.h>

#include <tesk/Image.h>
#include <tesk/Mesh.h>
#include <tesk/PointCloud.h>
#include <tesk/Scan.h>
#include <tesk/Skeleton.h>
#include <tesk/SkeletonAction.h>

#include <glm/vec2.hpp>

#include <chrono>
#include <cstddef>
#include <memory>
#include <span>
#include <vector>

namespace vexa::viewer {

/// A rolling height field on the XZ plane (4 x 4 units, `side` x `side` points) with normals
/// and the float data "Height" and "Slope".
tesk::PointCloud MakeTerrain(std::size_t side);

/// A two-armed spiral of `count` points floating above the terrain, wound `twist` radians per
/// unit of radius, with the colour sets "Rainbow" (hue along the arms) and "Arms" (one colour
/// per arm), and the float data "Radius".
tesk::PointCloud MakeSpiral(std::size_t count, float twist);

/// A tube along a trefoil knot (`segments` rings of `sides` vertices), with vertex normals
/// and the float data "Curve" (position along the knot, 0..1) and "Depth" (distance below
/// the knot's upper side).
tesk::Mesh MakeKnot(std::size_t segments, std::size_t sides);

/// What a depth camera `side` x `side` pixels wide sees of a bumpy bowl: one point per pixel
/// with the scanner's colour "RGB" and the float data "Range", and the camera placed above
/// and in front of it, looking at it.
tesk::Scan MakeBowlScan(std::size_t side);

/// The range each pixel of a `side` x `side` depth camera (the bowl scan's) measures, row by
/// row; negative where it sees nothing.
std::vector<float> MakeBowlRanges(std::size_t side);

/// A stick figure of 16 joints, 0.85 units tall, and an action in which it walks once round
/// a circle of radius 1 about the origin in eight seconds, in a seamless loop.
struct Walker {
    tesk::Skeleton skeleton;
    tesk::SkeletonAction action;
};
Walker MakeWalker();

/// `ranges` (as MakeBowlRanges gives them) as a dimmed thermal picture; misses are dark.
tesk::Image MakeRangePicture(std::span<const float> ranges, std::size_t side);

/// The demo content for the four view areas of the demo look: clouds with a panel of the
/// host's own (its button twists the spiral); a mesh with a figure walking round it; a scan
/// with its camera; the scan's range picture under a profile of one row that sweeps down it.
class DemoScene {
public:
    DemoScene();
    ~DemoScene();
    DemoScene(const DemoScene&) = delete;
    DemoScene& operator=(const DemoScene&) = delete;

    /// Adds every resource and frames the clouds.
    void Show();
    /// Once per main-loop step: moves the profile on when its time has come.
    void Step();

private:
    void ShowSpiral();

    std::vector<float> ranges_;
    std::vector<glm::vec2> profilePoints_;
    std::size_t row_ = 0;
    float twist_ = 5.0f;
    std::chrono::steady_clock::time_point nextProfile_{};
    std::shared_ptr<modules::GraphResource> profile_;
    std::shared_ptr<modules::GuiResource> controls_;
};

} // namespace vexa::viewer
