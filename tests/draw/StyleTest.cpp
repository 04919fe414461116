// Every style's state block: what was written reads back field for field, and a damaged block
// (cut short, another version, a value no renderer can draw) changes nothing.

#include <vexa/draw/GeometryStyle.h>
#include <vexa/draw/GraphStyle.h>
#include <vexa/draw/ImageStyle.h>
#include <vexa/draw/LineFieldStyle.h>
#include <vexa/draw/Material.h>
#include <vexa/draw/PointCloudStyle.h>
#include <vexa/draw/SkeletonStyle.h>
#include <vexa/draw/Style.h>

#include "LogCapture.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>

using namespace vexa::draw;

namespace {

// Per type: Fields lists the fields the block carries and Edits a value other than the
// default for each, Spoil plants a value the reader must refuse (false when there is none),
// kBytes is the block's size, which files written by earlier builds rely on (13: the visible
// flag and colour that some blocks carry without the base block's version word).
template <class T>
struct Trait;

/// The block version every style writes; types that moved on say so in their trait.
template <class T>
constexpr char kWrittenVersion = 1;
template <>
constexpr char kWrittenVersion<PointCloudStyle> = 2;

using C = tesk::Color3f;

/// `T` with every field its block carries set away from the default.
template <class T>
T Edited()
{
    T value;
    Trait<T>::Fields(value) = Trait<T>::Edits();
    return value;
}

template <>
struct Trait<Material> {
    static constexpr std::size_t kBytes = 4 + 5 * 4 + 2;
    static auto Fields(auto& m)
    {
        return std::tie(m.color, m.specular, m.shininess, m.metallic, m.useLighting);
    }
    static auto Edits() { return std::tuple(C{0.1f, 0.2f, 0.3f}, 0.9f, 200.0f, true, false); }
    static bool Spoil(Material&) { return false; }
};

template <>
struct Trait<Style> {
    static constexpr std::size_t kBytes = 4 + 1 + 3 * 4;
    static auto Fields(auto& s) { return std::tie(s.visible, s.color); }
    static auto Edits() { return std::tuple(false, C{0.25f, 0.5f, 0.75f}); }
    static bool Spoil(Style&) { return false; }
};

template <>
struct Trait<GeometryStyle> {
    static constexpr std::size_t kBytes =
        4 + 4 + 4 + 4 + 1 + 4 + 12 + 1 + 4 + 12 + 4 + 1 + Trait<Material>::kBytes + 13;
    static auto Fields(auto& s)
    {
        return std::tie(s.renderMode, s.normalsSource, s.pointSize, s.cullBackFacing, s.wireThickness,
                        s.wireColor, s.showNormals, s.normalLength, s.normalColor, s.colorMode, s.useMatcap,
                        s.material, s.visible, s.color);
    }
    static auto Edits()
    {
        return std::tuple(int{RenderMode::SolidAndWires}, int{NormalsSource::Flat}, 7.5f, true, 2.25f,
                          C{0.9f, 0.1f, 0.2f}, true, 0.4f, C{0.3f, 0.4f, 0.5f}, int{ColorMode::Checker}, true,
                          Edited<Material>(), false, C{0.25f, 0.5f, 0.75f});
    }
    // A render mode no GUI offers is refused rather than drawn as something arbitrary.
    static bool Spoil(GeometryStyle& s) { return s.renderMode = 9, true; }
};

template <>
struct Trait<PointCloudStyle> {
    static constexpr std::size_t kBytes = 4 + 4 + 1 + 4 + 1 + 1 + 4 + Trait<Material>::kBytes + 13 + 2;
    static auto Fields(auto& s)
    {
        return std::tie(s.pointSize, s.cullBackFacing, s.colorMode, s.useNormals, s.showNormals,
                        s.normalLength, s.material, s.visible, s.color, s.shadeColors, s.orientedDiscs);
    }
    static auto Edits()
    {
        return std::tuple(7.0f, true, int{ColorMode::Normals}, false, true, 0.25f, Edited<Material>(), false,
                          C{0.25f, 0.5f, 0.75f}, true, true);
    }
    // Points have no UVs, so a texture colour mode cannot be drawn.
    static bool Spoil(PointCloudStyle& s) { return s.colorMode = ColorMode::Texture, true; }
};

template <>
struct Trait<SkeletonStyle> {
    static constexpr std::size_t kBytes = 4 + 4 + 3 + 12 + 12 + 4 + 13;
    static auto Fields(auto& s)
    {
        return std::tie(s.renderMode, s.showJoints, s.enableLighting, s.showBasis, s.boneColor, s.jointColor,
                        s.lineWidth, s.visible, s.color);
    }
    static auto Edits()
    {
        return std::tuple(int{SkeletonRenderMode::Stickman}, false, false, true, C{0.1f, 0.2f, 0.3f},
                          C{0.4f, 0.5f, 0.6f}, 3.5f, false, C{0.25f, 0.5f, 0.75f});
    }
    static bool Spoil(SkeletonStyle& s) { return s.renderMode = 3, true; }
};

template <>
struct Trait<ImageStyle> {
    static constexpr std::size_t kBytes = 4 + 10 + 8 * 4 + Trait<Style>::kBytes;
    static auto Fields(auto& s)
    {
        return std::tie(s.nearestFiltering, s.fitToViewport, s.keepAspectRatio, s.mirrorX, s.mirrorY,
                        s.showRed, s.showGreen, s.showBlue, s.showAlpha, s.colorTransformEnabled,
                        s.redMultiplier, s.redOffset, s.greenMultiplier, s.greenOffset, s.blueMultiplier,
                        s.blueOffset, s.alphaMultiplier, s.alphaOffset, s.visible, s.color);
    }
    static auto Edits()
    {
        return std::tuple(true, false, false, true, true, false, false, false, false, true, 2.5f, 0.125f,
                          0.5f, -0.5f, 3.0f, -0.25f, 0.75f, 0.5f, false, C{0.25f, 0.5f, 0.75f});
    }
    static bool Spoil(ImageStyle& s)
    {
        return s.greenMultiplier = std::numeric_limits<float>::quiet_NaN(), true;
    }
};

template <>
struct Trait<GraphStyle> {
    static constexpr std::size_t kBytes = 4 + 4 + 4 + 12 + 12 + Trait<Style>::kBytes;
    static auto Fields(auto& s)
    {
        return std::tie(s.lineWidth, s.pointSize, s.lineColor, s.pointColor, s.visible, s.color);
    }
    static auto Edits()
    {
        return std::tuple(5, 9, C{0.1f, 0.2f, 0.3f}, C{0.4f, 0.5f, 0.6f}, false, C{0.25f, 0.5f, 0.75f});
    }
    static bool Spoil(GraphStyle& s) { return s.lineWidth = 0, true; }
};

template <>
struct Trait<LineFieldStyle> {
    static constexpr std::size_t kBytes = 4 + 4 + 3 + 12;
    static auto Fields(auto& s)
    {
        return std::tie(s.lineWidth, s.onTop, s.useSegmentColors, s.visible, s.color);
    }
    static auto Edits() { return std::tuple(4.0f, true, false, false, C{0.25f, 0.5f, 0.75f}); }
    static bool Spoil(LineFieldStyle& s) { return s.lineWidth = -1.0f, true; }
};

template <class Tuple, std::size_t... I>
int CountEqual(const Tuple& a, const Tuple& b, std::index_sequence<I...>)
{
    return ((std::get<I>(a) == std::get<I>(b) ? 1 : 0) + ... + 0);
}

/// How many fields of `a` equal their counterpart in `b`.
template <class T>
int CountEqualFields(const T& a, const T& b)
{
    using Fields = decltype(Trait<T>::Fields(a));
    return CountEqual(Trait<T>::Fields(a), Trait<T>::Fields(b),
                      std::make_index_sequence<std::tuple_size_v<Fields>>());
}

template <class T>
std::string Serialize(const T& value)
{
    std::ostringstream out;
    value.WriteToStream(out);
    return out.str();
}

template <class T>
class StyleStreamTest : public ::testing::Test {
};

using StyleTypes = ::testing::Types<Material, Style, GeometryStyle, PointCloudStyle, SkeletonStyle,
                                    ImageStyle, GraphStyle, LineFieldStyle>;
TYPED_TEST_SUITE(StyleStreamTest, StyleTypes);

} // namespace

