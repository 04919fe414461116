// Pixel tests of the geometry renderers. They need a display: run them under
// `xvfb-run -a -s "-screen 0 1280x1024x24" ctest ...`.

#include <vexa/draw/GeometryRenderer.h>
#include <vexa/draw/GeometryStyle.h>
#include <vexa/draw/RenderContext.h>

#include <plor/Framebuffer.h>
#include <plor/Gl.h>
#include <plor/Program.h>
#include <plor/Texture.h>
#include <plor/Window.h>

#include <glbinding/gl/gl.h>
#include <gtest/gtest.h>

#include <glm/glm.hpp>
#include <glm/gtc/matrix_transform.hpp>
#include <glm/gtc/quaternion.hpp>

#include <cmath>
#include <cstdint>
#include <memory>
#include <vector>

using namespace vexa::draw;

namespace {

constexpr int kSize = 128;
constexpr std::uint8_t kBackground[3] = {20, 30, 40};

struct Rgb {
    int r = 0, g = 0, b = 0;
};

/// A read-back frame, top row first.
struct Picture {
    std::vector<std::uint8_t> rgba;

    Rgb At(int x, int y) const
    {
        const std::size_t i = (static_cast<std::size_t>(y) * kSize + static_cast<std::size_t>(x)) * 4;
        return {rgba[i], rgba[i + 1], rgba[i + 2]};
    }
    Rgb At(const glm::vec2& p) const { return At(static_cast<int>(p.x), static_cast<int>(p.y)); }

    static bool IsBackground(const Rgb& c)
    {
        return std::abs(c.r - kBackground[0]) <= 3 && std::abs(c.g - kBackground[1]) <= 3 &&
               std::abs(c.b - kBackground[2]) <= 3;
    }
    bool IsBackground(int x, int y) const { return IsBackground(At(x, y)); }

