#include "PlyReader.h"

#include "LogCapture.h"
#include "ReaderChecks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

using testing_support::Reads;

namespace {

const auto Ply = [](auto&&... arguments) { return vexa::viewer::ReadPlyFromMemory(arguments...); };

// Writes PLY files of any encoding from the same values, so one test can compare encodings.
class PlyWriter {
public:
    explicit PlyWriter(std::string format) : format_(std::move(format))
    {
        header_ = "ply\nformat " + format_ + " 1.0\n";
    }

    PlyWriter& Line(const std::string& line)
    {
        header_ += line + "\n";
        return *this;
    }

    PlyWriter& Value(const std::string& type, double value)
    {
        if (format_ == "ascii") {
            char text[64];
            std::snprintf(text, sizeof text, "%.17g ", value); // "nan", "inf" and "-inf" too
            body_ += text;
            return *this;
        }
        if (type == "float")
            return Append(static_cast<float>(value), 4);
        if (type == "double")
            return Append(value, 8);
        // Integers: the low bytes of their two's complement.
        return Append(static_cast<std::int64_t>(value), type.ends_with("char")    ? 1
                                                        : type.ends_with("short") ? 2
                                                                                  : 4);
    }

    PlyWriter& EndItem()
    {
        if (format_ == "ascii")
            body_ += "\n";
        return *this;
    }

    std::string Bytes() const { return header_ + "end_header\n" + body_; }

private:
    template <typename T>
    PlyWriter& Append(T value, std::size_t size)
    {
        static_assert(std::endian::native == std::endian::little);
        std::string bytes(reinterpret_cast<const char*>(&value), size);
        if (format_ == "binary_big_endian")
            std::reverse(bytes.begin(), bytes.end());
        body_ += bytes;
        return *this;
    }

    std::string format_;
    std::string header_;
    std::string body_;
};

const std::vector<std::string> Encodings = {"ascii", "binary_little_endian", "binary_big_endian"};

std::vector<glm::uvec3> FacesOf(const tesk::Mesh& mesh)
{
    return {mesh.GetFaces().begin(), mesh.GetFaces().end()};
}

// Four vertices of a unit square in the z = 0 plane, in the given encoding.
void SquareVertices(PlyWriter& ply)
{
    for (int i = 0; i < 4; ++i)
        ply.Value("float", i % 2).Value("float", i / 2).Value("float", 0).EndItem();
}

} // namespace

