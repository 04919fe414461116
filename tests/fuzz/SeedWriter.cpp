// Writes the binary seeds of the state-file fuzz programs with the library's own writers, so
// the corpus starts from files the viewer really produces:
//
//   vexa-fuzz-seeds <corpus folder>
//
// The text and model-file seeds come from make_corpus.py. Existing files are overwritten;
// crash-* inputs are left alone.

#include "OpenedGadget.h"

#include "core/GeneralOptions.h"
#include "core/ViewareaSettings.h"
#include "core/WindowManager.h"

#include <vexa/draw/GeometryStyle.h>
#include <vexa/draw/GraphStyle.h>
#include <vexa/draw/ImageStyle.h>
#include <vexa/draw/LineFieldStyle.h>
#include <vexa/draw/Material.h>
#include <vexa/draw/PointCloudStyle.h>
#include <vexa/draw/SkeletonStyle.h>
#include <vexa/modules/CameraAnimGadget.h>
#include <vexa/modules/GraphGadget.h>
#include <vexa/modules/MeshGadget.h>
#include <vexa/modules/PointCloudGadget.h>
#include <vexa/modules/SkeletonGadget.h>
#include <vexa/modules/TextureGadget.h>

#include <runa/BinaryStream.h>
#include <runa/SpaceDefinition.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>

namespace fs = std::filesystem;

namespace {

fs::path root;

template <class Write>
std::string Bytes(Write&& write)
{
    std::ostringstream out(std::ios::binary);
    write(out);
    return out.str();
}

void Put(const std::string& program, const std::string& name, const std::string& bytes)
{
    const fs::path folder = root / ("fuzz_" + program);
    fs::create_directories(folder);
    std::ofstream(folder / name, std::ios::binary)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

/// A whole state file as FileStorage::Save writes it, and the same file cut in half.
void PutStateFile(const std::string& program, const std::string& name, const vexa::FileStorage& storage)
{
    const std::string bytes = Bytes([&](std::ostream& out) {
        runa::BinaryWriter(out).WriteVersion(storage.GetFormatVersion());
        storage.WritePayload(out);
    });
    Put(program, name + ".bin", bytes);
    Put(program, name + "-cut.bin", bytes.substr(0, bytes.size() / 2));
}

template <class Block>
void PutBlock(const std::string& program, const std::string& name, const Block& block)
{
    Put(program, name + ".bin", Bytes([&](std::ostream& out) { block.WriteToStream(out); }));
}

void PutGadget(const std::string& name, const vexa::fuzz::StateHolder& gadget)
{
    Put("gadget_state", name + ".bin", Bytes([&](std::ostream& out) { gadget.Write(out); }));
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: " << argv[0] << " <corpus folder>\n";
        return 2;
    }
    root = argv[1];
    using namespace vexa;

    WindowManager window;
    PutStateFile("window_state", "default", window);

    GeneralOptions options;
    PutStateFile("options_state", "default", options);
    options.SetAntiAliasing(5);
    options.SetWhiteBackground(true);
    options.SetStoredSensitivity(0.8f);
    options.SetViewLayout(4);
    PutStateFile("options_state", "changed", options);

    ViewareaSettings areas;
    ViewareaLook left;
    left.size = {{0.5f, -5.0f}, {1.0f, 0.0f}};
    left.gridMode = ViewareaLook::GridXY;
    ResourceLook cloud;
    cloud.id = ResourceId("scan", "PointCloudResource");
    left.resourceLooks.push_back(cloud);
    ViewareaLook right = left;
    right.position = {{0.5f, 5.0f}, {0.0f, 0.0f}};
    right.resourceLooks.clear();
    areas.SetRecords({left, right});
    PutStateFile("viewarea_state", "two_areas", areas);
    areas.SetRecords({});
    PutStateFile("viewarea_state", "none", areas);

    using fuzz::Opened;
    using namespace vexa::modules;
    PutGadget("camera_anim", Opened<CameraAnimGadget>(nullptr));
    PutGadget("point_cloud", Opened<PointCloudGadget>(nullptr));
    PutGadget("mesh", Opened<MeshGadget>(nullptr));
    PutGadget("skeleton", Opened<SkeletonGadget>(nullptr));
    PutGadget("texture", Opened<TextureGadget>(nullptr));
    PutGadget("graph", Opened<GraphGadget>(nullptr));

    PutBlock("style", "style", draw::Style());
    PutBlock("style", "material", draw::Material());
    PutBlock("style", "point_cloud", draw::PointCloudStyle());
    PutBlock("style", "geometry", draw::GeometryStyle());
    PutBlock("style", "skeleton", draw::SkeletonStyle());
    PutBlock("style", "image", draw::ImageStyle());
    PutBlock("style", "line_field", draw::LineFieldStyle());
    PutBlock("style", "graph", draw::GraphStyle());

    PutBlock("space", "custom", runa::SpaceDefinition());
    PutBlock("space", "marker", runa::SpaceDefinition::TivraMarker);
    PutBlock("space", "camera", runa::SpaceDefinition::TeskCamera);
    // Version 0 of both parts: no name in the basis, a name in the derived part.
    std::ostringstream old(std::ios::binary);
    runa::BinaryWriter writer(old);
    writer.Write(std::uint8_t{0}).Write(std::uint8_t{1}).Write(std::uint8_t{2}).Write(true);
    writer.Write(std::uint8_t{0}).WriteString("old name").Write(std::uint8_t{runa::LengthUnit::Inch});
    Put("space", "version0.bin", old.str());
    return 0;
}
