#include <tesk/Color.h>
#include <tesk/ColorMap.h>

#include <gtest/gtest.h>

#include "../common/LogCapture.h"

#include <limits>
#include <vector>

namespace {

const tesk::ColorMap kAllMaps[] = {
    tesk::ColorMap::Rainbow,    tesk::ColorMap::Thermal,   tesk::ColorMap::BlueToRed,
    tesk::ColorMap::RedToGreen, tesk::ColorMap::Scattered, tesk::ColorMap::GrayScale,
    tesk::ColorMap::Colorful,
};

TEST(ColorMapTest, StoredValuesAndNamesAreFixed)
{
    // Stored in state files: kAllMaps lists them in their stored order.
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(tesk::ColorMapFromInt(i), kAllMaps[i]) << i;

    EXPECT_FALSE(tesk::ColorMapFromInt(7).has_value());
    EXPECT_FALSE(tesk::ColorMapFromInt(-1).has_value());
}

TEST(ColorMapTest, EndsAreTheFirstAndLastKeys)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    for (const tesk::ColorMap map : kAllMaps) {
        const auto keys = tesk::ColorMapKeys(map);
        ASSERT_GE(keys.size(), 2u);
        const tesk::Color3f first = keys.front();
        const tesk::Color3f last = keys.back();
        for (const float low : {0.0f, -3.0f, -inf, nan})
            EXPECT_EQ(tesk::MapValueToColor(low, map), first) << tesk::ColorMapName(map) << " at " << low;
        for (const float high : {1.0f, 7.0f, inf})
            EXPECT_EQ(tesk::MapValueToColor(high, map), last) << tesk::ColorMapName(map) << " at " << high;

        // Every colour of every map is displayable.
        for (float t = 0.0f; t <= 1.0f; t += 0.01f) {
            const tesk::Color3f c = tesk::MapValueToColor(t, map);
            for (const float v : {c.r, c.g, c.b})
                EXPECT_TRUE(v >= 0.0f && v <= 1.0f) << tesk::ColorMapName(map) << " at " << t;
        }
    }
}

TEST(ColorMapTest, GradientsBlendWhileScatteredPicksKeys)
{
    // Midway between Rainbow's second and third keys (cyan, green) at t = 3/8.
    const tesk::Color3f c = tesk::MapValueToColor(0.375f, tesk::ColorMap::Rainbow);
    EXPECT_FLOAT_EQ(c.r, 0.0f);
    EXPECT_FLOAT_EQ(c.g, 1.0f);
    EXPECT_FLOAT_EQ(c.b, 0.5f);

    const auto keys = tesk::ColorMapKeys(tesk::ColorMap::Scattered);
    const float n = static_cast<float>(keys.size());
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const float t = (static_cast<float>(i) + 0.5f) / n;
        EXPECT_EQ(tesk::MapValueToColor(t, tesk::ColorMap::Scattered), keys[i]) << i;
    }
}

TEST(ColorMapTest, BulkMatchesSingleValuesAndReportsMismatchedOrUnknownInput)
{
    std::vector<float> values;
    for (int i = -10; i <= 110; ++i)
        values.push_back(static_cast<float>(i) / 100.0f);
    values.push_back(std::numeric_limits<float>::quiet_NaN());

    for (const tesk::ColorMap map : kAllMaps) {
        std::vector<tesk::Color3f> mapping;
        tesk::MapValuesToColors(values, mapping, map);
        ASSERT_EQ(mapping.size(), values.size());
        for (std::size_t i = 0; i < values.size(); ++i)
            EXPECT_EQ(mapping[i], tesk::MapValueToColor(values[i], map))
                << tesk::ColorMapName(map) << ' ' << i;
        EXPECT_EQ(tesk::MapValuesToColors(values, map), mapping);
    }

    // A shorter output gets what fits and a report; an unknown map falls back to Rainbow.
    testing_support::LogCapture log;
    const float three[] = {0.0f, 1.0f, 0.5f};
    std::vector<tesk::Color3f> out(2, tesk::Color3f(0.25f, 0.25f, 0.25f));
    tesk::MapValuesToColors(std::span<const float>(three), std::span<tesk::Color3f>(out),
                            tesk::ColorMap::GrayScale);
    EXPECT_EQ(out[0], tesk::Color3f(0, 0, 0));
    EXPECT_EQ(out[1], tesk::Color3f(1, 1, 1));
    ASSERT_EQ(log.messages.size(), 1u);
    EXPECT_EQ(log.messages[0].label, "tesk::MapValuesToColors");

    const auto unknown = static_cast<tesk::ColorMap>(99);
    EXPECT_EQ(tesk::MapValueToColor(1.0f, unknown), tesk::MapValueToColor(1.0f, tesk::ColorMap::Rainbow));
    EXPECT_EQ(log.messages.size(), 2u);
}

TEST(ColorTest, HexRoundTrips)
{
    // Lower case and a leading '#' are accepted; output is always bare upper case.
    const auto mixed = tesk::Color3b::FromHex("#a0fF01");
    ASSERT_TRUE(mixed.has_value());
    EXPECT_EQ(*mixed, tesk::Color3b(0xA0, 0xFF, 0x01));
    EXPECT_EQ(mixed->ToHex(), "A0FF01");

    // Every byte survives bytes -> float -> text -> bytes.
    for (int v = 0; v < 256; ++v) {
        const auto b = static_cast<std::uint8_t>(v);
        const tesk::Color3b original(b, static_cast<std::uint8_t>(255 - v), b);
        const auto back = tesk::Color3f::FromHex(original.ToFloat().ToHex());
        ASSERT_TRUE(back.has_value());
        EXPECT_EQ(back->ToByte(), original) << v;
    }

    for (const char* text : {"", "#", "3D3D3", "3D3D3D3", "3D3G3D", " 3D3D3D", "##3D3D3D", "0x3D3D"})
        EXPECT_FALSE(tesk::Color3b::FromHex(text).has_value()) << '"' << text << '"';
    EXPECT_FALSE(tesk::Color3f::FromHex("zzzzzz").has_value());
}

TEST(ColorTest, FloatToByteClampsAndRejectsNaN)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float inf = std::numeric_limits<float>::infinity();
    EXPECT_EQ(tesk::Color3f(-0.5f, 1.5f, 0.5f).ToByte(), tesk::Color3b(0, 255, 128));
    EXPECT_EQ(tesk::Color3f(nan, inf, -inf).ToByte(), tesk::Color3b(0, 255, 0));
    EXPECT_EQ(tesk::Color3f(2.0f, -1.0f, nan).ToHex(), "FF0000");
}

} // namespace
