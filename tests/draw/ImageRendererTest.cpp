// Images: the style's state block, the renderer's layout and CPU side, and what a person sees
// through a real render system. The drawing tests need a display: run them under
// `xvfb-run -a -s "-noreset -screen 0 1280x1024x24" ctest ...`.

#include "GlTestSupport.h"
#include "LogCapture.h"

#include <vexa/draw/ImageRenderer.h>
#include <vexa/draw/ImageStyle.h>

#include <limits>

using namespace vexa::draw;
using namespace gl_test_support;

namespace {

const Rgba kRed{255, 0, 0, 255};
const Rgba kGreen{0, 255, 0, 255};
const Rgba kBlue{0, 0, 255, 255};
const Rgba kWhite{255, 255, 255, 255};
const Rgba kBlack{0, 0, 0, 255};

tesk::Image Rgb8(std::uint32_t width, std::uint32_t height, std::vector<std::uint8_t> pixels)
{
    return tesk::Image(width, height, 3, std::move(pixels));
}

/// Red top-left, blue top-right, green bottom-left, white bottom-right.
tesk::Image Quadrants()
{
    return Rgb8(2, 2, {255, 0, 0, 0, 0, 255, 0, 255, 0, 255, 255, 255});
}

tesk::Image Filled(std::uint32_t width, std::uint32_t height, std::uint8_t r, std::uint8_t g, std::uint8_t b,
                   std::uint8_t a)
{
    std::vector<std::uint8_t> pixels;
    for (std::uint32_t i = 0; i < width * height; ++i)
        pixels.insert(pixels.end(), {r, g, b, a});
    return tesk::Image(width, height, 4, std::move(pixels));
}

TEST(ImageRendererTest, LayoutFitsLetterboxesOrMapsPixelsOneToOne)
{
    ImageStyle style;
    style.fitToViewport = true;
    style.keepAspectRatio = false;
    EXPECT_EQ(ImageRenderer::ComputeImageRect({4, 1}, {100, 50}, 1.0f, style), glm::vec4(0, 0, 100, 50));

    style.keepAspectRatio = true;
    EXPECT_EQ(ImageRenderer::ComputeImageRect({4, 1}, {100, 50}, 1.0f, style), glm::vec4(0, 13, 100, 38));
    EXPECT_EQ(ImageRenderer::ComputeImageRect({1, 2}, {100, 50}, 1.0f, style), glm::vec4(38, 0, 63, 50));

    // Unfitted: one image pixel per window pixel, centred on whole pixels.
    style.fitToViewport = false;
    EXPECT_EQ(ImageRenderer::ComputeImageRect({16, 8}, {100, 50}, 1.0f, style), glm::vec4(42, 21, 58, 29));
    EXPECT_EQ(ImageRenderer::ComputeImageRect({16, 8}, {100, 50}, 2.0f, style), glm::vec4(34, 17, 66, 33));
    EXPECT_EQ(ImageRenderer::ComputeImageRect({0, 8}, {100, 50}, 1.0f, style), glm::vec4(0.0f));
    EXPECT_EQ(ImageRenderer::ComputeImageRect({16, 8}, {0, 50}, 1.0f, style), glm::vec4(0.0f));
}

TEST(ImageRendererTest, WorksWithoutContextAndRefusesEmptyImages)
{
    const std::size_t pendingBefore = plor::PendingGlDeletes();
    testing_support::LogCapture log;
    {
        ImageRenderer renderer{tesk::Image()};
        EXPECT_FALSE(renderer.HasImage());
        EXPECT_EQ(log.messages.size(), 1u);
        EXPECT_FALSE(renderer.GetBoundingBox().IsValid());

        tesk::Image floats(3, 2, 1, std::vector<float>(6, 0.5f));
        EXPECT_TRUE(renderer.SetImage(std::move(floats)));

        EXPECT_FALSE(renderer.SetImage(tesk::Image()));
        EXPECT_EQ(log.messages.size(), 2u);
        EXPECT_TRUE(renderer.HasImage()) << "an empty image must not replace a good one";
        EXPECT_EQ(renderer.GetImageWidth(), 3u);

        renderer.Clear();
        EXPECT_FALSE(renderer.HasImage());
        renderer.SetImage(Quadrants());
    }
    EXPECT_EQ(plor::PendingGlDeletes(), pendingBefore);
}

class ImageGlTest : public GlTest {
protected:
    Pixels Draw(const std::shared_ptr<ImageRenderer>& renderer, const ImageStyle& style)
    {
        return Render(renderer, std::make_shared<ImageStyle>(style));
    }

