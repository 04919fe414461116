// Renders every built-in shape in every render mode, line fields, text, axes and each grid
// plane into one tiled picture with a caption per tile: a quick visual check of the drawing
// library.
//
//   vexa-draw-gallery --out gallery.png [--assets DIR] [--tile WxH] [--aa off|msaa4|fxaa]

#include <vexa/draw/GeometryRenderer.h>
#include <vexa/draw/GeometryStyle.h>
#include <vexa/draw/GraphRenderer.h>
#include <vexa/draw/GraphStyle.h>
#include <vexa/draw/ImageRenderer.h>
#include <vexa/draw/ImageStyle.h>
#include <vexa/draw/LineFieldRenderer.h>
#include <vexa/draw/LineFieldStyle.h>
#include <vexa/draw/MeshRenderer.h>
#include <vexa/draw/PointCloudRenderer.h>
#include <vexa/draw/PointCloudStyle.h>
#include <vexa/draw/RenderSystem.h>
#include <vexa/draw/Scene.h>
#include <vexa/draw/SkeletonRenderer.h>
#include <vexa/draw/SkeletonStyle.h>

#include <plor/Framebuffer.h>
#include <plor/Program.h>
#include <plor/Window.h>

#include <runa/rlog.h>
#include <tesk/ColorMap.h>
#include <tesk/Image.h>
#include <tesk/Mesh.h>
#include <tesk/PointCloud.h>
#include <tesk/Skeleton.h>
#include <tesk/SkeletonPose.h>

#include <glm/gtc/constants.hpp>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace draw = vexa::draw;

namespace {

struct Options {
    std::string out;
    std::string assets = VEXA_SOURCE_ASSET_DIR;
    int tileWidth = 220;
    int tileHeight = 180;
    draw::AntiAliasingMethod antiAliasing = draw::AntiAliasingMethod::Msaa4x;
};

void PrintUsage()
{
    std::fprintf(
        stderr,
        "usage: vexa-draw-gallery --out FILE.png [--assets DIR] [--tile WxH] [--aa off|msaa4|fxaa]\n");
}

bool ParseArguments(int argc, char** argv, Options& options)
{
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (arg == "--out" && hasValue) {
            options.out = argv[++i];
        } else if (arg == "--assets" && hasValue) {
            options.assets = argv[++i];
            if (!options.assets.empty() && options.assets.back() != '/')
                options.assets += '/';
        } else if (arg == "--tile" && hasValue) {
            if (std::sscanf(argv[++i], "%dx%d", &options.tileWidth, &options.tileHeight) != 2 ||
                options.tileWidth < 64 || options.tileHeight < 64) {
                std::fprintf(stderr, "vexa-draw-gallery: --tile wants WxH of at least 64x64\n");
                return false;
            }
        } else if (arg == "--aa" && hasValue) {
            const std::string value = argv[++i];
            if (value == "off")
                options.antiAliasing = draw::AntiAliasingMethod::Off;
            else if (value == "msaa4")
                options.antiAliasing = draw::AntiAliasingMethod::Msaa4x;
            else if (value == "fxaa")
                options.antiAliasing = draw::AntiAliasingMethod::Fxaa;
            else {
                std::fprintf(stderr, "vexa-draw-gallery: unknown --aa value %s\n", value.c_str());
                return false;
            }
        } else if (arg == "--help" || arg == "-h") {
            PrintUsage();
            return false;
        } else {
            std::fprintf(stderr, "vexa-draw-gallery: unknown argument %s\n", arg.c_str());
            PrintUsage();
            return false;
        }
    }
    if (options.out.empty()) {
        PrintUsage();
        return false;
    }
    return true;
}

/// One cell of the picture: a scene with its own camera, content and caption.
struct Tile {
    std::shared_ptr<draw::Scene> scene;
    std::string caption;
};

class Gallery {
public:
    Gallery(const Options& options, draw::RenderSystem& system) : options_(options), system_(system) {}

    Tile& AddTile(const std::string& caption)
    {
        tiles_.push_back({std::make_shared<draw::Scene>(), caption});
        Tile& tile = tiles_.back();
        tile.scene->SetAxesVisible(false);
        tile.scene->SetNearFar(0.01f, 50.0f);
        tile.scene->GetCamera()->SetPosition({1.6f, 1.2f, 2.0f});
        tile.scene->GetCamera()->LookAt({0.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f});
        system_.AddScene(tile.scene);
        return tile;
    }

