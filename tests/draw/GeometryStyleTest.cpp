#include <vexa/draw/ElementRenderer.h>
#include <vexa/draw/GeometryName.h>
#include <vexa/draw/GeometryRenderer.h>
#include <vexa/draw/GeometryStyle.h>

#include <plor/Gl.h>

#include "LogCapture.h"

#include <gtest/gtest.h>

#include <glm/glm.hpp>

#include <cstdint>
#include <set>
#include <string>
#include <vector>

using namespace vexa::draw;

TEST(GeometryNameTest, CaptionsAreDistinctAndUnknownValuesAreNamed)
{
    std::set<std::string> captions;
    for (int i = 0; i < kGeometryCount; ++i)
        captions.insert(GetGeometryCaption(static_cast<GeometryName>(i)));
    EXPECT_EQ(captions.size(), static_cast<std::size_t>(kGeometryCount));
    EXPECT_STREQ(GetGeometryCaption(GeometryName::Box), "Box");
    EXPECT_STREQ(GetGeometryCaption(GeometryName::Camera), "Camera");
    EXPECT_STREQ(GetGeometryCaption(static_cast<GeometryName>(kGeometryCount)), "Unknown");
}

TEST(GeometryRendererTest, EveryShapeIsWellFormedAndFacesOutward)
{
    for (int i = 0; i < kGeometryCount; ++i) {
        const auto name = static_cast<GeometryName>(i);
        SCOPED_TRACE(GetGeometryCaption(name));
        const SurfaceData s = GeometryRenderer::MakeSurface(name);
        ASSERT_FALSE(s.positions.empty());
        ASSERT_EQ(s.normals.size(), s.positions.size());
        ASSERT_EQ(s.uvs.size(), s.positions.size());
        ASSERT_FALSE(s.triangles.empty());
        ASSERT_EQ(s.triangles.size() % 3, 0u);
        for (const std::uint32_t index : s.triangles)
            ASSERT_LT(index, s.positions.size());
        for (const glm::vec3& n : s.normals)
            ASSERT_NEAR(glm::length(n), 1.0f, 1e-4f);
        for (const glm::vec2& uv : s.uvs) {
            ASSERT_GE(uv.x, 0.0f);
            ASSERT_LE(uv.x, 1.0f);
            ASSERT_GE(uv.y, 0.0f);
            ASSERT_LE(uv.y, 1.0f);
        }
        // Counter-clockwise winding must agree with the stored normals, or culling and
        // flat shading would show the inside.
        for (std::size_t t = 0; t < s.triangles.size(); t += 3) {
            const std::uint32_t a = s.triangles[t], b = s.triangles[t + 1], c = s.triangles[t + 2];
            const glm::vec3 face = glm::cross(s.positions[b] - s.positions[a], s.positions[c] - s.positions[a]);
            ASSERT_GT(glm::length(face), 0.0f) << "degenerate triangle " << t / 3;
            const glm::vec3 vertexNormals = s.normals[a] + s.normals[b] + s.normals[c];
            ASSERT_GT(glm::dot(face, vertexNormals), 0.0f) << "triangle " << t / 3 << " is wound inward";
        }
    }
}

TEST(GeometryRendererTest, ShapesHaveTheSizesTheirUsersScaleBy)
{
    const auto bounds = [](GeometryName name) { return GeometryRenderer(name).GetBoundingBox(); };
    const float eps = 1e-5f;

    // The box is scaled by a box's extent and the sphere by a radius.
    const auto box = bounds(GeometryName::Box);
    EXPECT_NEAR(glm::distance(box.min, glm::vec3(-0.5f)), 0.0f, eps);
    EXPECT_NEAR(glm::distance(box.max, glm::vec3(0.5f)), 0.0f, eps);
    EXPECT_EQ(GeometryRenderer(GeometryName::Box).GetVertexCount(), 24u);
    EXPECT_EQ(GeometryRenderer(GeometryName::Box).GetTriangleCount(), 12u);

    for (const glm::vec3& p : GeometryRenderer::MakeSurface(GeometryName::Sphere).positions)
        ASSERT_NEAR(glm::length(p), 1.0f, 1e-5f);
    const auto sphere = bounds(GeometryName::Sphere);
    EXPECT_NEAR(sphere.max.y, 1.0f, eps);
    EXPECT_NEAR(sphere.min.y, -1.0f, eps);

    const auto plane = bounds(GeometryName::Plane);
    EXPECT_EQ(plane.min.y, 0.0f);
    EXPECT_EQ(plane.max.y, 0.0f);
    EXPECT_NEAR(plane.max.x - plane.min.x, 1.0f, eps);
    EXPECT_EQ(GeometryRenderer::MakeSurface(GeometryName::Plane).normals[0], glm::vec3(0.0f, 1.0f, 0.0f));

    for (const GeometryName name : {GeometryName::Cylinder, GeometryName::Cone, GeometryName::Torus}) {
        const auto b = bounds(name);
        EXPECT_TRUE(glm::all(glm::greaterThanEqual(b.min, glm::vec3(-0.5f - eps))));
        EXPECT_TRUE(glm::all(glm::lessThanEqual(b.max, glm::vec3(0.5f + eps))));
    }

    const auto arrow = bounds(GeometryName::Arrow);
    EXPECT_NEAR(arrow.min.z, 0.0f, eps);
    EXPECT_NEAR(arrow.max.z, 1.0f, eps);

    // The camera marker's eye is at the origin and it looks along -Z; its up marker is +Y.
    const SurfaceData camera = GeometryRenderer::MakeSurface(GeometryName::Camera);
    const auto cameraBox = bounds(GeometryName::Camera);
    EXPECT_NEAR(cameraBox.max.z, 0.0f, eps);
    EXPECT_NEAR(cameraBox.min.z, -1.0f, eps);
    EXPECT_GT(cameraBox.max.y, -cameraBox.min.y);
    EXPECT_EQ(camera.positions[0], glm::vec3(0.0f));
    ASSERT_EQ(camera.lines.size(), 2u);
    // Its optical axis is a wire edge of its own besides the faces' edges.
    EXPECT_EQ(GeometryRenderer(GeometryName::Camera).GetEdgeCount(), camera.triangles.size() + 1);
}

