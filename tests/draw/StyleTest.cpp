// Every style's state block: what was written reads back field for field, and a damaged block
// (cut short, another version, a value no renderer can draw) changes nothing.

#include <vexa/draw/ElementRenderer.h>
#include <vexa/draw/GeometryStyle.h>
#include <vexa/draw/GraphRenderer.h>
#include <vexa/draw/GraphStyle.h>
#include <vexa/draw/ImageRenderer.h>
#include <vexa/draw/ImageStyle.h>
#include <vexa/draw/LineFieldRenderer.h>
#include <vexa/draw/LineFieldStyle.h>
#include <vexa/draw/Material.h>
#include <vexa/draw/MeshRenderer.h>
#include <vexa/draw/PointCloudRenderer.h>
#include <vexa/draw/PointCloudStyle.h>
#include <vexa/draw/SkeletonRenderer.h>
#include <vexa/draw/SkeletonStyle.h>
#include <vexa/draw/Style.h>

#include <tesk/Image.h>
#include <tesk/Mesh.h>
#include <tesk/Skeleton.h>

#include "LogCapture.h"

#include <gtest/gtest.h>

#include <iterator>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>

using namespace vexa::draw;

namespace {

// Per type: Edit sets every field to a value other than its default, Fields lists the fields
// the block carries, Spoil plants a value the reader must refuse (false when there is none),
// kBytes is the block's size, which files written by earlier builds rely on (13: the visible
// flag and colour that some blocks carry without the base block's version word).
template <class T>
struct Trait;

/// The block version every style writes; types that moved on say so in their trait.
template <class T>
constexpr char kWrittenVersion = 1;
template <>
constexpr char kWrittenVersion<PointCloudStyle> = 2;

template <>
struct Trait<Material> {
    static constexpr std::size_t kBytes = 4 + 5 * 4 + 2;
    static void Edit(Material& m)
    {
        m.color = {0.1f, 0.2f, 0.3f};
        m.specular = 0.9f;
        m.shininess = 200.0f;
        m.metallic = true;
        m.useLighting = false;
    }
    static auto Fields(const Material& m)
    {
        return std::tie(m.color, m.specular, m.shininess, m.metallic, m.useLighting);
    }
    static bool Spoil(Material&) { return false; }
};

template <>
struct Trait<Style> {
    static constexpr std::size_t kBytes = 4 + 1 + 3 * 4;
    static void Edit(Style& s)
    {
        s.visible = false;
        s.color = {0.25f, 0.5f, 0.75f};
    }
    static auto Fields(const Style& s) { return std::tie(s.visible, s.color); }
    static bool Spoil(Style&) { return false; }
};

template <>
struct Trait<GeometryStyle> {
    static constexpr std::size_t kBytes =
        4 + 4 + 4 + 4 + 1 + 4 + 12 + 1 + 4 + 12 + 4 + 1 + Trait<Material>::kBytes + 13;
    static void Edit(GeometryStyle& s)
    {
        s.renderMode = RenderMode::SolidAndWires;
        s.normalsSource = NormalsSource::Flat;
        s.pointSize = 7.5f;
        s.cullBackFacing = true;
        s.wireThickness = 2.25f;
        s.wireColor = {0.9f, 0.1f, 0.2f};
        s.showNormals = true;
        s.normalLength = 0.4f;
        s.normalColor = {0.3f, 0.4f, 0.5f};
        s.colorMode = ColorMode::Checker;
        s.useMatcap = true;
        Trait<Material>::Edit(s.material);
        Trait<Style>::Edit(s);
    }
    static auto Fields(const GeometryStyle& s)
    {
        return std::tie(s.renderMode, s.normalsSource, s.pointSize, s.cullBackFacing, s.wireThickness,
                        s.wireColor, s.showNormals, s.normalLength, s.normalColor, s.colorMode, s.useMatcap,
                        s.material, s.visible, s.color);
    }
    // A render mode no GUI offers is refused rather than drawn as something arbitrary.
    static bool Spoil(GeometryStyle& s) { return s.renderMode = 9, true; }
};

template <>
struct Trait<PointCloudStyle> {
    static constexpr std::size_t kBytes = 4 + 4 + 1 + 4 + 1 + 1 + 4 + Trait<Material>::kBytes + 13 + 2;
    static void Edit(PointCloudStyle& s)
    {
        s.shadeColors = true;
        s.orientedDiscs = true;
        s.pointSize = 7.0f;
        s.cullBackFacing = true;
        s.colorMode = ColorMode::Normals;
        s.useNormals = false;
        s.showNormals = true;
        s.normalLength = 0.25f;
        Trait<Material>::Edit(s.material);
        Trait<Style>::Edit(s);
    }
    static auto Fields(const PointCloudStyle& s)
    {
        return std::tie(s.pointSize, s.cullBackFacing, s.colorMode, s.useNormals, s.showNormals,
                        s.normalLength, s.material, s.visible, s.color, s.shadeColors, s.orientedDiscs);
    }
    // Points have no UVs, so a texture colour mode cannot be drawn.
    static bool Spoil(PointCloudStyle& s) { return s.colorMode = ColorMode::Texture, true; }
};

template <>
struct Trait<SkeletonStyle> {
    static constexpr std::size_t kBytes = 4 + 4 + 3 + 12 + 12 + 4 + 13;
    static void Edit(SkeletonStyle& s)
    {
        s.renderMode = SkeletonRenderMode::Stickman;
        s.showJoints = false;
        s.enableLighting = false;
        s.showBasis = true;
        s.boneColor = {0.1f, 0.2f, 0.3f};
        s.jointColor = {0.4f, 0.5f, 0.6f};
        s.lineWidth = 3.5f;
        Trait<Style>::Edit(s);
    }
    static auto Fields(const SkeletonStyle& s)
    {
        return std::tie(s.renderMode, s.showJoints, s.enableLighting, s.showBasis, s.boneColor, s.jointColor,
                        s.lineWidth, s.visible, s.color);
    }
    static bool Spoil(SkeletonStyle& s) { return s.renderMode = 3, true; }
};

template <>
struct Trait<ImageStyle> {
    static constexpr std::size_t kBytes = 4 + 10 + 8 * 4 + Trait<Style>::kBytes;
    static void Edit(ImageStyle& s)
    {
        s.nearestFiltering = true;
        s.fitToViewport = false;
        s.keepAspectRatio = false;
        s.mirrorX = true;
        s.mirrorY = true;
        s.showRed = s.showGreen = s.showBlue = s.showAlpha = false;
        s.colorTransformEnabled = true;
        s.redMultiplier = 2.5f;
        s.redOffset = 0.125f;
        s.greenMultiplier = 0.5f;
        s.greenOffset = -0.5f;
        s.blueMultiplier = 3.0f;
        s.blueOffset = -0.25f;
        s.alphaMultiplier = 0.75f;
        s.alphaOffset = 0.5f;
        Trait<Style>::Edit(s);
    }
    static auto Fields(const ImageStyle& s)
    {
        return std::tie(s.nearestFiltering, s.fitToViewport, s.keepAspectRatio, s.mirrorX, s.mirrorY,
                        s.showRed, s.showGreen, s.showBlue, s.showAlpha, s.colorTransformEnabled,
                        s.redMultiplier, s.redOffset, s.greenMultiplier, s.greenOffset, s.blueMultiplier,
                        s.blueOffset, s.alphaMultiplier, s.alphaOffset, s.visible, s.color);
    }
    static bool Spoil(ImageStyle& s)
    {
        return s.greenMultiplier = std::numeric_limits<float>::quiet_NaN(), true;
    }
};

template <>
struct Trait<GraphStyle> {
    static constexpr std::size_t kBytes = 4 + 4 + 4 + 12 + 12 + Trait<Style>::kBytes;
    static void Edit(GraphStyle& s)
    {
        s.lineWidth = 5;
        s.pointSize = 9;
        s.lineColor = {0.1f, 0.2f, 0.3f};
        s.pointColor = {0.4f, 0.5f, 0.6f};
        Trait<Style>::Edit(s);
    }
    static auto Fields(const GraphStyle& s)
    {
        return std::tie(s.lineWidth, s.pointSize, s.lineColor, s.pointColor, s.visible, s.color);
    }
    static bool Spoil(GraphStyle& s) { return s.lineWidth = 0, true; }
};

template <>
struct Trait<LineFieldStyle> {
    static constexpr std::size_t kBytes = 4 + 4 + 3 + 12;
    static void Edit(LineFieldStyle& s)
    {
        s.lineWidth = 4.0f;
        s.onTop = true;
        s.useSegmentColors = false;
        Trait<Style>::Edit(s);
    }
    static auto Fields(const LineFieldStyle& s)
    {
        return std::tie(s.lineWidth, s.onTop, s.useSegmentColors, s.visible, s.color);
    }
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
    T edited;
    Trait<T>::Edit(edited);
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
    T edited;
    Trait<T>::Edit(edited);
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

TEST(StyleTest, RenderersTakeOnlyTheirOwnStyleAndDrawInTheirPass)
{
    testing_support::LogCapture log; // empty content is reported, and is no matter here
    const std::shared_ptr<Style> styles[] = {
        std::make_shared<Style>(),           std::make_shared<GeometryStyle>(),
        std::make_shared<PointCloudStyle>(), std::make_shared<SkeletonStyle>(),
        std::make_shared<ImageStyle>(),      std::make_shared<GraphStyle>(),
        std::make_shared<LineFieldStyle>()};
    struct Case {
        std::shared_ptr<Renderer> renderer;
        std::size_t style; ///< index into `styles`
        RenderPass pass;
    };
    const Case cases[] = {
        {std::make_shared<ElementRenderer>(), 1, RenderPass::Opaque},
        {std::make_shared<MeshRenderer>(tesk::Mesh()), 1, RenderPass::Opaque},
        {std::make_shared<PointCloudRenderer>(), 2, RenderPass::Opaque},
        {std::make_shared<SkeletonRenderer>(tesk::Skeleton()), 3, RenderPass::Opaque},
        {std::make_shared<ImageRenderer>(), 4, RenderPass::Screen},
        {std::make_shared<GraphRenderer>(), 5, RenderPass::Screen},
        {std::make_shared<LineFieldRenderer>(), 6, RenderPass::Overlay},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        EXPECT_EQ(cases[i].renderer->GetPass(), cases[i].pass) << "renderer " << i;
        for (std::size_t s = 0; s < std::size(styles); ++s)
            EXPECT_EQ(cases[i].renderer->IsCompatibileWithStyle(*styles[s]), s == cases[i].style)
                << "renderer " << i << ", style " << s;
    }
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
