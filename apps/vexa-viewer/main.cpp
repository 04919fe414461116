// vexa-viewer: opens point cloud and mesh files (PLY, OBJ, STL, OFF, PCD, XYZ-like text),
// PNG and JPEG images or a demo scene in the viewer window. Files dropped on the window are
// opened too.

#include "DemoScene.h"
#include "ModelFile.h"
#include "TextScan.h"

#include <vexa/vexa.h>

#include <glm/common.hpp>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <limits>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr const char* kUsage = R"(Usage: vexa-viewer [options] [FILE...]

Opens point clouds and meshes in the viewer window: PLY (ASCII or binary, with or without
faces), OBJ (with its MTL materials and textures), STL (ASCII or binary), OFF, PCD (ascii,
binary or binary_compressed) and text clouds (.xyz .xyzn .xyzrgb .pts .txt .csv .asc:
x y z [r g b] [values...]), and images (.png .jpg .jpeg), each fitted to the view with its
own panel (filtering, mirroring, channels). Drop more files on the window to open them too.

Options:
  --demo             show the built-in demo scene
  --look FILE        window and view-area layout (JSON look file)
  --assets DIR       folder with the viewer's shaders, GUI resources and matcaps
  --screenshot FILE  draw the first frames, save the window as PNG to FILE and exit
  --frames N         exit after N updates
  --help             show this text

Mouse: left drag rotates, middle drag moves, right drag (or the wheel) zooms, Ctrl + left
drag rolls, Shift + left click reports the point under the pointer. Keys: Tab chooses a
layout, F12 saves a screenshot, R reloads the shaders.
)";

struct Options {
    bool demo = false;
    std::string look;
    std::string assets;
    std::string screenshot;
    long frames = -1;
    std::vector<std::string> files;
};

bool ParseArguments(int argc, char** argv, Options& options)
{
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        const auto value = [&](std::string& target) {
            if (i + 1 >= argc) {
                std::cerr << "vexa-viewer: " << argument << " needs a value\n";
                return false;
            }
            target = argv[++i];
            return true;
        };
        if (argument == "--help" || argument == "-h") {
            std::cout << kUsage;
            std::exit(0);
        } else if (argument == "--demo")
            options.demo = true;
        else if (argument == "--look") {
            if (!value(options.look))
                return false;
        } else if (argument == "--assets") {
            if (!value(options.assets))
                return false;
        } else if (argument == "--screenshot") {
            if (!value(options.screenshot))
                return false;
        } else if (argument == "--frames") {
            std::string text;
            if (!value(text))
                return false;
            char* end = nullptr;
            options.frames = std::strtol(text.c_str(), &end, 10);
            if (end == text.c_str() || *end != '\0' || options.frames < 0) {
                std::cerr << "vexa-viewer: --frames needs a whole number, not '" << text << "'\n";
                return false;
            }
        } else if (argument.size() > 1 && argument[0] == '-') {
            std::cerr << "vexa-viewer: unknown option " << argument << "\n";
            return false;
        } else
            options.files.push_back(argument);
    }
    return true;
}

bool HasAssets(const fs::path& directory)
{
    std::error_code error;
    return fs::is_directory(directory / "shaders", error) && fs::is_directory(directory / "resources", error);
}

// --assets first, then the installed layout beside the program, then the source tree the
// program was built from.
std::string FindAssets(const std::string& requested)
{
    if (!requested.empty())
        return requested;
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    if (!error) {
        const fs::path installed = program.parent_path().parent_path() / "share" / "vexa" / "assets";
        if (HasAssets(installed))
            return installed.string();
    }
#ifdef VEXA_SOURCE_ASSET_DIR
    if (HasAssets(VEXA_SOURCE_ASSET_DIR))
        return VEXA_SOURCE_ASSET_DIR;
#endif
    return {};
}

/// Whether `path` names a PNG or JPEG file, by its extension in any case.
bool IsImageFile(const std::string& path)
{
    const std::string extension = vexa::viewer::LowerExtension(path);
    return extension == ".png" || extension == ".jpg" || extension == ".jpeg";
}