    void AddShape(draw::GeometryName name, int renderMode, const std::string& caption,
                  const std::function<void(draw::GeometryStyle&)>& adjust = {})
    {
        Tile& tile = AddTile(caption);
        auto renderer = std::make_shared<draw::GeometryRenderer>(name);
        auto style = std::make_shared<draw::GeometryStyle>();
        style->renderMode = renderMode;
        style->material.color = {0.35f, 0.62f, 0.86f};
        style->wireColor = {0.08f, 0.1f, 0.12f};
        if (renderMode == draw::RenderMode::Wires || renderMode == draw::RenderMode::PointsAndWires)
            style->wireColor = {0.9f, 0.9f, 0.9f};
        style->pointSize = 5.0f;
        // The sphere has radius 1, the other shapes fit the unit cube: show them at one size.
        if (name == draw::GeometryName::Sphere)
            style->transform.SetUniformScale(0.6f);
        if (adjust)
            adjust(*style);
        tile.scene->AddInstance(renderer, style);
    }

    /// Lays the tiles out in rows and returns the picture size.
    glm::ivec2 Layout(int columns)
    {
        const int rows = (static_cast<int>(tiles_.size()) + columns - 1) / columns;
        for (std::size_t i = 0; i < tiles_.size(); ++i) {
            const int column = static_cast<int>(i) % columns;
            const int row = static_cast<int>(i) / columns;
            const int x0 = column * options_.tileWidth;
            const int y0 = row * options_.tileHeight;
            // One pixel of gap shows the tile borders against the background.
            tiles_[i].scene->SetViewport({x0, y0, x0 + options_.tileWidth - 1, y0 + options_.tileHeight - 1});
        }
        return {columns * options_.tileWidth, rows * options_.tileHeight};
    }

    void PrintCaptions()
    {
        draw::TextRenderer& text = system_.GetTextRenderer();
        text.SetAlignment(draw::TextAlignment::Left);
        text.SetColor({0.92f, 0.92f, 0.92f});
        text.SetSize(14.0f);
        for (const Tile& tile : tiles_) {
            text.SetScene(tile.scene.get());
            text.Print(tile.caption, 8.0f, 18.0f);
        }
        text.SetScene(nullptr);
    }

private:
    const Options& options_;
    draw::RenderSystem& system_;
    std::vector<Tile> tiles_;
};

const char* ModeCaption(int mode)
{
    switch (mode) {
    case draw::RenderMode::Points:
        return "Points";
    case draw::RenderMode::Wires:
        return "Wires";
    case draw::RenderMode::PointsAndWires:
        return "Points & Wires";
    case draw::RenderMode::Solid:
        return "Solid";
    case draw::RenderMode::SolidAndWires:
        return "Solid & Wires";
    }
    return "?";
}

std::vector<geom::LineSegment3> Spiral()
{
    std::vector<geom::LineSegment3> lines;
    glm::vec3 previous(0.9f, -0.8f, 0.0f);
    for (int i = 1; i <= 120; ++i) {
        const float t = static_cast<float>(i) / 120.0f;
        const float angle = t * 6.0f * glm::pi<float>();
        const glm::vec3 next(0.9f * std::cos(angle) * (1.0f - 0.5f * t), -0.8f + 1.6f * t,
                             0.9f * std::sin(angle) * (1.0f - 0.5f * t));
        lines.emplace_back(previous, next);
        previous = next;
    }
    return lines;
}

/// A wavy sheet of points with a height value per point.
tesk::PointCloud WavyCloud(std::vector<float>& heights)
{
    constexpr int side = 90;
    std::vector<glm::vec3> positions;
    positions.reserve(side * side);
    heights.clear();
    for (int j = 0; j < side; ++j) {
        for (int i = 0; i < side; ++i) {
            const float x = static_cast<float>(i) / (side - 1) * 1.6f - 0.8f;
            const float z = static_cast<float>(j) / (side - 1) * 1.6f - 0.8f;
            const float y = 0.18f * std::sin(x * 6.0f) * std::cos(z * 5.0f);
            positions.emplace_back(x, y, z);
            heights.push_back(y);
        }
    }
    return tesk::PointCloud(std::move(positions));
}

