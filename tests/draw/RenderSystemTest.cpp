#include <vexa/draw/RenderContext.h>
#include <vexa/draw/RenderSystem.h>
#include <vexa/draw/Renderer.h>
#include <vexa/draw/Scene.h>
#include <vexa/draw/Style.h>

#include <plor/ArrayObject.h>
#include <plor/Framebuffer.h>
#include <plor/Gl.h>
#include <plor/Program.h>

#include <tesk/Image.h>

#include "GlTestSupport.h"
#include "LogCapture.h"

#include <gtest/gtest.h>

#include <glm/glm.hpp>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

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
        program_.AddStageSource(plor::ShaderStage::Vertex, "#version 330 core\n"
                                                           "layout(location = 0) in vec2 inPosition;\n"
                                                           "void main() { gl_Position = vec4(inPosition, 0.0, 1.0); }\n");
        program_.AddStageSource(plor::ShaderStage::Fragment, "#version 330 core\n"
                                                             "uniform vec3 uColor;\n"
                                                             "out vec4 outColor;\n"
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

/// A scene over the whole test target with nothing but what the test adds.
std::shared_ptr<Scene> MakeBareScene(int size)
{
    auto scene = std::make_shared<Scene>(glm::ivec4(0, 0, size, size));
    scene->SetAxesVisible(false);
    scene->SetGridMode(GridMode::None);
    return scene;
}

void LookFrom(Scene& scene, const glm::vec3& eye, const glm::vec3& up)
{
    scene.GetCamera()->SetPosition(eye);
    scene.GetCamera()->LookAt(glm::vec3(0.0f), up);
}

/// Number of rows holding at least one pixel that is not background.
int RowsWithContent(const Pixels& pixels, const Rgba& background, int tolerance)
{
    int rows = 0;
    for (int y = 0; y < pixels.Height(); ++y)
        if (pixels.Count([&](const Rgba& c) { return !Near(c, background, tolerance); }, 0, y, pixels.Width(), y + 1) >
            0)
            ++rows;
    return rows;
}

// Looser than the shared probes: thin axis lines blend with the background.
bool Reddish(const Rgba& c)
{
    return c.r > 150 && c.g < 100 && c.b < 100;
}

bool Greenish(const Rgba& c)
{
    return c.g > 130 && c.r < 100 && c.b < 100;
}

} // namespace

TEST_F(GlTest, BackgroundFillsTheTargetAroundAndBehindScenes)
{
    RenderSystem system;
    EXPECT_EQ(system.GetBackgroundColor(), tesk::Color3b(0x3D, 0x3D, 0x3D));
    system.SetAntiAliasingMethod(AntiAliasingMethod::Off);

    // An empty scene in one corner and a scene that has not been laid out yet.
    auto corner = std::make_shared<Scene>(glm::ivec4(0, 0, 40, 40));
    corner->SetAxesVisible(false);
    system.AddScene(corner);
    system.AddScene(std::make_shared<Scene>());
    system.RenderTo(target_);
    Pixels pixels = ReadTarget();
    EXPECT_EQ(pixels.CountDifferent(kBackground, 1), 0) << "first pixel " << pixels.At(0, 0);

    system.SetBackgroundColor(tesk::Color3f(1.0f, 0.5f, 0.0f));
    system.SetAntiAliasingMethod(AntiAliasingMethod::Msaa4x);
    system.RenderTo(target_);
    pixels = ReadTarget();
    EXPECT_EQ(pixels.CountDifferent(FromFloat(1.0f, 0.5f, 0.0f), 1), 0) << "centre " << pixels.At(64, 64);
    EXPECT_EQ(system.GetFrameCount(), 2u);
}