    static ImageStyle Sharp()
    {
        ImageStyle style;
        style.nearestFiltering = true;
        style.keepAspectRatio = false;
        return style;
    }
};

TEST_F(ImageGlTest, FittedImageKeepsItsSidesAndMirrorsSwapThem)
{
    auto renderer = std::make_shared<ImageRenderer>(Quadrants());
    ImageStyle style = Sharp();
    struct Case {
        bool mirrorX, mirrorY;
        Rgba topLeft, topRight, bottomLeft, bottomRight;
    };
    // Mirroring X alone is also seen end to end (a mirrored PNG in the viewer).
    for (const Case& c :
         {Case{false, false, kRed, kBlue, kGreen, kWhite}, Case{false, true, kGreen, kWhite, kRed, kBlue},
          Case{true, true, kWhite, kGreen, kBlue, kRed}}) {
        style.mirrorX = c.mirrorX;
        style.mirrorY = c.mirrorY;
        const Pixels pixels = Draw(renderer, style);
        SCOPED_TRACE(testing::Message() << "mirror x " << c.mirrorX << ", mirror y " << c.mirrorY);
        EXPECT_PRED3(Near, pixels.At(8, 8), c.topLeft, 3);
        EXPECT_PRED3(Near, pixels.At(119, 8), c.topRight, 3);
        EXPECT_PRED3(Near, pixels.At(8, 119), c.bottomLeft, 3);
        EXPECT_PRED3(Near, pixels.At(119, 119), c.bottomRight, 3);
        // Fitted without keeping the aspect: nothing of the background is left.
        EXPECT_EQ(pixels.Count([](const Rgba& p) { return Near(p, kBackground, 3); }), 0);
    }

    // Linear filtering blends across the middle; nearest keeps a hard edge.
    style = Sharp();
    const auto redBlue = std::make_shared<ImageRenderer>(Rgb8(2, 1, {255, 0, 0, 0, 0, 255}));
    auto isMixed = [](const Rgba& p) { return p.r > 40 && p.b > 40; };
    EXPECT_EQ(Draw(redBlue, style).Count(isMixed, 0, 60, kSize, 61), 0);
    style.nearestFiltering = false;
    const Pixels smooth = Draw(redBlue, style);
    EXPECT_GT(smooth.Count(isMixed, 0, 60, kSize, 61), 20);
    EXPECT_PRED3(Near, smooth.At(2, 60), kRed, 3);
    EXPECT_PRED3(Near, smooth.At(125, 60), kBlue, 3);
}

TEST_F(ImageGlTest, ChannelMasksHideChannelsAndAlphaAloneShowsGray)
{
    ImageStyle style = Sharp();
    auto red = std::make_shared<ImageRenderer>(Filled(4, 4, 255, 0, 0, 255));
    EXPECT_PRED3(Near, Draw(red, style).At(64, 64), kRed, 3);
    style.showRed = false;
    EXPECT_PRED3(Near, Draw(red, style).At(64, 64), kBlack, 3);

    // Half-transparent yellow over the checkerboard, then shown opaque, then alpha as gray.
    auto yellow = std::make_shared<ImageRenderer>(Filled(4, 4, 255, 255, 0, 128));
    style = Sharp();
    const Pixels blended = Draw(yellow, style);
    const Rgba a = blended.At(4, 4);
    const Rgba b = blended.At(12, 4);
    EXPECT_GT(a.r, a.b + 60) << a;
    EXPECT_NE(a.b, b.b) << "the checkerboard shows through: " << a << " vs " << b;
    style.showAlpha = false;
    EXPECT_PRED3(Near, Draw(yellow, style).At(4, 4), (Rgba{255, 255, 0, 255}), 3);
    style.showAlpha = true;
    style.showRed = style.showGreen = style.showBlue = false;
    EXPECT_PRED3(Near, Draw(yellow, style).At(4, 4), (Rgba{128, 128, 128, 255}), 3);
    style.showAlpha = false;
    EXPECT_PRED3(Near, Draw(yellow, style).At(4, 4), kBlack, 3);
}

TEST_F(ImageGlTest, GrayAndFloatImagesDrawAndTheColorTransformAppliesOnlyWhenEnabled)
{
    auto gray = std::make_shared<ImageRenderer>(tesk::Image(2, 2, 1, std::vector<std::uint8_t>(4, 64)));
    ImageStyle style = Sharp();
    style.redMultiplier = 2.0f;
    style.redOffset = 0.1f;
    style.greenMultiplier = 0.0f;
    style.blueOffset = -1.0f;
    EXPECT_PRED3(Near, Draw(gray, style).At(64, 64), (Rgba{64, 64, 64, 255}), 3);
    style.colorTransformEnabled = true;
    // 64/255 * 2 + 0.1 = 0.602; green scaled to nothing; blue pushed below 0 and clamped.
    EXPECT_PRED3(Near, Draw(gray, style).At(64, 64), (Rgba{154, 0, 0, 255}), 3);

    // Gray + alpha with alpha hidden: the gray value, opaque.
    style = Sharp();
    auto grayAlpha = std::make_shared<ImageRenderer>(tesk::Image(1, 1, 2, std::vector<std::uint8_t>{100, 0}));
    style.showAlpha = false;
    EXPECT_PRED3(Near, Draw(grayAlpha, style).At(64, 64), (Rgba{100, 100, 100, 255}), 3);
    style.showAlpha = true;

    // Left pixel in range, right pixel out of range and NaN: clamped, NaN as 0.
    const float nan = std::numeric_limits<float>::quiet_NaN();
    auto floats = std::make_shared<ImageRenderer>(
        tesk::Image(2, 1, 4, std::vector<float>{0.2f, 0.4f, 0.8f, 1.0f, 3.0f, -2.0f, nan, 1.0f}));
    const Pixels pixels = Draw(floats, style);
    EXPECT_PRED3(Near, pixels.At(20, 64), (Rgba{51, 102, 204, 255}), 3);
    EXPECT_PRED3(Near, pixels.At(108, 64), kRed, 3);
}

} // namespace
