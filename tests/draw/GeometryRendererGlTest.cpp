// The geometry renderers: the shapes they build (no GL needed) and pixel tests drawn by hand
// with a context of their own. The pixel tests need a display: run them under
// `xvfb-run -a -s "-noreset -screen 0 1280x1024x24" ctest ...`.

#include "GlTestSupport.h"
#include "LogCapture.h"

#include <vexa/draw/ElementRenderer.h>
#include <vexa/draw/GeometryName.h>
#include <vexa/draw/GeometryRenderer.h>
#include <vexa/draw/GeometryStyle.h>

#include <plor/Texture.h>

#include <glm/gtc/quaternion.hpp>

#include <string>

using namespace vexa::draw;
using gl_test_support::Pixels;
using gl_test_support::Rgba;

namespace {

const Rgba kDark{20, 30, 40, 255};
const Rgba kRed{255, 0, 0, 255};

constexpr auto IsDark = [](const Rgba& c) { return gl_test_support::Near(c, kDark); };
constexpr auto IsShape = [](const Rgba& c) { return !IsDark(c); };

::testing::AssertionResult Matches(const Rgba& actual, const Rgba& expected, int tolerance = 12)
{
    return gl_test_support::Looks(actual, expected, tolerance);
}

GeometryStyle FlatStyle(const tesk::Color3f& color, int renderMode = RenderMode::Solid)
{
    GeometryStyle style;
    style.renderMode = renderMode;
    style.material.color = color;
    style.material.useLighting = false;
    return style;
}

/// FlatStyle turning the plane (normal +Y) to face +Z.
GeometryStyle FacingPlane(const tesk::Color3f& color)
{
    GeometryStyle style = FlatStyle(color);
    style.transform.SetRotation(glm::angleAxis(glm::radians(90.0f), glm::vec3(1.0f, 0.0f, 0.0f)));
    return style;
}

class GeometryRendererGlTest : public gl_test_support::GlTest {
protected:
    void SetUp() override
    {
        GlTest::SetUp();
        std::vector<std::uint8_t> pixels;
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x) {
                const std::uint8_t v = (x + y) % 2 == 0 ? 240 : 60;
                pixels.insert(pixels.end(), {v, v, v});
            }
        checker_ = std::make_unique<plor::Texture>(tesk::Image(8, 8, 3, std::move(pixels)));
        checker_->SetFilter(plor::TextureFilter::Nearest);
    }

    void TearDown() override
    {
        checker_.reset();
        GlTest::TearDown();
    }

    /// Lit by a key light from the upper left front and a weaker fill from the right.
    RenderContext MakeLitContext(const glm::vec3& eye)
    {
        RenderContext context = MakeContext(eye);
        Light key;
        key.direction = {0.4f, -0.5f, -1.0f};
        key.cameraRelative = false;
        Light fill;
        fill.direction = {-1.0f, 0.0f, 0.0f};
        fill.intensity = 0.3f;
        fill.cameraRelative = false;
        context.lights = {key, fill};
        context.checkerTexture = checker_.get();
        return context;
    }

    Pixels Draw(Renderer& renderer, const GeometryStyle& style, const RenderContext& context)
    {
        return DrawDirect([&] { renderer.Render(context, style); }, kDark);
    }

    std::unique_ptr<plor::Texture> checker_;
};

} // namespace

TEST_F(GeometryRendererGlTest, SolidBoxFillsItsPlaceWithTheMaterialColour)
{
    GeometryRenderer box(GeometryName::Box);
    GeometryStyle style = FlatStyle({1.0f, 0.0f, 0.0f});
    const RenderContext context = MakeLitContext({0.0f, 0.0f, 3.0f});

    Pixels picture = Draw(box, style, context);
    EXPECT_TRUE(Matches(picture.At(kMid + 25, kMid - 25), kRed));
    EXPECT_TRUE(IsDark(picture.At(kMid + 40, kMid)));

    // The model transform moves and shrinks it: the middle is empty, its new place is red.
    style.transform = tesk::Transform({0.6f, 0.0f, 0.0f}, glm::quat(1.0f, 0.0f, 0.0f, 0.0f), glm::vec3(0.5f));
    picture = Draw(box, style, context);
    EXPECT_TRUE(IsDark(picture.At(kMid, kMid)));
    EXPECT_TRUE(Matches(picture.At(ToPixel(context.viewProjection, {0.6f, 0.0f, 0.25f})), kRed));

    // Hidden styles draw nothing; released GPU objects come back at the next frame.
    style.visible = false;
    EXPECT_EQ(Draw(box, style, context).Count(IsShape), 0);
    style.visible = true;
    box.ReleaseGpuResources();
    EXPECT_TRUE(
        Matches(Draw(box, style, context).At(ToPixel(context.viewProjection, {0.6f, 0.0f, 0.25f})), kRed));
}

