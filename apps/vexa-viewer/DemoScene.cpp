#include "DemoScene.h"

#include <vexa/vexa.h>

#include <CEGUI/CEGUI.h>

#include <glm/geometric.hpp>
#include <glm/gtc/constants.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace vexa::viewer {

namespace {

tesk::Color3f Hue(float h)
{
    // h in [0, 1): a saturated colour wheel.
    const float r = std::clamp(std::abs(h * 6.0f - 3.0f) - 1.0f, 0.0f, 1.0f);
    const float g = std::clamp(2.0f - std::abs(h * 6.0f - 2.0f), 0.0f, 1.0f);
    const float b = std::clamp(2.0f - std::abs(h * 6.0f - 4.0f), 0.0f, 1.0f);
    return {r, g, b};
}

} // namespace

tesk::PointCloud MakeTerrain(std::size_t side)
{
    side = std::max<std::size_t>(side, 2);
    const std::size_t count = side * side;
    std::vector<glm::vec3> positions(count);
    std::vector<glm::vec3> normals(count);
    std::vector<float> height(count);
    std::vector<float> slope(count);
    const float step = 4.0f / static_cast<float>(side - 1);
    for (std::size_t row = 0; row < side; ++row) {
        for (std::size_t column = 0; column < side; ++column) {
            const std::size_t i = row * side + column;
            const float x = -2.0f + static_cast<float>(column) * step;
            const float z = -2.0f + static_cast<float>(row) * step;
            const float y =
                0.22f * std::sin(1.7f * x) * std::cos(1.3f * z) + 0.06f * std::sin(4.0f * x + 3.0f * z);
            // Partial derivatives of y, for the normal and the slope.
            const float dx = 0.22f * 1.7f * std::cos(1.7f * x) * std::cos(1.3f * z) +
                             0.06f * 4.0f * std::cos(4.0f * x + 3.0f * z);
            const float dz = -0.22f * 1.3f * std::sin(1.7f * x) * std::sin(1.3f * z) +
                             0.06f * 3.0f * std::cos(4.0f * x + 3.0f * z);
            positions[i] = {x, y, z};
            normals[i] = glm::normalize(glm::vec3(-dx, 1.0f, -dz));
            height[i] = y;
            slope[i] = std::sqrt(dx * dx + dz * dz);
        }
    }
    tesk::PointCloud cloud(std::move(positions));
    cloud.SetNormals(std::move(normals));
    cloud.AddFloatProperty("Height", std::move(height));
    cloud.AddFloatProperty("Slope", std::move(slope));
    return cloud;
}

tesk::PointCloud MakeSpiral(std::size_t count, float twist)
{
    std::vector<glm::vec3> positions(count);
    std::vector<tesk::Color3f> rainbow(count);
    std::vector<tesk::Color3f> arms(count);
    std::vector<float> radius(count);
    const tesk::Color3f armColors[2] = {{1.0f, 0.55f, 0.15f}, {0.25f, 0.65f, 1.0f}};
    // A fixed linear congruential generator keeps the scene identical from run to run.
    std::uint32_t seed = 12345u;
    const auto random = [&seed] {
        seed = seed * 1664525u + 1013904223u;
        return static_cast<float>(seed >> 8) / 16777216.0f;
    };
    for (std::size_t i = 0; i < count; ++i) {
        const float t = static_cast<float>(i) / static_cast<float>(std::max<std::size_t>(count, 1));
        const std::size_t arm = i % 2;
        const float r = 0.1f + 1.3f * std::sqrt(t);
        const float angle = twist * r + static_cast<float>(arm) * glm::pi<float>();
        // Scatter that narrows towards the rim, like a galaxy's arms.
        const float spread = 0.18f * (1.4f - r * 0.6f);
        const float jitterR = (random() - 0.5f) * spread;
        const float jitterA = (random() - 0.5f) * spread;
        const float jitterY = (random() - 0.5f) * 0.12f * (1.6f - r);
        positions[i] = {(r + jitterR) * std::cos(angle + jitterA), 1.1f + jitterY,
                        (r + jitterR) * std::sin(angle + jitterA)};
        rainbow[i] = Hue(std::fmod(t * 0.9f, 1.0f));
        arms[i] = armColors[arm];
        radius[i] = r;
    }
    tesk::PointCloud cloud(std::move(positions));
    cloud.AddColorProperty("Rainbow", std::move(rainbow));
    cloud.AddColorProperty("Arms", std::move(arms));
    cloud.AddFloatProperty("Radius", std::move(radius));
    return cloud;
}

