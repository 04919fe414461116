#include <vexa/GuiGenerator.h>
#include <vexa/modules/GeometryGadget.h>
#include <vexa/modules/GeometryResource.h>
#include <vexa/modules/MeshGadget.h>
#include <vexa/modules/MeshResource.h>

#include <vexa/draw/GeometryRenderer.h>
#include <vexa/draw/GeometryStyle.h>
#include <vexa/draw/MeshRenderer.h>

#include <plor/Texture.h>
#include <tesk/ColorMap.h>
#include <tesk/Image.h>
#include <tesk/Mesh.h>

#include <runa/SpaceDefinition.h>

#include "FakeEngine.h"
#include "GuiTestSupport.h"

#include <CEGUI/CEGUI.h>

#include <cmath>
#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;
using vexa::modules::GeometryGadget;
using vexa::modules::GeometryResource;
namespace draw = vexa::draw;

// Exposes the state stream to the test; nothing else changes.
class OpenGeometryGadget : public GeometryGadget {
public:
    using GeometryGadget::GeometryGadget;
    using GeometryGadget::ReadFromStream;
    using GeometryGadget::WriteToStream;
};

class GeometryModuleTest : public gui_test::PanelTest {
protected:
    void SetUp() override
    {
        PanelTest::SetUp();
        assets_ = fs::path(engine_.GetIntermediateDirectory()) / "assets";
        fs::create_directories(assets_ / "matcaps");
        engine_.assetDirectory = assets_.string() + "/";
    }

    void WriteMatcaps(const std::vector<std::string>& names)
    {
        tesk::Image image;
        image.Create(2, 2, 3, tesk::PixelFormat::UInt8);
        for (const std::string& name : names)
            ASSERT_TRUE(image.SavePng((assets_ / "matcaps" / (name + ".png")).string()));
        std::ofstream(assets_ / "matcaps" / "notes.txt") << "not an image";
    }

    std::shared_ptr<OpenGeometryGadget> MakeGadget()
    {
        auto gadget = std::make_shared<OpenGeometryGadget>(&resource_, resource_.GetRenderer());
        testing_support::LogCapture quiet; // no view area to add the renderer to
        gadget->Initialize();
        return gadget;
    }

    bool Shown(const std::string& label) const { return gui_test::Shown(panel_, label); }

    testing_support::FakeEngine engine_;
    fs::path assets_;
    GeometryResource resource_{"probe", draw::GeometryName::Sphere};
};

TEST_F(GeometryModuleTest, RowsFollowTheRenderMode)
{
    auto gadget = MakeGadget();
    draw::GeometryStyle& style = *gadget->GetStyle();
    vexa::GuiGenerator generator(resource_.GetId(), panel_);
    gadget->GenerateGui(generator);
    generator.SetAutoTestConditionsEnabled(true);

    const auto check = [&](int mode, bool pointSize, bool normals, bool wires, bool useMatcap,
                           bool pointMaterial) {
        style.renderMode = mode;
        generator.TestElementConditions();
        SCOPED_TRACE(mode);
        EXPECT_EQ(std::vector({Shown("Point size"), Shown("Normals"), Shown("Thickness"), Shown("Use matcap"),
                               Shown("Point Material"), Shown("Face Material")}),
                  std::vector({pointSize, normals, wires, useMatcap, pointMaterial, true}));
    };
    check(draw::RenderMode::Points, true, false, false, false, true);
    // With wires the point size is not offered: the wire thickness is what shows.
    check(draw::RenderMode::PointsAndWires, false, false, true, false, true);
    check(draw::RenderMode::Wires, false, false, true, false, false);
    check(draw::RenderMode::Solid, false, true, false, true, false);
    check(draw::RenderMode::SolidAndWires, false, true, true, true, false);

    EXPECT_FALSE(Shown("Matcap sampler") || Shown("Length"));
    style.useMatcap = style.showNormals = true;
    generator.TestElementConditions();
    EXPECT_TRUE(Shown("Matcap sampler") && Shown("Length"));
}

TEST_F(GeometryModuleTest, MatcapIndexPicksFromTheSortedFolderOrNothing)
{
    WriteMatcaps({"Gamma", "Alpha", "Foxtrot", "Beta", "Echo", "Delta", "Golf"});
    EXPECT_EQ(GeometryGadget::ListMatcaps(),
              (std::vector<std::string>{"Alpha", "Beta", "Delta", "Echo", "Foxtrot", "Gamma", "Golf"}));

    auto gadget = MakeGadget();
    {
        vexa::GuiGenerator generator(resource_.GetId(), panel_);
        gadget->GenerateGui(generator);
        ASSERT_NE(gadget->GetStyle()->matcap, nullptr) << "index 5 (Gamma) is loaded as the panel is built";
        EXPECT_TRUE(gadget->GetStyle()->matcap->HasImage());

        // The user's choice is what the state file holds, not the one before it.
        generator.SetAutoTestConditionsEnabled(true);
        gui_test::Choose(gui_test::Control<CEGUI::Combobox>(panel_, "Matcap sampler", "combo_element"), 6);
        EXPECT_EQ(gadget->GetMatcapIndex(), 6);
        EXPECT_EQ(MakeGadget()->GetMatcapIndex(), 6) << "read back from the file the change wrote";
    }

    // Fewer files than the stored index (6, "Golf"): no selection, no matcap, the rest of the
    // panel works.
    for (const char* name : {"Gamma", "Golf", "Foxtrot"})
        fs::remove(assets_ / "matcaps" / (std::string(name) + ".png"));
    Renew();
    auto other = MakeGadget();
    vexa::GuiGenerator generator(resource_.GetId(), panel_);
    other->GenerateGui(generator);
    EXPECT_EQ(other->GetStyle()->matcap, nullptr);
    EXPECT_TRUE(Shown("Render mode"));
}

