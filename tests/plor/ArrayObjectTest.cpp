#include "GlFixture.h"
#include "LogCapture.h"

#include <plor/ArrayObject.h>
#include <plor/Program.h>

#include <array>
#include <cstddef>
#include <cstring>

namespace {

using plor_test::GlTest;
using plor_test::kSize;
using Rgba = std::vector<std::uint8_t>;

std::vector<std::uint8_t> SolidColors(std::uint8_t r, std::uint8_t g, std::uint8_t b)
{
    return {r, g, b, 255, r, g, b, 255, r, g, b, 255};
}

TEST_F(GlTest, ArrayObjectUploadsOnceFreesItsCopyAndUpdatesInPlace)
{
    plor::Program program("colored");
    ASSERT_TRUE(plor_test::AddColoredStages(program).Use());

    // A full-screen triangle: positions as floats, colours as normalised bytes.
    const std::vector<float> positions = {-1.f, -1.f, 3.f, -1.f, -1.f, 3.f};
    plor::ArrayObject array;
    array.SetBuffer(0, plor::AsBytes(positions), {plor::Attribute{0, 2, plor::DataType::Float}});
    std::vector<std::byte> colors(12);
    const auto green = SolidColors(0, 255, 0);
    std::memcpy(colors.data(), green.data(), colors.size());
    array.SetBuffer(1, std::move(colors), {plor::Attribute{1, 4, plor::DataType::UnsignedByte, true}},
                    plor::BufferUsage::Dynamic);
    array.SetVertexCount(3);
    EXPECT_EQ(array.PendingBytes(), positions.size() * sizeof(float) + 12);
    EXPECT_FALSE(array.IsUploaded());

    plor::Framebuffer target;
    PrepareTarget(target, 0.0f, 0.0f, 0.0f);
    array.Draw(plor::PrimitiveType::Triangles);
    EXPECT_EQ(array.PendingBytes(), 0u);
    EXPECT_TRUE(array.IsUploaded());
    EXPECT_EQ(PixelAt(kSize / 2, kSize / 2), (Rgba{0, 255, 0, 255}));

    // Same size: the colours change in the existing buffer.
    const auto blue = SolidColors(0, 0, 255);
    array.UpdateBuffer(1, plor::AsBytes(blue));
    EXPECT_EQ(array.PendingBytes(), 12u);
    array.Draw(plor::PrimitiveType::Triangles);
    EXPECT_EQ(array.PendingBytes(), 0u);
    EXPECT_EQ(PixelAt(kSize / 2, kSize / 2), (Rgba{0, 0, 255, 255}));

    // Indexed drawing of only the first triangle of two.
    const std::vector<float> quad = {-1.f, -1.f, 1.f, -1.f, -1.f, 1.f, 1.f, 1.f};
    const std::vector<std::uint8_t> quadColors = {255, 0, 0, 255, 255, 0, 0, 255,
                                                  255, 0, 0, 255, 255, 0, 0, 255};
    array.SetBuffer(0, plor::AsBytes(quad), {plor::Attribute{0, 2, plor::DataType::Float}});
    array.SetBuffer(1, plor::AsBytes(quadColors),
                    {plor::Attribute{1, 4, plor::DataType::UnsignedByte, true}});
    const std::array<std::uint32_t, 6> indices = {0, 1, 2, 2, 1, 3};
    array.SetIndices(indices);
    PrepareTarget(target, 0.0f, 0.0f, 0.0f);
    array.DrawElements(plor::PrimitiveType::Triangles, 0, 3);
    EXPECT_EQ(array.PendingBytes(), 0u);
    EXPECT_EQ(PixelAt(4, kSize - 5), (Rgba{255, 0, 0, 255})); // bottom-left: first triangle
    EXPECT_EQ(PixelAt(kSize - 5, 4), (Rgba{0, 0, 0, 255}));   // top-right: second, not drawn
    array.DrawElements(plor::PrimitiveType::Triangles, 3);
    EXPECT_EQ(PixelAt(kSize - 5, 4), (Rgba{255, 0, 0, 255}));

    // A cleared slot stops feeding its attribute: colour falls back to the default (0,0,0,1).
    array.ClearBuffer(1);
    PrepareTarget(target, 1.0f, 1.0f, 1.0f);
    array.DrawElements(plor::PrimitiveType::Triangles);
    EXPECT_EQ(PixelAt(kSize / 2, kSize / 2), (Rgba{0, 0, 0, 255}));
    EXPECT_EQ(plor::GetLastGlError(), "");
}

TEST_F(GlTest, IntegerAttributesReachTheShaderUnconverted)
{
    plor::Program program("ids");
    program
        .AddStageSource(plor::ShaderStage::Vertex, R"(#version 330 core
layout(location = 0) in vec2 position;
layout(location = 2) in uint id;
flat out uint vertexId;
void main()
{
    vertexId = id;
    gl_Position = vec4(position, 0.0, 1.0);
}
)")
        .AddStageSource(plor::ShaderStage::Fragment, R"(#version 330 core
flat in uint vertexId;
out vec4 fragColor;
void main()
{
    fragColor = vertexId == 123456u ? vec4(1.0, 0.0, 0.0, 1.0) : vec4(0.0, 0.0, 1.0, 1.0);
}
)");
    ASSERT_TRUE(program.Use());

    // One interleaved buffer: x, y as floats, then the id.
    struct Vertex {
        float x, y;
        std::uint32_t id;
    };
    const std::vector<Vertex> vertices = {{-1.f, -1.f, 123456}, {3.f, -1.f, 123456}, {-1.f, 3.f, 123456}};
    plor::Attribute position{0, 2, plor::DataType::Float, false, sizeof(Vertex), offsetof(Vertex, x)};
    plor::Attribute id{2, 1, plor::DataType::UnsignedInt, false, sizeof(Vertex), offsetof(Vertex, id)};
    id.integer = true;
    plor::ArrayObject array;
    array.SetBuffer(0, plor::AsBytes(vertices), {position, id});
    array.SetVertexCount(vertices.size());

    plor::Framebuffer target;
    PrepareTarget(target, 0.0f, 0.0f, 0.0f);
    array.Draw(plor::PrimitiveType::Triangles);
    EXPECT_EQ(PixelAt(kSize / 2, kSize / 2), (Rgba{255, 0, 0, 255}));
    EXPECT_EQ(plor::GetLastGlError(), "");
}

TEST_F(GlTest, ArrayObjectMisuseIsReportedWithoutGlErrors)
{
    plor::ArrayObject array;
    testing_support::LogCapture log;
    const std::vector<float> values = {1.f};
    array.UpdateBuffer(2, plor::AsBytes(values));
    EXPECT_TRUE(
        log.Contains("Buffer slot 2 was never set; use SetBuffer first", "plor::ArrayObject::UpdateBuffer"));
    EXPECT_EQ(array.PendingBytes(), 0u);

    // Nothing to draw, or past the end: no draw call, no error.
    array.SetBuffer(0, plor::AsBytes(values), {plor::Attribute{0, 1}});
    array.SetVertexCount(1);
    array.Draw(plor::PrimitiveType::Points, 5);
    array.DrawElements(plor::PrimitiveType::Points);
    EXPECT_EQ(plor::GetLastGlError(), "");

    window_->ReleaseContext();
    EXPECT_FALSE(array.Upload());
    EXPECT_TRUE(log.Contains("No OpenGL context is current", "plor::ArrayObject::Upload"));
    window_->MakeContextCurrent();
}

} // namespace
