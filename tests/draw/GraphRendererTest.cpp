// Line graphs: the style's state block, the ranges the renderer derives from its data, and
// what it draws through a real render system. The drawing tests need a display: run them under
// `xvfb-run -a -s "-noreset -screen 0 1280x1024x24" ctest ...`.

#include "GlTestSupport.h"
#include "LogCapture.h"

#include <vexa/draw/GraphRenderer.h>
#include <vexa/draw/GraphStyle.h>

#include <limits>

using namespace vexa::draw;
using namespace gl_test_support;

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

TEST(GraphRendererTest, RangesComeFromTheFiniteDataWithoutAContext)
{
    const std::size_t pendingBefore = plor::PendingGlDeletes();
    testing_support::LogCapture log;
    {
        GraphRenderer renderer(std::vector<glm::vec2>{
            {0, 10}, {kNaN, 500}, {10, 30}, {5, std::numeric_limits<float>::infinity()}});
        EXPECT_EQ(renderer.GetPointCount(), 2u);
        EXPECT_TRUE(log.messages.empty()) << "gaps are how hosts mark missing samples, not an error";
        EXPECT_EQ(renderer.GetDataMin(), glm::vec2(0, 10));
        EXPECT_EQ(renderer.GetDataMax(), glm::vec2(10, 30));
        // 5% of the span on both sides.
        EXPECT_DOUBLE_EQ(renderer.GetRangeMin().x, -0.5);
        EXPECT_DOUBLE_EQ(renderer.GetRangeMax().y, 31.0);
        EXPECT_FALSE(renderer.GetBoundingBox().IsValid());

        // A constant series gets one unit around its value, even far from the origin.
        renderer.SetPoints(std::vector<glm::vec2>{{0, 3}, {1, 3}, {2, 3}});
        EXPECT_DOUBLE_EQ(renderer.GetRangeMin().y, 2.5);
        EXPECT_DOUBLE_EQ(renderer.GetRangeMax().y, 3.5);
        renderer.SetPoints(std::vector<glm::vec2>{{1e20f, 1e20f}});
        EXPECT_LT(renderer.GetRangeMin().x, 1e20);
        EXPECT_GT(renderer.GetRangeMax().y, 1e20);

        renderer.SetPoints(std::vector<glm::vec2>{});
        EXPECT_EQ(renderer.GetPointCount(), 0u);
        EXPECT_TRUE(log.messages.empty());
    }
    EXPECT_EQ(plor::PendingGlDeletes(), pendingBefore);
}

TEST(GraphRendererTest, TicksAreRoundStepsSpacedForThePlotAndLabelledWithTheDigitsTheyNeed)
{
    using Ticks = GraphRenderer::AxisTicks;
    struct Case {
        double low, high;
        float pixels, spacing;
        Ticks expected;
    };
    const Case cases[] = {
        {0.0, 10.0, 400.0f, 80.0f, {0.0, 2.0, 6}},
        {-0.5, 10.5, 400.0f, 80.0f, {0.0, 2.0, 6}}, // the margins hold no tick
        {-3.2, 1.7, 250.0f, 50.0f, {-3.0, 1.0, 5}},
        {0.0, 10.0, 60.0f, 80.0f, {0.0, 10.0, 2}}, // a cramped axis keeps its labels apart
        {1.0, 1.0, 400.0f, 80.0f, {}},             // no span (also NaN or no pixels)
    };
    for (const Case& c : cases)
        EXPECT_EQ(GraphRenderer::ChooseTicks(c.low, c.high, c.pixels, c.spacing), c.expected)
            << c.low << ".." << c.high << " over " << c.pixels;
    // A big plot never gets more than kMaxTicks; a small range gets decimal steps.
    EXPECT_LE(GraphRenderer::ChooseTicks(0.0, 1.0, 4000.0f, 50.0f).count, GraphRenderer::kMaxTicks);
    const Ticks tenths = GraphRenderer::ChooseTicks(0.9, 1.17, 200.0f, 50.0f);
    EXPECT_DOUBLE_EQ(tenths.step, 0.1);

    struct Label {
        double value;
        Ticks ticks;
        const char* text;
    };
    const Label formats[] = {
        {0.25, {0.0, 0.05, 6}, "0.25"},   {-2.0, {-3.0, 1.0, 5}, "-2"},
        {-1e-17, {-0.2, 0.1, 4}, "0"},    {1.5e6, {1e6, 5e5, 3}, "1.5e+06"},
        {4e-5, {2e-5, 2e-5, 3}, "4e-05"}, {0.0002, {0.0001, 0.0001, 3}, "0.0002"},
    };
    for (const Label& l : formats)
        EXPECT_EQ(GraphRenderer::FormatTick(l.value, l.ticks), l.text) << l.value;
}