tesk::Mesh MakeKnot(std::size_t segments, std::size_t sides)
{
    segments = std::max<std::size_t>(segments, 8);
    sides = std::max<std::size_t>(sides, 3);
    const float twoPi = glm::two_pi<float>();
    // The trefoil: a (2, 3) torus knot, scaled to about 1.3 units across.
    const auto curve = [](float t) {
        const float r = 0.45f + 0.18f * std::cos(3.0f * t);
        return glm::vec3(r * std::cos(2.0f * t), 0.18f * std::sin(3.0f * t), r * std::sin(2.0f * t));
    };
    const float tube = 0.09f;
    std::vector<glm::vec3> positions;
    std::vector<float> along;
    std::vector<float> depth;
    positions.reserve(segments * sides);
    along.reserve(segments * sides);
    depth.reserve(segments * sides);
    for (std::size_t i = 0; i < segments; ++i) {
        const float t = twoPi * static_cast<float>(i) / static_cast<float>(segments);
        const glm::vec3 centre = curve(t);
        const glm::vec3 tangent = glm::normalize(curve(t + 1e-3f) - curve(t - 1e-3f));
        // A frame around the tangent that does not twist much: built from the up axis.
        const glm::vec3 side = glm::normalize(glm::cross(tangent, glm::vec3(0.0f, 1.0f, 0.0f)));
        const glm::vec3 up = glm::cross(side, tangent);
        for (std::size_t j = 0; j < sides; ++j) {
            const float a = twoPi * static_cast<float>(j) / static_cast<float>(sides);
            const glm::vec3 offset = tube * (std::cos(a) * side + std::sin(a) * up);
            positions.push_back(centre + offset);
            along.push_back(static_cast<float>(i) / static_cast<float>(segments));
            depth.push_back(tube - offset.y);
        }
    }
    std::vector<glm::uvec3> faces;
    faces.reserve(2 * segments * sides);
    for (std::size_t i = 0; i < segments; ++i) {
        const std::size_t next = (i + 1) % segments;
        for (std::size_t j = 0; j < sides; ++j) {
            const std::size_t k = (j + 1) % sides;
            const auto a = static_cast<std::uint32_t>(i * sides + j);
            const auto b = static_cast<std::uint32_t>(next * sides + j);
            const auto c = static_cast<std::uint32_t>(next * sides + k);
            const auto d = static_cast<std::uint32_t>(i * sides + k);
            faces.emplace_back(a, c, b);
            faces.emplace_back(a, d, c);
        }
    }
    tesk::Mesh mesh(tesk::PointCloud(std::move(positions)), std::move(faces));
    mesh.GetVertices().AddFloatProperty("Curve", std::move(along));
    mesh.GetVertices().AddFloatProperty("Depth", std::move(depth));
    mesh.ComputeVertexNormals();
    return mesh;
}