TEST_F(GlTest, ScenesDrawInTheirOwnViewportPassByPass)
{
    RenderSystem system;
    system.SetAntiAliasingMethod(AntiAliasingMethod::Off);
    // Top-left quadrant in window pixels (origin top-left).
    auto scene = std::make_shared<Scene>(glm::ivec4(0, 0, kSize / 2, kSize / 2));
    scene->SetAxesVisible(false);
    system.AddScene(scene);

    // The overlay is added first but must end on top; the hidden one must not show.
    auto overlay = std::make_shared<FlatRenderer>(FlatRenderer::FullQuad(), RenderPass::Overlay);
    auto opaque = std::make_shared<FlatRenderer>(FlatRenderer::FullQuad());
    auto hidden = std::make_shared<FlatRenderer>(FlatRenderer::FullQuad(), RenderPass::Screen);
    auto screen = std::make_shared<FlatRenderer>(std::vector<glm::vec2>{{-1, -1}, {0, -1}, {-1, 0}}, RenderPass::Screen);
    ASSERT_GT(scene->AddInstance(overlay, ColorStyle(0, 0, 1)), 0);
    ASSERT_GT(scene->AddInstance(opaque, ColorStyle(1, 0, 0)), 0);
    ASSERT_GT(scene->AddInstance(hidden, ColorStyle(1, 1, 1), InstanceFlags::Hidden), 0);
    ASSERT_GT(scene->AddInstance(screen, ColorStyle(0, 1, 0)), 0);

    system.RenderTo(target_);
    const Pixels pixels = ReadTarget();
    const Rgba blue{0, 0, 255, 255};
    const Rgba green{0, 255, 0, 255};
    EXPECT_TRUE(Looks(pixels.At(48, 16), blue));
    // The Screen pass's triangle sits in the viewport's bottom-left corner, over the overlay.
    EXPECT_TRUE(Looks(pixels.At(4, 60), green));
    EXPECT_TRUE(Looks(pixels.At(96, 32), kBackground)) << "right of the viewport";
    EXPECT_TRUE(Looks(pixels.At(32, 96), kBackground)) << "below the viewport";
    EXPECT_EQ(hidden->drawCount, 0);
    EXPECT_EQ(opaque->drawCount, 1);
    // GL's viewport counts from the bottom: the top-left quadrant starts half way up.
    EXPECT_EQ(opaque->lastViewport, glm::ivec4(0, kSize / 2, kSize / 2, kSize / 2));

    // An invisible style hides the instance as well.
    scene->RemoveInstance(2);
    auto invisible = ColorStyle(1, 1, 0);
    invisible->visible = false;
    scene->AddInstance(std::make_shared<FlatRenderer>(FlatRenderer::FullQuad(), RenderPass::Screen), invisible);
    system.RenderTo(target_);
    EXPECT_TRUE(Near(ReadTarget().At(48, 16), blue));
}

TEST_F(GlTest, RenderersGetWorldSpaceLights)
{
    RenderSystem system;
    auto scene = MakeBareScene(kSize);
    LookFrom(*scene, {5.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f});
    auto probe = std::make_shared<FlatRenderer>(std::vector<glm::vec2>{});
    scene->AddInstance(probe, std::make_shared<Style>());
    system.AddScene(scene);

    // Without lights the content still gets two (never unlit), of unit length.
    system.RenderTo(target_);
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
    scene->SetLights({headlight, sun, nullptr});
    system.RenderTo(target_);
    ASSERT_EQ(probe->lastLights.size(), 2u);
    EXPECT_NEAR(glm::distance(probe->lastLights[0].direction, glm::vec3(-1, 0, 0)), 0.0f, 1e-5f);
    EXPECT_NEAR(glm::distance(probe->lastLights[1].direction, glm::vec3(0, -1, 0)), 0.0f, 1e-5f);
}

TEST_F(GlTest, GridLiesInItsPlane)
{
    RenderSystem& system = *system_;
    const std::shared_ptr<Scene>& scene = scene_;

    struct View {
        glm::vec3 eye;
        glm::vec3 up;
    };
    // Looking along each axis at the origin; each grid plane faces exactly one of them.
    const View alongZ{{0, 0, 5}, {0, 1, 0}};
    const View alongX{{5, 0, 0}, {0, 0, 1}};
    const View alongY{{0, 5, 0}, {1, 0, 0}};
    struct Case {
        int mode;
        View facing;
        View edgeOn;
    };
    const Case cases[] = {
        {GridMode::XY, alongZ, alongX},
        {GridMode::YZ, alongX, alongY},
        {GridMode::ZX, alongY, alongZ},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE("grid mode " + std::to_string(c.mode));
        scene->SetGridMode(c.mode);
        LookFrom(*scene, c.facing.eye, c.facing.up);
        system.RenderTo(target_);
        const Pixels facing = ReadTarget();
        // About four cells are in view: lines cross the whole picture both ways.
        EXPECT_GT(RowsWithContent(facing, kBackground, 12), kSize - 4);
        EXPECT_GT(facing.CountDifferent(kBackground, 12), 4 * kSize);

        LookFrom(*scene, c.edgeOn.eye, c.edgeOn.up);
        system.RenderTo(target_);
        const Pixels edgeOn = ReadTarget();
        EXPECT_LE(RowsWithContent(edgeOn, kBackground, 12), 3) << "a plane seen edge-on is one line";
    }

    // Cell size: twice the units leave half as many lines in the same view.
    scene->SetGridMode(GridMode::XY);
    LookFrom(*scene, alongZ.eye, alongZ.up);
    system.RenderTo(target_);
    const int fine = ReadTarget().CountDifferent(kBackground, 12);
    scene->SetGridUnits(2.0f);
    system.RenderTo(target_);
    const int coarse = ReadTarget().CountDifferent(kBackground, 12);
    EXPECT_LT(coarse, fine * 3 / 4);
    EXPECT_GT(coarse, fine / 4);
}