constexpr auto IsLine = [](const Rgba& c) { return c.g > 180 && c.r < 80 && c.b < 80; };

constexpr auto IsMarker = [](const Rgba& c) { return c.r > 180 && c.g < 80 && c.b < 80; };

class GraphGlTest : public GlTest {
protected:
    void SetUp() override
    {
        GlTest::SetUp();
        if (!HasFatalFailure())
            system_->GetTextRenderer().SetFontFile(VEXA_SOURCE_ASSET_DIR "resources/InriaSans-Regular.ttf");
    }

    Pixels Draw(const std::shared_ptr<GraphRenderer>& renderer, const GraphStyle& style)
    {
        return Render(renderer, std::make_shared<GraphStyle>(style));
    }

    static GraphStyle MakeStyle(int lineWidth, int pointSize = 0)
    {
        GraphStyle style;
        style.lineWidth = lineWidth;
        style.pointSize = pointSize;
        style.lineColor = tesk::Color3f(0.0f, 1.0f, 0.0f);
        style.pointColor = tesk::Color3f(1.0f, 0.0f, 0.0f);
        return style;
    }
};

TEST_F(GraphGlTest, RisingDataRisesWiderLinesCoverMoreAndMarkersFollowThePointSize)
{
    std::vector<glm::vec2> rising;
    for (int i = 0; i <= 20; ++i)
        rising.emplace_back(static_cast<float>(i), static_cast<float>(i * i));
    auto renderer = std::make_shared<GraphRenderer>(rising);

    // That it rises across its view area is seen end to end (the examples' graph).
    const Pixels thin = Draw(renderer, MakeStyle(1));
    const int thinCount = thin.Count(IsLine);
    const int wideCount = Draw(renderer, MakeStyle(6)).Count(IsLine);
    EXPECT_GT(thinCount, 80);
    EXPECT_GT(wideCount, 4 * thinCount);

    // The frame (in the style's colour) is drawn around the plot, faint grid lines inside it.
    const Rgba frame = FromFloat(0.62f, 0.62f, 0.62f);
    EXPECT_GT(thin.Count([&](const Rgba& c) { return Near(c, frame, 6); }), 200);
    const Rgba grid = FromFloat(0.62f * 0.55f, 0.62f * 0.55f, 0.62f * 0.55f);
    EXPECT_GT(thin.Count([&](const Rgba& c) { return Near(c, grid, 6); }), 100);

    // Markers follow the point size.
    auto peaks = std::make_shared<GraphRenderer>(std::vector<glm::vec2>{{0, 0}, {1, 1}, {2, 0}});
    EXPECT_EQ(Draw(peaks, MakeStyle(1, 0)).Count(IsMarker), 0);
    const int small = Draw(peaks, MakeStyle(1, 4)).Count(IsMarker);
    const int large = Draw(peaks, MakeStyle(1, 12)).Count(IsMarker);
    EXPECT_GT(small, 3 * 6);
    // Three round markers of diameter 12 cover about 3 * 113 pixels.
    EXPECT_GT(large, 3 * 90);
    EXPECT_LT(large, 3 * 150);
}

TEST_F(GraphGlTest, EmptyAndNonFiniteDataAreSafe)
{
    auto renderer = std::make_shared<GraphRenderer>();
    EXPECT_EQ(Draw(renderer, MakeStyle(3, 5)).CountDifferent(kBackground), 0);

    renderer->SetPoints(std::vector<glm::vec2>{{kNaN, kNaN}, {1, kNaN}});
    EXPECT_EQ(Draw(renderer, MakeStyle(3, 5)).CountDifferent(kBackground), 0);

    // A gap in the middle still leaves both rising halves and their markers.
    renderer->SetPoints(std::vector<glm::vec2>{{0, 0}, {1, 1}, {2, kNaN}, {3, 3}, {4, 4}});
    const Pixels pixels = Draw(renderer, MakeStyle(2, 6));
    EXPECT_GT(pixels.Count(IsLine, 0, kMid, 40, kSize), 10) << "the low half, bottom left";
    EXPECT_GT(pixels.Count(IsLine, 88, 0, kSize, kMid), 10) << "the high half, top right";
    EXPECT_EQ(pixels.Count(IsLine, 0, 0, 40, kMid / 2) +
                  pixels.Count(IsLine, 88, kMid + kMid / 2, kSize, kSize),
              0);
    EXPECT_GT(pixels.Count(IsMarker), 4 * 15);
}

} // namespace
