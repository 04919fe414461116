// Screen text: measuring (no context needed) and drawing into an off-screen target. The
// drawing tests need a display: run them under
// `xvfb-run -a -s "-noreset -screen 0 1280x1024x24" ctest ...`.

#include "GlTestSupport.h"
#include "LogCapture.h"

#include <vexa/draw/TextRenderer.h>

#include <string>

using namespace vexa::draw;
using gl_test_support::Pixels;
using gl_test_support::Rgba;

namespace {

const std::string kFontFile = VEXA_SOURCE_ASSET_DIR "resources/InriaSans-Regular.ttf";

const Rgba kBlack{0, 0, 0, 255};

constexpr auto IsBright = [](const Rgba& c) { return c.r > 96 || c.g > 96 || c.b > 96; };

TEST(TextRendererMeasureTest, MeasuresAndQueuesWithoutContext)
{
    TextRenderer text;
    text.SetFontFile(kFontFile);
    text.SetSize(16.0f);

    const float ii = text.MeasureWidth("ii");
    const float ww = text.MeasureWidth("WW");
    EXPECT_GT(ii, 0.0f);
    EXPECT_LT(ii, ww);
    EXPECT_FLOAT_EQ(text.MeasureWidth("ii\nWW\n"), ww) << "the widest line counts";
    EXPECT_EQ(text.MeasureWidth(""), 0.0f);

    // A two-byte sequence is one character, not two unknown ones.
    EXPECT_NEAR(text.MeasureWidth("\xC3\xA9"), text.MeasureWidth("e"), 0.5f);
    // Broken sequences are measured as replacement characters instead of reading past the end.
    EXPECT_GT(text.MeasureWidth("a\xE2\x82"), text.MeasureWidth("a"));
    EXPECT_GT(text.MeasureWidth("\xFF\x80 x"), text.MeasureWidth(" x"));

    text.SetSize(32.0f);
    EXPECT_NEAR(text.MeasureWidth("WW"), 2.0f * ww, 3.0f);

    // Empty texts are not queued.
    Scene scene;
    text.SetScene(&scene);
    text.Print("queued", 1.0f, 2.0f);
    text.Print("", 1.0f, 2.0f);
    EXPECT_EQ(text.GetQueuedCount(), 1u);
    text.Clear();
    EXPECT_EQ(text.GetQueuedCount(), 0u);
}

class TextRendererGlTest : public gl_test_support::GlTest {
protected:
    void SetUp() override
    {
        GlTest::SetUp();
        if (HasFatalFailure())
            return;
        text_.SetFontFile(kFontFile);
        text_.SetColor({1.0f, 1.0f, 1.0f});
        text_.SetSize(16.0f);
        text_.SetScene(&textScene_);
    }

    void TearDown() override
    {
        text_.ReleaseGpuResources();
        GlTest::TearDown();
    }

    RenderContext ContextFor(const Scene* scene)
    {
        RenderContext context = MakeContext({0.0f, 0.0f, 1.0f});
        context.scene = scene;
        return context;
    }

    Pixels Draw(const Scene* scene)
    {
        return DrawDirect([&] { text_.RenderQueued(ContextFor(scene)); }, kBlack);
    }

    /// Horizontal extent [first, last] of bright pixels; (-1, -1) when there are none.
    static std::pair<int, int> BrightColumns(const Pixels& pixels)
    {
        int first = -1;
        int last = -1;
        for (int x = 0; x < kSize; ++x)
            if (pixels.Count(IsBright, x, 0, x + 1, kSize) > 0) {
                if (first < 0)
                    first = x;
                last = x;
            }
        return {first, last};
    }

