#include "../common/LogCapture.h"

#include <tesk/Mesh.h>

#include <gtest/gtest.h>

#include <limits>
#include <vector>

using tesk::Mesh;
using tesk::PointCloud;

namespace {

// Unit quad in the z = 0 plane split into two counter-clockwise triangles (seen from +z),
// of very different sizes so that area weighting matters at the shared vertices.
Mesh FlatQuad()
{
    PointCloud vertices(std::vector<glm::vec3>{{0, 0, 0}, {4, 0, 0}, {4, 1, 0}, {0, 1, 0}});
    return Mesh(std::move(vertices), {{0, 1, 2}, {0, 2, 3}});
}

} // namespace

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

TEST(Mesh, MaterialIsOptionalAndClampsItsFactors)
{
    Mesh mesh = FlatQuad();
    EXPECT_FALSE(mesh.HasMaterial());

    tesk::MaterialModel material("brick");
    material.SetAlbedoTexture("textures/brick.png");
    testing_support::LogCapture log;
    material.SetSpecular(1.5f);
    material.SetMetallic(std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(material.GetSpecular(), 1.0f);
    EXPECT_EQ(material.GetMetallic(), 0.0f);
    EXPECT_EQ(log.messages.size(), 2u);

    mesh.SetMaterial(material);
    ASSERT_TRUE(mesh.HasMaterial());
    EXPECT_EQ(mesh.GetMaterial()->GetAlbedoTexture(), "textures/brick.png");
}