/// A torus-like tube as a real mesh with UVs, built the way a host would fill tesk::Mesh.
tesk::Mesh TubeMesh()
{
    constexpr int rings = 48;
    constexpr int sides = 24;
    std::vector<glm::vec3> positions;
    std::vector<glm::vec2> uvs;
    for (int r = 0; r <= rings; ++r) {
        const float u = static_cast<float>(r) / rings;
        const float a = u * 2.0f * glm::pi<float>();
        for (int k = 0; k <= sides; ++k) {
            const float v = static_cast<float>(k) / sides;
            const float b = v * 2.0f * glm::pi<float>();
            const float radius = 0.55f + 0.22f * std::cos(b);
            positions.emplace_back(radius * std::cos(a), 0.22f * std::sin(b) + 0.12f * std::sin(3.0f * a),
                                   radius * std::sin(a));
            uvs.emplace_back(u * 4.0f, v);
        }
    }
    std::vector<glm::uvec3> faces;
    for (int r = 0; r < rings; ++r) {
        for (int k = 0; k < sides; ++k) {
            const unsigned a = r * (sides + 1) + k;
            const unsigned b = (r + 1) * (sides + 1) + k;
            faces.emplace_back(a, a + 1, b);
            faces.emplace_back(b, a + 1, b + 1);
        }
    }
    tesk::PointCloud vertices(std::move(positions));
    vertices.SetUVs(std::move(uvs));
    tesk::Mesh mesh(std::move(vertices), std::move(faces));
    mesh.ComputeVertexNormals();
    return mesh;
}

/// A small figure: hips, spine, head, two arms and two legs, in a waving pose.
void Figure(tesk::Skeleton& skeleton, tesk::SkeletonPose& pose)
{
    const int hips = skeleton.AddJoint("hips", -1, {0.0f, -0.1f, 0.0f});
    const int spine = skeleton.AddJoint("spine", hips, {0.0f, 0.35f, 0.0f});
    skeleton.AddJoint("head", spine, {0.0f, 0.3f, 0.0f});
    const int leftArm = skeleton.AddJoint("left arm", spine, {0.3f, 0.0f, 0.0f});
    skeleton.AddJoint("left hand", leftArm, {0.3f, 0.0f, 0.0f});
    const int rightArm = skeleton.AddJoint("right arm", spine, {-0.3f, 0.0f, 0.0f});
    skeleton.AddJoint("right hand", rightArm, {-0.3f, 0.0f, 0.0f});
    const int leftLeg = skeleton.AddJoint("left leg", hips, {0.15f, -0.4f, 0.0f});
    skeleton.AddJoint("left foot", leftLeg, {0.0f, -0.35f, 0.05f});
    const int rightLeg = skeleton.AddJoint("right leg", hips, {-0.15f, -0.4f, 0.0f});
    skeleton.AddJoint("right foot", rightLeg, {0.0f, -0.35f, 0.05f});
    pose = skeleton.GetRestPose();
    const auto& joint = *skeleton.GetJoint(static_cast<std::size_t>(leftArm));
    pose.SetJoint(static_cast<std::size_t>(leftArm), joint.restTranslation,
                  glm::angleAxis(0.9f, glm::vec3(0.0f, 0.0f, 1.0f)));
}

/// A 128 x 96 test card: red left half, blue right half, a green band at the top, and an
/// alpha ramp along the bottom.
tesk::Image TestCard()
{
    constexpr std::uint32_t width = 128;
    constexpr std::uint32_t height = 96;
    std::vector<std::uint8_t> pixels(width * height * 4);
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            std::uint8_t* p = &pixels[(y * width + x) * 4];
            const bool left = x < width / 2;
            p[0] = left ? 230 : 30;
            p[1] = y < 20 ? 200 : 40;
            p[2] = left ? 40 : 220;
            p[3] = y >= height - 20 ? static_cast<std::uint8_t>(x * 255 / (width - 1)) : 255;
        }
    }
    return tesk::Image(width, height, 4, std::move(pixels));
}

