// A host that shows a triangle mesh: a torus with vertex normals and a float value per vertex
// ("Angle", around the ring), shown through a colour map. The panel's "Color source" droplist
// switches to normals, a checker pattern or the plain material. `mesh --frames N` stops early.

#include <vexa/vexa.h>

#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

tesk::Mesh Torus(std::uint32_t rings, std::uint32_t sides, float radius, float tube)
{
    std::vector<glm::vec3> positions;
    std::vector<float> angles;
    for (std::uint32_t i = 0; i < rings; ++i)
        for (std::uint32_t j = 0; j < sides; ++j) {
            const float u = 6.2831853f * static_cast<float>(i) / static_cast<float>(rings);
            const float v = 6.2831853f * static_cast<float>(j) / static_cast<float>(sides);
            const float r = radius + tube * std::cos(v);
            positions.emplace_back(r * std::cos(u), tube * std::sin(v), r * std::sin(u));
            angles.push_back(u);
        }
    // Two triangles per quad of the grid, wound counter-clockwise seen from outside.
    std::vector<glm::uvec3> faces;
    for (std::uint32_t i = 0; i < rings; ++i)
        for (std::uint32_t j = 0; j < sides; ++j) {
            const std::uint32_t a = i * sides + j, b = ((i + 1) % rings) * sides + j;
            const std::uint32_t c = ((i + 1) % rings) * sides + (j + 1) % sides,
                                d = i * sides + (j + 1) % sides;
            faces.emplace_back(a, c, b);
            faces.emplace_back(a, d, c);
        }
    tesk::Mesh mesh(tesk::PointCloud(std::move(positions)), std::move(faces));
    mesh.GetVertices().AddFloatProperty("Angle", std::move(angles));
    mesh.ComputeVertexNormals();
    return mesh;
}

} // namespace

int main(int argc, char** argv)
{
    const long frames =
        argc == 3 && std::string(argv[1]) == "--frames" ? std::strtol(argv[2], nullptr, 10) : -1;
    vexa::SetAssetDirectory(VEXA_DEFAULT_ASSET_DIR);
    if (!vexa::Initialize())
        return 1;

    // The resource is made first so that its first look can be chosen: the "Angle" data
    // through the Rainbow map. The user's later choice is kept in the view area's settings.
    auto torus = std::make_shared<vexa::modules::MeshResource>("Shapes/Torus", Torus(96, 32, 1.0f, 0.35f));
    torus->SetPreferredColorSource(vexa::modules::MeshGadget::FloatDataMapping, 0,
                                   static_cast<int>(tesk::ColorMap::Rainbow));
    vexa::AddResource(torus);
    vexa::FrameBox({-1.35f, -0.35f, -1.35f}, {1.35f, 0.35f, 1.35f});

    for (long frame = 0; vexa::IsOpen() && (frames < 0 || frame < frames); ++frame)
        vexa::Update();
    vexa::Terminate();
}
