#include "OffReader.h"

#include "LogCapture.h"
#include "ReaderChecks.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using vexa::viewer::ReadOffFromMemory;

namespace {
const auto Off = [](auto&&... arguments) { return ReadOffFromMemory(arguments...); };
} // namespace

TEST(OffReader, KeywordVariantsColoursAndComments)
{
    struct Case {
        std::string text;
        bool colors;
        bool normals;
    };
    const std::vector<Case> cases = {
        {"OFF\n4 2 0\n0 0 0\n1 0 0\n1 1 0\n0 1 0\n3 0 1 2\n3 0 2 3\n", false, false},
        {"OFF 4 1 5\n0 0 0\n1 0 0\n1 1 0\n0 1 0\n4 0 1 2 3\n", false, false},
        {"# made by hand\nOFF\n# counts next\n\n4 1 0\n0 0 0 # first\n1 0 0\n1 1 0\n0 1 0\n4 0 1 2 3 255 0 "
         "0\n",
         false, false},
        {"COFF\n4 1 0\n0 0 0 255 0 51 255\n1 0 0 0 255 0 255\n1 1 0 0 0 255 255\n0 1 0 255 255 255 255\n4 0 "
         "1 2 3\n",
         true, false},
        {"COFF\n4 1 0\n0 0 0 1 0 0.2\n1 0 0 0 1.0 0\n1 1 0 0 0 1\n0 1 0 1 1 1\n4 0 1 2 3\n", true, false},
        {"NOFF\n4 1 0\n0 0 0 0 0 1\n1 0 0 0 0 1\n1 1 0 0 0 1\n0 1 0 0 0 1\n4 0 1 2 3\n", false, true},
        {"CNOFF\r\n4 1 0\r\n0 0 0 0 0 1 1 0 0.2 1\r\n1 0 0 0 0 1 0 1 0 1\r\n1 1 0 0 0 1 0 0 1 1\r\n"
         "0 1 0 0 0 1 1 1 1 1\r\n4 0 1 2 3\r\n",
         true, true},
        {"4 1 0\n0 0 0\n1 0 0\n1 1 0\n0 1 0\n4 0 1 2 3\n", false, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        tesk::Mesh mesh;
        ASSERT_TRUE(testing_support::Reads(Off, c.text, mesh));
        EXPECT_EQ(mesh.VertexCount(), 4u);
        EXPECT_EQ(std::vector<glm::uvec3>(mesh.GetFaces().begin(), mesh.GetFaces().end()),
                  (std::vector<glm::uvec3>{{0, 1, 2}, {0, 2, 3}}));
        EXPECT_EQ(mesh.GetVertices().GetPositions()[2], glm::vec3(1, 1, 0));
        EXPECT_EQ(mesh.HasNormals(), c.normals);
        const auto colors = mesh.GetVertices().GetColorProperty("RGB");
        EXPECT_EQ(colors.size(), c.colors ? 4u : 0u);
        if (c.colors) {
            EXPECT_EQ(colors[0], tesk::Color3f(1.0f, 0.0f, 0.2f)) << "bytes scaled to 0..1, decimals kept";
            EXPECT_EQ(colors[1], tesk::Color3f(0.0f, 1.0f, 0.0f));
        }
    }
}

TEST(OffReader, BadFilesFailWithTheirLineAndLeaveTheMeshAlone)
{
    testing_support::ExpectEachFails<tesk::Mesh>(
        Off, "bad.off", "vexa::viewer::ReadOff",
        {
            {"OFF\n3 1 0\n0 0 0\n1 0 0\n", "line 4: file ends after 2 of 3 vertices"},
            {"OFF\n3 1 0\n0 0 0\n1 0\n0 1 0\n3 0 1 2\n", "line 4: expected 3 values, found 2 values"},
            {"OFF\n3 1 0\n0 0 0\n1 0 x\n0 1 0\n3 0 1 2\n", "line 4: 'x' is not a number"},
            {"COFF\n3 1 0\n0 0 0\n1 0 0 1 1 1\n0 1 0 1 1 1\n3 0 1 2\n",
             "line 3: expected 3 values and a colour, found 3 values"},
            {"OFF\n3 1 0\n0 0 0\n1 0 0\n0 1 0\n4 0 1 2\n", "line 6: the face has 3 indices, not 4"},
            {"OFF\n3 1 0\n0 0 0\n1 0 0\n0 1 0\n3 0 1 b\n", "line 6: 'b' is not a vertex index"},
            {"OFF\n3 2 0\n0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n", "line 6: file ends after 1 of 2 faces"},
            {"OFF\n3000000000000 1 0\n0 0 0\n", "line 3: file ends after 1 of 3000000000000 vertices"},
            {"OFF\nthree 1 0\n", "line 2: expected the vertex, face and edge counts"},
            {"4OFF\n3 1 0\n", "line 1: unsupported OFF variant '4OFF'"},
            {"OFF BINARY\n", "line 1: binary OFF files are not supported"},
            {"ply\n", "line 1: not an OFF file (it starts with 'ply')"},
            {"# nothing\n", "line 1: empty file"},
        });
    // Faces with missing vertices are skipped with one warning.
    testing_support::LogCapture log;
    tesk::Mesh mesh;
    ASSERT_TRUE(testing_support::Reads(Off, "OFF\n3 3 0\n0 0 0\n1 0 0\n0 1 0\n3 0 1 3\n3 0 1 2\n3 -1 1 2\n",
                                       mesh, "gaps.off"));
    EXPECT_EQ(mesh.FaceCount(), 1u);
    EXPECT_TRUE(log.Contains(
        "gaps.off: skipped 2 faces that refer to missing vertices (first: face 1 of the file; 3 vertices)",
        "vexa::viewer::ReadOff"));
}