void BuildContentTiles(Gallery& gallery, const std::string& scratch)
{
    std::vector<float> heights;
    {
        Tile& tile = gallery.AddTile("Point cloud - colours");
        tesk::PointCloud cloud = WavyCloud(heights);
        auto renderer = std::make_shared<draw::PointCloudRenderer>(cloud);
        std::vector<tesk::Color3f> colors;
        colors.reserve(cloud.Size());
        for (const glm::vec3& p : cloud.GetPositions())
            colors.emplace_back(0.5f + p.x * 0.6f, 0.4f + p.y * 2.0f, 0.5f - p.z * 0.6f);
        renderer->SetColors(std::move(colors));
        auto style = std::make_shared<draw::PointCloudStyle>();
        style->colorMode = draw::ColorMode::PerPoint;
        style->pointSize = 3.0f;
        tile.scene->AddInstance(renderer, style);
    }
    {
        Tile& tile = gallery.AddTile("Point cloud - Thermal map");
        tesk::PointCloud cloud = WavyCloud(heights);
        auto renderer = std::make_shared<draw::PointCloudRenderer>(cloud);
        std::vector<float> t(heights.size());
        for (std::size_t i = 0; i < heights.size(); ++i)
            t[i] = (heights[i] + 0.18f) / 0.36f;
        renderer->SetColors(tesk::MapValuesToColors(t, tesk::ColorMap::Thermal));
        auto style = std::make_shared<draw::PointCloudStyle>();
        style->colorMode = draw::ColorMode::PerPoint;
        style->pointSize = 3.0f;
        tile.scene->AddInstance(renderer, style);
    }
    {
        Tile& tile = gallery.AddTile("Mesh - lit");
        auto renderer = std::make_shared<draw::MeshRenderer>(TubeMesh());
        auto style = std::make_shared<draw::GeometryStyle>();
        style->material.color = {0.82f, 0.55f, 0.35f};
        style->material.specular = 0.5f;
        tile.scene->AddInstance(renderer, style);
    }
    {
        Tile& tile = gallery.AddTile("Mesh - albedo texture");
        // The texture file is a host's own PNG, named by the mesh's material.
        const std::string texturePath = scratch + "/vexa-gallery-albedo.png";
        TestCard().SavePng(texturePath);
        tesk::Mesh mesh = TubeMesh();
        tesk::MaterialModel material;
        material.SetAlbedoTexture(texturePath);
        mesh.SetMaterial(material);
        auto renderer = std::make_shared<draw::MeshRenderer>(std::move(mesh));
        auto style = std::make_shared<draw::GeometryStyle>();
        style->colorMode = draw::ColorMode::Texture;
        style->albedoTexture = renderer->GetAlbedoTexture();
        tile.scene->AddInstance(renderer, style);
    }
    const std::pair<int, const char*> skeletonModes[] = {
        {draw::SkeletonRenderMode::Octahedron, "Skeleton - Octahedron"},
        {draw::SkeletonRenderMode::WiredOctahedron, "Skeleton - Wired Octahedron"},
        {draw::SkeletonRenderMode::Stickman, "Skeleton - Stickman"}};
    for (const auto& [mode, caption] : skeletonModes) {
        Tile& tile = gallery.AddTile(caption);
        tesk::Skeleton skeleton;
        tesk::SkeletonPose pose;
        Figure(skeleton, pose);
        auto renderer = std::make_shared<draw::SkeletonRenderer>(skeleton);
        renderer->SetPose(pose);
        auto style = std::make_shared<draw::SkeletonStyle>();
        style->renderMode = mode;
        style->showJoints = true;
        style->showBasis = mode == draw::SkeletonRenderMode::Stickman;
        tile.scene->AddInstance(renderer, style);
        tile.scene->GetCamera()->SetPosition({0.9f, 0.3f, 2.2f});
        tile.scene->GetCamera()->LookAt({0.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f});
    }
    const auto addImage = [&](const char* caption, const std::function<void(draw::ImageStyle&)>& adjust) {
        Tile& tile = gallery.AddTile(caption);
        auto renderer = std::make_shared<draw::ImageRenderer>(TestCard());
        auto style = std::make_shared<draw::ImageStyle>();
        // One image pixel per screen pixel, so the caption above stays readable.
        style->fitToViewport = false;
        adjust(*style);
        tile.scene->AddInstance(renderer, style);
    };
    addImage("Image", [](draw::ImageStyle&) {});
    addImage("Image - Mirror X", [](draw::ImageStyle& s) { s.mirrorX = true; });
    addImage("Image - Mirror Y, nearest", [](draw::ImageStyle& s) {
        s.mirrorY = true;
        s.nearestFiltering = true;
    });
    addImage("Image - Red masked", [](draw::ImageStyle& s) { s.showRed = false; });
    addImage("Image - alpha only", [](draw::ImageStyle& s) {
        s.showRed = false;
        s.showGreen = false;
        s.showBlue = false;
    });
    {
        Tile& tile = gallery.AddTile("Graph");
        std::vector<glm::vec2> points;
        for (int i = 0; i <= 60; ++i) {
            const float x = static_cast<float>(i) / 6.0f;
            points.emplace_back(x, std::sin(x) * 2.0f + x * 0.4f);
        }
        auto renderer = std::make_shared<draw::GraphRenderer>(points);
        auto style = std::make_shared<draw::GraphStyle>();
        style->lineWidth = 2;
        style->pointSize = 5;
        tile.scene->AddInstance(renderer, style);
    }
}

