#include <vexa/draw/ShuffledOrder.h>

#include <cmath>

namespace vexa::draw {

namespace {

constexpr int kBlockBits = 14;
static_assert(ShuffledOrder::kBlockSize == std::size_t(1) << kBlockBits);

/// A well-mixed 32-bit hash (a fixed seed keeps the order the same in every run).
std::uint32_t Mix(std::uint32_t x)
{
    x ^= 0x9E3779B9u;
    x ^= x >> 16;
    x *= 0x7FEB352Du;
    x ^= x >> 15;
    x *= 0x846CA68Bu;
    x ^= x >> 16;
    return x;
}

std::uint32_t ReverseBits(std::uint32_t value)
{
    std::uint32_t reversed = 0;
    for (int bit = 0; bit < kBlockBits; ++bit)
        reversed |= ((value >> bit) & 1u) << (kBlockBits - 1 - bit);
    return reversed;
}

/// Position j's point: j's bits reversed (so every prefix of 2^k positions takes one point
/// from each of 2^k strata), then each bit flipped by a hash of the bits above it, which moves
/// points to random places within their strata while keeping the map one-to-one.
std::vector<std::uint16_t> BuildFullOrder()
{
    std::vector<std::uint16_t> order(ShuffledOrder::kBlockSize);
    for (std::uint32_t j = 0; j < order.size(); ++j) {
        const std::uint32_t reversed = ReverseBits(j);
        std::uint32_t point = 0;
        for (int bit = kBlockBits - 1; bit >= 0; --bit) {
            const std::uint32_t above = point >> (bit + 1);
            const std::uint32_t level = static_cast<std::uint32_t>(kBlockBits - 1 - bit);
            const std::uint32_t flip = Mix((level << 16) ^ above) & 1u;
            point |= (((reversed >> bit) & 1u) ^ flip) << bit;
        }
        order[j] = static_cast<std::uint16_t>(point);
    }
    return order;
}

} // namespace

std::span<const std::uint16_t> ShuffledOrder::FullBlockOrder()
{
    static const std::vector<std::uint16_t> order = BuildFullOrder();
    return order;
}

std::vector<std::uint16_t> ShuffledOrder::PartialBlockOrder(std::size_t length)
{
    // The full order with the points past the block's end left out is still a permutation,
    // and its prefixes stay spread.
    std::vector<std::uint16_t> order;
    order.reserve(length);
    for (const std::uint16_t point : FullBlockOrder())
        if (point < length)
            order.push_back(point);
    return order;
}

std::uint16_t ShuffledOrder::BlockMask(std::size_t block)
{
    return static_cast<std::uint16_t>(Mix(static_cast<std::uint32_t>(block) * 2654435761u) & (kBlockSize - 1));
}

std::size_t ShuffledOrder::OriginalIndex(std::size_t position, std::size_t count)
{
    const std::size_t start = position / kBlockSize * kBlockSize;
    const std::size_t offset = position - start;
    if (start + kBlockSize <= count)
        return start + (FullBlockOrder()[offset] ^ BlockMask(start / kBlockSize));
    // Only picking asks about the last, partial block; walking the order there is cheap.
    const std::size_t length = count - start;
    std::size_t seen = 0;
    for (const std::uint16_t point : FullBlockOrder())
        if (point < length && seen++ == offset)
            return start + point;
    return position;
}

std::size_t ShuffledOrder::SubsetRuns(std::size_t count, std::size_t budget, std::span<int> firsts,
                                      std::span<int> counts)
{
    const std::size_t blocks = std::min({BlockCount(count), firsts.size(), counts.size()});
    const double share = count > 0 ? std::min(1.0, static_cast<double>(budget) / static_cast<double>(count)) : 0.0;
    std::size_t total = 0;
    for (std::size_t b = 0; b < blocks; ++b) {
        const std::size_t start = b * kBlockSize;
        const std::size_t length = std::min(kBlockSize, count - start);
        const auto take = std::min(length, static_cast<std::size_t>(std::ceil(share * static_cast<double>(length))));
        firsts[b] = static_cast<int>(start);
        counts[b] = static_cast<int>(take);
        total += take;
    }
    return total;
}

} // namespace vexa::draw
