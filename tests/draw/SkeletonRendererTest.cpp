// Skeleton style and renderer: the style's state block, the pose's bounds, and what each
// render mode draws. The drawing tests need a display: run them under
// `xvfb-run -a -s "-noreset -screen 0 1280x1024x24" ctest ...`.

#include "GlTestSupport.h"
#include "LogCapture.h"

#include <vexa/draw/SkeletonRenderer.h>
#include <vexa/draw/SkeletonStyle.h>

#include <plor/ArrayObject.h>

#include <glm/gtc/quaternion.hpp>

#include <string>

using namespace vexa::draw;
using namespace gl_test_support;

namespace {

/// A root at (-1, 0, 0) and one child 2 units to its right: a single horizontal bone.
tesk::Skeleton MakeArm()
{
    tesk::Skeleton skeleton;
    skeleton.AddJoint("shoulder", -1, {-1.0f, 0.0f, 0.0f});
    skeleton.AddJoint("hand", 0, {2.0f, 0.0f, 0.0f});
    return skeleton;
}

std::shared_ptr<SkeletonStyle> RedBones(int mode, bool joints = false)
{
    auto style = std::make_shared<SkeletonStyle>();
    style->renderMode = mode;
    style->showJoints = joints;
    style->enableLighting = false;
    style->boneColor = {1.0f, 0.0f, 0.0f};
    style->jointColor = {0.0f, 1.0f, 0.0f};
    return style;
}

class SkeletonRendererGlTest : public GlTest {
protected:
    void SetUp() override
    {
        GlTest::SetUp();
        if (!HasFatalFailure())
            LookAtOriginFrom({0.0f, 0.0f, 5.0f});
    }
};

TEST_F(SkeletonRendererGlTest, EveryRenderModeDrawsTheBoneAndJointsAndAxesShowWhenAskedFor)
{
    auto renderer = std::make_shared<SkeletonRenderer>(MakeArm());
    // Stickman's thin lines between the joints are seen end to end (the walking figure).
    const Pixels pixels = Render(renderer, RedBones(SkeletonRenderMode::Stickman));

    // Octahedrons fill more than their wires, and wires more than sticks.
    const int stick = pixels.Count(IsDrawn);
    const Pixels wired = Render(renderer, RedBones(SkeletonRenderMode::WiredOctahedron));
    const Pixels solid = Render(renderer, RedBones(SkeletonRenderMode::Octahedron));
    EXPECT_GT(wired.Count(IsDrawn), stick + 20);
    EXPECT_GT(solid.Count(IsDrawn), 2 * stick);
    EXPECT_GT(solid.Count(IsDrawn), wired.Count(IsDrawn));

    // The solid is widest a fifth along the bone from the parent and closes to points.
    const glm::ivec2 widest = ToPixel({-0.6f, 0.0f, 0.0f});
    const glm::ivec2 narrow = ToPixel({0.8f, 0.0f, 0.0f});
    const int widestColumn = solid.Count(IsRed, widest.x, 0, widest.x + 1, kSize);
    const int narrowColumn = solid.Count(IsRed, narrow.x, 0, narrow.x + 1, kSize);
    EXPECT_GT(widestColumn, 2 * narrowColumn) << widestColumn << " vs " << narrowColumn;

    // Lighting shades the faces: no longer one flat colour.
    auto lit = RedBones(SkeletonRenderMode::Octahedron);
    lit->enableLighting = true;
    const Pixels shaded = Render(renderer, lit);
    EXPECT_LT(shaded.Count(IsRed), shaded.Count(IsDrawn));

    const Pixels with = Render(renderer, RedBones(SkeletonRenderMode::Stickman, true));
    EXPECT_GT(CountAround(with, {-1.0f, 0.0f, 0.0f}, 4, IsGreen), 10);
    EXPECT_GT(CountAround(with, {1.0f, 0.0f, 0.0f}, 4, IsGreen), 10);
    EXPECT_EQ(pixels.Count(IsGreen), 0) << "no joints unless asked for";

    // Axes: the Y axis of the hand points up the screen in green-ish, X along the bone in red.
    auto basis = RedBones(SkeletonRenderMode::Stickman);
    basis->boneColor = {1.0f, 1.0f, 1.0f};
    basis->showBasis = true;
    const Pixels axes = Render(renderer, basis);
    const auto isAxisGreen = [](const Rgba& c) { return c.g > 150 && c.r < 80 && c.b < 80; };
    const glm::ivec2 above = ToPixel({1.0f, 0.1f, 0.0f});
    EXPECT_GT(axes.Count(isAxisGreen, above.x - 2, above.y - 2, above.x + 3, above.y + 3), 0);
    EXPECT_EQ(pixels.Count(isAxisGreen), 0);
}

TEST_F(SkeletonRendererGlTest, SetPoseMovesTheBoneAndUploadsOnlyOnChange)
{
    auto renderer = std::make_shared<SkeletonRenderer>(MakeArm());
    auto style = RedBones(SkeletonRenderMode::Stickman);
    EXPECT_GT(CountAround(Render(renderer, style), {0.5f, 0.0f, 0.0f}, 1, IsRed), 0);

    // A quarter turn of the shoulder about Z swings the hand up to (-1, 2, 0).
    tesk::SkeletonPose pose = renderer->GetSkeleton().GetRestPose();
    ASSERT_TRUE(
        pose.SetJoint(0, {-1.0f, 0.0f, 0.0f}, glm::angleAxis(glm::radians(90.0f), glm::vec3(0, 0, 1))));
    ASSERT_TRUE(renderer->SetPose(pose));
    EXPECT_NEAR(glm::distance(glm::vec3(renderer->GetGlobalMatrices()[1][3]), glm::vec3(-1, 2, 0)), 0.0f,
                1e-5f);

    // A pose of another skeleton is refused and the drawn one stays.
    testing_support::LogCapture log;
    EXPECT_FALSE(renderer->SetPose(tesk::SkeletonPose(5)));
    EXPECT_EQ(log.messages.size(), 1u);
    EXPECT_NEAR(glm::distance(glm::vec3(renderer->GetGlobalMatrices()[1][3]), glm::vec3(-1, 2, 0)), 0.0f,
                1e-5f);

    // Straight to the renderer, so nothing else in the frame uploads: a still pose costs no
    // transfer, a new pose exactly one.
    const RenderContext context = MakeContext({0.0f, 0.0f, 5.0f});
    const auto draw = [&] { DrawDirect([&] { renderer->Render(context, *style); }); };
    draw();
    const std::uint64_t uploads = plor::ArrayObject::GetUploadCount();
    draw();
    draw();
    EXPECT_EQ(plor::ArrayObject::GetUploadCount(), uploads);
    ASSERT_TRUE(renderer->SetPose(renderer->GetSkeleton().GetRestPose()));
    draw();
    EXPECT_EQ(plor::ArrayObject::GetUploadCount(), uploads + 1);
}

TEST(SkeletonRendererTest, BoundsFollowThePoseWithoutAnyGlContext)
{
    const std::size_t pendingBefore = plor::PendingGlDeletes();
    {
        tesk::Skeleton skeleton;
        skeleton.AddJoint("hips", -1, {0.0f, 1.0f, 0.0f});
        skeleton.AddJoint("knee", 0, {0.2f, -0.5f, 0.1f});
        skeleton.AddJoint("foot", 1, {0.0f, -0.5f, -0.3f});
        SkeletonRenderer renderer(skeleton);
        EXPECT_EQ(renderer.GetJointCount(), 3u);
        EXPECT_EQ(renderer.GetBoneCount(), 2u);
        geom::TAabb<3, float> box = renderer.GetBoundingBox();
        ASSERT_TRUE(box.IsValid());
        EXPECT_NEAR(glm::distance(box.min, glm::vec3(0.0f, 0.0f, -0.2f)), 0.0f, 1e-5f);
        EXPECT_NEAR(glm::distance(box.max, glm::vec3(0.2f, 1.0f, 0.1f)), 0.0f, 1e-5f);

        // Moving the root moves the box.
        tesk::SkeletonPose pose = skeleton.GetRestPose();
        ASSERT_TRUE(pose.SetJoint(0, {10.0f, 1.0f, 0.0f}, glm::quat(1, 0, 0, 0)));
        ASSERT_TRUE(renderer.SetPose(pose));
        box = renderer.GetBoundingBox();
        EXPECT_NEAR(glm::distance(box.min, glm::vec3(10.0f, 0.0f, -0.2f)), 0.0f, 1e-5f);

        renderer.ReleaseGpuResources();

        // A flat skeleton's box (no valid one) is checked where focusing refuses it (gui tier).
        testing_support::LogCapture log;
        EXPECT_FALSE(SkeletonRenderer(tesk::Skeleton()).GetBoundingBox().IsValid());
        EXPECT_EQ(log.messages.size(), 1u);
    }
    EXPECT_EQ(plor::PendingGlDeletes(), pendingBefore);
}

} // namespace
