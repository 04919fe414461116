#include "GlFixture.h"
#include "LogCapture.h"

#include <plor/ArrayObject.h>
#include <plor/Program.h>
#include <plor/Texture.h>

namespace {

using plor_test::GlTest;
using plor_test::kSize;
using Rgba = std::vector<std::uint8_t>;

/// Shows the texture over the whole target with its first row at the top.
const char* kSampleFragment = R"(#version 330 core
uniform sampler2D image;
out vec4 fragColor;
void main()
{
    vec2 uv = gl_FragCoord.xy / 64.0;
    fragColor = texture(image, vec2(uv.x, 1.0 - uv.y));
}
)";

class TextureTest : public GlTest {
protected:
    /// Draws `texture` into a fresh target; the target stays bound for reading.
    void Show(plor::Texture& texture)
    {
        if (!program_.IsBuilt()) {
            program_.AddStageSource(plor::ShaderStage::Vertex, plor_test::kFullScreenVertex)
                .AddStageSource(plor::ShaderStage::Fragment, kSampleFragment);
        }
        PrepareTarget(target_, 0.0f, 0.0f, 0.0f);
        ASSERT_TRUE(program_.Use());
        ASSERT_TRUE(texture.Bind(1));
        program_.SetUniform("image", 1);
        plor::ArrayObject empty;
        empty.SetVertexCount(3);
        empty.Draw(plor::PrimitiveType::Triangles);
    }

    plor::Program program_{"sample"};
    plor::Framebuffer target_;
};

TEST_F(TextureTest, ImagesSampleBackInTheirLayout)
{
    // 2x2 RGBA: red, green / blue, white, top row first.
    const std::vector<std::uint8_t> rgba = {255, 0, 0,   255, 0,   255, 0,   255,
                                            0,   0, 255, 255, 255, 255, 255, 255};
    plor::Texture texture(tesk::Image(2, 2, 4, rgba));
    texture.SetFilter(plor::TextureFilter::Nearest);
    Show(texture);
    EXPECT_EQ(PixelAt(8, 8), (Rgba{255, 0, 0, 255}));
    EXPECT_EQ(PixelAt(kSize - 8, 8), (Rgba{0, 255, 0, 255}));
    EXPECT_EQ(PixelAt(8, kSize - 8), (Rgba{0, 0, 255, 255}));
    EXPECT_EQ(PixelAt(kSize - 8, kSize - 8), (Rgba{255, 255, 255, 255}));

    // Unaligned rows, float and gray images and mipmaps are drawn by the draw tier's image and
    // mesh tests.
    EXPECT_EQ(plor::GetLastGlError(), "");

    // A file that cannot be loaded is reported and keeps the previous image.
    testing_support::LogCapture log;
    EXPECT_FALSE(texture.LoadPng("/nonexistent/none.png"));
    EXPECT_TRUE(log.Contains("Cannot load the texture '/nonexistent/none.png'; keeping the previous image",
                             "plor::Texture::LoadPng"));
    EXPECT_EQ(texture.GetWidth(), 2);
}

} // namespace