class FileOpener {
public:
    /// Opens `path` as an image resource (PNG, JPEG), a mesh resource (a file with faces) or a
    /// point cloud resource; false (and a message on stderr) when it cannot.
    bool Open(const std::string& path)
    {
        if (IsImageFile(path))
            return OpenImage(path);
        tesk::Mesh model;
        std::string error;
        if (!vexa::viewer::ReadModelFile(path, model, error)) {
            std::cerr << "vexa-viewer: " << error << "\n";
            return false;
        }
        const std::string name = UniqueName("Files/" + fs::path(path).filename().string());
        const std::size_t count = model.VertexCount();
        // Everything opened so far is in view, every point of it: a resource's own focus
        // aims at its centre and a typical spread, which cuts off a tall or lopsided one.
        const bool framed = Grow(model.GetVertices().GetPositions());
        if (model.HasFaces()) {
            auto resource = std::make_shared<vexa::modules::MeshResource>(name, model);
            // A mesh is shaded in its material unless the file painted it.
            using vexa::modules::MeshGadget;
            if (resource->IsColoringAvailable())
                resource->SetPreferredColorSource(MeshGadget::VertexColors);
            else if (resource->GetMaterial() && resource->GetMaterial()->HasAlbedoTexture() &&
                     resource->IsUvMappingAvailable())
                resource->SetPreferredColorSource(MeshGadget::AlbedoTexture);
            vexa::AddResource(resource);
            std::cout << "vexa-viewer: opened " << path << " (" << count << " vertices, " << model.FaceCount()
                      << " faces)\n";
        } else {
            auto resource = std::make_shared<vexa::modules::PointCloudResource>(name, model.GetVertices());
            // Show what the file carries at once: its colours, else its first data property.
            if (resource->IsColoringAvailable())
                resource->SetPreferredColorSource(vexa::modules::PointCloudGadget::Colors);
            else if (resource->HasFloatData())
                resource->SetPreferredColorSource(vexa::modules::PointCloudGadget::DataMapping, 0,
                                                  static_cast<int>(tesk::ColorMap::Rainbow));
            vexa::AddResource(resource);
            std::cout << "vexa-viewer: opened " << path << " (" << count << " points)\n";
        }
        if (framed)
            vexa::FrameBox(minimum_, maximum_);
        return true;
    }

private:
    bool OpenImage(const std::string& path)
    {
        tesk::Image image;
        // The loader logs the decoder's reason with the file's name.
        if (!image.Load(path)) {
            std::cerr << "vexa-viewer: " << path << " is not a readable image\n";
            return false;
        }
        const std::uint32_t width = image.GetWidth(), height = image.GetHeight();
        vexa::modules::AddImage(UniqueName(fs::path(path).filename().string()), std::move(image));
        std::cout << "vexa-viewer: opened " << path << " (" << width << " x " << height << " pixels)\n";
        return true;
    }

    /// Takes the finite points into the box; false while the box is still empty.
    bool Grow(std::span<const glm::vec3> points)
    {
        for (const glm::vec3& p : points) {
            if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.z))
                continue;
            minimum_ = glm::min(minimum_, p);
            maximum_ = glm::max(maximum_, p);
        }
        return minimum_.x <= maximum_.x;
    }

    /// `base`, or `base` (2), (3), ... when a resource of this viewer already has that name.
    std::string UniqueName(const std::string& base)
    {
        std::string name = base;
        for (int n = 2; names_.count(name) != 0; ++n)
            name = base + " (" + std::to_string(n) + ")";
        names_.insert(name);
        return name;
    }

    std::set<std::string> names_;
    glm::vec3 minimum_{std::numeric_limits<float>::max()};
    glm::vec3 maximum_{std::numeric_limits<float>::lowest()};
};

} // namespace

int main(int argc, char** argv)
{
    Options options;
    if (!ParseArguments(argc, argv, options)) {
        std::cerr << "Try 'vexa-viewer --help'.\n";
        return 2;
    }
    if (std::getenv("DISPLAY") == nullptr && std::getenv("WAYLAND_DISPLAY") == nullptr) {
        std::cerr << "vexa-viewer: no display to open a window on.\n"
                     "Without a screen, run it under a virtual X server and let it save a picture, e.g.\n"
                     "  xvfb-run -a -s \"-screen 0 1600x1200x24\" vexa-viewer --demo --screenshot demo.png\n";
        return 2;
    }

    const std::string assets = FindAssets(options.assets);
    if (assets.empty()) {
        std::cerr << "vexa-viewer: the asset folder (shaders/, resources/) was not found; give it with "
                     "--assets DIR\n";
        return 1;
    }
    vexa::SetAssetDirectory(assets);
    // The library logs every message box's text already (to standard error); printing it a
    // second time through the default handler only repeats it.
    vexa::SetMessageBoxHandler([](const std::string&, const std::string&, vexa::MessageIcon) {});
    std::string look = options.look;
    if (look.empty())
        look = (fs::path(assets) / "looks" / (options.demo ? "demo.json" : "viewer.json")).string();
    if (!vexa::Initialize(look)) {
        std::cerr << "vexa-viewer: the viewer could not start (see the messages above)\n";
        return 1;
    }

    FileOpener opener;
    std::unique_ptr<vexa::viewer::DemoScene> demo;
    if (options.demo) {
        demo = std::make_unique<vexa::viewer::DemoScene>();
        demo->Show();
    }
    for (const std::string& file : options.files)
        opener.Open(file);

    // Dropped files arrive while the library polls events; open them after the step.
    std::vector<std::string> dropped;
    vexa::SetFileDropCallback([&dropped](const std::vector<std::string>& paths) {
        dropped.insert(dropped.end(), paths.begin(), paths.end());
    });

    // A screenshot waits a few steps so that the panels have been laid out once.
    const long frames = options.frames >= 0 ? options.frames : (options.screenshot.empty() ? -1 : 5);
    int status = 0;
    for (long frame = 0; vexa::IsOpen() && (frames < 0 || frame < frames); ++frame) {
        vexa::Update();
        if (demo)
            demo->Step();
        for (const std::string& path : dropped)
            opener.Open(path);
        dropped.clear();
        // The library draws only on change; a short nap keeps an idle viewer off the CPU.
        if (frames < 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(4));
    }
    if (!options.screenshot.empty()) {
        if (vexa::SaveScreenshot(options.screenshot))
            std::cout << "vexa-viewer: screenshot saved to " << fs::absolute(options.screenshot).string()
                      << "\n";
        else {
            std::cerr << "vexa-viewer: the screenshot could not be saved to " << options.screenshot << "\n";
            status = 1;
        }
    }
    vexa::Terminate();
    return status;
}
