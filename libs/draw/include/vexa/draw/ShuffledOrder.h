#pragma once
// The fixed order in which a point cloud's points lie in its vertex buffers.
//
// The points are cut into consecutive blocks of kBlockSize, and within each block they are
// reordered by one fixed permutation whose every prefix is spread evenly over the block: the
// first k points of a block hold one point from each of k equal strata of it (for k a power of
// two, and close to that otherwise), at a pseudo-random place within the stratum. While the
// camera moves, a frame can therefore draw the first points of every block and still show
// the whole cloud, with no holes along a scan line, no stripes where a regular stride would
// beat against a scan's row length, and no flicker, since every frame draws the same sample.
//
// Every whole block uses the permutation with its point numbers XORed by a mask of its own.
// That keeps the strata (it only exchanges them and mirrors the places within them) but
// stops the samples of successive blocks from lining up into a lattice, which shows as
// stripes when the block length and a scan's row length have a common rhythm.
//
// Reordering only within blocks keeps it cache-local (a block of positions fits in the
// second-level cache), and sharing one permutation means no per-point index is stored: a
// buffer position turns back into the point's own index by arithmetic.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vexa::draw {

class ShuffledOrder {
public:
    static constexpr std::size_t kBlockSize = std::size_t(1) << 14;

    /// Number of blocks (and so of runs) for `count` points.
    static std::size_t BlockCount(std::size_t count) { return (count + kBlockSize - 1) / kBlockSize; }

    /// The index, in the caller's order, of the point at buffer position `position` of `count`.
    static std::size_t OriginalIndex(std::size_t position, std::size_t count);

    /// target[i] = convert(source[OriginalIndex(i)]): the caller's order into buffer order.
    template <class Source, class Target, class Convert>
    static void Gather(std::span<const Source> source, std::span<Target> target, Convert convert);
    template <class T>
    static void Gather(std::span<const T> source, std::span<T> target)
    {
        Gather(source, target, [](const T& value) { return value; });
    }
    /// The same in place, through one block of scratch memory.
    template <class T>
    static void ShuffleInPlace(std::span<T> values);

    /// Runs of about `budget` of `count` points, the same share of every block: one run per
    /// block from its start, into `firsts` and `counts` (BlockCount(count) long). Returns the
    /// number of points the runs hold.
    static std::size_t SubsetRuns(std::size_t count, std::size_t budget, std::span<int> firsts,
                                  std::span<int> counts);

    /// The permutation of a block of `length` points (at most kBlockSize): position j of the
    /// block holds the block's point Order(length)[j]. A full block's order is built once.
    static std::span<const std::uint16_t> FullBlockOrder();
    static std::vector<std::uint16_t> PartialBlockOrder(std::size_t length);
    /// The mask whole block `block` XORs its point numbers with.
    static std::uint16_t BlockMask(std::size_t block);

private:
    /// One block of `length` points, block number `block` of the cloud.
    template <class Source, class Target, class Convert>
    static void GatherBlock(const Source* from, Target* to, std::size_t length, std::size_t block, Convert convert);
};

template <class Source, class Target, class Convert>
void ShuffledOrder::GatherBlock(const Source* from, Target* to, std::size_t length, std::size_t block,
                                Convert convert)
{
    if (length == kBlockSize) {
        const std::span<const std::uint16_t> full = FullBlockOrder();
        const std::uint16_t mask = BlockMask(block);
        for (std::size_t j = 0; j < kBlockSize; ++j)
            to[j] = convert(from[full[j] ^ mask]);
        return;
    }
    const std::vector<std::uint16_t> partial = PartialBlockOrder(length);
    for (std::size_t j = 0; j < partial.size(); ++j)
        to[j] = convert(from[partial[j]]);
}

template <class Source, class Target, class Convert>
void ShuffledOrder::Gather(std::span<const Source> source, std::span<Target> target, Convert convert)
{
    const std::size_t count = std::min(source.size(), target.size());
    for (std::size_t start = 0; start < count; start += kBlockSize)
        GatherBlock(source.data() + start, target.data() + start, std::min(kBlockSize, count - start),
                    start / kBlockSize, convert);
}

template <class T>
void ShuffledOrder::ShuffleInPlace(std::span<T> values)
{
    std::vector<T> block;
    block.reserve(std::min(values.size(), kBlockSize));
    for (std::size_t start = 0; start < values.size(); start += kBlockSize) {
        const std::span<T> part = values.subspan(start, std::min(kBlockSize, values.size() - start));
        block.assign(part.begin(), part.end());
        GatherBlock(block.data(), part.data(), part.size(), start / kBlockSize, [](const T& value) { return value; });
    }
}

} // namespace vexa::draw
