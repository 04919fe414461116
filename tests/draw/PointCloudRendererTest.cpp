// Point cloud renderer and style. The pixel tests draw through a real render system and need a
// display: run them under `xvfb-run -a -s "-noreset -screen 0 1280x1024x24" ctest ...`.

#include <vexa/draw/PointCloudRenderer.h>
#include <vexa/draw/PointCloudStyle.h>

#include <plor/ArrayObject.h>

#include <tesk/PointCloud.h>

#include "GlTestSupport.h"
#include "LogCapture.h"

#include <limits>
#include <optional>

using namespace vexa::draw;
using namespace gl_test_support;

namespace {

constexpr const char* kBuildLabel = "vexa::draw::PointCloudRenderer::PointCloudRenderer";
constexpr const char* kSetColorsLabel = "vexa::draw::PointCloudRenderer::SetColors";
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

// The scene camera sits at the origin looking down -Z with a 45 degree field of view, so on
// the 128-pixel target a point at x = +-1, z = -5 lands about 31 pixels either side of the
// centre.
constexpr int kLeftX = 33;
constexpr int kRightX = 95;
constexpr int kMidY = 64;
const glm::vec3 kLeft{-1.0f, 0.0f, -5.0f};
const glm::vec3 kRight{1.0f, 0.0f, -5.0f};

tesk::PointCloud MakeCloud(std::vector<glm::vec3> positions, std::vector<glm::vec3> normals = {})
{
    tesk::PointCloud cloud(std::move(positions));
    if (!normals.empty())
        cloud.SetNormals(std::move(normals));
    return cloud;
}

std::shared_ptr<PointCloudStyle> FlatStyle(int colorMode = ColorMode::Material)
{
    auto style = std::make_shared<PointCloudStyle>();
    style->pointSize = 10.0f;
    style->colorMode = colorMode;
    style->material.color = {1.0f, 1.0f, 0.0f};
    style->material.useLighting = false;
    return style;
}

using PointCloudGlTest = GlTest;

} // namespace

TEST(PointCloudRendererTest, BuildsWithoutContextAndKeepsOnlyFinitePointsInItsBounds)
{
    testing_support::LogCapture log;
    {
        tesk::PointCloud cloud =
            MakeCloud({{1, 2, 3}, {kNaN, 0, 0}, {-1, 5, 0}, {0, std::numeric_limits<float>::infinity(), 9}},
                      {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}, {0, 0, 1}});
        PointCloudRenderer renderer(cloud);
        EXPECT_EQ(renderer.GetPointCount(), 4u);
        EXPECT_EQ(renderer.GetNonFiniteCount(), 2u);
        EXPECT_TRUE(renderer.HasNormals());
        EXPECT_EQ(renderer.GetBoundingBox(), geom::Aabb3f(glm::vec3(-1, 2, 0), glm::vec3(1, 5, 3)));
        // Positions and normals wait on the CPU, copied once.
        EXPECT_TRUE(renderer.HasPendingData());
        EXPECT_EQ(renderer.GetCpuDataBytes(), 2 * 4 * sizeof(glm::vec3));
        EXPECT_TRUE(renderer.SetColors(std::vector<tesk::Color3f>(4, tesk::Color3f(1, 0, 0))));
        // Colours wait as bytes, whatever form they came in.
        EXPECT_EQ(renderer.GetCpuDataBytes(), 2 * 4 * sizeof(glm::vec3) + 4 * sizeof(tesk::Color3b));
    }
    EXPECT_TRUE(log.Contains("2 of 4 points have a non-finite coordinate and are not drawn", kBuildLabel));
    EXPECT_EQ(plor::PendingGlDeletes(), 0u);

    // A finite cloud takes the fast path: extremes in every position of the four-point blocks
    // and in the tail past the last whole block still count.
    std::vector<glm::vec3> many(1003, glm::vec3(0.5f));
    many[1] = {-3.0f, 0.5f, 0.5f};
    many[502] = {0.5f, 7.0f, -2.0f};
    many[999] = {0.5f, -4.0f, 0.5f};
    many[1001] = {9.0f, 0.5f, 6.0f};
    const PointCloudRenderer finite(MakeCloud(many));
    EXPECT_EQ(finite.GetNonFiniteCount(), 0u);
    EXPECT_EQ(finite.GetBoundingBox(), geom::Aabb3f(glm::vec3(-3, -4, -2), glm::vec3(9, 7, 6)));
    many[1002].y = kNaN;
    EXPECT_EQ(PointCloudRenderer(MakeCloud(many)).GetNonFiniteCount(), 1u);

    // No point at all, or no finite point: nothing to frame.
    PointCloudRenderer empty{tesk::PointCloud()};
    EXPECT_TRUE(log.Contains("The point cloud is empty; nothing will be drawn", kBuildLabel));
    EXPECT_TRUE(empty.GetBoundingBox().IsEmpty());
    EXPECT_FALSE(empty.HasPendingData());
    PointCloudRenderer allBad(MakeCloud({{kNaN, kNaN, kNaN}}));
    EXPECT_TRUE(allBad.GetBoundingBox().IsEmpty());
    EXPECT_EQ(plor::PendingGlDeletes(), 0u);
}