TEST_F(GlTest, AxesPointAlongTheWorldAxes)
{
    RenderSystem system;
    system.SetAntiAliasingMethod(AntiAliasingMethod::Off);
    auto scene = MakeBareScene(kSize);
    scene->SetAxesVisible(true);
    LookFrom(*scene, {0, 0, 5}, {0, 1, 0});
    system.AddScene(scene);
    system.RenderTo(target_);
    const Pixels pixels = ReadTarget();

    // Unit axes seen from 5 units with 45 degrees: about 31 pixels long from the centre.
    EXPECT_GT(pixels.Count(Reddish, 68, 60, 92, 68), 20) << "+X runs to the right of the centre";
    EXPECT_EQ(pixels.Count(Reddish, 20, 40, 60, 88), 0) << "nothing red left of the origin";
    EXPECT_EQ(pixels.Count(Reddish, 100, 40, 128, 88), 0) << "the axis is one unit long";
    EXPECT_GT(pixels.Count(Greenish, 60, 36, 68, 60), 20) << "+Y runs up";
    EXPECT_EQ(pixels.Count(Greenish, 60, 70, 68, 100), 0);
    // The gizmo in the bottom-left corner repeats the directions.
    EXPECT_GT(pixels.Count(Reddish, 0, kSize - 40, 40, kSize), 3);

    scene->SetAxesVisible(false);
    system.RenderTo(target_);
    EXPECT_EQ(ReadTarget().CountDifferent(kBackground, 1), 0);
}

TEST_F(GlTest, AntiAliasingBlendsEdges)
{
    ASSERT_GE(plor::GetMaxSamples(), 4) << "the driver offers no 4x multisampling";
    testing_support::LogCapture log;
    RenderSystem system;
    system.SetBackgroundColor(tesk::Color3b(0, 0, 0));
    auto scene = MakeBareScene(kSize);
    scene->AddInstance(std::make_shared<FlatRenderer>(std::vector<glm::vec2>{{-0.8f, -0.7f}, {0.8f, -0.5f}, {-0.3f, 0.85f}}),
                       ColorStyle(1, 1, 1));
    system.AddScene(scene);

    const Rgba black{0, 0, 0, 255};
    const Rgba white{255, 255, 255, 255};
    auto countBlended = [&] {
        system.RenderTo(target_);
        const Pixels pixels = ReadTarget();
        return pixels.Count([&](const Rgba& c) { return !Near(c, black, 20) && !Near(c, white, 20); });
    };
    auto countWhite = [&] {
        return ReadTarget().Count([&](const Rgba& c) { return Near(c, white, 20); });
    };

    system.SetAntiAliasingMethod(AntiAliasingMethod::Off);
    EXPECT_EQ(countBlended(), 0) << "without anti-aliasing every pixel is in or out";
    const int whiteOff = countWhite();
    ASSERT_GT(whiteOff, 2000);

    // Slanted edges run over about 300 pixels; most of those get partial coverage.
    system.SetAntiAliasingMethod(AntiAliasingMethod::Msaa4x);
    EXPECT_GT(countBlended(), 100);
    EXPECT_NEAR(countWhite(), whiteOff, whiteOff / 10) << "the shape keeps its size";

    system.SetAntiAliasingMethod(AntiAliasingMethod::Fxaa);
    EXPECT_GT(countBlended(), 60);
    EXPECT_NEAR(countWhite(), whiteOff, whiteOff / 10);

    EXPECT_TRUE(log.messages.empty()) << log.messages.front().label << ": " << log.messages.front().message;
    EXPECT_EQ(plor::GetLastGlError(), "");
}

