#include <vexa/GuiGenerator.h>
#include <vexa/modules/MeshGadget.h>
#include <vexa/modules/MeshResource.h>

#include <vexa/draw/GeometryStyle.h>
#include <vexa/draw/MeshRenderer.h>

#include <tesk/ColorMap.h>
#include <tesk/Mesh.h>

#include <runa/SpaceDefinition.h>

#include "FakeEngine.h"
#include "GuiTestSupport.h"

#include <CEGUI/CEGUI.h>

#include <cmath>

namespace {

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
    return gui_test::InitializedGadget<MeshGadget>(*resource);
}

TEST(MeshResource, CentreSamplesEveryTenthVertexAndDividesByTheWholeTens)
{
    // 15 vertices: vertices 0 and 10 are summed, and the sum is divided by 15 / 10 = 1.
    MeshResource mesh("strip", Strip(15));
    EXPECT_EQ(mesh.GetCenterOfMass(), glm::vec3(10.0f, 0.0f, 0.0f));
    EXPECT_EQ(mesh.GetCameraPos(), glm::vec3(11.0f, 1.0f, 1.0f));
    EXPECT_EQ(mesh.GetPointCount(), 15u);
    EXPECT_EQ(mesh.GetFaceCount(), 13u);

    // 25 vertices: 0, 10 and 20 over 2.
    EXPECT_EQ(MeshResource::CalculateCenterOfMass(Strip(25)), glm::vec3(15.0f, 0.0f, 0.0f));
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
    for (const auto& [source, mode] : modes)
    {
        gadget->SetColorSource(source);
        gadget->OnColorSourceChange();
        EXPECT_EQ(gadget->GetStyle()->colorMode, mode) << source;
    }
    EXPECT_TRUE(resource->GetRenderer()->HasCustomColors());

    material.SetAlbedoTexture("missing.png");
    rich.SetMaterial(material);
    EXPECT_TRUE(MakeGadget(std::make_shared<MeshResource>("textured", rich))->IsColorSourceOffered(MeshGadget::AlbedoTexture));
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
    EXPECT_NE(all.find("Color source|Material|Normals|Float data mapping\nData|Height\n"), std::string::npos) << all;
    EXPECT_NE(all.find("Range Correction"), std::string::npos) << all;
    EXPECT_EQ(all.find("Coloring Option"), std::string::npos) << all;
}

} // namespace