TEST(PointCloudRendererTest, ColoursOfTheWrongSizeAreRefused)
{
    PointCloudRenderer renderer(MakeCloud({{0, 0, 0}, {1, 1, 1}}));
    testing_support::LogCapture log;
    const std::vector<tesk::Color3f> three(3, tesk::Color3f(1, 0, 0));
    EXPECT_FALSE(renderer.SetColors(three));
    EXPECT_FALSE(renderer.HasColors());
    EXPECT_TRUE(log.Contains("Got 3 colours for 2 points; keeping the previous colours", kSetColorsLabel));

    const std::vector<tesk::Color3f> two(2, tesk::Color3f(0, 1, 0));
    EXPECT_TRUE(renderer.SetColors(two));
    EXPECT_FALSE(renderer.SetColors(three));
    EXPECT_TRUE(renderer.HasColors()) << "a refused set keeps the previous colours";
    renderer.ClearColors();
    EXPECT_FALSE(renderer.HasColors());
    EXPECT_EQ(renderer.GetCpuDataBytes(), 2 * sizeof(glm::vec3));

    PointCloudRenderer empty;
    EXPECT_FALSE(empty.SetColors(std::vector<tesk::Color3f>{}));
    EXPECT_TRUE(log.Contains("The point cloud is empty; there is nothing to colour", kSetColorsLabel));
}

TEST_F(PointCloudGlTest, NormalsColourLightAndCullThePoints)
{
    // Left faces the camera (+Z), right faces away (-Z).
    auto renderer = std::make_shared<PointCloudRenderer>(MakeCloud({kLeft, kRight}, {{0, 0, 1}, {0, 0, -1}}));
    auto style = FlatStyle(ColorMode::Normals);
    ASSERT_GT(scene_->AddInstance(renderer, style), 0);

    Pixels pixels = Render();
    EXPECT_TRUE(Looks(pixels.At(kLeftX, kMidY), Rgba{128, 128, 255, 255}, 4));
    EXPECT_TRUE(Looks(pixels.At(kRightX, kMidY), Rgba{128, 128, 0, 255}, 4));

    // Culling removes the point that faces away, and only that one.
    style->cullBackFacing = true;
    pixels = Render();
    EXPECT_FALSE(IsBackground(pixels.At(kLeftX, kMidY)));
    EXPECT_EQ(pixels.Count(IsDrawn, 64, 0, kSize, kSize), 0) << "nothing is left on the right";

    // Without normals in use there is nothing to cull or colour by: both points in the material colour.
    style->useNormals = false;
    pixels = Render();
    EXPECT_TRUE(Looks(pixels.At(kLeftX, kMidY), Rgba{255, 255, 0, 255}));
    EXPECT_TRUE(Looks(pixels.At(kRightX, kMidY), Rgba{255, 255, 0, 255}));

    // Lit, a point turned towards the light is brighter than the flat colour's ambient part.
    style->useNormals = true;
    style->cullBackFacing = false;
    style->colorMode = ColorMode::Material;
    style->material.useLighting = true;
    style->material.color = {1.0f, 1.0f, 1.0f};
    style->material.specular = 0.0f;
    auto headlight = std::make_shared<Light>();
    headlight->direction = {0.0f, 0.0f, -1.0f};
    headlight->intensity = 0.5f;
    scene_->SetLights({headlight});
    pixels = Render();
    // Ambient 0.25 plus half the light head-on: 0.75 of white, on both sides (two-sided).
    EXPECT_TRUE(Looks(pixels.At(kLeftX, kMidY), Rgba{191, 191, 191, 255}, 4));
    EXPECT_TRUE(Looks(pixels.At(kRightX, kMidY), Rgba{191, 191, 191, 255}, 4));

    // Per-point colours are shaded only when asked (unshaded, the end-to-end tier sees them as they are).
    ASSERT_TRUE(renderer->SetColors(std::vector<tesk::Color3f>(2, tesk::Color3f(1.0f, 1.0f, 1.0f))));
    style->colorMode = ColorMode::PerPoint;
    style->shadeColors = true;
    EXPECT_TRUE(Looks(Render().At(kLeftX, kMidY), Rgba{191, 191, 191, 255}, 4));
}

