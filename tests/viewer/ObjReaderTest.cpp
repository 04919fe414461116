#include "ObjReader.h"

#include "LogCapture.h"
#include "ReaderChecks.h"
#include "TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

using vexa::viewer::ReadObj;
using vexa::viewer::ReadObjFromMemory;

namespace {

const auto Obj = [](std::string_view text, const std::string& name, tesk::Mesh& mesh, std::string& error) {
    return ReadObjFromMemory(text, name, "", mesh, error);
};

tesk::Mesh Read(const std::string& text)
{
    tesk::Mesh mesh;
    EXPECT_TRUE(testing_support::Reads(Obj, text, mesh));
    return mesh;
}

// The triangles as the positions of their corners, which stays the same however vertices
// are shared.
std::vector<std::vector<glm::vec3>> CornerPositions(const tesk::Mesh& mesh)
{
    std::vector<std::vector<glm::vec3>> triangles;
    for (const glm::uvec3& f : mesh.GetFaces())
        triangles.push_back({mesh.GetVertices().GetPositions()[f.x], mesh.GetVertices().GetPositions()[f.y],
                             mesh.GetVertices().GetPositions()[f.z]});
    return triangles;
}

const std::string Square = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n";

} // namespace

TEST(ObjReader, EveryIndexFormGivesTheSameTriangles)
{
    const std::string uvsAndNormals =
        "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nvn 0 0 1\nvn 0 0 1\nvn 0 0 1\nvn 0 0 1\n";
    struct Form {
        std::string faces;
        bool hasUVs;
        bool hasNormals;
    };
    const std::vector<Form> forms = {
        {"f 1 2 3 4\n", false, false},
        {"f 1/1 2/2 3/3 4/4\n", true, false},
        {"f 1//1 2//2 3//3 4//4\n", false, true},
        {"f 1/1/1 2/2/2 3/3/3 4/4/4\n", true, true},
        {"f -4/-4/-4 -3/-3/-3 -2/-2/-2 -1/-1/-1\n", true, true},
        {"f 1 2 3\nf 1 3 4\n", false, false},
        {"f 1 \\\n 2 3 4 # a quad\n", false, false},
    };
    const std::vector<std::vector<glm::vec3>> expected = {{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}},
                                                          {{0, 0, 0}, {1, 1, 0}, {0, 1, 0}}};
    for (const auto& [f, hasUVs, hasNormals] : forms) {
        SCOPED_TRACE(f);
        const tesk::Mesh mesh = Read("# square\no square\ng side\ns 1\n" + Square + uvsAndNormals +
                                     "usemtl none\n" + f + "l 1 2\n");
        EXPECT_EQ(CornerPositions(mesh), expected);
        EXPECT_EQ(mesh.VertexCount(), 4u) << "the same number for all three indices maps vertices directly";
        EXPECT_EQ(mesh.HasUVs(), hasUVs);
        EXPECT_EQ(mesh.HasNormals(), hasNormals);
        if (mesh.HasUVs()) {
            EXPECT_EQ(mesh.GetVertices().GetUVs()[2], glm::vec2(1.0f, 1.0f));
        }
    }
}

TEST(ObjReader, SeparateTextureAndNormalIndicesMakeOneVertexPerCombination)
{
    // A cube corner's worth: two faces share positions 1 and 3 but not their normals.
    const tesk::Mesh mesh = Read(Square + "v 1 0 -1\nvt 0 0\nvt 1 1\nvn 0 0 1\nvn 1 0 0\n"
                                          "f 1/1/1 2/2/1 3/1/1\nf 2/2/2 5/1/2 -3/1/2\nf 1/1/1 3/1/1 4/2/1\n");
    ASSERT_EQ(mesh.FaceCount(), 3u);
    EXPECT_EQ(mesh.VertexCount(), 7u) << "1/1/1 2/2/1 3/1/1 2/2/2 5/1/2 3/1/2 4/2/1";
    const tesk::PointCloud& cloud = mesh.GetVertices();
    ASSERT_TRUE(cloud.HasNormals());
    ASSERT_TRUE(mesh.HasUVs());
    const glm::uvec3 second = mesh.GetFaces()[1];
    EXPECT_EQ(cloud.GetPositions()[second.x], glm::vec3(1, 0, 0));
    EXPECT_EQ(cloud.GetNormals()[second.x], glm::vec3(1, 0, 0));
    EXPECT_EQ(cloud.GetUVs()[second.x], glm::vec2(1, 1));
    EXPECT_EQ(cloud.GetPositions()[second.z], glm::vec3(1, 1, 0));
    EXPECT_EQ(mesh.GetFaces()[2].x, mesh.GetFaces()[0].x) << "the same triple is one vertex";
}

