// The order a cloud draws part of itself in while the camera moves: every block lists each
// of its points once, and the first entries of the blocks (what a frame draws) are spread
// evenly over the cloud.

#include <vexa/draw/ShuffledOrder.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <set>
#include <vector>

using vexa::draw::ShuffledOrder;

namespace {

constexpr std::size_t kBlock = ShuffledOrder::kBlockSize;

/// The points (in the cloud's numbering) that a frame under `budget` draws.
std::vector<std::size_t> SubsetIndices(std::size_t count, std::size_t budget)
{
    const std::vector<std::uint32_t> indices = ShuffledOrder::Indices(count);
    std::vector<int> counts(ShuffledOrder::BlockCount(count)), bases(counts.size());
    std::vector<std::size_t> starts(counts.size());
    ShuffledOrder::SubsetRuns(count, budget, counts, starts, bases);
    std::vector<std::size_t> drawn;
    for (std::size_t run = 0; run < counts.size(); ++run)
        for (int i = 0; i < counts[run]; ++i)
            drawn.push_back(indices.at(starts[run] + static_cast<std::size_t>(i)) +
                            static_cast<std::size_t>(bases[run]));
    std::sort(drawn.begin(), drawn.end());
    return drawn;
}

} // namespace

TEST(ShuffledOrder, EveryBlockListsEachOfItsPointsOnce)
{
    for (const std::size_t count : {std::size_t(1), std::size_t(1000), kBlock, 70 * kBlock + 777}) {
        SCOPED_TRACE(count);
        std::vector<std::size_t> all(count);
        std::iota(all.begin(), all.end(), std::size_t(0));
        EXPECT_EQ(SubsetIndices(count, count), all);
    }
    // Small clouds need only their own short list; big ones a fixed number of variants.
    EXPECT_EQ(ShuffledOrder::Indices(1000).size(), 1000u);
    EXPECT_EQ(ShuffledOrder::Indices(1000 * kBlock).size(), ShuffledOrder::kVariants * kBlock);
}

TEST(ShuffledOrder, ASubsetIsSpreadAlongScanLinesWithoutHolesOrStripes)
{
    // A sixteenth of forty blocks: about a sixteenth of the points, in one run per block.
    const std::size_t count = 40 * kBlock;
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
    std::set<std::vector<std::size_t>> patterns;
    for (std::size_t block = 0; block < 40; ++block) {
        std::vector<std::size_t> places;
        for (const std::size_t index : drawn)
            if (index / kBlock == block)
                places.push_back(index % kBlock);
        patterns.insert(places);
    }
    EXPECT_GT(patterns.size(), 20u);

    // Small budgets still take something from every block; a budget past the count is all.
    EXPECT_EQ(SubsetIndices(count, 3).size(), 40u);
    EXPECT_EQ(SubsetIndices(count, 10 * count).size(), count);
}