TEST_F(PointCloudGlTest, NormalLinesAndOrientedDiscs)
{
    // A point whose normal points right (+X) stays round unless discs are oriented; then it
    // shows as a thin disc seen edge-on. Its normal line runs to the right.
    auto renderer = std::make_shared<PointCloudRenderer>(MakeCloud({kLeft}, {{1, 0, 0}}));
    auto style = FlatStyle();
    const int handle = scene_->AddInstance(renderer, style);
    ASSERT_GT(handle, 0);
    style->material.color = {1.0f, 0.0f, 0.0f};
    const int round = Render().Count(IsRed);
    ASSERT_TRUE(scene_->RemoveInstance(handle));
    style->orientedDiscs = true;
    style->color = {0.0f, 1.0f, 0.0f};
    style->normalLength = 1.0f;
    ASSERT_GT(scene_->AddInstance(renderer, style), 0);

    Pixels pixels = Render();
    EXPECT_EQ(pixels.Count(IsGreen), 0);
    const int edgeOn = pixels.Count(IsRed);
    EXPECT_GT(edgeOn, 0);
    EXPECT_TRUE(IsBackground(pixels.At(kLeftX + 4, kMidY))) << "the disc is narrow across";
    EXPECT_TRUE(IsRed(pixels.At(kLeftX, kMidY - 4))) << "and full height";
    EXPECT_GT(round, edgeOn * 2);

    style->showNormals = true;
    pixels = Render();
    // One unit at five units' distance is about 31 pixels to the right.
    EXPECT_GT(pixels.Count(IsGreen, kLeftX + 6, kMidY - 2, kLeftX + 28, kMidY + 2), 15);
    EXPECT_EQ(pixels.Count(IsGreen, 0, 0, kLeftX - 2, kSize), 0);

    // Without normals in use the line goes and the disc turns round.
    style->useNormals = false;
    pixels = Render();
    EXPECT_EQ(pixels.Count(IsGreen), 0);
    EXPECT_GT(pixels.Count(IsRed), edgeOn * 2);
}

TEST_F(PointCloudGlTest, EmptyAndNonFiniteCloudsDrawSafely)
{
    auto empty = std::make_shared<PointCloudRenderer>(tesk::PointCloud());
    auto broken = std::make_shared<PointCloudRenderer>(
        MakeCloud({{kNaN, 0.0f, -5.0f}, kRight, {0.0f, std::numeric_limits<float>::infinity(), -5.0f}},
                  {{0, 0, 1}, {kNaN, kNaN, kNaN}, {0, 0, 1}}));
    ASSERT_GT(scene_->AddInstance(empty, FlatStyle()), 0);
    auto style = FlatStyle();
    style->showNormals = true;
    style->material.useLighting = true;
    ASSERT_GT(scene_->AddInstance(broken, style), 0);

    const Pixels pixels = Render();
    // Only the finite point shows (its broken normal just leaves it unoriented).
    EXPECT_FALSE(IsBackground(pixels.At(kRightX, kMidY))) << pixels.At(kRightX, kMidY);
    EXPECT_EQ(pixels.Count(IsDrawn, 0, 0, 80, kSize), 0);
    EXPECT_LT(pixels.CountDifferent(kBackground), 150);
}

