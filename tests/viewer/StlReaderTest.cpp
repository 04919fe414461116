#include "StlReader.h"

#include "ReaderChecks.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

using vexa::viewer::ReadStlFromMemory;

namespace {

const auto Stl = [](auto&&... arguments) { return ReadStlFromMemory(arguments...); };

using Triangle = std::array<glm::vec3, 3>;

// Two triangles of a square sharing an edge.
const std::vector<Triangle> Square = {{{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}}},
                                      {{{0, 0, 0}, {1, 1, 0}, {0, 1, 0}}}};

std::string Binary(const std::vector<Triangle>& triangles, std::string header)
{
    header.resize(80, ' ');
    std::string bytes = header;
    const auto append = [&](const void* data, std::size_t size) {
        bytes.append(static_cast<const char*>(data), size);
    };
    const auto count = static_cast<std::uint32_t>(triangles.size());
    append(&count, 4);
    for (const Triangle& t : triangles) {
        const float normal[3] = {0, 0, 1};
        append(normal, 12);
        for (const glm::vec3& p : t)
            append(&p, 12);
        bytes += std::string(2, '\0');
    }
    return bytes;
}

std::string Ascii(const std::vector<Triangle>& triangles)
{
    std::string text = "solid square\n";
    for (const Triangle& t : triangles) {
        text += "  facet normal 0 0 1\n    outer loop\n";
        for (const glm::vec3& p : t)
            text += "      vertex " + std::to_string(p.x) + " " + std::to_string(p.y) + " " +
                    std::to_string(p.z) + "\n";
        text += "    endloop\n  endfacet\n";
    }
    return text + "endsolid square\n";
}

} // namespace

TEST(StlReader, AsciiAndBinaryGiveTheSameMergedMesh)
{
    const std::vector<std::pair<std::string, std::string>> files = {
        {"ascii", Ascii(Square)},
        {"binary", Binary(Square, "made by a CAD program")},
        {"binary starting with solid", Binary(Square, "solid square exported as binary")},
        {"upper-case ascii",
         "SOLID x\r\nFACET NORMAL 0 0 1\r\nOUTER LOOP\r\nVERTEX 0 0 0\r\nVERTEX 1 0 0\r\n"
         "VERTEX 1 1 0\r\nENDLOOP\r\nENDFACET\r\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\n"
         "vertex 1 1 0\nvertex 0 1 0\nendloop\nendfacet\nENDSOLID x\r\n"},
    };
    for (const auto& [what, bytes] : files) {
        SCOPED_TRACE(what);
        tesk::Mesh mesh;
        ASSERT_TRUE(testing_support::Reads(Stl, bytes, mesh));
        EXPECT_EQ(mesh.VertexCount(), 4u) << "shared corners are merged";
        ASSERT_EQ(mesh.FaceCount(), 2u);
        EXPECT_FALSE(mesh.HasNormals());
        const auto& positions = mesh.GetVertices().GetPositions();
        for (std::size_t f = 0; f < 2; ++f)
            for (int c = 0; c < 3; ++c)
                EXPECT_EQ(positions[mesh.GetFaces()[f][c]], Square[f][static_cast<std::size_t>(c)]);
    }
}

TEST(StlReader, FarCoordinatesAreShiftedBeforeFloat)
{
    tesk::Mesh mesh;
    const std::string text =
        "solid geo\nfacet normal 0 0 1\nouter loop\nvertex 500000.001 2 3\nvertex 500000.002 2 3\n"
        "vertex 500000.001 2.001 3\nendloop\nendfacet\nendsolid\n";
    ASSERT_TRUE(testing_support::Reads(Stl, text, mesh));
    EXPECT_EQ(mesh.GetVertices().GetOriginOffset(), glm::dvec3(5e5, 0, 0));
    EXPECT_NEAR(mesh.GetVertices().GetPositions()[1].x, 0.002, 1e-6);
}

TEST(StlReader, BadFilesFailWithTheirPlaceAndLeaveTheMeshAlone)
{
    std::string truncated = Binary(Square, "cut");
    truncated.resize(truncated.size() - 7);
    std::string padded = Binary(Square, "padded") + "xyz";
    std::string solidTruncated = Binary(Square, "solid but binary");
    solidTruncated.resize(84 + 60);
    testing_support::ExpectEachFails<tesk::Mesh>(
        Stl, "bad.stl", "vexa::viewer::ReadStl",
        {
            {truncated, "byte 134: file ends inside triangle 2 of 2"},
            {padded, "byte 184: 3 bytes after the last of 2 triangles"},
            {solidTruncated, "byte 134: file ends inside triangle 2 of 2"},
            {"hello", "byte 0: too short for a binary STL (5 bytes, and it does not start with 'solid')"},
            {"solid x\nfacet normal 0 0 1\nouter loop\nvertex 1 2\n",
             "line 4: expected 3 numbers after 'vertex', found 2"},
            {"solid x\nfacet normal 0 0 1\nouter loop\nvertex 1 2 z\n", "line 4: 'z' is not a number"},
            {"solid x\nfacet normal 0 0 1\nouter loop\nvertex 1 2 3\n",
             "line 4: file ends inside the facet of line 2"},
            {"solid x\nfacet normal 0 0 1\nvertex 1 2 3\n", "line 3: 'vertex' outside 'outer loop'"},
            {"solid x\nfacet normal 0 0 1\nouter loop\nvortex 1 2 3\n", "line 4: unexpected 'vortex'"},
        });
}