TEST_F(GeometryModuleTest, StateStreamRoundTripsAndRefusesForeignRecords)
{
    auto gadget = MakeGadget();
    gadget->GetStyle()->renderMode = draw::RenderMode::Wires;
    gadget->GetStyle()->wireThickness = 2.5f;
    std::stringstream stream;
    gadget->WriteToStream(stream);
    const std::string bytes = stream.str();

    auto fresh = MakeGadget();
    std::stringstream in(bytes);
    ASSERT_TRUE(fresh->ReadFromStream(in));
    EXPECT_EQ(fresh->GetStyle()->renderMode, draw::RenderMode::Wires);
    EXPECT_FLOAT_EQ(fresh->GetStyle()->wireThickness, 2.5f);
    EXPECT_EQ(fresh->GetMatcapIndex(), GeometryGadget::kDefaultMatcapIndex);

    // Bytes 4..7 are the style block's outer version (0); the fields' version (1) comes
    // right before the last word. Either one changed, or the record cut short, keeps defaults.
    std::string badStyleVersion = bytes;
    badStyleVersion[4] = 1;
    std::string badFieldsVersion = bytes;
    badFieldsVersion[bytes.size() - 8] = 2;
    testing_support::LogCapture log;
    for (const std::string& broken : {badStyleVersion, badFieldsVersion, bytes.substr(0, bytes.size() - 2)}) {
        auto target = MakeGadget();
        std::stringstream brokenIn(broken);
        EXPECT_FALSE(target->ReadFromStream(brokenIn));
        EXPECT_EQ(target->GetStyle()->renderMode, draw::GeometryStyle().renderMode);
        EXPECT_FLOAT_EQ(target->GetStyle()->wireThickness, draw::GeometryStyle().wireThickness);
    }
}

TEST_F(GeometryModuleTest, FocusFramesTheShapeWhereItsTransformPutsIt)
{
    auto gadget = MakeGadget();
    gadget->GetStyle()->transform.SetPosition(glm::vec3(10.0f, 0.0f, 0.0f));
    glm::vec3 target, eye;
    ASSERT_TRUE(gadget->FocusCamera(target, eye));
    EXPECT_NEAR(target.x, 10.0f, 1e-4f);
    // The unit sphere's box has a half diagonal of sqrt(3): far enough to see all of it.
    EXPECT_NEAR(glm::length(eye - target), 3.0f, 1e-3f);
}

using vexa::modules::MeshGadget;
using vexa::modules::MeshResource;

// `count` vertices at x = 0, 1, 2, ... joined by a fan of triangles.
tesk::Mesh Strip(std::size_t count)
{
    std::vector<glm::vec3> positions(count);
    for (std::size_t i = 0; i < count; ++i)
        positions[i] = glm::vec3(static_cast<float>(i), static_cast<float>(i % 2), 0.0f);
    std::vector<glm::uvec3> faces;
    for (std::uint32_t i = 1; i + 1 < count; ++i)
        faces.emplace_back(0u, i, i + 1);
    return tesk::Mesh(tesk::PointCloud(std::move(positions)), std::move(faces));
}

std::shared_ptr<MeshGadget> MakeGadget(const std::shared_ptr<MeshResource>& resource)
{
    return gui_test::InitializedGadget<MeshGadget>(resource);
}

TEST(MeshResource, CentreSamplesEveryTenthVertexAndDividesByTheWholeTens)
{
    // 15 vertices: vertices 0 and 10 are summed, and the sum is divided by 15 / 10 = 1.
    MeshResource mesh("strip", Strip(15));
    EXPECT_EQ(mesh.GetCenterOfMass(), glm::vec3(10.0f, 0.0f, 0.0f));
    EXPECT_EQ(mesh.GetCameraPos(), glm::vec3(11.0f, 1.0f, 1.0f));
    EXPECT_EQ(mesh.GetFaceCount(), 13u);

    // Under ten vertices the divisor is zero: no finite centre (the camera refuses it).
    const glm::vec3 tiny = MeshResource::CalculateCenterOfMass(Strip(4));
    EXPECT_FALSE(std::isfinite(tiny.x));

    // Vertices without faces: counted, no faces.
    tesk::Mesh cloud(Strip(12).GetVertices());
    EXPECT_EQ(MeshResource("points", cloud).GetFaceCount(), 0u);
}