TEST(PlyReader, EveryEncodingGivesTheSameCloud)
{
    struct Vertex {
        float x, y, z, nx, ny, nz;
        int red, green, blue, alpha;
        float intensity;
        int label, quality, flag;
        double weight;
    };
    const std::vector<Vertex> vertices = {
        {1.5f, -2.25f, 3.0f, 0, 0, 1, 255, 0, 51, 10, 0.125f, -70000, 65535, -128, 1e-3},
        {-1e6f, 0.0f, 1e-6f, 0, 1, 0, 0, 255, 102, 20, -4.5f, 2147483647, 0, 127, 12345.678},
        {std::numeric_limits<float>::infinity(), 4.0f, 5.0f, 1, 0, 0, 128, 128, 128, 30, 7.0f, 0, 300, 0,
         -1.0},
    };

    for (const std::string& encoding : Encodings) {
        SCOPED_TRACE(encoding);
        PlyWriter ply(encoding);
        ply.Line("element vertex 3");
        for (const char* axis : {"x", "y", "z", "nx", "ny", "nz"})
            ply.Line(std::string("property float ") + axis);
        ply.Line("property uchar red").Line("property uchar green").Line("property uchar blue");
        ply.Line("property uchar alpha").Line("property float32 intensity").Line("property int label");
        ply.Line("property uint16 quality").Line("property int8 flag").Line("property double weight");
        ply.Line("element face 2").Line("property list uchar int vertex_indices");
        for (const Vertex& v : vertices) {
            for (float f : {v.x, v.y, v.z, v.nx, v.ny, v.nz})
                ply.Value("float", f);
            for (int c : {v.red, v.green, v.blue, v.alpha})
                ply.Value("uchar", c);
            ply.Value("float", v.intensity).Value("int", v.label).Value("ushort", v.quality);
            ply.Value("char", v.flag).Value("double", v.weight).EndItem();
        }
        ply.Value("uchar", 3).Value("int", 0).Value("int", 1).Value("int", 2).EndItem();
        ply.Value("uchar", 4).Value("int", 2).Value("int", 1).Value("int", 0).Value("int", 1).EndItem();

        tesk::PointCloud cloud;
        ASSERT_TRUE(Reads(Ply, ply.Bytes(), cloud));
        ASSERT_EQ(cloud.Size(), 3u);
        ASSERT_TRUE(cloud.HasNormals());
        ASSERT_EQ(cloud.PropertyCount(), 6u) << "RGB and five floats; alpha dropped";
        const std::vector<std::string> names = {"RGB", "intensity", "label", "quality", "flag", "weight"};
        EXPECT_EQ(testing_support::PropertyNames(cloud), names);

        // Colours read from bytes stay bytes.
        const auto colors = cloud.GetByteColorProperty("RGB");
        for (std::size_t i = 0; i < vertices.size(); ++i) {
            const Vertex& v = vertices[i];
            EXPECT_EQ(cloud.GetPositions()[i], glm::vec3(v.x, v.y, v.z));
            EXPECT_EQ(cloud.GetNormals()[i], glm::vec3(v.nx, v.ny, v.nz));
            EXPECT_EQ(colors[i],
                      tesk::Color3b(static_cast<std::uint8_t>(v.red), static_cast<std::uint8_t>(v.green),
                                    static_cast<std::uint8_t>(v.blue)));
            std::vector<float> values;
            for (std::size_t p = 1; p < names.size(); ++p)
                values.push_back(cloud.GetFloatProperty(names[p])[i]);
            EXPECT_EQ(values, (std::vector<float>{v.intensity, static_cast<float>(v.label),
                                                  static_cast<float>(v.quality), static_cast<float>(v.flag),
                                                  static_cast<float>(v.weight)}));
        }

        // An empty vertex element replaces what the cloud held with nothing.
        PlyWriter empty(encoding);
        empty.Line("element vertex 0")
            .Line("property float x")
            .Line("property float y")
            .Line("property float z");
        empty.Line("property uchar r").Line("property uchar g").Line("property uchar b");
        testing_support::MakeOnePoint(cloud);
        ASSERT_TRUE(Reads(Ply, empty.Bytes(), cloud));
        EXPECT_TRUE(cloud.Empty());
    }
}

TEST(PlyReader, BigEndianDoublesAndListsBeforeAndInsideVertices)
{
    // An element with lists ahead of the vertices must be stepped over item by item, and a
    // list inside the vertex element makes its stride vary per vertex.
    for (const std::string& encoding : {std::string("binary_big_endian"), std::string("ascii")}) {
        SCOPED_TRACE(encoding);
        PlyWriter ply(encoding);
        ply.Line("element group 2").Line("property list uint short members").Line("property float weight");
        ply.Line("element vertex 2")
            .Line("property double x")
            .Line("property double y")
            .Line("property double z");
        ply.Line("property list uchar uint neighbours");
        ply.Line("property float diffuse_red")
            .Line("property float diffuse_green")
            .Line("property float diffuse_blue");
        ply.Value("uint", 2).Value("short", 5).Value("short", 6).Value("float", 0.5).EndItem();
        ply.Value("uint", 0).Value("float", 1.5).EndItem();
        ply.Value("double", 123456.75).Value("double", -0.1).Value("double", 1e30);
        ply.Value("uchar", 2).Value("uint", 1).Value("uint", 9);
        ply.Value("float", 0.25).Value("float", 0.5).Value("float", 1.0).EndItem();
        ply.Value("double", 1.0).Value("double", 2.0).Value("double", 3.0);
        ply.Value("uchar", 0);
        ply.Value("float", 0.0).Value("float", 0.75).Value("float", 0.125).EndItem();

        tesk::PointCloud cloud;
        ASSERT_TRUE(Reads(Ply, ply.Bytes(), cloud));
        ASSERT_EQ(cloud.Size(), 2u);
        // Far coordinates are stored relative to the rounded first point.
        const glm::dvec3 offset = cloud.GetOriginOffset();
        EXPECT_EQ(offset.x, 123000.0);
        EXPECT_EQ(offset.y, 0.0);
        EXPECT_EQ(cloud.GetPositions()[0], glm::vec3(456.75f, -0.1f, static_cast<float>(1e30 - offset.z)));
        EXPECT_EQ(cloud.GetPositions()[1],
                  glm::vec3(1.0f - 123000.0f, 2.0f, static_cast<float>(3.0 - offset.z)));
        EXPECT_FALSE(cloud.HasNormals());
        ASSERT_EQ(cloud.PropertyCount(), 1u);
        const auto colors = cloud.GetColorProperty("RGB");
        ASSERT_EQ(colors.size(), 2u);
        EXPECT_EQ(colors[0], tesk::Color3f(0.25f, 0.5f, 1.0f));
        EXPECT_EQ(colors[1], tesk::Color3f(0.0f, 0.75f, 0.125f));
    }
}