    Scene textScene_;
    TextRenderer text_;
};

TEST_F(TextRendererGlTest, PrintedTextLiesInItsBoxLinesStackAndAlignmentPlacesIt)
{
    const float width = text_.MeasureWidth("Hello");
    text_.Print("Hello", 10.0f, 40.0f);
    const Pixels pixels = Draw(&textScene_);
    EXPECT_EQ(text_.GetQueuedCount(), 0u);

    // Glyphs rise above the baseline at y = 40 by less than the size; "Hello" has no descender.
    const int right = 10 + static_cast<int>(width) + 2;
    EXPECT_GT(pixels.Count(IsBright, 10, 40 - 16, right, 41), 40);
    const int all = pixels.Count(IsBright);
    EXPECT_EQ(pixels.Count(IsBright, 8, 40 - 18, right + 2, 43), all) << "bright pixels outside the text box";
    // White text stays white where it is fully covered.
    EXPECT_GT(pixels.Count([](const Rgba& c) { return c.r > 240 && c.g > 240 && c.b > 240; }), 10);

    // The next frame starts from an empty queue.
    EXPECT_EQ(Draw(&textScene_).Count(IsBright), 0);

    // Lines are stacked at the line height: capitals start the same distance above each
    // baseline, so the bands of bright rows are one line apart.
    text_.Print("AH\nAH", 10.0f, 30.0f);
    const Pixels lines = Draw(&textScene_);
    std::vector<int> bands; // first row of each run of rows with bright pixels
    bool inBand = false;
    for (int y = 0; y < kSize; ++y) {
        const bool bright = lines.Count(IsBright, 0, y, kSize, y + 1) > 0;
        if (bright && !inBand)
            bands.push_back(y);
        inBand = bright;
    }
    ASSERT_EQ(bands.size(), 2u);
    EXPECT_GE(bands[1] - bands[0], 16);
    EXPECT_LE(bands[1] - bands[0], 26);
    EXPECT_LT(bands[0], 30);

    // Alignment places the text around the anchor.
    const float rightWidth = text_.MeasureWidth("Right");
    text_.SetAlignment(TextAlignment::Right);
    text_.Print("Right", 100.0f, 40.0f);
    auto [first, last] = BrightColumns(Draw(&textScene_));
    ASSERT_GE(first, 0);
    EXPECT_LE(last, 100);
    EXPECT_NEAR(first, 100.0f - rightWidth, 3.0f);
    text_.SetAlignment(TextAlignment::Center);
    text_.Print("Middle", 64.0f, 40.0f);
    std::tie(first, last) = BrightColumns(Draw(&textScene_));
    ASSERT_GE(first, 0);
    EXPECT_NEAR(0.5f * static_cast<float>(first + last), 64.0f, 3.0f);
}

TEST_F(TextRendererGlTest, GlyphsAddedWhileLayingOutKeepEarlierGlyphsIntact)
{
    text_.SetSize(48.0f);
    text_.Print("H", 10.0f, 80.0f);
    const Pixels alone = Draw(&textScene_);
    ASSERT_GT(alone.Count(IsBright), 100);

    // Laid out after the "H", the accented letters do not fit the atlas and make it grow
    // before anything is drawn; they are placed far above the view.
    TextRenderer fresh;
    fresh.SetFontFile(kFontFile);
    fresh.SetSize(48.0f);
    fresh.SetScene(&textScene_);
    fresh.Print("H", 10.0f, 80.0f);
    std::string accented;
    for (char32_t c = 0xC0; c <= 0x17F; ++c) {
        accented += static_cast<char>(0xC0 | (c >> 6));
        accented += static_cast<char>(0x80 | (c & 0x3F));
    }
    fresh.Print(accented, 10.0f, -2000.0f);
    const Pixels together = DrawDirect([&] { fresh.RenderQueued(ContextFor(&textScene_)); }, kBlack);
    fresh.ReleaseGpuResources();

    int differing = 0;
    for (int y = 0; y < kSize; ++y)
        for (int x = 0; x < kSize; ++x)
            differing += gl_test_support::Near(alone.At(x, y), together.At(x, y), 8) ? 0 : 1;
    EXPECT_EQ(differing, 0);
}

TEST_F(TextRendererGlTest, MissingFontIsReportedOnceAndDrawsNothing)
{
    testing_support::LogCapture log;
    const std::string missing = VEXA_SOURCE_ASSET_DIR "resources/NoSuchFont.ttf";
    text_.SetFontFile(missing);
    for (int frame = 0; frame < 3; ++frame) {
        text_.Print("Hello", 10.0f, 40.0f);
        EXPECT_EQ(Draw(&textScene_).Count(IsBright), 0);
        EXPECT_EQ(text_.GetQueuedCount(), 0u);
    }
    EXPECT_EQ(text_.MeasureWidth("Hello"), 0.0f);
    ASSERT_EQ(log.messages.size(), 1u);
    EXPECT_EQ(log.messages[0].level, rlog::Level::Failure);
    EXPECT_NE(log.messages[0].message.find(missing), std::string::npos) << log.messages[0].message;

    // Without any file there is one warning and still nothing drawn.
    TextRenderer unset;
    unset.SetScene(&textScene_);
    for (int frame = 0; frame < 2; ++frame) {
        unset.Print("Hello", 10.0f, 40.0f);
        unset.RenderQueued(ContextFor(&textScene_));
    }
    ASSERT_EQ(log.messages.size(), 2u);
    EXPECT_EQ(log.messages[1].level, rlog::Level::Warning);

    // Pointing at a good file again brings the text back.
    text_.SetFontFile(kFontFile);
    text_.Print("Hello", 10.0f, 40.0f);
    EXPECT_GT(Draw(&textScene_).Count(IsBright), 20);
    EXPECT_EQ(log.messages.size(), 2u);
}

} // namespace