namespace {

/// The scanner of the bowl: where it stands and its axes (right, up, forward).
struct BowlCamera {
    glm::vec3 eye{0.5f, 0.9f, -1.0f};
    glm::vec3 forward = glm::normalize(glm::vec3(0.0f, -0.05f, 0.0f) - eye);
    glm::vec3 right = glm::normalize(glm::cross(forward, glm::vec3(0.0f, 1.0f, 0.0f)));
    glm::vec3 up = glm::cross(right, forward);
};

/// The ray of pixel (row, column) of a `side` x `side` depth image.
glm::vec3 BowlRay(const BowlCamera& camera, std::size_t side, std::size_t row, std::size_t column)
{
    const float halfView = 0.42f; // tangent of half the field of view
    const float u = (2.0f * static_cast<float>(column) / static_cast<float>(side - 1) - 1.0f) * halfView;
    const float v = (1.0f - 2.0f * static_cast<float>(row) / static_cast<float>(side - 1)) * halfView;
    return glm::normalize(camera.forward + u * camera.right + v * camera.up);
}

/// How far the ray of pixel (row, column) of a `side` x `side` depth image travels to the
/// bowl; negative when it misses.
float BowlRange(const BowlCamera& camera, std::size_t side, std::size_t row, std::size_t column)
{
    const glm::vec3 ray = BowlRay(camera, side, row, column);
    const auto below = [&](float t) {
        const glm::vec3 p = camera.eye + t * ray;
        const float bowl =
            0.35f * (p.x * p.x + p.z * p.z) + 0.04f * std::sin(9.0f * p.x) * std::cos(7.0f * p.z) - 0.3f;
        return p.y <= bowl && p.x * p.x + p.z * p.z < 0.81f;
    };
    // March to the surface y = bowl(x, z), then narrow the step down so that the range is
    // smooth; the pixels that miss it see nothing.
    for (float t = 0.01f; t < 4.0f; t += 0.01f) {
        if (!below(t))
            continue;
        float outside = t - 0.01f;
        for (int i = 0; i < 12; ++i) {
            const float middle = 0.5f * (outside + t);
            (below(middle) ? t : outside) = middle;
        }
        return t;
    }
    return -1.0f;
}

} // namespace

std::vector<float> MakeBowlRanges(std::size_t side)
{
    side = std::max<std::size_t>(side, 2);
    const BowlCamera camera;
    std::vector<float> ranges(side * side);
    for (std::size_t row = 0; row < side; ++row)
        for (std::size_t column = 0; column < side; ++column)
            ranges[row * side + column] = BowlRange(camera, side, row, column);
    return ranges;
}

tesk::Scan MakeBowlScan(std::size_t side)
{
    side = std::max<std::size_t>(side, 2);
    const BowlCamera camera;
    const std::vector<float> ranges = MakeBowlRanges(side);
    std::vector<glm::vec3> points;
    std::vector<tesk::Color3f> colors;
    std::vector<float> range;
    for (std::size_t row = 0; row < side; ++row) {
        for (std::size_t column = 0; column < side; ++column) {
            const float t = ranges[row * side + column];
            if (t < 0.0f)
                continue;
            const glm::vec3 p = camera.eye + t * BowlRay(camera, side, row, column);
            points.push_back(p);
            range.push_back(t);
            // Colours as a scanner would record them: a warm ceramic glaze with a ring pattern.
            const float ring = 0.5f + 0.5f * std::cos(14.0f * std::sqrt(p.x * p.x + p.z * p.z));
            colors.push_back({0.75f + 0.2f * ring, 0.45f + 0.25f * ring, 0.25f + 0.1f * ring});
        }
    }
    tesk::PointCloud cloud(std::move(points));
    cloud.AddColorProperty("RGB", std::move(colors));
    cloud.AddFloatProperty("Range", std::move(range));
    tesk::Scan scan(std::move(cloud));
    scan.SetResolution(static_cast<std::uint32_t>(side), static_cast<std::uint32_t>(side));
    scan.SetCameraPosition(camera.eye);
    scan.SetCameraUp(camera.up);
    // Columns right, up and back: the camera looks down its -Z axis, as the marker does.
    scan.SetCameraBasis(glm::mat3(camera.right, camera.up, -camera.forward));
    scan.SetBasisDefinition(runa::SpaceDefinition::TeskCamera);
    return scan;
}