TEST(PlyReader, ReadsHeadersAsOtherProgramsWriteThem)
{
    const std::string file =
        "ply\r\nformat ascii 1.0\r\ncomment Created by a scanning app\r\ncomment   \r\n"
        "obj_info num_cols 640\r\nelement vertex 3\r\nproperty float x\r\nproperty float y\r\n"
        "property float z\r\nproperty uchar red\r\nproperty uchar green\r\nproperty uchar blue\r\n"
        "property uchar alpha\r\nproperty float scalar_Intensity\r\nelement face 1\r\n"
        "property list uchar int vertex_indices\r\nend_header\r\n0 0 0 255 0 0 255 0.5\r\n"
        "\t1  +2e0 -3 0 255 0 128 1.5   \r\nnan 1 inf 0 0 255 0 -2\r\n3 0 1 2\r\n";
    tesk::PointCloud cloud;
    ASSERT_TRUE(Reads(Ply, file, cloud));
    ASSERT_EQ(cloud.Size(), 3u);
    EXPECT_EQ(cloud.GetPositions()[1], glm::vec3(1.0f, 2.0f, -3.0f));
    EXPECT_TRUE(std::isnan(cloud.GetPositions()[2].x)) << "non-finite points are kept";
    EXPECT_TRUE(std::isinf(cloud.GetPositions()[2].z));
    EXPECT_EQ(cloud.CountNonFinite(), 1u);
    ASSERT_EQ(cloud.PropertyCount(), 2u);
    EXPECT_EQ(cloud.GetByteColorProperty("RGB")[0], tesk::Color3b(255, 0, 0));
    EXPECT_EQ(cloud.GetByteColorProperty("RGB")[2], tesk::Color3b(0, 0, 255));
    EXPECT_EQ(cloud.GetFloatProperty("scalar_Intensity")[1], 1.5f);
    EXPECT_FALSE(cloud.HasProperty("alpha"));
}

TEST(PlyReader, BadFilesFailWithTheirPlaceAndLeaveTheCloudAlone)
{
    // Absurd vertex counts in both encodings are refused in the four-billion test below.
    const std::string xyz = "element vertex 100\nproperty float x\nproperty float y\nproperty float z\n";
    const std::string absurdFaces = "ply\nformat binary_little_endian 1.0\nelement face 1000000000000\n"
                                    "property list uchar int vertex_indices\n" +
                                    xyz + "end_header\n\x03";
    const std::string asciiStart = "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\n"
                                   "property float y\nproperty float z\nend_header\n";

    testing_support::ExpectEachFails<tesk::PointCloud>(
        Ply, "bad.ply", "vexa::viewer::ReadPly",
        {
            {absurdFaces,
             "byte " + std::to_string(absurdFaces.size() - 1) + ": file ends inside face 1 of 1000000000000"},
            {asciiStart + "1 2 3\n4 5\n6 7 8\n", "line 9: expected 3 values, found 2"},
            {asciiStart + "1 2 3\n4 5 six\n6 7 8\n", "line 9: 'six' is not a number"},
            {"ply\nformat binary_middle_endian 1.0\nend_header\n",
             "line 2: unknown format 'binary_middle_endian'"},
            {"ply\nformat ascii 1.0\nelement vertex 1\nproperty flaot x\nend_header\n",
             "line 4: unknown property type 'flaot'"},
            {"ply\nformat ascii 1.0\nelement vertex 1\nproperty float x\nproperty float z\nend_header\n1 2\n",
             "line 3: element 'vertex' has no property 'y'"},
            {"ply\nformat ascii 1.0\nelement face 0\nend_header\n",
             "line 4: the header declares no 'vertex' element"},
            {"ply\nformat ascii 1.0\nelement vertex 1\n",
             "line 3: file ends inside the header (no 'end_header' line)"},
            {"", "line 1: not a PLY file (the first line is not 'ply')"},
        });
}

