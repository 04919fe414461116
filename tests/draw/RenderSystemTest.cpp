// The render system: backgrounds, viewports and passes, lights, grid, axes, anti-aliasing and
// shader reloads, with a flat test renderer of its own. Needs a display (xvfb-run).

#include "GlTestSupport.h"
#include "LogCapture.h"

#include <vexa/draw/Renderer.h>
#include <vexa/draw/Style.h>

#include <plor/ArrayObject.h>

using namespace vexa::draw;
using namespace gl_test_support;

namespace {

/// Draws flat-coloured triangles given directly in normalised device coordinates of the
/// scene's viewport, with its own inline program, so these tests do not depend on any content
/// renderer. Remembers the context it was last given.
class FlatRenderer : public Renderer {
public:
    FlatRenderer(std::vector<glm::vec2> corners, RenderPass pass = RenderPass::Opaque)
        : pass_(pass), program_("test.flat")
    {
        array_.SetBuffer(0, plor::AsBytes(corners), {plor::Attribute{0, 2, plor::DataType::Float}});
        array_.SetVertexCount(corners.size());
        program_.AddStageSource(plor::ShaderStage::Vertex,
                                "#version 330 core\nlayout(location = 0) in vec2 inPosition;\n"
                                "void main() { gl_Position = vec4(inPosition, 0.0, 1.0); }\n");
        program_.AddStageSource(plor::ShaderStage::Fragment,
                                "#version 330 core\nuniform vec3 uColor;\nout vec4 outColor;\n"
                                "void main() { outColor = vec4(uColor, 1.0); }\n");
    }

    /// Two triangles covering the whole viewport.
    static std::vector<glm::vec2> FullQuad()
    {
        return {{-1, -1}, {1, -1}, {1, 1}, {-1, -1}, {1, 1}, {-1, 1}};
    }

    bool IsCompatibileWithStyle(const Style&) const override { return true; }
    RenderPass GetPass() const override { return pass_; }

    void Render(const RenderContext& context, const Style& style) override
    {
        ++drawCount;
        lastViewport = context.glViewport;
        lastLights = context.lights;
        if (!program_.Use())
            return;
        program_.SetUniform("uColor", glm::vec3(style.color.r, style.color.g, style.color.b));
        array_.Draw(plor::PrimitiveType::Triangles);
    }

    int drawCount = 0;
    glm::ivec4 lastViewport{0};
    std::vector<Light> lastLights;

private:
    RenderPass pass_;
    plor::ArrayObject array_;
    plor::Program program_;
};

std::shared_ptr<Style> ColorStyle(float r, float g, float b)
{
    auto style = std::make_shared<Style>();
    style->color = {r, g, b};
    return style;
}

int RowsWithContent(const Pixels& pixels, const Rgba& background, int tolerance)
{
    int rows = 0;
    for (int y = 0; y < pixels.Height(); ++y)
        if (pixels.Count([&](const Rgba& c) { return !Near(c, background, tolerance); }, 0, y, pixels.Width(),
                         y + 1) > 0)
            ++rows;
    return rows;
}

// Looser than the shared probes: thin axis lines blend with the background.
constexpr auto Reddish = [](const Rgba& c) { return c.r > 150 && c.g < 100 && c.b < 100; };

constexpr auto Greenish = [](const Rgba& c) { return c.g > 130 && c.r < 100 && c.b < 100; };

} // namespace