Walker MakeWalker()
{
    Walker walker;
    tesk::Skeleton& body = walker.skeleton;
    const int hips = body.AddJoint("hips", -1);
    const int spine = body.AddJoint("spine", hips, {0.0f, 0.2f, 0.0f});
    const int neck = body.AddJoint("neck", spine, {0.0f, 0.2f, 0.0f});
    body.AddJoint("head", neck, {0.0f, 0.08f, 0.0f});
    // Limbs in pairs, left (+X) first: shoulder, elbow, hand; hip, knee, foot.
    for (const float side : {1.0f, -1.0f}) {
        const int shoulder =
            body.AddJoint(side > 0 ? "l_shoulder" : "r_shoulder", spine, {0.1f * side, 0.18f, 0.0f});
        const int elbow = body.AddJoint(side > 0 ? "l_elbow" : "r_elbow", shoulder, {0.0f, -0.14f, 0.0f});
        body.AddJoint(side > 0 ? "l_hand" : "r_hand", elbow, {0.0f, -0.13f, 0.0f});
        const int hip = body.AddJoint(side > 0 ? "l_hip" : "r_hip", hips, {0.06f * side, -0.02f, 0.0f});
        const int knee = body.AddJoint(side > 0 ? "l_knee" : "r_knee", hip, {0.0f, -0.2f, 0.0f});
        body.AddJoint(side > 0 ? "l_foot" : "r_foot", knee, {0.0f, -0.2f, 0.0f});
    }

    // Eight seconds once round the knot at a radius of one unit, a stride a second; the
    // last keyframe equals the first, so the loop has no seam.
    const glm::vec3 pitch(1.0f, 0.0f, 0.0f);
    constexpr int kKeys = 96;
    constexpr float kLap = 8.0f;
    walker.action.SetName("Walk round");
    for (int k = 0; k <= kKeys; ++k) {
        const float time = kLap * static_cast<float>(k) / kKeys;
        const float around = glm::two_pi<float>() * time / kLap;
        const float stride = std::sin(glm::two_pi<float>() * time);
        tesk::SkeletonPose pose = body.GetRestPose();
        const glm::vec3 heading(-std::sin(around), 0.0f, std::cos(around));
        pose.SetJoint(static_cast<std::size_t>(hips),
                      {std::cos(around), -0.03f + 0.015f * std::abs(stride), std::sin(around)},
                      glm::angleAxis(std::atan2(heading.x, heading.z), glm::vec3(0.0f, 1.0f, 0.0f)));
        const auto bend = [&](const std::string& name, float angle) {
            const auto joint = static_cast<std::size_t>(body.FindJoint(name));
            pose.SetJoint(joint, body.GetJoint(joint)->restTranslation, glm::angleAxis(angle, pitch));
        };
        for (const float side : {1.0f, -1.0f}) {
            // A leg swings forward under a negative pitch; the arm on its side swings back.
            const std::string prefix = side > 0.0f ? "l_" : "r_";
            const float swing = side * stride;
            bend(prefix + "hip", -0.45f * swing);
            bend(prefix + "knee", 0.7f * std::max(0.0f, side * std::cos(glm::two_pi<float>() * time)));
            bend(prefix + "shoulder", 0.4f * swing);
        }
        walker.action.AddKeyframe(time, std::move(pose));
    }
    return walker;
}

tesk::Image MakeRangePicture(std::span<const float> ranges, std::size_t side)
{
    float nearest = std::numeric_limits<float>::max(), farthest = 0.0f;
    for (const float t : ranges)
        if (t >= 0.0f) {
            nearest = std::min(nearest, t);
            farthest = std::max(farthest, t);
        }
    std::vector<std::uint8_t> pixels(side * side * 3, 24);
    for (std::size_t i = 0; i < side * side && i < ranges.size(); ++i) {
        if (ranges[i] < 0.0f)
            continue;
        // Dimmed, so that the profile drawn over it stands out.
        const tesk::Color3f c = tesk::MapValueToColor(
            (ranges[i] - nearest) / std::max(farthest - nearest, 1e-6f), tesk::ColorMap::Thermal);
        pixels[3 * i] = static_cast<std::uint8_t>(150.0f * c.r);
        pixels[3 * i + 1] = static_cast<std::uint8_t>(150.0f * c.g);
        pixels[3 * i + 2] = static_cast<std::uint8_t>(150.0f * c.b);
    }
    return tesk::Image(static_cast<std::uint32_t>(side), static_cast<std::uint32_t>(side), 3,
                       std::move(pixels));
}

