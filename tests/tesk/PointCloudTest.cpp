#include "../common/LogCapture.h"

#include <tesk/Mesh.h>
#include <tesk/PointCloud.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

using tesk::Color3f;
using tesk::Mesh;
using tesk::PointCloud;
using tesk::PropertyType;

namespace {

// Unit quad in the z = 0 plane split into two counter-clockwise triangles (seen from +z),
// of very different sizes so that area weighting matters at the shared vertices.
Mesh FlatQuad()
{
    PointCloud vertices(std::vector<glm::vec3>{{0, 0, 0}, {4, 0, 0}, {4, 1, 0}, {0, 1, 0}});
    return Mesh(std::move(vertices), {{0, 1, 2}, {0, 2, 3}});
}

const float notANumber = std::numeric_limits<float>::quiet_NaN();

PointCloud ThreePoints()
{
    return PointCloud(std::vector<glm::vec3>{{0, 0, 0}, {1, 2, 3}, {-1, 5, 2}});
}

bool ContainsText(const testing_support::LogCapture& log, const std::string& text, const std::string& label)
{
    for (const auto& m : log.messages)
        if (m.label == label && m.message.find(text) != std::string::npos)
            return true;
    return false;
}

} // namespace

TEST(PointCloud, RawFloatArraysAreReadAsTriples)
{
    const std::vector<float> xyz = {1, 2, 3, 4, 5, 6, -7, 8.5f, 9};
    const PointCloud bulk(xyz.data(), 3);
    ASSERT_EQ(bulk.Size(), 3u);
    EXPECT_EQ(bulk.GetPositions()[0], glm::vec3(1, 2, 3));
    EXPECT_EQ(bulk.GetPositions()[2], glm::vec3(-7, 8.5f, 9));

    PointCloud normals = bulk;
    ASSERT_TRUE(normals.SetNormals(xyz.data(), 3));
    EXPECT_EQ(normals.GetNormals()[1], glm::vec3(4, 5, 6));

    // A null array is refused without touching what was there.
    testing_support::LogCapture log;
    EXPECT_FALSE(normals.SetPositions(nullptr, 4));
    EXPECT_EQ(normals.Size(), 3u);
    EXPECT_EQ(log.messages.size(), 1u);
}

TEST(PointCloud, ArraysOfTheWrongLengthAreRefusedWithTheirSizes)
{
    PointCloud cloud = ThreePoints();
    testing_support::LogCapture log;

    EXPECT_FALSE(cloud.AddFloatProperty("intensity", std::vector<float>{1, 2}));
    EXPECT_TRUE(ContainsText(log, "\"intensity\" has 2 values but the point cloud has 3 points",
                             "tesk::PointCloud::AddFloatProperty"));
    EXPECT_FALSE(cloud.HasProperty("intensity"));

    const std::vector<Color3f> colors(4);
    EXPECT_FALSE(cloud.AddColorProperty("rgb", colors));
    EXPECT_TRUE(ContainsText(log, "\"rgb\" has 4 values but the point cloud has 3 points",
                             "tesk::PointCloud::AddColorProperty"));

    EXPECT_FALSE(cloud.SetNormals(std::vector<glm::vec3>(2, glm::vec3(0, 0, 1))));
    EXPECT_FALSE(cloud.HasNormals());
    EXPECT_FALSE(cloud.SetUVs(std::vector<glm::vec2>(5, glm::vec2(0.0f))));
    EXPECT_FALSE(cloud.HasUVs());

    EXPECT_FALSE(cloud.AddFloatProperty("", std::vector<float>{1, 2, 3}));
    EXPECT_EQ(cloud.PropertyCount(), 0u);
    EXPECT_EQ(log.messages.size(), 5u);
}

