// Mesh renderer: what a mesh looks like on screen in its colour sources and normal modes,
// and how broken meshes are handled. The drawing tests need a display: run them under
// `xvfb-run -a -s "-noreset -screen 0 1280x1024x24" ctest ...`.

#include "GlTestSupport.h"
#include "LogCapture.h"
#include "TempFolder.h"

#include <vexa/draw/GeometryStyle.h>
#include <vexa/draw/MeshRenderer.h>

#include <plor/Texture.h>

#include <tesk/Image.h>
#include <tesk/Mesh.h>

#include <limits>
#include <string>

using namespace vexa::draw;
using namespace gl_test_support;

namespace {

/// The square -1..1 in the XY plane facing +Z, corners counter-clockwise from the bottom
/// left, as two triangles; UVs 0..`uvScale` with v running up.
tesk::Mesh MakeQuad(float uvScale = 0.0f)
{
    tesk::PointCloud vertices(std::vector<glm::vec3>{{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}});
    if (uvScale > 0.0f)
        vertices.SetUVs(std::vector<glm::vec2>{{0, 0}, {uvScale, 0}, {uvScale, uvScale}, {0, uvScale}});
    return tesk::Mesh(std::move(vertices), {{0, 1, 2}, {0, 2, 3}});
}

std::shared_ptr<GeometryStyle> UnlitStyle(int colorMode, const tesk::Color3f& color = {0.2f, 0.6f, 0.2f})
{
    auto style = std::make_shared<GeometryStyle>();
    style->colorMode = colorMode;
    style->material.color = color;
    style->material.useLighting = false;
    return style;
}

/// Looks at the origin from +Z, so that the quad above covers the middle of the picture.
class MeshRendererGlTest : public GlTest {
protected:
    void SetUp() override
    {
        GlTest::SetUp();
        if (!HasFatalFailure())
            LookAtOriginFrom({0.0f, 0.0f, 4.0f});
    }