TEST_F(GeometryRendererGlTest, WiresOutlineTheBoxAndPointsDotItsCorners)
{
    GeometryRenderer box(GeometryName::Box);
    GeometryStyle style = FlatStyle({0.0f, 1.0f, 0.0f}, RenderMode::Wires);
    style.wireThickness = 2.0f;
    const RenderContext context = MakeLitContext({0.0f, 0.0f, 3.0f});
    const int front = static_cast<int>(ToPixel(context.viewProjection, {0.5f, 0.0f, 0.5f}).x) - kMid;

    Pixels picture = Draw(box, style, context);
    // Inside the face but away from its diagonal and from the far face's outline.
    EXPECT_TRUE(IsDark(picture.At(kMid + 12, kMid)));
    EXPECT_TRUE(IsDark(picture.At(kMid + front + 8, kMid)));
    // Alone, wires take the surface colour (green), not the dark wire colour.
    EXPECT_TRUE(Matches(picture.At(kMid + front, kMid), {0, 255, 0}, 40));
    EXPECT_GT(picture.Count(IsShape, kMid - front - 2, kMid - 2, kMid - front + 3, kMid + 3), 0);
    const int thin = picture.Count(IsShape);

    // Thickness is in pixels, so thicker wires cover clearly more of the picture.
    style.wireThickness = 6.0f;
    EXPECT_GT(Draw(box, style, context).Count(IsShape), thin * 2);

    // Over faces: the front face hides the far outline, its own edges are dark.
    style = FlatStyle({1.0f, 0.0f, 0.0f}, RenderMode::SolidAndWires);
    style.wireThickness = 2.0f;
    style.wireColor = {0.0f, 0.0f, 0.0f};
    picture = Draw(box, style, context);
    EXPECT_TRUE(Matches(picture.At(kMid + 12, kMid), kRed));
    const int far = static_cast<int>(ToPixel(context.viewProjection, {0.5f, 0.0f, -0.5f}).x);
    EXPECT_TRUE(Matches(picture.At(far, kMid), kRed)) << "the far face's edge shows through";
    EXPECT_TRUE(Matches(picture.At(kMid, kMid), {0, 0, 0}, 20)) << "the front diagonal is missing";
    EXPECT_TRUE(Matches(picture.At(kMid + front, kMid), {0, 0, 0}, 20));

    // Points are round dots at the vertices.
    style = FlatStyle({1.0f, 1.0f, 1.0f}, RenderMode::Points);
    style.pointSize = 16.0f;
    picture = Draw(box, style, context);
    EXPECT_TRUE(IsDark(picture.At(kMid, kMid))) << "no vertex in the middle of the face";
    for (const glm::vec3 corner : {glm::vec3(0.5f, 0.5f, 0.5f), glm::vec3(-0.5f, -0.5f, 0.5f)}) {
        const glm::vec2 p = ToPixel(context.viewProjection, corner);
        EXPECT_TRUE(Matches(picture.At(p), {255, 255, 255}));
        EXPECT_TRUE(Matches(picture.At(p + glm::vec2(0.0f, 5.0f)), {255, 255, 255}));
        // Inside the square sprite but outside its disc.
        const glm::vec2 diagonal = p + glm::vec2(7.0f, -7.0f) * glm::sign(glm::vec2(corner.x, -corner.y));
        EXPECT_TRUE(IsDark(picture.At(diagonal)));
    }
    // Points & Wires joins the two.
    style.pointSize = 4.0f;
    const int dots = Draw(box, style, context).Count(IsShape);
    style.renderMode = RenderMode::PointsAndWires;
    EXPECT_GT(Draw(box, style, context).Count(IsShape), dots + 100);
}