TEST(PointCloud, PropertiesAreTypedAndKeepTheirOrder)
{
    PointCloud cloud = ThreePoints();
    ASSERT_TRUE(cloud.AddColorProperty("rgb", std::vector<Color3f>{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}));
    ASSERT_TRUE(cloud.AddFloatProperty("depth", std::vector<float>{0.5f, 1.5f, 2.5f}));
    ASSERT_TRUE(cloud.SetUVs(std::vector<glm::vec2>{{0, 0}, {1, 0}, {0, 1}}));

    ASSERT_EQ(cloud.PropertyCount(), 3u);
    EXPECT_EQ(cloud.GetProperty(0)->GetName(), "rgb");
    EXPECT_EQ(static_cast<int>(cloud.GetProperty(0)->GetType()), 4);
    EXPECT_EQ(static_cast<int>(cloud.GetProperty(1)->GetType()), 1);
    EXPECT_EQ(cloud.GetProperty(2)->GetType(), PropertyType::UV);
    EXPECT_EQ(cloud.GetProperty(3), nullptr);

    EXPECT_EQ(cloud.GetColorProperty("rgb")[2], Color3f(0, 0, 1));
    EXPECT_EQ(cloud.GetFloatProperty("depth")[1], 1.5f);
    EXPECT_TRUE(cloud.HasUVs());
    EXPECT_EQ(cloud.GetUVs()[1], glm::vec2(1, 0));

    // Asking for another type, or a missing name, gives an empty span rather than garbage.
    EXPECT_TRUE(cloud.GetFloatProperty("rgb").empty());
    EXPECT_TRUE(cloud.GetProperty(1)->GetUVs().empty());
    EXPECT_TRUE(cloud.GetFloatProperty("missing").empty());

    // The same name replaces in place, even with another type.
    ASSERT_TRUE(cloud.AddFloatProperty("rgb", std::vector<float>{7, 8, 9}));
    EXPECT_EQ(cloud.PropertyCount(), 3u);
    EXPECT_EQ(cloud.GetProperty(0)->GetType(), PropertyType::Float);
    EXPECT_EQ(cloud.GetFloatProperty("rgb")[0], 7.0f);

    EXPECT_TRUE(cloud.RemoveProperty(PointCloud::UVPropertyName));
    EXPECT_FALSE(cloud.RemoveProperty("missing"));
    EXPECT_FALSE(cloud.HasUVs());
    EXPECT_TRUE(cloud.GetUVs().empty());

    // Adding points one by one keeps every property one value per point.
    cloud.AddPoint({9, 9, 9});
    EXPECT_EQ(cloud.GetFloatProperty("depth").size(), 4u);
    EXPECT_EQ(cloud.GetFloatProperty("depth")[3], 0.0f);

    // A new point count drops what no longer fits.
    testing_support::LogCapture log;
    cloud.SetPositions(std::vector<glm::vec3>(2, glm::vec3(0.0f)));
    EXPECT_EQ(cloud.PropertyCount(), 0u);
    EXPECT_EQ(log.messages.size(), 1u);
}

TEST(PointCloud, MovedInArraysAreNotCopied)
{
    std::vector<glm::vec3> positions(1000, glm::vec3(1.0f));
    std::vector<float> values(1000, 2.0f);
    const void* positionData = positions.data();
    const void* valueData = values.data();

    PointCloud cloud(std::move(positions));
    ASSERT_TRUE(cloud.AddFloatProperty("v", std::move(values)));
    EXPECT_EQ(static_cast<const void*>(cloud.GetFloatProperty("v").data()), valueData);

    // Moving the whole cloud moves the arrays too.
    const PointCloud moved = std::move(cloud);
    EXPECT_EQ(static_cast<const void*>(moved.GetPositions().data()), positionData);
}