TEST(PlyReader, FourBillionVerticesInOneKilobyteAreRefusedBeforeAnyAllocation)
{
    // The file would need 48 GB of floats; what it holds is checked against what it claims
    // before anything is reserved. Each file is 1 KB.
    const auto kilobyte = [](const std::string& format, const std::string& element) {
        std::string file =
            "ply\nformat " + format + " 1.0\nelement " + element + " 4000000000\n" +
            (element == "face" ? "property list uchar int vertex_indices\nelement vertex 3\n" : "") +
            "property float x\nproperty float y\nproperty float z\nend_header\n";
        return std::pair(file.size(),
                         file + std::string(1024 - file.size(), format == "ascii" ? '\n' : '\0'));
    };
    const auto [binaryHeader, binary] = kilobyte("binary_little_endian", "vertex");
    const auto [asciiHeader, ascii] = kilobyte("ascii", "vertex");
    const auto [faceHeader, faces] = kilobyte("binary_big_endian", "face");
    const std::size_t whole = (1024 - binaryHeader) / 12;

    testing_support::ExpectEachFails<tesk::Mesh>(
        Ply, "huge.ply", "vexa::viewer::ReadPly",
        {
            {binary, "byte " + std::to_string(binaryHeader + whole * 12) + ": file ends inside vertex " +
                         std::to_string(whole + 1) + " of 4000000000"},
            // Seven header lines, then one empty line per byte left.
            {ascii,
             "line " + std::to_string(7 + 1024 - asciiHeader) + ": file ends after 0 of 4000000000 vertices"},
            {faces, "byte " + std::to_string(faceHeader) + ": file is too short for 4000000000 faces"},
        });
}

// ---------------------------------------------------------------------------------------------
// Meshes
// ---------------------------------------------------------------------------------------------

TEST(PlyMesh, FaceListsOfEveryTypeAndNameGiveTheSameTriangles)
{
    struct Variant {
        std::string countType, indexType, name;
    };
    // The common uchar/int lists, signed or not, and lists of other scalar types (read like
    // the vertex properties above).
    const std::vector<Variant> variants = {
        {"uchar", "int", "vertex_indices"},
        {"uchar", "uint", "vertex_index"},
        {"char", "ushort", "vertex_indices"},
        {"int", "double", "vertex_indices"},
    };
    // A quad, a triangle, a two-item list (skipped) and a pentagon, fanned from their first corner.
    const std::vector<std::vector<int>> polygons = {{0, 1, 3, 2}, {2, 1, 0}, {1, 2}, {0, 1, 3, 2, 0}};
    const std::vector<glm::uvec3> expected = {{0, 1, 3}, {0, 3, 2}, {2, 1, 0},
                                              {0, 1, 3}, {0, 3, 2}, {0, 2, 0}};

    for (const std::string& encoding : Encodings) {
        for (const Variant& v : variants) {
            SCOPED_TRACE(encoding + " list " + v.countType + " " + v.indexType + " " + v.name);
            PlyWriter ply(encoding);
            ply.Line("element vertex 4")
                .Line("property float x")
                .Line("property float y")
                .Line("property float z");
            ply.Line("element face 4").Line("property uchar flags");
            ply.Line("property list " + v.countType + " " + v.indexType + " " + v.name);
            ply.Line("property float quality");
            ply.Line("element edge 1").Line("property int vertex1").Line("property int vertex2");
            SquareVertices(ply);
            for (const auto& polygon : polygons) {
                ply.Value("uchar", 7).Value(v.countType, static_cast<double>(polygon.size()));
                for (int index : polygon)
                    ply.Value(v.indexType, index);
                ply.Value("float", 0.5).EndItem();
            }
            ply.Value("int", 0).Value("int", 1).EndItem();

            tesk::Mesh mesh;
            ASSERT_TRUE(Reads(Ply, ply.Bytes(), mesh));
            EXPECT_EQ(mesh.VertexCount(), 4u);
            EXPECT_EQ(FacesOf(mesh), expected);
            EXPECT_EQ(mesh.GetVertices().GetPositions()[3], glm::vec3(1.0f, 1.0f, 0.0f));
        }
    }
}

