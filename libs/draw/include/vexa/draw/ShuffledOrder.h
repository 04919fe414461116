#pragma once
// The order in which a point cloud draws an evenly spread part of itself while the camera
// moves, as element indices over its vertex buffer (which keeps the caller's order, the
// order a full frame rasterises fastest in).
//
// The points are cut into consecutive blocks of kBlockSize, and each block lists its points
// in a fixed permutation whose every prefix is spread evenly over the block: the first k
// entries hold one point from each of k equal strata of it (for k a power of two, and close
// to that otherwise), at a pseudo-random place within the stratum. A frame drawing the
// first entries of every block therefore shows the whole cloud, with no holes along a scan
// line, and the same points in every frame, so nothing flickers.
//
// Whole blocks share a few variants of that permutation (its point numbers XORed by a mask
// each; that only exchanges strata and mirrors places within them), picked per block by a
// hash: one shared permutation would line the samples of successive blocks up into a
// lattice, which shows as stripes when the block length and a scan's row length share a
// rhythm. The variants take a fixed few megabytes however big the cloud is.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vexa::draw {

class ShuffledOrder {
public:
    static constexpr std::size_t kBlockSize = std::size_t(1) << 14;
    static constexpr std::size_t kVariants = 64;

    /// Number of blocks (and so of runs) for `count` points.
    static std::size_t BlockCount(std::size_t count) { return (count + kBlockSize - 1) / kBlockSize; }

    /// The index list of a cloud of `count` points, relative to each block's first point: the
    /// variants of a whole block's order, then the order of the last block when it is partial.
    static std::vector<std::uint32_t> Indices(std::size_t count);
    /// Where block `block`'s order starts in Indices(count).
    static std::size_t OrderStart(std::size_t block, std::size_t count);

    /// Runs that draw about `budget` of `count` points, the same share of every block: for
    /// each block, how many entries of its order (`counts`), where the order starts in
    /// Indices(count) (`starts`) and the block's first point (`bases`); all BlockCount(count)
    /// long. Returns the number of points the runs hold.
    static std::size_t SubsetRuns(std::size_t count, std::size_t budget, std::span<int> counts,
                                  std::span<std::size_t> starts, std::span<int> bases);
};

} // namespace vexa::draw
