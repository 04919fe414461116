#include "GlFixture.h"
#include "LogCapture.h"

namespace {

using plor_test::GlTest;

TEST_F(GlTest, FramebufferResizeKeepsWorkingTargetsAndRejectsBadSizes)
{
    plor::Framebuffer target;
    ASSERT_TRUE(target.Resize(32, 16));
    const unsigned int texture = target.GetColorTexture();
    EXPECT_TRUE(target.Resize(32, 16)); // unchanged: same objects
    EXPECT_EQ(target.GetColorTexture(), texture);

    // Samples beyond the driver's are clamped to them; one sample means none.
    ASSERT_TRUE(target.Resize(32, 16, 100000));
    EXPECT_EQ(target.GetSamples(), plor::GetMaxSamples());
    EXPECT_EQ(target.GetColorTexture(), 0u);
    ASSERT_TRUE(target.Resize(32, 16, 1));
    EXPECT_EQ(target.GetSamples(), 0);
    EXPECT_NE(target.GetColorTexture(), 0u);

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
