// A host that shows its data: a wavy sheet of points with a float property (pick "Data Mapping"
// in its panel to colour it by height) and a sphere marker. `points --frames N` stops early.

#include <vexa/vexa.h>

#include <cmath>
#include <cstdlib>
#include <string>

int main(int argc, char** argv)
{
    const long frames =
        argc == 3 && std::string(argv[1]) == "--frames" ? std::strtol(argv[2], nullptr, 10) : -1;
    vexa::SetAssetDirectory(VEXA_DEFAULT_ASSET_DIR);
    if (!vexa::Initialize())
        return 1;

    std::vector<glm::vec3> points;
    std::vector<float> heights;
    for (int i = 0; i < 300; ++i)
        for (int j = 0; j < 300; ++j) {
            const float x = i / 150.0f - 1.0f, z = j / 150.0f - 1.0f;
            points.emplace_back(x, 0.2f * std::sin(6.0f * x) * std::cos(4.0f * z), z);
            heights.push_back(points.back().y);
        }
    tesk::PointCloud cloud(std::move(points));
    cloud.AddFloatProperty("Height", std::move(heights));
    vexa::modules::AddPointCloud("Surface/Waves", cloud);
    vexa::modules::AddGeometry("Marker", vexa::draw::GeometryName::Sphere);

    for (long frame = 0; vexa::IsOpen() && (frames < 0 || frame < frames); ++frame)
        vexa::Update();
    vexa::Terminate();
}