TEST_F(GlTest, ScenesDrawInTheirOwnViewportPassByPass)
{
    // Top-left quadrant in window pixels (origin top-left).
    scene_->SetViewport(glm::ivec4(0, 0, kSize / 2, kSize / 2));
    // The overlay is added first but must end on top; the hidden one must not show.
    auto overlay = std::make_shared<FlatRenderer>(FlatRenderer::FullQuad(), RenderPass::Overlay);
    auto opaque = std::make_shared<FlatRenderer>(FlatRenderer::FullQuad());
    auto hidden = std::make_shared<FlatRenderer>(FlatRenderer::FullQuad(), RenderPass::Screen);
    auto screen = std::make_shared<FlatRenderer>(std::vector<glm::vec2>{{-1, -1}, {0, -1}, {-1, 0}},
                                                 RenderPass::Screen);
    ASSERT_GT(scene_->AddInstance(overlay, ColorStyle(0, 0, 1)), 0);
    ASSERT_GT(scene_->AddInstance(opaque, ColorStyle(1, 0, 0)), 0);
    ASSERT_GT(scene_->AddInstance(hidden, ColorStyle(1, 1, 1), InstanceFlags::Hidden), 0);
    ASSERT_GT(scene_->AddInstance(screen, ColorStyle(0, 1, 0)), 0);

    const Pixels pixels = Render();
    const Rgba blue{0, 0, 255, 255};
    EXPECT_TRUE(Looks(pixels.At(48, 16), blue));
    // The Screen pass's triangle sits in the viewport's bottom-left corner, over the overlay.
    EXPECT_TRUE(Looks(pixels.At(4, 60), Rgba{0, 255, 0, 255}));
    EXPECT_TRUE(Looks(pixels.At(96, 32), kBackground)) << "right of the viewport";
    EXPECT_TRUE(Looks(pixels.At(32, 96), kBackground)) << "below the viewport";
    EXPECT_EQ(hidden->drawCount, 0);
    EXPECT_EQ(opaque->drawCount, 1);
    // GL's viewport counts from the bottom: the top-left quadrant starts half way up.
    EXPECT_EQ(opaque->lastViewport, glm::ivec4(0, kSize / 2, kSize / 2, kSize / 2));
}

TEST_F(GlTest, RenderersGetWorldSpaceLights)
{
    LookAtOriginFrom({5.0f, 0.0f, 0.0f});
    auto probe = std::make_shared<FlatRenderer>(std::vector<glm::vec2>{});
    scene_->AddInstance(probe, std::make_shared<Style>());

    // Without lights the content still gets two (never unlit), of unit length.
    Render();
    ASSERT_EQ(probe->lastLights.size(), 2u);
    for (const Light& light : probe->lastLights)
        EXPECT_NEAR(glm::length(light.direction), 1.0f, 1e-5f);

    // The camera looks along world -X: a headlight travelling along view -Z travels along
    // world -X; a world-space light stays as it is.
    auto headlight = std::make_shared<Light>();
    headlight->direction = {0.0f, 0.0f, -2.0f};
    auto sun = std::make_shared<Light>();
    sun->direction = {0.0f, -1.0f, 0.0f};
    sun->cameraRelative = false;
    scene_->SetLights({headlight, sun, nullptr});
    Render();
    ASSERT_EQ(probe->lastLights.size(), 2u);
    EXPECT_NEAR(glm::distance(probe->lastLights[0].direction, glm::vec3(-1, 0, 0)), 0.0f, 1e-5f);
    EXPECT_NEAR(glm::distance(probe->lastLights[1].direction, glm::vec3(0, -1, 0)), 0.0f, 1e-5f);
}

TEST_F(GlTest, GridLiesInItsPlane)
{
    // Looking along each axis at the origin (eye, up); each grid plane faces exactly one of them.
    const glm::vec3 views[3][2] = {{{0, 0, 5}, {0, 1, 0}}, {{5, 0, 0}, {0, 0, 1}}, {{0, 5, 0}, {1, 0, 0}}};
    for (const int mode : {GridMode::XY, GridMode::YZ, GridMode::ZX}) {
        SCOPED_TRACE("grid mode " + std::to_string(mode));
        scene_->SetGridMode(mode);
        const int facing = mode - GridMode::XY;
        LookAtOriginFrom(views[facing][0], views[facing][1]);
        const Pixels picture = Render();
        // About four cells are in view: lines cross the whole picture both ways.
        EXPECT_GT(RowsWithContent(picture, kBackground, 12), kSize - 4);
        EXPECT_GT(picture.CountDifferent(kBackground, 12), 4 * kSize);
        LookAtOriginFrom(views[(facing + 1) % 3][0], views[(facing + 1) % 3][1]);
        EXPECT_LE(RowsWithContent(Render(), kBackground, 12), 3) << "a plane seen edge-on is one line";
    }

    // Cell size: twice the units leave half as many lines in the same view.
    scene_->SetGridMode(GridMode::XY);
    LookAtOriginFrom(views[0][0], views[0][1]);
    const int fine = Render().CountDifferent(kBackground, 12);
    scene_->SetGridUnits(2.0f);
    const int coarse = Render().CountDifferent(kBackground, 12);
    EXPECT_LT(coarse, fine * 3 / 4);
    EXPECT_GT(coarse, fine / 4);
}