/// Returns the scene of the text tile, which gets a text sample beside its caption.
std::shared_ptr<draw::Scene> BuildTiles(Gallery& gallery)
{
    const int modes[] = {draw::RenderMode::Points, draw::RenderMode::Wires, draw::RenderMode::PointsAndWires,
                         draw::RenderMode::Solid, draw::RenderMode::SolidAndWires};
    for (int shape = 0; shape < draw::kGeometryCount; ++shape) {
        const auto name = static_cast<draw::GeometryName>(shape);
        for (int mode : modes)
            gallery.AddShape(name, mode,
                             std::string(draw::GetGeometryCaption(name)) + " - " + ModeCaption(mode));
    }

    gallery.AddShape(draw::GeometryName::Sphere, draw::RenderMode::Solid, "Normals colour",
                     [](draw::GeometryStyle& s) { s.colorMode = draw::ColorMode::Normals; });
    gallery.AddShape(draw::GeometryName::Box, draw::RenderMode::Solid, "Checker colour",
                     [](draw::GeometryStyle& s) { s.colorMode = draw::ColorMode::Checker; });
    gallery.AddShape(draw::GeometryName::Sphere, draw::RenderMode::Solid, "Normals display",
                     [](draw::GeometryStyle& s) {
                         s.showNormals = true;
                         s.normalLength = 0.25f;
                     });
    gallery.AddShape(draw::GeometryName::Torus, draw::RenderMode::Solid, "Unlit material",
                     [](draw::GeometryStyle& s) {
                         s.material.useLighting = false;
                         s.material.color = {0.9f, 0.55f, 0.2f};
                     });

    {
        Tile& tile = gallery.AddTile("Line field");
        auto lines = std::make_shared<draw::LineFieldRenderer>(Spiral());
        auto style = std::make_shared<draw::LineFieldStyle>();
        style->color = {1.0f, 0.8f, 0.2f};
        style->lineWidth = 2.5f;
        tile.scene->AddInstance(lines, style);
    }
    {
        Tile& tile = gallery.AddTile("Coloured segments");
        std::vector<geom::LineSegment3> lines;
        std::vector<tesk::Color3f> colors;
        for (int i = 0; i < 12; ++i) {
            const float angle = static_cast<float>(i) / 12.0f * 2.0f * glm::pi<float>();
            lines.emplace_back(glm::vec3(0.0f), glm::vec3(std::cos(angle), std::sin(angle), 0.0f) * 0.9f);
            colors.push_back(tesk::MapValueToColor(static_cast<float>(i) / 11.0f, tesk::ColorMap::Rainbow));
        }
        auto renderer = std::make_shared<draw::LineFieldRenderer>(lines);
        renderer->SetLineColors(colors);
        auto style = std::make_shared<draw::LineFieldStyle>();
        style->lineWidth = 4.0f;
        tile.scene->AddInstance(renderer, style);
        tile.scene->GetCamera()->SetPosition({0.0f, 0.0f, 2.6f});
        tile.scene->GetCamera()->LookAt({0.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f});
    }
    {
        Tile& tile = gallery.AddTile("Axes");
        tile.scene->SetAxesVisible(true);
    }
    const std::pair<int, const char*> grids[] = {
        {draw::GridMode::XY, "Grid XY"}, {draw::GridMode::YZ, "Grid YZ"}, {draw::GridMode::ZX, "Grid ZX"}};
    for (const auto& [mode, caption] : grids) {
        Tile& tile = gallery.AddTile(caption);
        tile.scene->SetAxesVisible(true);
        tile.scene->SetGridMode(mode);
        tile.scene->SetGridUnits(0.25f);
        tile.scene->GetCamera()->SetPosition({2.2f, 1.7f, 2.6f});
        tile.scene->GetCamera()->LookAt({0.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f});
    }
    return gallery.AddTile("Text: Inria Sans, 14 px").scene;
}