namespace {

constexpr std::size_t kRangeSide = 320;
constexpr const char* kControlsLayout = R"(<?xml version="1.0" encoding="UTF-8"?>
<GUILayout version="4">
  <Window type="DefaultWindow" name="Controls">
    <Property name="Area" value="{{0,0},{0,0},{1,0},{0,58}}" />
    <Window type="DarkVexa/Label" name="Twist">
      <Property name="Area" value="{{0,0},{0,0},{1,0},{0,20}}" />
      <Property name="HorzFormatting" value="LeftAligned" />
    </Window>
    <Window type="DarkVexa/PushButton" name="TwistMore">
      <Property name="Area" value="{{0,0},{0,26},{1,0},{0,52}}" />
      <Property name="Text" value="Twist the spiral" />
    </Window>
  </Window>
</GUILayout>)";

} // namespace

DemoScene::DemoScene() : ranges_(MakeBowlRanges(kRangeSide)) {}

DemoScene::~DemoScene() = default;

void DemoScene::Show()
{
    using modules::PointCloudGadget;
    controls_ = std::make_shared<modules::GuiResource>("Demo/Controls");
    if (controls_->Setup(kControlsLayout)) {
        controls_->GetWindow("Twist")->setText("Spiral twist: " + std::to_string(static_cast<int>(twist_)));
        controls_->GetWindow("TwistMore")
            ->subscribeEvent(CEGUI::PushButton::EventClicked, [this](const CEGUI::EventArgs&) {
                twist_ = twist_ >= 11.0f ? 2.0f : twist_ + 3.0f;
                controls_->GetWindow("Twist")->setText("Spiral twist: " +
                                                       std::to_string(static_cast<int>(twist_)));
                ShowSpiral();
                return true;
            });
        AddResource(controls_);
    }
    auto terrain = std::make_shared<modules::PointCloudResource>("Demo/Terrain", MakeTerrain(360));
    terrain->SetPreferredColorSource(PointCloudGadget::DataMapping, 0,
                                     static_cast<int>(tesk::ColorMap::Rainbow));
    AddResource(terrain);
    ShowSpiral();

    auto knot = std::make_shared<modules::MeshResource>("Demo/Knot", MakeKnot(480, 32));
    knot->SetPreferredColorSource(modules::MeshGadget::FloatDataMapping, 0,
                                  static_cast<int>(tesk::ColorMap::Rainbow));
    AddResource(knot);
    const Walker walker = MakeWalker();
    modules::AddSkeleton("Demo/Walker", walker.skeleton, walker.action);

    auto scan = std::make_shared<modules::ScanResource>("Demo/Bowl scan", MakeBowlScan(kRangeSide));
    scan->SetPreferredColorSource(PointCloudGadget::Colors);
    AddResource(scan);

    modules::AddImage("Demo/Range picture", MakeRangePicture(ranges_, kRangeSide));
    profile_ = std::make_shared<modules::GraphResource>("Demo/Range profile");
    AddResource(profile_);
    profilePoints_.reserve(kRangeSide);
    Step();

    FocusCamera(terrain->GetId());
}

void DemoScene::ShowSpiral()
{
    auto spiral = std::make_shared<modules::PointCloudResource>("Demo/Spiral", MakeSpiral(150000, twist_));
    spiral->SetPreferredColorSource(modules::PointCloudGadget::Colors, 0);
    AddResource(spiral);
}

void DemoScene::Step()
{
    // The profile sweeps down the range picture, four rows every tenth of a second, over the
    // rows that see the bowl; a row's misses are left out.
    const auto now = std::chrono::steady_clock::now();
    if (profile_ == nullptr || now < nextProfile_)
        return;
    nextProfile_ = now + std::chrono::milliseconds(100);
    for (std::size_t tries = 0; tries < kRangeSide; ++tries) {
        row_ = (row_ + 4) % kRangeSide;
        profilePoints_.clear();
        for (std::size_t column = 0; column < kRangeSide; ++column)
            if (const float t = ranges_[row_ * kRangeSide + column]; t >= 0.0f)
                profilePoints_.emplace_back(static_cast<float>(column), t);
        if (profilePoints_.size() > 1)
            break;
    }
    profile_->SetData(profilePoints_);
}

} // namespace vexa::viewer