TEST_F(GeometryRendererGlTest, CullingRemovesBackFaces)
{
    // A plane turned to face +Z, seen from behind.
    GeometryRenderer plane(GeometryName::Plane);
    GeometryStyle style = FacingPlane({1.0f, 0.0f, 0.0f});
    const RenderContext behind = MakeLitContext({0.0f, 0.0f, -2.0f});
    EXPECT_TRUE(Matches(Draw(plane, style, behind).At(kMid, kMid), kRed));
    style.cullBackFacing = true;
    EXPECT_TRUE(IsDark(Draw(plane, style, behind).At(kMid, kMid)));
    EXPECT_TRUE(Matches(Draw(plane, style, MakeLitContext({0.0f, 0.0f, 2.0f})).At(kMid, kMid), kRed));
}

TEST_F(GeometryRendererGlTest, NormalDisplayReachesBeyondTheSilhouette)
{
    GeometryRenderer sphere(GeometryName::Sphere);
    GeometryStyle style = FlatStyle({0.5f, 0.5f, 0.5f});
    style.normalColor = {1.0f, 1.0f, 0.0f};
    style.normalLength = 0.6f;
    const RenderContext context = MakeLitContext({0.0f, 0.0f, 4.0f});
    // The silhouette of a unit sphere seen from 4 units away, plus a margin.
    const int radius = static_cast<int>(std::tan(std::asin(0.25f)) / std::tan(glm::radians(22.5f)) *
                                        static_cast<float>(kMid)) +
                       3;

    const auto countOutside = [radius](const Pixels& picture, bool yellowOnly) {
        int count = 0;
        for (int y = 0; y < kSize; ++y)
            for (int x = 0; x < kSize; ++x) {
                const int dx = x - kMid, dy = y - kMid;
                if (dx * dx + dy * dy <= radius * radius || IsDark(picture.At(x, y)))
                    continue;
                const Rgba c = picture.At(x, y);
                count += !yellowOnly || (c.r > 150 && c.g > 150 && c.b < 100) ? 1 : 0;
            }
        return count;
    };

    EXPECT_EQ(countOutside(Draw(sphere, style, context), false), 0) << "the sphere is larger than radius 1";
    style.showNormals = true;
    EXPECT_GT(countOutside(Draw(sphere, style, context), true), 50);
    // Flat normals start from the face centres and still stick out.
    style.normalsSource = NormalsSource::Flat;
    EXPECT_GT(countOutside(Draw(sphere, style, context), true), 50);
}

TEST_F(GeometryRendererGlTest, ColourSourcesPaintTheSurface)
{
    GeometryRenderer box(GeometryName::Box);
    GeometryStyle style = FlatStyle({1.0f, 0.0f, 0.0f});
    style.colorMode = ColorMode::Normals;
    style.material.useLighting = true;
    const RenderContext front = MakeLitContext({0.0f, 0.0f, 3.0f});
    // The face towards +Z shows its normal as colour: bluish, with or without flat normals.
    EXPECT_TRUE(Matches(Draw(box, style, front).At(kMid, kMid), {128, 128, 255}, 8));
    style.normalsSource = NormalsSource::Flat;
    EXPECT_TRUE(
        Matches(Draw(box, style, MakeLitContext({3.0f, 0.0f, 0.0f})).At(kMid, kMid), {255, 128, 128}, 8));

    // Per-point colours: the lower edge of a plane red, the upper edge green.
    GeometryRenderer plane(GeometryName::Plane);
    style = FacingPlane({0.0f, 0.0f, 1.0f});
    style.colorMode = ColorMode::PerPoint;
    const RenderContext context = MakeLitContext({0.0f, 0.0f, 2.0f});
    EXPECT_TRUE(Matches(Draw(plane, style, context).At(kMid, kMid), {0, 0, 255}))
        << "without colours: material";
    const std::vector<tesk::Color3f> colors = {{1, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 1, 0}};
    ASSERT_TRUE(plane.SetCustomColors(colors));
    Pixels picture = Draw(plane, style, context);
    const Rgba low = picture.At(ToPixel(context.viewProjection, {0.0f, -0.4f, 0.0f}));
    const Rgba high = picture.At(ToPixel(context.viewProjection, {0.0f, 0.4f, 0.0f}));
    EXPECT_TRUE(gl_test_support::IsRed(low)) << low;
    EXPECT_TRUE(gl_test_support::IsGreen(high)) << high;
    EXPECT_LT(picture.At(kMid, kMid).b, 10);
}

