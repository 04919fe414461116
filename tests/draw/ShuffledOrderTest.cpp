// The drawing order of point buffers: a permutation that picking can undo, and whose block
// prefixes (what a frame draws while the camera moves) are spread evenly over the cloud.

#include <vexa/draw/ShuffledOrder.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <set>
#include <vector>

using vexa::draw::ShuffledOrder;

namespace {

constexpr std::size_t kBlock = ShuffledOrder::kBlockSize;

std::vector<std::size_t> Iota(std::size_t count)
{
    std::vector<std::size_t> values(count);
    std::iota(values.begin(), values.end(), std::size_t(0));
    return values;
}

/// The caller's indices of the points the runs of a subset draw.
std::vector<std::size_t> SubsetIndices(std::size_t count, std::size_t budget)
{
    std::vector<int> firsts(ShuffledOrder::BlockCount(count));
    std::vector<int> counts(firsts.size());
    ShuffledOrder::SubsetRuns(count, budget, firsts, counts);
    std::vector<std::size_t> indices;
    for (std::size_t run = 0; run < firsts.size(); ++run)
        for (int i = 0; i < counts[run]; ++i)
            indices.push_back(ShuffledOrder::OriginalIndex(static_cast<std::size_t>(firsts[run] + i), count));
    std::sort(indices.begin(), indices.end());
    return indices;
}

} // namespace

TEST(ShuffledOrder, IsAPermutationThatPickingUndoesForWholeAndPartialBlocks)
{
    for (const std::size_t count : {std::size_t(1), std::size_t(1000), kBlock, 2 * kBlock + 777}) {
        SCOPED_TRACE(count);
        const std::vector<std::size_t> original = Iota(count);
        std::vector<std::size_t> buffer(count);
        ShuffledOrder::Gather(std::span<const std::size_t>(original), std::span<std::size_t>(buffer));
        for (std::size_t i = 0; i < count; ++i)
            ASSERT_EQ(ShuffledOrder::OriginalIndex(i, count), buffer[i]) << "position " << i;
        std::vector<std::size_t> inPlace = original;
        ShuffledOrder::ShuffleInPlace(std::span<std::size_t>(inPlace));
        EXPECT_EQ(inPlace, buffer);
        std::sort(buffer.begin(), buffer.end());
        EXPECT_EQ(buffer, original) << "every point exactly once";
    }
    // Points stay in their own block, so reordering never leaves the cache.
    std::vector<std::size_t> buffer(2 * kBlock);
    const std::vector<std::size_t> original = Iota(buffer.size());
    ShuffledOrder::Gather(std::span<const std::size_t>(original), std::span<std::size_t>(buffer));
    EXPECT_TRUE(std::all_of(buffer.begin(), buffer.begin() + kBlock, [](std::size_t i) { return i < kBlock; }));
}

TEST(ShuffledOrder, ASubsetIsSpreadAlongScanLinesWithoutHolesOrStripes)
{
    // A sixteenth of three blocks: about a sixteenth of the points, in one run per block.
    const std::size_t count = 3 * kBlock;
    const std::vector<std::size_t> drawn = SubsetIndices(count, count / 16);
    EXPECT_EQ(drawn.size(), count / 16);

    // Along a scan line (consecutive indices) no gap is wider than two strata: a plain shuffle
    // leaves gaps several times the mean.
    std::size_t widest = 0;
    for (std::size_t i = 1; i < drawn.size(); ++i)
        widest = std::max(widest, drawn[i] - drawn[i - 1]);
    EXPECT_LT(widest, 2 * 16u);

    // Across rows of 128 points the sample does not keep to a few columns, as a regular
    // stride of 16 would.
    std::set<std::size_t> columns;
    for (const std::size_t index : drawn)
        columns.insert(index % 128);
    EXPECT_GT(columns.size(), 100u);

    // Blocks do not repeat each other's places: samples lined up block after block form a
    // lattice, which shows as stripes across a scan.
    int same = 0;
    for (std::size_t j = 0; j < 64; ++j)
        same += ShuffledOrder::OriginalIndex(j, count) + kBlock == ShuffledOrder::OriginalIndex(kBlock + j, count);
    EXPECT_LT(same, 8);

    // Small budgets still take something from every block; a budget past the count is all.
    EXPECT_EQ(SubsetIndices(count, 3).size(), 3u);
    EXPECT_EQ(SubsetIndices(count, 10 * count).size(), count);
}
