#include "GlFixture.h"

#include <plor/ArrayObject.h>
#include <plor/Program.h>
#include <plor/Texture.h>

namespace {

using plor_test::GlTest;

TEST_F(GlTest, LastGlErrorNamesAndDrainsErrors)
{
    EXPECT_EQ(plor::GetLastGlError(), "");
    gl::glBindBuffer(static_cast<gl::GLenum>(0x1234), 0);
    EXPECT_EQ(plor::GetLastGlError(), "GL_INVALID_ENUM");
    EXPECT_EQ(plor::GetLastGlError(), "");

    // Drivers may keep only the first of several errors; either way one call drains them all.
    gl::glBindVertexArray(987654); // never generated
    gl::glBindBuffer(static_cast<gl::GLenum>(0x1234), 0);
    EXPECT_EQ(plor::GetLastGlError().rfind("GL_INVALID_OPERATION", 0), 0u);
    EXPECT_EQ(plor::GetLastGlError(), "");

    // Without a context there is nothing to ask, and nothing crashes.
    window_->ReleaseContext();
    EXPECT_EQ(plor::GetLastGlError(), "");
    EXPECT_EQ(plor::GetGlVendor(), "");
}

TEST_F(GlTest, DeletionsWithoutContextWaitForTheNextMakeCurrent)
{
    ASSERT_EQ(plor::PendingGlDeletes(), 0u);
    auto texture = std::make_unique<plor::Texture>();
    tesk::Image image;
    ASSERT_TRUE(image.Create(4, 4, 3, tesk::PixelFormat::UInt8));
    texture->SetImage(image);
    ASSERT_TRUE(texture->Bind());
    const unsigned int textureId = texture->GetId();

    auto array = std::make_unique<plor::ArrayObject>();
    const std::vector<float> points = {0.f, 0.f, 0.f};
    array->SetBuffer(0, plor::AsBytes(points), {plor::Attribute{}});
    ASSERT_TRUE(array->Upload());

    // Released while current: deleted on the spot.
    plor::ArrayObject immediate;
    immediate.SetBuffer(0, plor::AsBytes(points), {plor::Attribute{}});
    ASSERT_TRUE(immediate.Upload());
    immediate.Release();
    EXPECT_EQ(plor::PendingGlDeletes(), 0u);

    window_->ReleaseContext();
    texture.reset();
    array.reset(); // its buffer and vertex array
    EXPECT_EQ(plor::PendingGlDeletes(), 3u);

    window_->MakeContextCurrent();
    EXPECT_EQ(plor::PendingGlDeletes(), 0u);
    EXPECT_EQ(gl::glIsTexture(textureId), gl::GL_FALSE);
    EXPECT_EQ(plor::GetLastGlError(), "");
}

} // namespace
