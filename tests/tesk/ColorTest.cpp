#include <tesk/Color.h>

#include <gtest/gtest.h>

#include <limits>

namespace {

TEST(ColorTest, HexRoundTrips)
{
    const auto grey = tesk::Color3b::FromHex("3D3D3D");
    ASSERT_TRUE(grey.has_value());
    EXPECT_EQ(*grey, tesk::Color3b(0x3D, 0x3D, 0x3D));
    EXPECT_EQ(grey->ToHex(), "3D3D3D");

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
