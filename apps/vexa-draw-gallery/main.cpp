// Renders every built-in shape in every render mode, line fields, text, axes and each grid
// plane into one tiled picture with a caption per tile: a quick visual check of the drawing
// library.
//
//   vexa-draw-gallery --out gallery.png [--assets DIR] [--tile WxH] [--aa off|msaa4|fxaa]

#include <vexa/draw/GeometryRenderer.h>
#include <vexa/draw/GeometryStyle.h>
#include <vexa/draw/LineFieldRenderer.h>
#include <vexa/draw/LineFieldStyle.h>
#include <vexa/draw/RenderSystem.h>
#include <vexa/draw/Scene.h>

#include <plor/Framebuffer.h>
#include <plor/Program.h>
#include <plor/Window.h>

#include <runa/rlog.h>
#include <tesk/ColorMap.h>
#include <tesk/Image.h>

#include <glm/gtc/constants.hpp>

#include <cmath>
#include <cstdio>
#include <cstring>
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
    std::fprintf(stderr, "usage: vexa-draw-gallery --out FILE.png [--assets DIR] [--tile WxH] [--aa off|msaa4|fxaa]\n");
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
    case draw::RenderMode::Points: return "Points";
    case draw::RenderMode::Wires: return "Wires";
    case draw::RenderMode::PointsAndWires: return "Points & Wires";
    case draw::RenderMode::Solid: return "Solid";
    case draw::RenderMode::SolidAndWires: return "Solid & Wires";
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

void BuildTiles(Gallery& gallery)
{
    const int modes[] = {draw::RenderMode::Points, draw::RenderMode::Wires, draw::RenderMode::PointsAndWires,
                         draw::RenderMode::Solid, draw::RenderMode::SolidAndWires};
    for (int shape = 0; shape < draw::kGeometryCount; ++shape) {
        const auto name = static_cast<draw::GeometryName>(shape);
        for (int mode : modes)
            gallery.AddShape(name, mode, std::string(draw::GetGeometryCaption(name)) + " - " + ModeCaption(mode));
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
    gallery.AddTile("Text: Inria Sans, 14 px");
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
    BuildTiles(gallery);
    constexpr int columns = 8;
    const glm::ivec2 size = gallery.Layout(columns);

    plor::WindowParams params;
    params.width = size.x;
    params.height = size.y;
    params.visible = false;
    params.caption = "vexa-draw-gallery";
    auto window = plor::Window::Create(params);
    if (!window) {
        std::fprintf(stderr, "vexa-draw-gallery: no OpenGL window could be opened; without a display run it as\n"
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
    PrintTextSample(system, system.GetScenes().back(), options.tileWidth);

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