    /// Pixels in the rectangle [x0, x1) x [y0, y1) that are not background.
    int CountDrawn(int x0, int y0, int x1, int y1) const
    {
        int count = 0;
        for (int y = y0; y < y1; ++y)
            for (int x = x0; x < x1; ++x)
                count += IsBackground(x, y) ? 0 : 1;
        return count;
    }
    int CountDrawn() const { return CountDrawn(0, 0, kSize, kSize); }
};

::testing::AssertionResult Near(const Rgb& actual, const Rgb& expected, int tolerance = 12)
{
    if (std::abs(actual.r - expected.r) <= tolerance && std::abs(actual.g - expected.g) <= tolerance &&
        std::abs(actual.b - expected.b) <= tolerance)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "pixel (" << actual.r << ", " << actual.g << ", " << actual.b
                                         << ") is not within " << tolerance << " of (" << expected.r << ", "
                                         << expected.g << ", " << expected.b << ")";
}

GeometryStyle FlatStyle(const tesk::Color3f& color, int renderMode = RenderMode::Solid)
{
    GeometryStyle style;
    style.renderMode = renderMode;
    style.material.color = color;
    style.material.useLighting = false;
    return style;
}

std::shared_ptr<plor::Texture> SolidTexture(std::uint8_t r, std::uint8_t g, std::uint8_t b)
{
    std::vector<std::uint8_t> pixels;
    for (int i = 0; i < 4; ++i)
        pixels.insert(pixels.end(), {r, g, b});
    return std::make_shared<plor::Texture>(tesk::Image(2, 2, 3, std::move(pixels)));
}

class GeometryRendererGlTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        plor::WindowParams params;
        params.width = 1;
        params.height = 1;
        params.visible = false;
        params.caption = "geometry test";
        window_ = plor::Window::Create(params);
        ASSERT_NE(window_, nullptr) << "No window with an OpenGL 3.3 core context could be created. The GL tests "
                                       "need a display: run them under xvfb-run -a -s \"-screen 0 1280x1024x24\".";
        window_->MakeContextCurrent();
        plor::SetShaderBuildDirectory(VEXA_SOURCE_ASSET_DIR "shaders/");
        ASSERT_TRUE(target_.Resize(kSize, kSize));

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
        if (!window_)
            return;
        programs_.ReleaseAll();
        checker_.reset();
        target_.Release();
        window_->ReleaseContext();
        window_.reset();
    }

    /// Looks from `eye` at `center` with a 45 degree field of view over the whole target,
    /// lit by a key light from the upper left front and a weaker fill from the right.
    RenderContext MakeContext(const glm::vec3& eye, const glm::vec3& center = glm::vec3(0.0f),
                              const glm::vec3& up = glm::vec3(0.0f, 1.0f, 0.0f))
    {
        RenderContext context;
        context.programs = &programs_;
        context.view = glm::lookAt(eye, center, up);
        context.projection = glm::perspective(glm::radians(45.0f), 1.0f, 0.05f, 50.0f);
        context.viewProjection = context.projection * context.view;
        context.cameraPosition = eye;
        context.cameraForward = glm::normalize(center - eye);
        context.cameraUp = up;
        context.nearPlane = 0.05f;
        context.farPlane = 50.0f;
        context.viewport = {0, 0, kSize, kSize};
        context.glViewport = {0, 0, kSize, kSize};
        context.framebufferSize = {kSize, kSize};
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

    Picture Draw(Renderer& renderer, const GeometryStyle& style, const RenderContext& context)
    {
        using namespace gl;
        target_.Bind();
        glViewport(0, 0, kSize, kSize);
        glClearColor(kBackground[0] / 255.0f, kBackground[1] / 255.0f, kBackground[2] / 255.0f, 1.0f);
        glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
        glEnable(GL_DEPTH_TEST);
        glDepthFunc(GL_LESS);
        renderer.Render(context, style);
        EXPECT_EQ(plor::GetLastGlError(), "");
        return Picture{plor::ReadPixelsRgba(0, 0, kSize, kSize)};
    }

    /// Where a world point lands in the picture (x right, y down, continuous pixels).
    static glm::vec2 ToPixel(const RenderContext& context, const glm::vec3& world)
    {
        const glm::vec4 clip = context.projection * context.view * glm::vec4(world, 1.0f);
        const glm::vec2 ndc = glm::vec2(clip) / clip.w;
        return {(ndc.x * 0.5f + 0.5f) * kSize, (0.5f - ndc.y * 0.5f) * kSize};
    }

    std::shared_ptr<plor::Window> window_;
    plor::Framebuffer target_;
    plor::ProgramList programs_;
    std::unique_ptr<plor::Texture> checker_;
};

constexpr int kMid = kSize / 2;
const Rgb kRed{255, 0, 0};

} // namespace

TEST_F(GeometryRendererGlTest, SolidBoxFillsItsPlaceWithTheMaterialColour)
{
    GeometryRenderer box(GeometryName::Box);
    GeometryStyle style = FlatStyle({1.0f, 0.0f, 0.0f});
    const RenderContext context = MakeContext({0.0f, 0.0f, 3.0f});

    Picture picture = Draw(box, style, context);
    EXPECT_TRUE(Near(picture.At(kMid, kMid), kRed));
    EXPECT_TRUE(Near(picture.At(kMid + 25, kMid - 25), kRed));
    EXPECT_TRUE(picture.IsBackground(4, 4));
    EXPECT_TRUE(picture.IsBackground(kMid + 40, kMid));

    // The model transform moves and shrinks it: the middle is empty, its new place is red.
    style.transform = tesk::Transform({0.6f, 0.0f, 0.0f}, glm::quat(1.0f, 0.0f, 0.0f, 0.0f), glm::vec3(0.5f));
    picture = Draw(box, style, context);
    EXPECT_TRUE(picture.IsBackground(kMid, kMid));
    EXPECT_TRUE(Near(picture.At(ToPixel(context, {0.6f, 0.0f, 0.25f})), kRed));

    // Hidden styles draw nothing; released GPU objects come back at the next frame.
    style.visible = false;
    EXPECT_EQ(Draw(box, style, context).CountDrawn(), 0);
    style.visible = true;
    box.ReleaseGpuResources();
    EXPECT_TRUE(Near(Draw(box, style, context).At(ToPixel(context, {0.6f, 0.0f, 0.25f})), kRed));
}