TEST(PlyMesh, FacesBeforeVerticesAndBadIndicesAreSkippedWithOneWarning)
{
    for (const std::string& encoding : Encodings) {
        SCOPED_TRACE(encoding);
        PlyWriter ply(encoding);
        ply.Line("element material 1").Line("property list uchar uchar name");
        ply.Line("element face 4").Line("property list uchar int vertex_indices");
        ply.Line("element vertex 4")
            .Line("property float x")
            .Line("property float y")
            .Line("property float z");
        ply.Value("uchar", 2).Value("uchar", 65).Value("uchar", 66).EndItem();
        ply.Value("uchar", 3).Value("int", 0).Value("int", 1).Value("int", 2).EndItem();
        ply.Value("uchar", 3).Value("int", 0).Value("int", 9).Value("int", 2).EndItem();
        ply.Value("uchar", 4).Value("int", 3).Value("int", -1).Value("int", 2).Value("int", 1).EndItem();
        ply.Value("uchar", 3).Value("int", 1).Value("int", 3).Value("int", 2).EndItem();
        SquareVertices(ply);

        testing_support::LogCapture log;
        tesk::Mesh mesh;
        ASSERT_TRUE(Reads(Ply, ply.Bytes(), mesh, "order.ply"));
        EXPECT_EQ(mesh.VertexCount(), 4u);
        EXPECT_EQ(FacesOf(mesh), (std::vector<glm::uvec3>{{0, 1, 2}, {1, 3, 2}}));
        EXPECT_TRUE(
            log.Contains("order.ply: skipped 2 faces that refer to missing vertices (first: face 2 of the "
                         "file; 4 vertices)",
                         "vexa::viewer::ReadPly"));
        EXPECT_EQ(log.messages.size(), 1u);
    }
}

TEST(PlyMesh, AsciiFaceLinesEndingInASpaceAreAllRead)
{
    // Laid out as a widely shared scanned model writes it: a space before each face's line end.
    std::string file =
        "ply\nformat ascii 1.0\nelement vertex 4\nproperty float x\nproperty float y\n"
        "property float z\nelement face 9\nproperty list uchar int vertex_indices\nend_header\n";
    for (int i = 0; i < 4; ++i)
        file += std::to_string(i) + " 0.1 0.02\n";
    for (int f = 0; f < 9; ++f)
        file += "3 " + std::to_string(f % 4) + " " + std::to_string((f + 1) % 4) + " " +
                std::to_string((f + 2) % 4) + " \n";
    tesk::Mesh mesh;
    ASSERT_TRUE(Reads(Ply, file, mesh));
    EXPECT_EQ(mesh.VertexCount(), 4u);
    EXPECT_EQ(mesh.FaceCount(), 9u);
    EXPECT_EQ(FacesOf(mesh)[8], glm::uvec3(0, 1, 2));
}