TEST_F(GlTest, ScreenshotsAreReadablePngs)
{
    RenderSystem system;
    system.SetFramebufferSize(kSize, kSize);
    system.SetBackgroundColor(tesk::Color3b(10, 200, 30));
    system.AddScene(MakeBareScene(kSize));
    system.Render();

    const std::filesystem::path path = std::filesystem::temp_directory_path() / "vexa_draw_screenshot_test.png";
    std::filesystem::remove(path);
    ASSERT_TRUE(system.SaveScreenshot(path.string()));
    const tesk::Image image = tesk::Image::FromPng(path.string());
    std::filesystem::remove(path);
    ASSERT_EQ(image.GetWidth(), static_cast<std::uint32_t>(kSize));
    ASSERT_EQ(image.GetHeight(), static_cast<std::uint32_t>(kSize));
    EXPECT_NEAR(image.At(5, 5, 0), 10.0f / 255.0f, 1.5f / 255.0f);
    EXPECT_NEAR(image.At(5, 5, 1), 200.0f / 255.0f, 1.5f / 255.0f);

    testing_support::LogCapture log;
    EXPECT_FALSE(system.SaveScreenshot("/nonexistent-folder/for/screenshots/shot.png"));
    bool reported = false;
    for (const auto& message : log.messages)
        reported = reported || message.label == "vexa::draw::RenderSystem::SaveScreenshot";
    EXPECT_TRUE(reported);
}

TEST_F(GlTest, ShaderReloadHappensAtTheNextFrame)
{
    RenderSystem system;
    auto scene = MakeBareScene(kSize);
    scene->SetGridMode(GridMode::XY);
    system.AddScene(scene);
    system.RenderTo(target_);
    const std::size_t programs = system.GetPrograms().Size();
    EXPECT_GE(programs, 1u) << "the helpers registered their programs";

    testing_support::LogCapture log;
    system.RequestShaderReload();
    EXPECT_TRUE(log.messages.empty()) << "a request does no GL work by itself";
    system.RenderTo(target_);
    EXPECT_TRUE(log.Contains("Rebuilt " + std::to_string(programs) + " shader programs",
                             "vexa::draw::RenderSystem::ReloadShaders"));
    log.messages.clear();
    system.RenderTo(target_);
    EXPECT_TRUE(log.messages.empty()) << "the request is served once";

}

TEST_F(GlTest, LineShaderServesTheWindowSeparators)
{
    // The engine draws its separators with positions in clip space and nothing set but the
    // colour at uniform location 0.
    RenderSystem system;
    system.GetPrograms().Add("LINE_SHADER", "core/lines.vert", "core/lines.frag");
    plor::Program* lines = system.GetPrograms().Get("LINE_SHADER");
    ASSERT_NE(lines, nullptr);
    ASSERT_TRUE(lines->Use());
    EXPECT_EQ(lines->GetUniformLocation("uColor"), 0);

    const std::vector<glm::vec2> separator{{0.0f, -1.0f}, {0.0f, 1.0f}};
    plor::ArrayObject array;
    array.SetBuffer(0, plor::AsBytes(separator), {plor::Attribute{0, 2, plor::DataType::Float}});
    array.SetVertexCount(separator.size());

    system.SetFramebufferSize(kSize, kSize);
    system.SetAntiAliasingMethod(AntiAliasingMethod::Off);
    system.RenderTo(target_);
    target_.Bind();
    ASSERT_TRUE(lines->Use());
    lines->SetUniform("uColor", glm::vec3(26.0f / 255.0f));
    array.Draw(plor::PrimitiveType::Lines);
    const Pixels pixels = ReadTarget();
    const Rgba separatorColor{26, 26, 26, 255};
    const int onLine = pixels.Count([&](const Rgba& c) { return Near(c, separatorColor, 2); }, 62, 0, 66, kSize);
    EXPECT_GE(onLine, kSize - 2) << "a full-height line in the middle";
    EXPECT_EQ(pixels.Count([&](const Rgba& c) { return !Near(c, kBackground, 2); }, 0, 0, 60, kSize), 0);
}