TEST_F(GeometryRendererGlTest, LightingShadesTheLitSideBrighterButNeverBlack)
{
    GeometryRenderer sphere(GeometryName::Sphere);
    GeometryStyle style;
    style.material.color = {0.8f, 0.8f, 0.8f};
    style.material.specular = 0.0f;
    RenderContext context = MakeContext({0.0f, 0.0f, 4.0f});
    Light fromRight;
    fromRight.direction = {-1.0f, 0.0f, 0.0f};
    fromRight.cameraRelative = false;
    context.lights = {fromRight};

    const Picture picture = Draw(sphere, style, context);
    const Rgb lit = picture.At(ToPixel(context, {0.8f, 0.0f, 0.6f}));
    const Rgb unlit = picture.At(ToPixel(context, {-0.8f, 0.0f, 0.6f}));
    EXPECT_GT(lit.r, unlit.r + 80);
    EXPECT_GE(unlit.r, 40) << "the ambient term keeps the dark side visible";
}

TEST_F(GeometryRendererGlTest, WiresOutlineTheBoxAndLeaveItsFacesOpen)
{
    GeometryRenderer box(GeometryName::Box);
    GeometryStyle style = FlatStyle({0.0f, 1.0f, 0.0f}, RenderMode::Wires);
    style.wireThickness = 2.0f;
    const RenderContext context = MakeContext({0.0f, 0.0f, 3.0f});
    const int front = static_cast<int>(ToPixel(context, {0.5f, 0.0f, 0.5f}).x) - kMid;

    Picture picture = Draw(box, style, context);
    // Inside the face but away from its diagonal and from the far face's outline.
    EXPECT_TRUE(picture.IsBackground(kMid + 12, kMid));
    EXPECT_TRUE(picture.IsBackground(kMid, kMid - 12));
    EXPECT_TRUE(picture.IsBackground(kMid + front + 8, kMid));
    // Alone, wires take the surface colour (green), not the dark wire colour.
    EXPECT_GT(picture.CountDrawn(kMid + front - 2, kMid - 2, kMid + front + 3, kMid + 3), 0);
    EXPECT_TRUE(Near(picture.At(kMid + front, kMid), {0, 255, 0}, 40));
    EXPECT_GT(picture.CountDrawn(kMid - front - 2, kMid - 2, kMid - front + 3, kMid + 3), 0);
    const int thin = picture.CountDrawn();

    // Thickness is in pixels, so thicker wires cover clearly more of the picture.
    style.wireThickness = 6.0f;
    EXPECT_GT(Draw(box, style, context).CountDrawn(), thin * 2);

    // Over faces: the front face hides the far outline, its own edges are dark.
    style = FlatStyle({1.0f, 0.0f, 0.0f}, RenderMode::SolidAndWires);
    style.wireThickness = 2.0f;
    style.wireColor = {0.0f, 0.0f, 0.0f};
    picture = Draw(box, style, context);
    EXPECT_TRUE(Near(picture.At(kMid + 12, kMid), kRed));
    const int far = static_cast<int>(ToPixel(context, {0.5f, 0.0f, -0.5f}).x);
    EXPECT_TRUE(Near(picture.At(far, kMid), kRed)) << "the far face's edge shows through";
    EXPECT_TRUE(Near(picture.At(kMid, kMid), {0, 0, 0}, 20)) << "the front diagonal is missing";
    EXPECT_TRUE(Near(picture.At(kMid + front, kMid), {0, 0, 0}, 20));
}

