#include <plor/UploadBytes.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <vector>

namespace {

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

} // namespace