TEST(PointCloud, BoundingBoxSkipsNonFinitePoints)
{
    const float inf = std::numeric_limits<float>::infinity();
    const PointCloud cloud(std::vector<glm::vec3>{
        {notANumber, 100, 100}, {1, 2, 3}, {-1, 5, 2}, {0, -inf, 0}, glm::vec3(notANumber)});
    EXPECT_EQ(cloud.CountNonFinite(), 3u);

    const geom::Aabb3f box = cloud.ComputeBoundingBox();
    EXPECT_EQ(box.min, glm::vec3(-1, 2, 2));
    EXPECT_EQ(box.max, glm::vec3(1, 5, 3));

    EXPECT_TRUE(PointCloud().ComputeBoundingBox().IsEmpty());
    const PointCloud allBad(std::vector<glm::vec3>(2, glm::vec3(notANumber, 0, 0)));
    EXPECT_TRUE(allBad.ComputeBoundingBox().IsEmpty());
}

TEST(Mesh, OutOfRangeFaceIndicesAreReported)
{
    Mesh mesh = FlatQuad();
    EXPECT_TRUE(mesh.ValidateFaces());
    EXPECT_FALSE(mesh.FindInvalidFace().has_value());

    const std::vector<std::uint32_t> indices = {0, 1, 2, 0, 2, 3, 1, 4, 2, 7, 0, 1};
    ASSERT_TRUE(mesh.SetFaces(indices.data(), 4));
    EXPECT_EQ(mesh.FaceCount(), 4u);
    EXPECT_EQ(mesh.GetFaces()[2], glm::uvec3(1, 4, 2));
    EXPECT_EQ(mesh.FindInvalidFace(), 2u);
    EXPECT_EQ(mesh.CountInvalidFaces(), 2u);

    testing_support::LogCapture log;
    EXPECT_FALSE(mesh.ValidateFaces("vexa::draw::MeshRenderer"));
    EXPECT_TRUE(
        log.Contains("2 of 4 faces refer to vertices past the end; the first is face 2 (1, 4, 2) but the "
                     "mesh has 4 vertices",
                     "vexa::draw::MeshRenderer"));

    // Index 4 becomes valid once there is a fifth vertex: faces are checked against the
    // vertices as they are when asked, not when the faces were set.
    mesh.GetVertices().AddPoint({2, 2, 0});
    EXPECT_EQ(mesh.CountInvalidFaces(), 1u);
}

TEST(Mesh, VertexNormalsOfAFlatQuadPointUp)
{
    Mesh mesh = FlatQuad();
    ASSERT_FALSE(mesh.HasNormals());
    ASSERT_TRUE(mesh.ComputeVertexNormals());
    ASSERT_TRUE(mesh.HasNormals());
    for (const glm::vec3& n : mesh.GetVertices().GetNormals())
        EXPECT_EQ(n, glm::vec3(0, 0, 1));

    // A vertex shared by a large and a small face leans towards the large one.
    PointCloud bent(std::vector<glm::vec3>{{0, 0, 0}, {10, 0, 0}, {0, 10, 0}, {0, 0, 1}, {9, 9, 9}});
    Mesh fold(std::move(bent), {{0, 1, 2}, {0, 3, 1}, {0, 1, 7}});
    testing_support::LogCapture log;
    ASSERT_TRUE(fold.ComputeVertexNormals());
    const glm::vec3 shared = fold.GetVertices().GetNormals()[0];
    EXPECT_GT(shared.z, 0.9f); // big face in the xy plane (normal +z), small one in xz (normal +y)
    EXPECT_GT(shared.y, 0.0f);
    EXPECT_NEAR(glm::length(shared), 1.0f, 1e-5f);
    EXPECT_EQ(fold.GetVertices().GetNormals()[4], glm::vec3(0.0f)); // on no face

    Mesh points(PointCloud(std::vector<glm::vec3>(3, glm::vec3(0.0f))));
    EXPECT_FALSE(points.ComputeVertexNormals());
    EXPECT_FALSE(points.HasNormals());
}

TEST(Mesh, MaterialClampsItsFactors)
{
    tesk::MaterialModel material("brick");
    testing_support::LogCapture log;
    material.SetSpecular(1.5f);
    material.SetMetallic(std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(material.GetSpecular(), 1.0f);
    EXPECT_EQ(material.GetMetallic(), 0.0f);
    EXPECT_EQ(log.messages.size(), 2u);
}