TEST_F(PointCloudGlTest, CameraMovesUploadNothingAndColoursUploadOnlyTheirBuffer)
{
    constexpr std::size_t kCount = 1000;
    std::vector<glm::vec3> positions(kCount);
    std::vector<glm::vec3> normals(kCount, glm::vec3(0, 0, 1));
    for (std::size_t i = 0; i < kCount; ++i)
        positions[i] = {std::cos(0.1f * static_cast<float>(i)), std::sin(0.1f * static_cast<float>(i)),
                        -5.0f};
    auto renderer = std::make_shared<PointCloudRenderer>(MakeCloud(positions, normals));
    auto style = FlatStyle();
    ASSERT_GT(scene_->AddInstance(renderer, style), 0);

    const std::uint64_t uploadsBefore = plor::ArrayObject::GetUploadCount();
    const std::uint64_t bytesBefore = plor::ArrayObject::GetUploadedBytes();
    Render();
    EXPECT_FALSE(renderer->HasPendingData());
    EXPECT_EQ(renderer->GetCpuDataBytes(), 0u) << "the CPU copy goes once uploaded";
    EXPECT_EQ(plor::ArrayObject::GetUploadedBytes() - bytesBefore, 2 * kCount * sizeof(glm::vec3));

    const std::uint64_t uploadsAfterFirst = plor::ArrayObject::GetUploadCount();
    EXPECT_EQ(uploadsAfterFirst - uploadsBefore, 2u) << "positions and normals";
    scene_->GetCamera()->Pan(0.05f);
    const Pixels moved = Render();
    scene_->GetCamera()->Tilt(0.05f);
    Render();
    EXPECT_EQ(plor::ArrayObject::GetUploadCount(), uploadsAfterFirst) << "a camera move uploads nothing";
    EXPECT_GT(moved.CountDifferent(kBackground), 0);

    // New colours: one upload of exactly the colour bytes, each time.
    for (int round = 0; round < 2; ++round) {
        const std::uint64_t uploads = plor::ArrayObject::GetUploadCount();
        const std::uint64_t bytes = plor::ArrayObject::GetUploadedBytes();
        ASSERT_TRUE(renderer->SetColors(std::vector<tesk::Color3f>(kCount, tesk::Color3f(0, 0, 1))));
        EXPECT_EQ(renderer->GetCpuDataBytes(), kCount * sizeof(tesk::Color3b));
        Render();
        EXPECT_EQ(plor::ArrayObject::GetUploadCount() - uploads, 1u) << "round " << round;
        EXPECT_EQ(plor::ArrayObject::GetUploadedBytes() - bytes, kCount * sizeof(tesk::Color3b))
            << "round " << round;
        EXPECT_EQ(renderer->GetCpuDataBytes(), 0u);
    }

    // Released, the renderer draws nothing rather than half a cloud.
    renderer->ReleaseGpuResources();
    const Pixels released = Render();
    EXPECT_EQ(released.CountDifferent(kBackground), 0);
}