TYPED_TEST(StyleStreamTest, EveryFieldRoundTrips)
{
    using T = TypeParam;
    const T defaults;
    const T edited = Edited<T>();
    ASSERT_EQ(CountEqualFields(edited, defaults), 0) << "the edit must change every field the block carries";

    const std::string bytes = Serialize(edited);
    EXPECT_EQ(bytes.size(), Trait<T>::kBytes);
    ASSERT_GE(bytes.size(), 4u);
    EXPECT_EQ(bytes.substr(0, 4), std::string({kWrittenVersion<T>, 0, 0, 0}));

    T read;
    std::istringstream in(bytes);
    ASSERT_TRUE(read.ReadFromStream(in));
    EXPECT_EQ(CountEqualFields(read, edited),
              static_cast<int>(std::tuple_size_v<decltype(Trait<T>::Fields(read))>));
    // The whole block is consumed, so the record after it can be read.
    EXPECT_EQ(in.peek(), std::char_traits<char>::eof());
}

TYPED_TEST(StyleStreamTest, DamagedBlocksChangeNothing)
{
    using T = TypeParam;
    const T edited = Edited<T>();
    const std::string bytes = Serialize(edited);
    const T defaults;
    const int fieldCount = static_cast<int>(std::tuple_size_v<decltype(Trait<T>::Fields(defaults))>);
    testing_support::LogCapture log;

    auto expectRefused = [&](const std::string& block, const std::string& what) {
        T target;
        std::istringstream in(block);
        EXPECT_FALSE(target.ReadFromStream(in)) << what;
        EXPECT_EQ(CountEqualFields(target, defaults), fieldCount) << what;
    };
    // Every cut, including those inside a nested material or base block.
    for (std::size_t size = 0; size < bytes.size(); ++size)
        expectRefused(bytes.substr(0, size), "cut at " + std::to_string(size));

    std::string otherVersion = bytes;
    otherVersion[0] = 3;
    expectRefused(otherVersion, "version 3");

    T spoilt = edited;
    if (Trait<T>::Spoil(spoilt))
        expectRefused(Serialize(spoilt), "a value that cannot be drawn");
    EXPECT_FALSE(log.messages.empty());
}