TEST_F(GeometryRendererGlTest, CullingRemovesBackFaces)
{
    // A plane turned to face +Z, seen from behind.
    GeometryRenderer plane(GeometryName::Plane);
    GeometryStyle style = FlatStyle({1.0f, 0.0f, 0.0f});
    style.transform.SetRotation(glm::angleAxis(glm::radians(90.0f), glm::vec3(1.0f, 0.0f, 0.0f)));
    const RenderContext behind = MakeContext({0.0f, 0.0f, -2.0f});
    const RenderContext before = MakeContext({0.0f, 0.0f, 2.0f});

    EXPECT_TRUE(Near(Draw(plane, style, behind).At(kMid, kMid), kRed));
    style.cullBackFacing = true;
    EXPECT_TRUE(Draw(plane, style, behind).IsBackground(kMid, kMid));
    EXPECT_TRUE(Near(Draw(plane, style, before).At(kMid, kMid), kRed));

    // From inside a box every face is a back face.
    GeometryRenderer box(GeometryName::Box);
    style = FlatStyle({1.0f, 0.0f, 0.0f});
    style.transform.SetUniformScale(4.0f);
    const RenderContext inside = MakeContext({0.0f, 0.0f, 0.5f});
    EXPECT_EQ(Draw(box, style, inside).CountDrawn(), kSize * kSize);
    style.cullBackFacing = true;
    EXPECT_EQ(Draw(box, style, inside).CountDrawn(), 0);
}

