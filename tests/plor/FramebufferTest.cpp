#include "GlFixture.h"
#include "LogCapture.h"

#include <plor/ArrayObject.h>
#include <plor/Program.h>

namespace {

using plor_test::GlTest;
using plor_test::kSize;

/// Red triangle over the lower-left half of the target; its long edge is the diagonal.
int CountDiagonalShades(int samples)
{
    plor::Program program("fill");
    if (!plor_test::AddColoredStages(program).Use())
        return -1;
    const std::vector<float> triangle = {-1.f, -1.f, 1.f, -1.f, -1.f, 1.f};
    plor::ArrayObject array;
    array.SetBuffer(0, plor::AsBytes(triangle), {plor::Attribute{0, 2}});
    array.SetBuffer(1, std::vector<float>(3, 1.0f), {plor::Attribute{1, 1}}); // red
    array.SetVertexCount(3);

    plor::Framebuffer scene;
    if (!scene.Resize(kSize, kSize, samples))
        return -1;
    scene.Bind();
    gl::glViewport(0, 0, kSize, kSize);
    gl::glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
    gl::glClear(gl::GL_COLOR_BUFFER_BIT);
    array.Draw(plor::PrimitiveType::Triangles);

    plor::Framebuffer resolved;
    if (!resolved.Resize(kSize, kSize))
        return -1;
    scene.BlitTo(&resolved);
    const std::vector<std::uint8_t> pixels = plor::ReadPixelsRgba(0, 0, kSize, kSize);
    int shades = 0;
    for (std::size_t i = 0; i < pixels.size(); i += 4)
        if (pixels[i] > 16 && pixels[i] < 240)
            ++shades;
    return shades;
}

TEST_F(GlTest, MultisampledTargetResolvesToIntermediateColoursAlongAnEdge)
{
    const int maxSamples = plor::GetMaxSamples();
    ASSERT_GE(maxSamples, 2) << "the driver offers no multisampling";

    plor::Framebuffer target;
    ASSERT_TRUE(target.Resize(kSize, kSize, 100000));
    EXPECT_EQ(target.GetSamples(), maxSamples);
    EXPECT_EQ(target.GetColorTexture(), 0u);
    ASSERT_TRUE(target.Resize(kSize, kSize, 1)); // one sample means none
    EXPECT_EQ(target.GetSamples(), 0);
    EXPECT_NE(target.GetColorTexture(), 0u);

    EXPECT_EQ(CountDiagonalShades(0), 0);
    // Pixels the diagonal crosses are partly covered: roughly one per row.
    EXPECT_GE(CountDiagonalShades(std::min(4, maxSamples)), kSize / 2);
    EXPECT_EQ(plor::GetLastGlError(), "");
}

TEST_F(GlTest, FramebufferResizeKeepsWorkingTargetsAndRejectsBadSizes)
{
    plor::Framebuffer target;
    EXPECT_FALSE(target.IsValid());
    ASSERT_TRUE(target.Resize(32, 16));
    const unsigned int texture = target.GetColorTexture();
    EXPECT_TRUE(target.Resize(32, 16)); // unchanged: same objects
    EXPECT_EQ(target.GetColorTexture(), texture);

    testing_support::LogCapture log;
    EXPECT_FALSE(target.Resize(0, 16));
    EXPECT_EQ(log.messages.size(), 1u);
    EXPECT_TRUE(target.IsValid());
    EXPECT_EQ(target.GetWidth(), 32);

    // Resizing does not disturb the caller's binding.
    plor::Framebuffer other;
    PrepareTarget(other, 0.0f, 1.0f, 0.0f);
    ASSERT_TRUE(target.Resize(48, 48));
    EXPECT_EQ(PixelAt(1, 1), (std::vector<std::uint8_t>{0, 255, 0, 255}));

    target.Release();
    EXPECT_FALSE(target.IsValid());
    EXPECT_TRUE(plor::ReadPixelsRgba(0, 0, 0, 4).empty());
    EXPECT_EQ(plor::GetLastGlError(), "");
}

} // namespace