TEST(StyleTest, APointCloudBlockOfVersionOneKeepsTheNewerFields)
{
    PointCloudStyle written;
    written.pointSize = 9.0f;
    std::string bytes = Serialize(written);
    bytes[0] = 1;
    bytes.resize(bytes.size() - 2); // version 1 ended at the colour
    PointCloudStyle read;
    read.orientedDiscs = true;
    std::istringstream in(bytes);
    ASSERT_TRUE(read.ReadFromStream(in));
    EXPECT_FLOAT_EQ(read.pointSize, 9.0f);
    EXPECT_TRUE(read.orientedDiscs);
    EXPECT_EQ(in.peek(), std::char_traits<char>::eof());
}

TEST(StyleTest, TheBaseBlockLeavesTheTransformToTheOwner)
{
    Style written;
    written.transform.SetPosition({1.0f, 2.0f, 3.0f});
    std::istringstream in(Serialize(written));
    Style read;
    read.transform.SetPosition({7.0f, 8.0f, 9.0f});
    ASSERT_TRUE(read.ReadFromStream(in));
    EXPECT_EQ(read.transform.GetPosition(), glm::vec3(7.0f, 8.0f, 9.0f));
}

TEST(StyleTest, ImageChannelFlagsAreAddressedByItemId)
{
    ImageStyle channels;
    *channels.GetChannelShown(0) = false;
    *channels.GetChannelShown(3) = false;
    EXPECT_FALSE(channels.showRed);
    EXPECT_TRUE(channels.showGreen);
    EXPECT_FALSE(channels.showAlpha);
    EXPECT_EQ(channels.GetChannelShown(4), nullptr);
}