TEST(PlyMesh, NormalAndTextureCoordinateNames)
{
    const std::vector<std::array<std::string, 5>> names = {
        {"nx", "ny", "nz", "s", "t"},
        {"normal_x", "normal_y", "normal_z", "u", "v"},
        {"nx", "ny", "nz", "texture_u", "texture_v"},
        {"normal_x", "normal_y", "normal_z", "texture_s", "texture_t"},
    };
    for (const std::string& encoding : Encodings) {
        for (const auto& n : names) {
            SCOPED_TRACE(encoding + " " + n[0] + " " + n[3]);
            PlyWriter ply(encoding);
            ply.Line("element vertex 2")
                .Line("property float x")
                .Line("property float y")
                .Line("property float z");
            for (const std::string& name : n)
                ply.Line("property float " + name);
            ply.Line("property uchar diffuse_red").Line("property uchar diffuse_green");
            ply.Line("property uchar diffuse_blue").Line("property uchar diffuse_alpha");
            for (int i = 0; i < 2; ++i) {
                ply.Value("float", i).Value("float", 2).Value("float", 3);
                ply.Value("float", 0).Value("float", i).Value("float", 1 - i);
                ply.Value("float", 0.25 * i).Value("float", 0.5);
                ply.Value("uchar", 255).Value("uchar", 0).Value("uchar", 51).Value("uchar", 9).EndItem();
            }
            tesk::Mesh mesh;
            ASSERT_TRUE(Reads(Ply, ply.Bytes(), mesh));
            const tesk::PointCloud& cloud = mesh.GetVertices();
            EXPECT_FALSE(mesh.HasFaces());
            ASSERT_TRUE(cloud.HasNormals());
            EXPECT_EQ(cloud.GetNormals()[1], glm::vec3(0.0f, 1.0f, 0.0f));
            ASSERT_TRUE(mesh.HasUVs());
            EXPECT_EQ(cloud.GetUVs()[1], glm::vec2(0.25f, 0.5f));
            EXPECT_EQ(cloud.GetByteColorProperty("RGB")[0], tesk::Color3b(255, 0, 51));
            EXPECT_EQ(cloud.PropertyCount(), 2u) << "RGB and uv, nothing else";
        }
    }
}

TEST(PlyMesh, FixedStrideFarCoordinatesAreShiftedByTheFirstFinitePoint)
{
    // Lists in the vertex element and far coordinates in big-endian and ASCII files are read
    // above; the fixed-stride binary path decides on the first finite point, past a NaN one.
    PlyWriter ply("binary_little_endian");
    ply.Line("element vertex 2")
        .Line("property double x")
        .Line("property double y")
        .Line("property double z");
    ply.Value("double", std::nan("")).Value("double", 0).Value("double", 0).EndItem();
    ply.Value("double", 5e5 + 0.004).Value("double", 3).Value("double", 0).EndItem();
    tesk::Mesh mesh;
    ASSERT_TRUE(Reads(Ply, ply.Bytes(), mesh));
    EXPECT_EQ(mesh.GetVertices().GetOriginOffset(), glm::dvec3(5e5, 0.0, 0.0));
    EXPECT_NEAR(mesh.GetVertices().GetPositions()[1].x, 0.004, 1e-6);
}

TEST(PlyMesh, BadFaceDataFailsWithItsPlaceAndLeavesTheMeshAlone)
{
    const std::string vertices = "element vertex 3\nproperty float x\nproperty float y\nproperty float z\n";
    const std::string faces = "element face 2\nproperty list uchar int vertex_indices\n";
    const std::string binary = "ply\nformat binary_little_endian 1.0\n" + vertices + faces + "end_header\n";
    const std::string ascii =
        "ply\nformat ascii 1.0\n" + vertices + faces + "end_header\n0 0 0\n1 0 0\n0 1 0\n";
    std::string oneFace(13, '\0');
    oneFace[0] = 3;
    testing_support::ExpectEachFails<tesk::Mesh>(
        Ply, "bad.ply", "vexa::viewer::ReadPly",
        {
            {binary + std::string(36, '\0') + oneFace + "\x04" + std::string(8, '\0'),
             "byte " + std::to_string(binary.size() + 36 + 13) + ": file ends inside face 2 of 2"},
            {binary + std::string(36, '\0') + oneFace,
             "byte " + std::to_string(binary.size() + 36 + 13) + ": file ends inside face 2 of 2"},
            {ascii + "3 0 1 2\n3 0 1\n", "line 14: the line ends early, inside list 'vertex_indices'"},
            {ascii + "3 0 1 2\n3 0 one 2\n", "line 14: 'one' is not a vertex index"},
            {ascii + "3 0 1 2\n3 0 1 2 5\n", "line 14: unexpected values after the last property"},
            {ascii + "3 0 1 2\n", "line 13: file ends after 1 of 2 faces"},
        });
}