TEST_F(GeometryRendererGlTest, NormalDisplayReachesBeyondTheSilhouette)
{
    GeometryRenderer sphere(GeometryName::Sphere);
    GeometryStyle style = FlatStyle({0.5f, 0.5f, 0.5f});
    style.normalColor = {1.0f, 1.0f, 0.0f};
    style.normalLength = 0.6f;
    const RenderContext context = MakeContext({0.0f, 0.0f, 4.0f});
    // The silhouette of a unit sphere seen from 4 units away, plus a margin.
    const int radius =
        static_cast<int>(std::tan(std::asin(0.25f)) / std::tan(glm::radians(22.5f)) * static_cast<float>(kMid)) + 3;

    const auto countOutside = [radius](const Picture& picture, bool yellowOnly) {
        int count = 0;
        for (int y = 0; y < kSize; ++y)
            for (int x = 0; x < kSize; ++x) {
                const int dx = x - kMid, dy = y - kMid;
                if (dx * dx + dy * dy <= radius * radius || picture.IsBackground(x, y))
                    continue;
                const Rgb c = picture.At(x, y);
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

TEST_F(GeometryRendererGlTest, PointsModeDrawsRoundDotsAtTheVertices)
{
    GeometryRenderer box(GeometryName::Box);
    GeometryStyle style = FlatStyle({1.0f, 1.0f, 1.0f}, RenderMode::Points);
    style.pointSize = 16.0f;
    const RenderContext context = MakeContext({0.0f, 0.0f, 3.0f});

    const Picture picture = Draw(box, style, context);
    EXPECT_TRUE(picture.IsBackground(kMid, kMid)) << "no vertex in the middle of the face";
    for (const glm::vec3 corner : {glm::vec3(0.5f, 0.5f, 0.5f), glm::vec3(-0.5f, -0.5f, 0.5f)}) {
        const glm::vec2 p = ToPixel(context, corner);
        EXPECT_TRUE(Near(picture.At(p), {255, 255, 255}));
        EXPECT_TRUE(Near(picture.At(p + glm::vec2(0.0f, 5.0f)), {255, 255, 255}));
        // Inside the square sprite but outside its disc.
        const glm::vec2 diagonal = p + glm::vec2(7.0f, -7.0f) * glm::sign(glm::vec2(corner.x, -corner.y));
        EXPECT_TRUE(picture.IsBackground(static_cast<int>(diagonal.x), static_cast<int>(diagonal.y)));
    }
    // Points & Wires joins the two.
    style.pointSize = 4.0f;
    const int dots = Draw(box, style, context).CountDrawn();
    style.renderMode = RenderMode::PointsAndWires;
    EXPECT_GT(Draw(box, style, context).CountDrawn(), dots + 100);
}

TEST_F(GeometryRendererGlTest, ColourSourcesPaintTheSurface)
{
    GeometryRenderer box(GeometryName::Box);
    GeometryStyle style = FlatStyle({1.0f, 0.0f, 0.0f});
    style.colorMode = ColorMode::Normals;
    style.material.useLighting = true;
    const RenderContext front = MakeContext({0.0f, 0.0f, 3.0f});
    // The face towards +Z shows its normal as colour: bluish, with or without flat normals.
    EXPECT_TRUE(Near(Draw(box, style, front).At(kMid, kMid), {128, 128, 255}, 8));
    style.normalsSource = NormalsSource::Flat;
    EXPECT_TRUE(Near(Draw(box, style, front).At(kMid, kMid), {128, 128, 255}, 8));
    EXPECT_TRUE(Near(Draw(box, style, MakeContext({3.0f, 0.0f, 0.0f})).At(kMid, kMid), {255, 128, 128}, 8));

    // Per-point colours: the lower edge of a plane red, the upper edge green.
    GeometryRenderer plane(GeometryName::Plane);
    style = FlatStyle({0.0f, 0.0f, 1.0f});
    style.colorMode = ColorMode::PerPoint;
    style.transform.SetRotation(glm::angleAxis(glm::radians(90.0f), glm::vec3(1.0f, 0.0f, 0.0f)));
    const RenderContext context = MakeContext({0.0f, 0.0f, 2.0f});
    EXPECT_TRUE(Near(Draw(plane, style, context).At(kMid, kMid), {0, 0, 255})) << "without colours: material";
    const std::vector<tesk::Color3f> colors = {{1, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 1, 0}};
    ASSERT_TRUE(plane.SetCustomColors(colors));
    Picture picture = Draw(plane, style, context);
    const Rgb low = picture.At(ToPixel(context, {0.0f, -0.4f, 0.0f}));
    const Rgb high = picture.At(ToPixel(context, {0.0f, 0.4f, 0.0f}));
    EXPECT_GT(low.r, 200);
    EXPECT_LT(low.g, 60);
    EXPECT_GT(high.g, 200);
    EXPECT_LT(high.r, 60);
    EXPECT_LT(picture.At(kMid, kMid).b, 10);
}

TEST_F(GeometryRendererGlTest, CheckerTextureAndMatcapUseTheirTextures)
{
    GeometryRenderer plane(GeometryName::Plane);
    GeometryStyle style = FlatStyle({1.0f, 0.0f, 0.0f});
    style.transform.SetRotation(glm::angleAxis(glm::radians(90.0f), glm::vec3(1.0f, 0.0f, 0.0f)));
    style.colorMode = ColorMode::Checker;
    RenderContext context = MakeContext({0.0f, 0.0f, 2.0f});

    const auto countTones = [](const Picture& picture) {
        int light = 0, dark = 0;
        for (int y = kMid - 30; y < kMid + 30; ++y)
            for (int x = kMid - 30; x < kMid + 30; ++x) {
                const Rgb c = picture.At(x, y);
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
    // Texture mode without a texture falls back to the checker; with one it shows it.
    style.colorMode = ColorMode::Texture;
    EXPECT_GT(countTones(Draw(plane, style, context)), 300);
    style.albedoTexture = SolidTexture(0, 0, 255);
    EXPECT_TRUE(Near(Draw(plane, style, context).At(kMid, kMid), {0, 0, 255}));

    // Without UVs there is nothing to map: the material colour stays.
    SurfaceData noUvs = GeometryRenderer::MakeSurface(GeometryName::Plane);
    noUvs.uvs.clear();
    ElementRenderer bare(std::move(noUvs));
    EXPECT_TRUE(Near(Draw(bare, style, context).At(kMid, kMid), kRed));

    // A matcap replaces the lighting of the material colour.
    style.colorMode = ColorMode::Material;
    style.material.useLighting = true;
    style.useMatcap = true;
    style.matcap = SolidTexture(255, 0, 255);
    EXPECT_TRUE(Near(Draw(plane, style, context).At(kMid, kMid), {255, 0, 255}));
}