TEST_F(GeometryRendererGlTest, CheckerAndTextureModesUseTheirTextures)
{
    GeometryRenderer plane(GeometryName::Plane);
    GeometryStyle style = FacingPlane({1.0f, 0.0f, 0.0f});
    style.colorMode = ColorMode::Checker;
    RenderContext context = MakeLitContext({0.0f, 0.0f, 2.0f});

    const auto countTones = [](const Pixels& picture) {
        int light = 0, dark = 0;
        for (int y = kMid - 30; y < kMid + 30; ++y)
            for (int x = kMid - 30; x < kMid + 30; ++x) {
                const Rgba c = picture.At(x, y);
                if (c.r != c.g || c.g != c.b)
                    continue;
                if (c.r > 200)
                    ++light;
                else if (c.r < 90)
                    ++dark;
            }
        return std::min(light, dark);
    };
    EXPECT_GT(countTones(Draw(plane, style, context)), 300);
    // Without a shared checker the renderer brings its own.
    context.checkerTexture = nullptr;
    EXPECT_GT(countTones(Draw(plane, style, context)), 300);
    // Texture mode without a texture falls back to the checker.
    style.colorMode = ColorMode::Texture;
    EXPECT_GT(countTones(Draw(plane, style, context)), 300);
}

TEST(GeometryRendererTest, EveryShapeIsWellFormedAndFacesOutward)
{
    for (int i = 0; i < kGeometryCount; ++i) {
        const auto name = static_cast<GeometryName>(i);
        SCOPED_TRACE(GetGeometryCaption(name));
        const SurfaceData s = GeometryRenderer::MakeSurface(name);
        ASSERT_EQ(s.normals.size(), s.positions.size());
        ASSERT_EQ(s.uvs.size(), s.positions.size());
        ASSERT_FALSE(s.triangles.empty());
        ASSERT_EQ(s.triangles.size() % 3, 0u);
        for (const std::uint32_t index : s.triangles)
            ASSERT_LT(index, s.positions.size());
        for (const glm::vec3& n : s.normals)
            ASSERT_NEAR(glm::length(n), 1.0f, 1e-4f);
        for (const glm::vec2& uv : s.uvs)
            ASSERT_TRUE(glm::all(glm::greaterThanEqual(uv, glm::vec2(0.0f))) &&
                        glm::all(glm::lessThanEqual(uv, glm::vec2(1.0f))));
        // Counter-clockwise winding must agree with the stored normals, or culling and
        // flat shading would show the inside.
        for (std::size_t t = 0; t < s.triangles.size(); t += 3) {
            const std::uint32_t a = s.triangles[t], b = s.triangles[t + 1], c = s.triangles[t + 2];
            const glm::vec3 face =
                glm::cross(s.positions[b] - s.positions[a], s.positions[c] - s.positions[a]);
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

    for (const glm::vec3& p : GeometryRenderer::MakeSurface(GeometryName::Sphere).positions)
        ASSERT_NEAR(glm::length(p), 1.0f, 1e-5f);

    // The camera marker's eye is at the origin and it looks along -Z; its up marker is +Y.
    const SurfaceData camera = GeometryRenderer::MakeSurface(GeometryName::Camera);
    const auto cameraBox = bounds(GeometryName::Camera);
    EXPECT_NEAR(cameraBox.max.z, 0.0f, eps);
    EXPECT_NEAR(cameraBox.min.z, -1.0f, eps);
    EXPECT_GT(cameraBox.max.y, -cameraBox.min.y);
    EXPECT_EQ(camera.positions[0], glm::vec3(0.0f));
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
    EXPECT_FALSE(renderer.SetCustomColors(std::vector<tesk::Color3f>(3, tesk::Color3f(1, 0, 0))));
    EXPECT_FALSE(renderer.HasCustomColors());
    EXPECT_TRUE(log.Contains("Got 3 colours for 4 vertices; keeping the previous colours",
                             "vexa::draw::ElementRenderer::SetCustomColors"));

    EXPECT_TRUE(renderer.SetCustomColors(std::vector<tesk::Color3f>(4, tesk::Color3f(1, 0, 0))));
    // Colours of another vertex count no longer fit the new surface.
    ASSERT_TRUE(renderer.SetSurface(GeometryRenderer::MakeSurface(GeometryName::Box)));
    EXPECT_FALSE(renderer.HasCustomColors());
}