TEST(MeshGadget, OffersOnlyTheColourSourcesTheMeshCanFeed)
{
    testing_support::FakeEngine engine;
    auto bare = MakeGadget(std::make_shared<MeshResource>("bare", Strip(12)));
    for (int source : {MeshGadget::VertexColors, MeshGadget::FloatDataMapping, MeshGadget::Checker,
                       MeshGadget::AlbedoTexture})
        EXPECT_FALSE(bare->IsColorSourceOffered(source)) << source;

    tesk::Mesh rich = Strip(12);
    tesk::PointCloud& vertices = rich.GetVertices();
    vertices.AddColorProperty("RGB", std::vector<tesk::Color3f>(12, tesk::Color3f(1.0f, 0.0f, 0.0f)));
    vertices.AddFloatProperty("Height", std::vector<float>(12, 2.0f));
    vertices.SetUVs(std::vector<glm::vec2>(12));
    tesk::MaterialModel material("painted");
    material.SetAlbedo({0.2f, 0.4f, 0.6f});
    rich.SetMaterial(material);
    auto resource = std::make_shared<MeshResource>("rich", rich);
    auto gadget = MakeGadget(resource);
    EXPECT_TRUE(gadget->IsColorSourceOffered(MeshGadget::Checker));
    EXPECT_FALSE(gadget->IsColorSourceOffered(MeshGadget::AlbedoTexture)) << "a material without a texture";
    // The mesh's own material is what the style starts with.
    EXPECT_FLOAT_EQ(gadget->GetStyle()->material.color.b, 0.6f);

    // Each source sets its style colour mode; the data ones hand colours to the renderer.
    const std::pair<int, int> modes[] = {{MeshGadget::Normals, vexa::draw::ColorMode::Normals},
                                         {MeshGadget::Checker, vexa::draw::ColorMode::Checker},
                                         {MeshGadget::FloatDataMapping, vexa::draw::ColorMode::PerPoint},
                                         {MeshGadget::Material, vexa::draw::ColorMode::Material}};
    for (const auto& [source, mode] : modes) {
        gadget->SetColorSource(source);
        gadget->OnColorSourceChange();
        EXPECT_EQ(gadget->GetStyle()->colorMode, mode) << source;
    }
    EXPECT_TRUE(resource->GetRenderer()->HasCustomColors());

    material.SetAlbedoTexture("missing.png");
    rich.SetMaterial(material);
    EXPECT_TRUE(MakeGadget(std::make_shared<MeshResource>("textured", rich))
                    ->IsColorSourceOffered(MeshGadget::AlbedoTexture));
}

TEST(MeshGadget, FocusLooksFromTheCameraPositionAndStateIsTheGeometrysOwn)
{
    testing_support::FakeEngine engine;
    auto resource = std::make_shared<MeshResource>("strip", Strip(15));
    auto gadget = MakeGadget(resource);
    glm::vec3 target, eye;
    ASSERT_TRUE(gadget->FocusCamera(target, eye));
    EXPECT_EQ(target, resource->GetCenterOfMass());
    EXPECT_EQ(eye, resource->GetCameraPos());

    // The colour choice is not kept; the geometry settings are.
    gadget->SetColorSource(MeshGadget::Normals);
    gadget->GetStyle()->wireThickness = 3.0f;
    ASSERT_TRUE(gadget->SaveState());
    auto again = MakeGadget(std::make_shared<MeshResource>("other", Strip(15)));
    EXPECT_EQ(again->GetColorSource(), MeshGadget::Material);
    EXPECT_FLOAT_EQ(again->GetStyle()->wireThickness, 3.0f);
}

using MeshPanelTest = gui_test::PanelTest;

TEST_F(MeshPanelTest, ListsCountsSpaceAndTheOfferedSourcesInOrder)
{
    testing_support::FakeEngine engine;
    tesk::Mesh mesh = Strip(12);
    mesh.GetVertices().AddFloatProperty("Height", std::vector<float>(12, 1.0f));
    auto resource = std::make_shared<MeshResource>("strip", mesh);
    auto gadget = MakeGadget(resource);
    vexa::GuiGenerator generator(resource->GetId(), panel_);
    gadget->GenerateGui(generator);
    const std::string all = gui_test::Joined(panel_);
    EXPECT_EQ(all.rfind("Points: 12\nFaces: 10\nSpace: N/A\n", 0), 0u) << all;
    // No vertex colours, no UVs, no texture: only the data mapping joins the two fixed ones,
    // and its own rows follow.
    EXPECT_NE(all.find("Color source|Material|Normals|Float data mapping\nData|Height\n"), std::string::npos)
        << all;
    EXPECT_NE(all.find("Range Correction"), std::string::npos) << all;
    EXPECT_EQ(all.find("Coloring Option"), std::string::npos) << all;
}

} // namespace