TEST(ElementRendererTest, RefusesBadIndicesAndKeepsThePreviousSurface)
{
    testing_support::LogCapture log;
    ElementRenderer renderer(GeometryRenderer::MakeSurface(GeometryName::Box));
    const auto boxBounds = renderer.GetBoundingBox();

    SurfaceData outOfRange;
    outOfRange.positions = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    outOfRange.triangles = {0, 1, 3};
    EXPECT_FALSE(renderer.SetSurface(outOfRange));
    ASSERT_EQ(log.messages.size(), 1u);
    EXPECT_EQ(log.messages[0].level, rlog::Level::Failure);
    EXPECT_EQ(log.messages[0].label, "vexa::draw::ElementRenderer::SetSurface");
    EXPECT_NE(log.messages[0].message.find("index 3"), std::string::npos) << log.messages[0].message;
    EXPECT_NE(log.messages[0].message.find("3 vertices"), std::string::npos) << log.messages[0].message;

    SurfaceData badLine = outOfRange;
    badLine.triangles = {0, 1, 2};
    badLine.lines = {0, 7};
    EXPECT_FALSE(renderer.SetSurface(badLine));

    SurfaceData notTriangles = outOfRange;
    notTriangles.triangles = {0, 1};
    EXPECT_FALSE(renderer.SetSurface(notTriangles));

    EXPECT_EQ(renderer.GetVertexCount(), 24u);
    EXPECT_EQ(renderer.GetTriangleCount(), 12u);
    EXPECT_EQ(renderer.GetBoundingBox(), boxBounds);
    EXPECT_EQ(log.messages.size(), 3u);
}

TEST(ElementRendererTest, ComputesAreaWeightedNormalsAndUniqueEdges)
{
    // Two faces share vertex 0: a large one in the XY plane (+Z) and a small one in the
    // XZ plane (+Y), so the shared normal leans towards +Z.
    SurfaceData data;
    data.positions = {{0, 0, 0}, {4, 0, 0}, {0, 4, 0}, {0, 0, -1}, {1, 0, 0}};
    data.triangles = {0, 1, 2, 0, 4, 3};
    data.uvs = {{0, 0}}; // wrong size: dropped with a warning
    const std::vector<glm::vec3> normals = ElementRenderer::ComputeNormals(data.positions, data.triangles);
    EXPECT_NEAR(glm::length(normals[0]), 1.0f, 1e-5f);
    EXPECT_GT(normals[0].z, normals[0].y * 4.0f);
    EXPECT_GT(normals[0].y, 0.0f);
    EXPECT_NEAR(glm::distance(normals[1], glm::vec3(0, 0, 1)), 0.0f, 1e-5f);
    EXPECT_NEAR(glm::distance(normals[3], glm::vec3(0, 1, 0)), 0.0f, 1e-5f);

    testing_support::LogCapture log;
    ElementRenderer renderer;
    ASSERT_TRUE(renderer.SetSurface(data));
    EXPECT_FALSE(renderer.HasUvs());
    EXPECT_EQ(log.messages.size(), 1u);
    EXPECT_EQ(renderer.GetBoundingBox().min, glm::vec3(0, 0, -1));
    EXPECT_EQ(renderer.GetBoundingBox().max, glm::vec3(4, 4, 0));

    // Two triangles sharing an edge have five distinct edges; an extra line that repeats
    // an edge adds nothing, a new one adds one, a degenerate one is dropped.
    const std::vector<std::uint32_t> quad = {0, 1, 2, 2, 1, 3};
    EXPECT_EQ(ElementRenderer::CollectEdges(quad, {}).size(), 10u);
    const std::vector<std::uint32_t> lines = {2, 1, 0, 3, 4, 4};
    const std::vector<std::uint32_t> edges = ElementRenderer::CollectEdges(quad, lines);
    EXPECT_EQ(edges.size(), 12u);
    const std::vector<std::uint32_t> expected = {0, 1, 0, 2, 0, 3, 1, 2, 1, 3, 2, 3};
    EXPECT_EQ(edges, expected);
}

TEST(ElementRendererTest, CustomColorsMustMatchTheVertexCount)
{
    testing_support::LogCapture log;
    ElementRenderer renderer(GeometryRenderer::MakeSurface(GeometryName::Plane));
    const std::vector<tesk::Color3f> three(3, tesk::Color3f(1, 0, 0));
    EXPECT_FALSE(renderer.SetCustomColors(three));
    EXPECT_FALSE(renderer.HasCustomColors());
    EXPECT_TRUE(log.Contains("Got 3 colours for 4 vertices; keeping the previous colours",
                             "vexa::draw::ElementRenderer::SetCustomColors"));

    const std::vector<tesk::Color3f> four(4, tesk::Color3f(1, 0, 0));
    EXPECT_TRUE(renderer.SetCustomColors(four));
    EXPECT_TRUE(renderer.HasCustomColors());
    // Colours of another vertex count no longer fit the new surface.
    ASSERT_TRUE(renderer.SetSurface(GeometryRenderer::MakeSurface(GeometryName::Box)));
    EXPECT_FALSE(renderer.HasCustomColors());
}