/// A small text sample drawn into the text tile, beside its caption.
void PrintTextSample(draw::RenderSystem& system, const std::shared_ptr<draw::Scene>& scene, int width)
{
    draw::TextRenderer& text = system.GetTextRenderer();
    text.SetScene(scene.get());
    text.SetColor({0.55f, 0.8f, 1.0f});
    text.SetSize(22.0f);
    text.SetAlignment(draw::TextAlignment::Center);
    text.Print("Centred 22 px", static_cast<float>(width) * 0.5f, 70.0f);
    text.SetSize(14.0f);
    text.SetAlignment(draw::TextAlignment::Right);
    text.SetColor({1.0f, 0.7f, 0.4f});
    text.Print("right aligned\ntwo lines", static_cast<float>(width) - 10.0f, 110.0f);
    text.SetScene(nullptr);
}

} // namespace

int main(int argc, char** argv)
{
    Options options;
    if (!ParseArguments(argc, argv, options))
        return 2;

    draw::RenderSystem system;
    Gallery gallery(options, system);
    const std::shared_ptr<draw::Scene> textScene = BuildTiles(gallery);
    BuildContentTiles(gallery, std::filesystem::temp_directory_path().string());
    constexpr int columns = 8;
    const glm::ivec2 size = gallery.Layout(columns);

    plor::WindowParams params;
    params.width = size.x;
    params.height = size.y;
    params.visible = false;
    params.caption = "vexa-draw-gallery";
    auto window = plor::Window::Create(params);
    if (!window) {
        std::fprintf(stderr,
                     "vexa-draw-gallery: no OpenGL window could be opened; without a display run it as\n"
                     "  xvfb-run -a -s \"-screen 0 1920x1200x24\" vexa-draw-gallery --out gallery.png\n");
        return 1;
    }
    window->MakeContextCurrent();
    plor::SetShaderBuildDirectory(options.assets + "shaders/");
    system.GetTextRenderer().SetFontFile(options.assets + "resources/InriaSans-Regular.ttf");
    system.SetBackgroundColor(tesk::Color3b(0x26, 0x26, 0x26));
    system.SetAntiAliasingMethod(options.antiAliasing);
    system.SetFramebufferSize(size.x, size.y);

    gallery.PrintCaptions();
    PrintTextSample(system, textScene, options.tileWidth);

    plor::Framebuffer target;
    if (!target.Resize(size.x, size.y)) {
        std::fprintf(stderr, "vexa-draw-gallery: could not create a %dx%d render target\n", size.x, size.y);
        return 1;
    }
    system.RenderTo(target);
    target.Bind();
    const std::vector<std::uint8_t> pixels = plor::ReadPixelsRgba(0, 0, size.x, size.y);
    plor::Framebuffer::BindDefault();

    const tesk::Image image(static_cast<std::uint32_t>(size.x), static_cast<std::uint32_t>(size.y), 4,
                            std::span<const std::uint8_t>(pixels));
    if (!image.SavePng(options.out)) {
        std::fprintf(stderr, "vexa-draw-gallery: could not write %s\n", options.out.c_str());
        return 1;
    }
    std::printf("vexa-draw-gallery: %d tiles, %dx%d, written to %s\n",
                static_cast<int>(system.GetScenes().size()), size.x, size.y, options.out.c_str());
    return 0;
}