TEST_F(GlTest, AxesPointAlongTheWorldAxes)
{
    scene_->SetAxesVisible(true);
    LookAtOriginFrom({0, 0, 5});
    const Pixels pixels = Render();

    // Unit axes seen from 5 units with 45 degrees: about 31 pixels long from the centre.
    EXPECT_GT(pixels.Count(Reddish, 68, 60, 92, 68), 20) << "+X runs to the right of the centre";
    EXPECT_EQ(pixels.Count(Reddish, 20, 40, 60, 88), 0) << "nothing red left of the origin";
    EXPECT_EQ(pixels.Count(Reddish, 100, 40, 128, 88), 0) << "the axis is one unit long";
    EXPECT_GT(pixels.Count(Greenish, 60, 36, 68, 60), 20) << "+Y runs up";
    EXPECT_EQ(pixels.Count(Greenish, 60, 70, 68, 100), 0);
    // The gizmo in the bottom-left corner repeats the directions.
    EXPECT_GT(pixels.Count(Reddish, 0, kSize - 40, 40, kSize), 3);

    scene_->SetAxesVisible(false);
    EXPECT_EQ(Render().CountDifferent(kBackground, 1), 0);
}

TEST_F(GlTest, AntiAliasingBlendsEdges)
{
    ASSERT_GE(plor::GetMaxSamples(), 4) << "the driver offers no 4x multisampling";
    testing_support::LogCapture log;
    system_->SetBackgroundColor(tesk::Color3b(0, 0, 0));
    scene_->AddInstance(
        std::make_shared<FlatRenderer>(std::vector<glm::vec2>{{-0.8f, -0.7f}, {0.8f, -0.5f}, {-0.3f, 0.85f}}),
        ColorStyle(1, 1, 1));
    const Rgba black{0, 0, 0, 255};
    const Rgba white{255, 255, 255, 255};
    int whites = 0;
    auto countBlended = [&] {
        const Pixels pixels = Render();
        whites = pixels.Count([&](const Rgba& c) { return Near(c, white, 20); });
        return pixels.Count([&](const Rgba& c) { return !Near(c, black, 20) && !Near(c, white, 20); });
    };

    EXPECT_EQ(countBlended(), 0) << "without anti-aliasing every pixel is in or out";
    const int whiteOff = whites;
    ASSERT_GT(whiteOff, 2000);
    // Slanted edges run over about 300 pixels; most of those get partial coverage.
    system_->SetAntiAliasingMethod(AntiAliasingMethod::Msaa4x);
    EXPECT_GT(countBlended(), 100);
    EXPECT_NEAR(whites, whiteOff, whiteOff / 10) << "the shape keeps its size";
    system_->SetAntiAliasingMethod(AntiAliasingMethod::Fxaa);
    EXPECT_GT(countBlended(), 60);
    EXPECT_NEAR(whites, whiteOff, whiteOff / 10);
    EXPECT_TRUE(log.messages.empty()) << log.messages.front().label << ": " << log.messages.front().message;
}

// Saved pictures are read back by the engine tier; only the refusal is checked here.
TEST_F(GlTest, AScreenshotThatCannotBeWrittenIsReported)
{
    system_->SetFramebufferSize(kSize, kSize);
    system_->Render();
    testing_support::LogCapture log;
    EXPECT_FALSE(system_->SaveScreenshot("/nonexistent-folder/for/screenshots/shot.png"));
    EXPECT_FALSE(log.messages.empty());
}