    Rgba At(const Pixels& pixels, const glm::vec3& world) const { return pixels.At(ToPixel(world)); }
};

TEST_F(MeshRendererGlTest, LitMeshColoursItsMiddleByItsNormals)
{
    auto style = std::make_shared<GeometryStyle>();
    style->material.color = {1.0f, 0.0f, 0.0f};
    style->material.specular = 0.0f;

    // Normals computed from the faces face the default key light.
    const Pixels computed = Render(std::make_shared<MeshRenderer>(MakeQuad()), style);
    const Rgba middle = computed.At(kSize / 2, kSize / 2);
    EXPECT_GT(middle.r, 150) << middle;
    EXPECT_LT(middle.g, 40) << middle;
    EXPECT_TRUE(IsBackground(computed.At(2, 2))) << computed.At(2, 2);

    // The mesh's own normals are used: turned away from the lights, only ambient light is left.
    tesk::Mesh away = MakeQuad();
    away.GetVertices().SetNormals(std::vector<glm::vec3>(4, glm::vec3(0, 0, -1)));
    auto awayRenderer = std::make_shared<MeshRenderer>(away);
    EXPECT_TRUE(awayRenderer->HasMeshNormals());
    const Rgba dim = Render(awayRenderer, style).At(kSize / 2, kSize / 2);
    EXPECT_LT(dim.r, 100) << dim;
    EXPECT_GT(dim.r, 30) << "never black " << dim;

    // Flat normals come from the faces whatever the mesh says.
    style->normalsSource = NormalsSource::Flat;
    EXPECT_TRUE(Looks(Render(awayRenderer, style).At(kSize / 2, kSize / 2), middle, 6));
}

TEST_F(MeshRendererGlTest, TexturedQuadShowsTheTextureUpright)
{
    // Top row red, bottom row blue.
    const testing_support::TempFolder folder;
    const std::string path = folder.PathOf("albedo.png");
    const tesk::Image image(2, 2, 3, std::vector<std::uint8_t>{255, 0, 0, 255, 0, 0, 0, 0, 255, 0, 0, 255});
    ASSERT_TRUE(image.SavePng(path));

    tesk::Mesh mesh = MakeQuad(1.0f);
    tesk::MaterialModel material("painted");
    material.SetAlbedoTexture(path);
    mesh.SetMaterial(material);
    auto renderer = std::make_shared<MeshRenderer>(mesh);
    ASSERT_TRUE(renderer->HasAlbedoTexturePath());

    auto style = UnlitStyle(ColorMode::Texture);
    style->albedoTexture = renderer->GetAlbedoTexture();
    ASSERT_NE(style->albedoTexture, nullptr);
    EXPECT_EQ(renderer->GetAlbedoTexture(), style->albedoTexture) << "the file is read once";
    Pixels pixels = Render(renderer, style);
    const Rgba top = At(pixels, {0.0f, 0.5f, 0.0f});
    const Rgba bottom = At(pixels, {0.0f, -0.5f, 0.0f});
    EXPECT_TRUE(top.r > 200 && top.b < 50) << "top " << top;
    EXPECT_TRUE(bottom.b > 200 && bottom.r < 50) << "bottom " << bottom;

    // Without a texture in the style, texture mode still shows the mesh's own.
    style->albedoTexture.reset();
    pixels = Render(renderer, style);
    EXPECT_TRUE(Near(At(pixels, {0.0f, 0.5f, 0.0f}), top, 4));

    // A missing file is named once in the log and leaves the mesh without a texture.
    testing_support::LogCapture log;
    material.SetAlbedoTexture(folder.PathOf("no_such_albedo.png"));
    mesh.SetMaterial(material);
    auto missing = std::make_shared<MeshRenderer>(mesh);
    EXPECT_FALSE(missing->LoadAlbedoTexture());
    EXPECT_EQ(missing->GetAlbedoTexture(), nullptr);
    pixels = Render(missing, style);
    ASSERT_EQ(log.messages.size(), 1u);
    EXPECT_NE(log.messages[0].message.find("no_such_albedo.png"), std::string::npos)
        << log.messages[0].message;
    EXPECT_FALSE(IsBackground(pixels.At(kSize / 2, kSize / 2))) << "still drawn";
}

TEST_F(MeshRendererGlTest, OutOfRangeFacesAreLeftOutAndTheRestDrawnWithoutTheCheckerItHasNoUvsFor)
{
    tesk::Mesh mesh = MakeQuad();
    mesh.SetFaces(std::vector<glm::uvec3>{{0, 1, 2}, {0, 2, 7}, {0, 2, 3}, {9, 9, 9}});
    testing_support::LogCapture log;
    auto renderer = std::make_shared<MeshRenderer>(mesh);
    ASSERT_EQ(log.messages.size(), 1u);
    EXPECT_EQ(log.messages[0].label, "vexa::draw::MeshRenderer::MeshRenderer");
    EXPECT_NE(log.messages[0].message.find("face 1 (0, 2, 7)"), std::string::npos) << log.messages[0].message;
    EXPECT_NE(log.messages[0].message.find("2 of 4"), std::string::npos) << log.messages[0].message;
    EXPECT_EQ(renderer->GetFaceCount(), 2u);
    EXPECT_EQ(renderer->GetDroppedFaceCount(), 2u);

    // The quad has no UVs, so the checker gives way to the material colour.
    const Pixels pixels = Render(renderer, UnlitStyle(ColorMode::Checker));
    const Rgba green = FromFloat(0.2f, 0.6f, 0.2f);
    // Both good triangles: either side of the diagonal.
    EXPECT_TRUE(Looks(At(pixels, {0.5f, -0.5f, 0.0f}), green));
    EXPECT_TRUE(Looks(At(pixels, {-0.5f, 0.5f, 0.0f}), green));

    // Only bad faces: what is left is a set of points.
    mesh.SetFaces(std::vector<glm::uvec3>{{4, 5, 6}});
    auto pointsOnly = std::make_shared<MeshRenderer>(mesh);
    EXPECT_EQ(pointsOnly->GetFaceCount(), 0u);
    EXPECT_GT(Render(pointsOnly, UnlitStyle(ColorMode::Material)).CountDifferent(kBackground, 4), 0);
}

TEST_F(MeshRendererGlTest, MeshWithoutFacesIsDrawnAsPointsInEveryMode)
{
    const std::vector<glm::vec3> corners = {{-1, -1, 0}, {1, -1, 0}, {0, 1, 0}};
    auto renderer = std::make_shared<MeshRenderer>(tesk::Mesh(tesk::PointCloud(corners)));
    auto style = UnlitStyle(ColorMode::Material, {1.0f, 1.0f, 0.0f});
    style->pointSize = 8.0f;
    const auto isYellow = [](const Rgba& c) { return c.r > 200 && c.g > 200 && c.b < 80; };
    for (const int mode : {RenderMode::Points, RenderMode::Wires, RenderMode::PointsAndWires,
                           RenderMode::Solid, RenderMode::SolidAndWires}) {
        SCOPED_TRACE("render mode " + std::to_string(mode));
        style->renderMode = mode;
        const Pixels pixels = Render(renderer, style);
        for (const glm::vec3& corner : corners)
            EXPECT_TRUE(isYellow(At(pixels, corner))) << At(pixels, corner);
        // Round dots of about 8 pixels each, nothing in between.
        EXPECT_GT(pixels.Count(isYellow), 3 * 30);
        EXPECT_LT(pixels.Count(isYellow), 3 * 80);
        EXPECT_TRUE(IsBackground(At(pixels, {0.0f, 0.0f, 0.0f})));
    }

    // Lit points without normals face the viewer instead of going dark.
    style->material.useLighting = true;
    style->renderMode = RenderMode::Points;
    const Rgba lit = At(Render(renderer, style), corners[2]);
    EXPECT_GT(lit.r, 150) << lit;
}

TEST(MeshRendererTest, BuildsWithoutAnyGlContext)
{
    const std::size_t pendingBefore = plor::PendingGlDeletes();
    testing_support::LogCapture log;
    {
        constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
        tesk::Mesh mesh(
            tesk::PointCloud(std::vector<glm::vec3>{{0, 0, 0}, {2, 0, 0}, {0, 3, -1}, {kNaN, 50, 50}}),
            {{0, 1, 2}, {1, 3, 2}});
        tesk::MaterialModel material;
        material.SetAlbedo({0.1f, 0.2f, 0.3f});
        material.SetMetallic(1.0f);
        mesh.SetMaterial(material);

        MeshRenderer renderer(std::move(mesh));
        EXPECT_EQ(renderer.GetVertexCount(), 4u);
        EXPECT_EQ(renderer.GetFaceCount(), 2u);
        EXPECT_FALSE(renderer.HasUvs());
        // The NaN vertex stays out of the bounds.
        EXPECT_EQ(renderer.GetBoundingBox().min, glm::vec3(0, 0, -1));
        EXPECT_EQ(renderer.GetBoundingBox().max, glm::vec3(2, 3, 0));
        EXPECT_EQ(renderer.GetSuggestedMaterial().color, tesk::Color3f(0.1f, 0.2f, 0.3f));
        EXPECT_TRUE(renderer.GetSuggestedMaterial().metallic);
        renderer.ReleaseGpuResources();

        // An empty mesh is drawn as nothing, with a word in the log.
        MeshRenderer empty{tesk::Mesh()};
        EXPECT_EQ(empty.GetVertexCount(), 0u);
        EXPECT_FALSE(empty.GetBoundingBox().IsValid());
    }
    EXPECT_EQ(log.messages.size(), 1u);
    EXPECT_EQ(plor::PendingGlDeletes(), pendingBefore);
}

} // namespace
