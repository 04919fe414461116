#include "DemoScene.h"

#include <vexa/vexa.h>

#include <glm/geometric.hpp>
#include <glm/gtc/constants.hpp>

#include <algorithm>
#include <cmath>
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
    for (std::size_t row = 0; row < side; ++row)
    {
        for (std::size_t column = 0; column < side; ++column)
        {
            const std::size_t i = row * side + column;
            const float x = -2.0f + static_cast<float>(column) * step;
            const float z = -2.0f + static_cast<float>(row) * step;
            const float y = 0.22f * std::sin(1.7f * x) * std::cos(1.3f * z) + 0.06f * std::sin(4.0f * x + 3.0f * z);
            // Partial derivatives of y, for the normal and the slope.
            const float dx = 0.22f * 1.7f * std::cos(1.7f * x) * std::cos(1.3f * z) + 0.06f * 4.0f * std::cos(4.0f * x + 3.0f * z);
            const float dz = -0.22f * 1.3f * std::sin(1.7f * x) * std::sin(1.3f * z) + 0.06f * 3.0f * std::cos(4.0f * x + 3.0f * z);
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

tesk::PointCloud MakeSpiral(std::size_t count)
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
    for (std::size_t i = 0; i < count; ++i)
    {
        const float t = static_cast<float>(i) / static_cast<float>(std::max<std::size_t>(count, 1));
        const std::size_t arm = i % 2;
        const float r = 0.1f + 1.3f * std::sqrt(t);
        const float angle = 5.0f * r + static_cast<float>(arm) * glm::pi<float>();
        // Scatter that narrows towards the rim, like a galaxy's arms.
        const float spread = 0.18f * (1.4f - r * 0.6f);
        const float jitterR = (random() - 0.5f) * spread;
        const float jitterA = (random() - 0.5f) * spread;
        const float jitterY = (random() - 0.5f) * 0.12f * (1.6f - r);
        positions[i] = {(r + jitterR) * std::cos(angle + jitterA), 1.1f + jitterY, (r + jitterR) * std::sin(angle + jitterA)};
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
    for (std::size_t i = 0; i < segments; ++i)
    {
        const float t = twoPi * static_cast<float>(i) / static_cast<float>(segments);
        const glm::vec3 centre = curve(t);
        const glm::vec3 tangent = glm::normalize(curve(t + 1e-3f) - curve(t - 1e-3f));
        // A frame around the tangent that does not twist much: built from the up axis.
        const glm::vec3 side = glm::normalize(glm::cross(tangent, glm::vec3(0.0f, 1.0f, 0.0f)));
        const glm::vec3 up = glm::cross(side, tangent);
        for (std::size_t j = 0; j < sides; ++j)
        {
            const float a = twoPi * static_cast<float>(j) / static_cast<float>(sides);
            const glm::vec3 offset = tube * (std::cos(a) * side + std::sin(a) * up);
            positions.push_back(centre + offset);
            along.push_back(static_cast<float>(i) / static_cast<float>(segments));
            depth.push_back(tube - offset.y);
        }
    }
    std::vector<glm::uvec3> faces;
    faces.reserve(2 * segments * sides);
    for (std::size_t i = 0; i < segments; ++i)
    {
        const std::size_t next = (i + 1) % segments;
        for (std::size_t j = 0; j < sides; ++j)
        {
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

tesk::Scan MakeBowlScan(std::size_t side)
{
    side = std::max<std::size_t>(side, 2);
    // The camera beside the bowl and above it, looking at its middle.
    const glm::vec3 eye(0.5f, 0.9f, -1.0f);
    const glm::vec3 forward = glm::normalize(glm::vec3(0.0f, -0.05f, 0.0f) - eye);
    const glm::vec3 right = glm::normalize(glm::cross(forward, glm::vec3(0.0f, 1.0f, 0.0f)));
    const glm::vec3 up = glm::cross(right, forward);
    std::vector<glm::vec3> points;
    std::vector<tesk::Color3f> colors;
    std::vector<float> range;
    points.reserve(side * side);
    colors.reserve(side * side);
    range.reserve(side * side);
    const float halfView = 0.42f; // tangent of half the field of view
    for (std::size_t row = 0; row < side; ++row)
    {
        for (std::size_t column = 0; column < side; ++column)
        {
            const float u = (2.0f * static_cast<float>(column) / static_cast<float>(side - 1) - 1.0f) * halfView;
            const float v = (1.0f - 2.0f * static_cast<float>(row) / static_cast<float>(side - 1)) * halfView;
            const glm::vec3 ray = glm::normalize(forward + u * right + v * up);
            // March to the surface y = bowl(x, z); the pixels that miss it see nothing.
            float t = 0.0f;
            bool hit = false;
            for (int step = 0; step < 400 && t < 4.0f; ++step, t += 0.01f)
            {
                const glm::vec3 p = eye + t * ray;
                const float bowl = 0.35f * (p.x * p.x + p.z * p.z) + 0.04f * std::sin(9.0f * p.x) * std::cos(7.0f * p.z) - 0.3f;
                if (p.y <= bowl && p.x * p.x + p.z * p.z < 0.81f)
                {
                    hit = true;
                    break;
                }
            }
            if (!hit)
                continue;
            const glm::vec3 p = eye + t * ray;
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
    scan.SetCameraPosition(eye);
    scan.SetCameraUp(up);
    // Columns right, up and back: the camera looks down its -Z axis, as the marker does.
    scan.SetCameraBasis(glm::mat3(right, up, -forward));
    scan.SetBasisDefinition(runa::SpaceDefinition::TeskCamera);
    return scan;
}

void ShowDemoScene()
{
    using modules::PointCloudGadget;
    auto terrain = std::make_shared<modules::PointCloudResource>("Demo/Terrain", MakeTerrain(360));
    terrain->SetPreferredColorSource(PointCloudGadget::DataMapping, 0, static_cast<int>(tesk::ColorMap::Rainbow));
    AddResource(terrain);

    auto spiral = std::make_shared<modules::PointCloudResource>("Demo/Spiral", MakeSpiral(150000));
    spiral->SetPreferredColorSource(PointCloudGadget::Colors, 0);
    AddResource(spiral);

    auto knot = std::make_shared<modules::MeshResource>("Demo/Knot", MakeKnot(480, 32));
    knot->SetPreferredColorSource(modules::MeshGadget::FloatDataMapping, 0, static_cast<int>(tesk::ColorMap::Rainbow));
    AddResource(knot);

    auto scan = std::make_shared<modules::ScanResource>("Demo/Bowl scan", MakeBowlScan(320));
    scan->SetPreferredColorSource(PointCloudGadget::Colors);
    AddResource(scan);

    FocusCamera(terrain->GetId());
}

} // namespace vexa::viewer