TEST(ObjReader, PointsColoursAndFarCoordinates)
{
    const tesk::Mesh points = Read("v 1 2 3 1.0\nv 4 5 6 0.5\nvn 0 0 1\nvn 0 1 0\n");
    EXPECT_FALSE(points.HasFaces());
    EXPECT_EQ(points.VertexCount(), 2u);
    EXPECT_EQ(points.GetVertices().GetNormals()[1], glm::vec3(0, 1, 0));

    const tesk::Mesh colored = Read("v 0 0 0 1 0.5 0\nv 1 0 0 0 0 1\nv 0 1 0 0.2 0.2 0.2\nf 1 2 3\n");
    ASSERT_EQ(colored.GetVertices().GetColorProperty("RGB").size(), 3u);
    EXPECT_EQ(colored.GetVertices().GetColorProperty("RGB")[0], tesk::Color3f(1.0f, 0.5f, 0.0f));

    const tesk::Mesh far = Read("v 1000000.001 20 -3000000\nv 1000000.002 20 -3000000.001\n");
    EXPECT_EQ(far.GetVertices().GetOriginOffset(), glm::dvec3(1e6, 0.0, -3e6));
    EXPECT_NEAR(far.GetVertices().GetPositions()[1].x, 0.002, 1e-6);
    EXPECT_NEAR(far.GetVertices().GetPositions()[1].z, -0.001, 1e-6);
}

TEST(ObjReader, MaterialComesFromTheLibraryBesideTheFile)
{
    testing_support::TempFolder folder;
    std::filesystem::create_directories(folder.PathOf("models/materials"));
    folder.Write("models/materials/lib.mtl", "# two materials\nnewmtl plain\nKd 0.1 0.2 0.3\n\n"
                                             "newmtl wood\nKd 0.5 0.25 0.125\nKs 0.2 0.4 0.3\nNs 64\n"
                                             "map_Kd -s 2 2 1 -bm 0.5 ..\\textures\\oak bark.png\n");
    folder.Write("models/extra.mtl", "newmtl other\nKd 1 0 0\n");
    const std::string path =
        folder.Write("models/box.obj", "mtllib materials/lib.mtl extra.mtl\n" + Square +
                                           "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\n"
                                           "usemtl wood\nf 1/1 2/2 3/3\nusemtl plain\nf 1/1 3/3 4/4\n");
    testing_support::LogCapture log;
    tesk::Mesh mesh;
    std::string error;
    ASSERT_TRUE(ReadObj(path, mesh, error)) << error;
    EXPECT_TRUE(log.messages.empty());
    ASSERT_TRUE(mesh.HasMaterial());
    const tesk::MaterialModel& material = *mesh.GetMaterial();
    EXPECT_EQ(material.GetName(), "wood");
    EXPECT_EQ(material.GetAlbedo(), tesk::Color3f(0.5f, 0.25f, 0.125f));
    EXPECT_FLOAT_EQ(material.GetSpecular(), 0.4f);
    EXPECT_FLOAT_EQ(material.GetShininess(), 64.0f);
    EXPECT_EQ(
        std::filesystem::path(material.GetAlbedoTexture()),
        (std::filesystem::path(folder.PathOf("models")) / "textures" / "oak bark.png").lexically_normal());

    // A missing library warns and leaves the model without a material.
    const std::string lost =
        folder.Write("lost.obj", "mtllib nowhere.mtl\nusemtl x\n" + Square + "f 1 2 3\n");
    ASSERT_TRUE(ReadObj(lost, mesh, error)) << error;
    EXPECT_FALSE(mesh.HasMaterial());
    ASSERT_EQ(log.messages.size(), 1u);
    EXPECT_EQ(log.messages[0].message.rfind("nowhere.mtl: cannot open file", 0), 0u)
        << log.messages[0].message;
}

TEST(ObjReader, BadFilesFailWithTheirLineAndLeaveTheMeshAlone)
{
    testing_support::ExpectEachFails<tesk::Mesh>(
        Obj, "bad.obj", "vexa::viewer::ReadObj",
        {
            {Square + "f 1 2 x\n", "line 5: bad face corner 'x'"},
            {Square + "f 1 0 2\n", "line 5: index 0 in face corner '0' (indices start at 1)"},
            {Square + "f 1/2/3/4 2 3\n", "line 5: bad face corner '1/2/3/4'"},
            {"v 1 2\n", "line 1: expected 3 to 7 numbers after 'v', found 2"},
            {"v 1 2 3 4 5\n", "line 1: expected 3, 4, 6 or 7 numbers after 'v', found 5"},
            {"v 1 2 3\nvn 0 0 one\n", "line 2: 'one' is not a number"},
            {"v 1 2 \\\n3\nv \\\n1 2 three\n", "line 3: 'three' is not a number"},
            {std::string("\x7f"
                         "ELF\x02\x01\x01",
                         7),
             "line 1: unknown statement '?ELF?"
             "??"
             "'"},
        });
    // Faces naming vertices that do not exist are dropped with one warning.
    testing_support::LogCapture log;
    tesk::Mesh mesh;
    ASSERT_TRUE(testing_support::Reads(Obj, Square + "f 1 2 9\nf 1 2 3\nf -9 1 2\n", mesh, "gaps.obj"));
    EXPECT_EQ(mesh.FaceCount(), 1u);
    EXPECT_TRUE(log.Contains("gaps.obj: skipped 2 faces that refer to missing vertices (first: line 5)",
                             "vexa::viewer::ReadObj"));
}