TEST_F(PointCloudGlTest, UnderAPointBudgetTheSameSpreadSubsetIsDrawnEveryFrame)
{
    // A dense grid across the view, four blocks of points.
    constexpr int kSide = 256;
    std::vector<glm::vec3> grid;
    for (int row = 0; row < kSide; ++row)
        for (int column = 0; column < kSide; ++column)
            grid.emplace_back(-1.5f + 3.0f * column / kSide, -1.5f + 3.0f * row / kSide, -5.0f);
    auto renderer = std::make_shared<PointCloudRenderer>(MakeCloud(grid));
    auto style = FlatStyle();
    style->pointSize = 1.0f;
    ASSERT_GT(scene_->AddInstance(renderer, style), 0);
    const std::size_t count = grid.size();

    const int full = Render().Count(IsDrawn, 0, 0, kSize, kSize);
    EXPECT_EQ(renderer->GetDrawnCount(), count);
    EXPECT_EQ(system_->GetSkippedPoints(), 0u);

    system_->SetPointBudget(count / 10);
    const Pixels first = Render();
    EXPECT_NEAR(static_cast<double>(renderer->GetDrawnCount()), count / 10.0, 4.0);
    EXPECT_EQ(system_->GetDrawnPoints() + system_->GetSkippedPoints(), count);
    const int sparse = first.Count(IsDrawn, 0, 0, kSize, kSize);
    EXPECT_LT(sparse, full * 0.6);
    // Spread over the whole grid, not its first rows: every quarter of the view has points.
    for (const auto& [x, y] : {std::pair{0, 0}, {64, 0}, {0, 64}, {64, 64}})
        EXPECT_GT(first.Count(IsDrawn, x, y, x + 64, y + 64), sparse / 8) << x << ", " << y;
    // No flicker: the next frame under the budget draws the very same points.
    const Pixels second = Render();
    int differing = 0;
    for (int y = 0; y < kSize; ++y)
        for (int x = 0; x < kSize; ++x)
            differing += Near(second.At(x, y), first.At(x, y), 0) ? 0 : 1;
    EXPECT_EQ(differing, 0) << "subset frames differ";

    system_->SetPointBudget(0);
    EXPECT_EQ(Render().Count(IsDrawn, 0, 0, kSize, kSize), full);
}

TEST_F(PointCloudGlTest, PicksTheSamePointFromThePendingCopyAndFromTheBuffer)
{
    // kLeft hides a point twice as far on its line of sight; a row above gives the buffer bulk.
    std::vector<glm::vec3> positions{2.0f * kLeft, kRight};
    for (int i = 0; i < 1000; ++i)
        positions.emplace_back(0.001f * static_cast<float>(i) - 0.5f, 1.0f, -5.0f);
    positions.push_back(kLeft);
    const std::size_t nearest = positions.size() - 1;
    auto renderer = std::make_shared<PointCloudRenderer>(MakeCloud(positions));

    const glm::mat4 clip = scene_->GetProjectionMatrix() * scene_->GetCamera()->GetViewMatrix();
    const glm::ivec4 viewport = scene_->GetViewport();
    const glm::vec2 cursor = ToPixel(kLeft) + glm::vec2(1.5f, -1.0f);
    for (const bool uploaded : {false, true}) {
        SCOPED_TRACE(uploaded ? "from the vertex buffer" : "from the pending copy");
        EXPECT_EQ(renderer->HasPendingData(), !uploaded);
        glm::vec3 position(0.0f);
        EXPECT_EQ(renderer->Pick(clip, viewport, cursor, 5.0f, &position), nearest);
        EXPECT_EQ(position, kLeft);
        Render(renderer, FlatStyle());
    }
    EXPECT_EQ(renderer->GetCpuDataBytes(), 0u) << "reading the buffer keeps no copy";
    // The buffer was let go again: the next frame draws from it as before.
    EXPECT_TRUE(IsDrawn(Render().At(cursor)));

    // Without a context the buffer cannot be read: nothing, and a warning.
    {
        testing_support::LogCapture log;
        window_->ReleaseContext();
        EXPECT_EQ(renderer->Pick(clip, viewport, cursor, 5.0f), std::nullopt);
        window_->MakeContextCurrent();
        EXPECT_TRUE(log.Contains("No OpenGL context is current; buffer slot 0 cannot be read",
                                 "plor::ArrayObject::ReadBuffer"));
    }

    renderer->ReleaseGpuResources();
    EXPECT_EQ(renderer->Pick(clip, viewport, cursor, 5.0f), std::nullopt);
    EXPECT_EQ(PointCloudRenderer().Pick(clip, viewport, cursor, 5.0f), std::nullopt);
}
