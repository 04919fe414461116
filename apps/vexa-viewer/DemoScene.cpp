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

tesk::PointCloud MakeSphere(std::size_t count)
{
    std::vector<glm::vec3> positions(count);
    std::vector<glm::vec3> normals(count);
    // A Fibonacci lattice spreads the points evenly without clumps at the poles.
    const float golden = glm::pi<float>() * (3.0f - std::sqrt(5.0f));
    for (std::size_t i = 0; i < count; ++i)
    {
        const float y = 1.0f - 2.0f * (static_cast<float>(i) + 0.5f) / static_cast<float>(count);
        const float ring = std::sqrt(std::max(0.0f, 1.0f - y * y));
        const float angle = golden * static_cast<float>(i);
        normals[i] = {ring * std::cos(angle), y, ring * std::sin(angle)};
        positions[i] = normals[i] * 0.8f;
    }
    tesk::PointCloud cloud(std::move(positions));
    cloud.SetNormals(std::move(normals));
    return cloud;
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

    auto sphere = std::make_shared<modules::PointCloudResource>("Demo/Sphere", MakeSphere(40000));
    sphere->SetPreferredColorSource(PointCloudGadget::Normals);
    AddResource(sphere);

    modules::AddGeometry("Demo/Torus", draw::GeometryName::Torus);

    FocusCamera(terrain->GetId());
}

} // namespace vexa::viewer
