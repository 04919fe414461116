#include "ModelFile.h"

#include "LogCapture.h"
#include "TempFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using vexa::viewer::IsModelFile;
using vexa::viewer::ReadModelFile;

TEST(ModelFile, ChoosesTheReaderByExtensionInAnyCase)
{
    testing_support::TempFolder folder;
    const std::string ply =
        "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
        "property float z\nelement face 1\nproperty list uchar int vertex_indices\nend_header\n"
        "1 2 3\n0 0 0\n0 1 0\n3 0 1 2\n";
    const std::string obj = "v 1 2 3\nv 0 0 0\nv 0 1 0\nf 1 2 3\n";
    const std::string off = "OFF\n3 1 0\n1 2 3\n0 0 0\n0 1 0\n3 0 1 2\n";
    const std::string stl =
        "solid t\nfacet normal 0 0 1\nouter loop\nvertex 1 2 3\nvertex 0 0 0\nvertex 0 1 0\n"
        "endloop\nendfacet\nendsolid t\n";
    const std::string text = "1 2 3\n";
    const std::string withNormals = "1 2 3 0 0 1\n";
    struct Case {
        std::string name;
        const std::string* bytes;
        std::size_t faces;
    };
    const std::vector<Case> cases = {
        {"a.ply", &ply, 1},  {"B.PLY", &ply, 1},  {"c.obj", &obj, 1},          {"e.off", &off, 1},
        {"f.stl", &stl, 1},  {"h.xyz", &text, 0}, {"i.Pts", &text, 0},         {"j.TXT", &text, 0},
        {"k.csv", &text, 0}, {"l.asc", &text, 0}, {"m.xyzn", &withNormals, 0}, {"n.xyzrgb", &withNormals, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_TRUE(IsModelFile(c.name));
        tesk::Mesh mesh;
        std::string error;
        ASSERT_TRUE(ReadModelFile(folder.Write(c.name, *c.bytes), mesh, error)) << error;
        EXPECT_EQ(mesh.GetVertices().GetPositions()[0], glm::vec3(1.0f, 2.0f, 3.0f));
        EXPECT_EQ(mesh.FaceCount(), c.faces);
    }
    EXPECT_TRUE(IsModelFile("scan.PCD"));
    EXPECT_FALSE(IsModelFile("notes.md"));
    EXPECT_FALSE(IsModelFile("ply"));

    // Text in a .ply file is judged as PLY, not guessed at.
    testing_support::LogCapture log;
    tesk::Mesh mesh;
    std::string error;
    EXPECT_FALSE(ReadModelFile(folder.Write("wrong.ply", text), mesh, error));
    EXPECT_EQ(error, "wrong.ply: line 1: not a PLY file (the first line is not 'ply')");
}

TEST(ModelFile, UnknownOrMissingFilesFailWithTheirName)
{
    testing_support::TempFolder folder;
    testing_support::LogCapture log;
    tesk::Mesh mesh(tesk::PointCloud(std::vector<glm::vec3>{{7.0f, 7.0f, 7.0f}}));
    std::string error;
    const std::string expected =
        "expected .ply, .obj, .stl, .off, .pcd, .xyz, .xyzn, .xyzrgb, .pts, .txt, .csv or .asc";

    EXPECT_FALSE(ReadModelFile(folder.Write("mesh.3ds", "x"), mesh, error));
    EXPECT_EQ(error, "mesh.3ds: unsupported file type '.3ds'; " + expected);
    EXPECT_TRUE(log.Contains(error, "vexa::viewer::ReadModelFile"));

    EXPECT_FALSE(ReadModelFile(folder.Write("README", "x"), mesh, error));
    EXPECT_EQ(error, "README: unsupported file type (no extension); " + expected);

    for (const char* name : {"gone.ply", "gone.obj", "gone.stl", "gone.off", "gone.xyz"}) {
        EXPECT_FALSE(ReadModelFile(folder.PathOf(name), mesh, error));
        EXPECT_EQ(error.rfind(std::string(name) + ": cannot open file (", 0), 0u) << error;
    }
    EXPECT_EQ(mesh.VertexCount(), 1u);
}
