#include "GlFixture.h"

#include <plor/ArrayObject.h>
#include <plor/Program.h>
#include <plor/UploadBytes.h>

#include <cstddef>
#include <cstring>

namespace {

using plor_test::GlTest;
using plor_test::kSize;

TEST(UploadBytesTest, CopiesSmallBlocksOnTheHeapAndLargeOnesIntoMappings)
{
    std::vector<std::uint32_t> small(1000);
    for (std::size_t i = 0; i < small.size(); ++i)
        small[i] = static_cast<std::uint32_t>(i * 2654435761u);
    const auto smallCopy = plor::UploadBytes::CopyOf(std::as_bytes(std::span<const std::uint32_t>(small)));
    EXPECT_FALSE(smallCopy->IsMapped());
    ASSERT_EQ(smallCopy->Size(), small.size() * 4);
    EXPECT_EQ(std::memcmp(smallCopy->Bytes().data(), small.data(), smallCopy->Size()), 0);

    // Just over the threshold and not a whole number of huge pages: every byte still arrives.
    std::vector<std::byte> large(plor::UploadBytes::kMapThreshold + 12345);
    for (std::size_t i = 0; i < large.size(); ++i)
        large[i] = static_cast<std::byte>(i * 31 + (i >> 12));
    const auto largeCopy = plor::UploadBytes::CopyOf(large);
    ASSERT_EQ(largeCopy->Size(), large.size());
    EXPECT_EQ(std::memcmp(largeCopy->Bytes().data(), large.data(), large.size()), 0);
#if defined(__linux__)
    EXPECT_TRUE(largeCopy->IsMapped());
#endif

    EXPECT_EQ(plor::UploadBytes::CopyOf({})->Size(), 0u);
}

TEST_F(GlTest, HandedOverArraysUploadOnceAndAreCounted)
{
    // One float of colour per vertex: it lands in red.
    plor::Program program("colored");
    ASSERT_TRUE(plor_test::AddColoredStages(program).Use());

    const std::vector<float> corners = {-1.f, -1.f, 3.f, -1.f, -1.f, 3.f};
    plor::ArrayObject array;
    array.SetBuffer(0, plor::UploadBytes::CopyOf(std::as_bytes(std::span<const float>(corners))),
                    {plor::Attribute{0, 2, plor::DataType::Float}});
    array.SetBuffer(1, std::vector<float>{1.0f, 1.0f, 1.0f}, {plor::Attribute{1, 1, plor::DataType::Float}});
    array.SetVertexCount(3);
    EXPECT_EQ(array.PendingBytes(), 6 * sizeof(float) + 3 * sizeof(float));

    plor::Framebuffer target;
    PrepareTarget(target, 0.0f, 0.0f, 0.0f);
    const std::uint64_t uploads = plor::ArrayObject::GetUploadCount();
    const std::uint64_t bytes = plor::ArrayObject::GetUploadedBytes();
    array.Draw(plor::PrimitiveType::Triangles);
    EXPECT_EQ(plor::ArrayObject::GetUploadCount() - uploads, 2u);
    EXPECT_EQ(plor::ArrayObject::GetUploadedBytes() - bytes, 9 * sizeof(float));
    EXPECT_EQ(array.PendingBytes(), 0u);
    EXPECT_EQ(PixelAt(kSize / 2, kSize / 2), (std::vector<std::uint8_t>{255, 0, 0, 255}));

    // Drawing again uploads nothing; a moved-in update replaces one buffer only.
    array.Draw(plor::PrimitiveType::Triangles);
    EXPECT_EQ(plor::ArrayObject::GetUploadCount() - uploads, 2u);
    array.UpdateBuffer(1, std::vector<float>{0.0f, 0.0f, 0.0f});
    array.Draw(plor::PrimitiveType::Triangles);
    EXPECT_EQ(plor::ArrayObject::GetUploadCount() - uploads, 3u);
    EXPECT_EQ(PixelAt(kSize / 2, kSize / 2), (std::vector<std::uint8_t>{0, 0, 0, 255}));
    EXPECT_EQ(plor::GetLastGlError(), "");
}

} // namespace
