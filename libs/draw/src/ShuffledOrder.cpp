#include <vexa/draw/ShuffledOrder.h>

#include <algorithm>
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

/// The order of a whole block, built once.
std::span<const std::uint16_t> FullBlockOrder()
{
    static const std::vector<std::uint16_t> order = BuildFullOrder();
    return order;
}

std::uint32_t VariantMask(std::size_t variant)
{
    return variant == 0
               ? 0u
               : Mix(static_cast<std::uint32_t>(variant) * 2654435761u) & (ShuffledOrder::kBlockSize - 1);
}

std::size_t VariantCount(std::size_t count)
{
    return std::min(ShuffledOrder::kVariants, count / ShuffledOrder::kBlockSize);
}

} // namespace

std::vector<std::uint32_t> ShuffledOrder::Indices(std::size_t count)
{
    const std::span<const std::uint16_t> full = FullBlockOrder();
    const std::size_t variants = VariantCount(count);
    const std::size_t partial = count % kBlockSize;
    std::vector<std::uint32_t> indices;
    indices.reserve(variants * kBlockSize + partial);
    for (std::size_t v = 0; v < variants; ++v)
        for (const std::uint16_t point : full)
            indices.push_back(point ^ VariantMask(v));
    // The last block's order is the whole block's with the points past its end left out:
    // still a permutation, and its prefixes stay spread.
    for (const std::uint16_t point : full)
        if (point < partial)
            indices.push_back(point);
    return indices;
}

std::size_t ShuffledOrder::OrderStart(std::size_t block, std::size_t count)
{
    const std::size_t variants = VariantCount(count);
    if ((block + 1) * kBlockSize > count)
        return variants * kBlockSize;
    return Mix(static_cast<std::uint32_t>(block)) % variants * kBlockSize;
}

std::size_t ShuffledOrder::SubsetRuns(std::size_t count, std::size_t budget, std::span<int> counts,
                                      std::span<std::size_t> starts, std::span<int> bases)
{
    const std::size_t blocks = std::min({BlockCount(count), counts.size(), starts.size(), bases.size()});
    const double share =
        count > 0 ? std::min(1.0, static_cast<double>(budget) / static_cast<double>(count)) : 0.0;
    std::size_t total = 0;
    for (std::size_t b = 0; b < blocks; ++b) {
        const std::size_t first = b * kBlockSize;
        const std::size_t length = std::min(kBlockSize, count - first);
        const auto take =
            std::min(length, static_cast<std::size_t>(std::ceil(share * static_cast<double>(length))));
        counts[b] = static_cast<int>(take);
        starts[b] = OrderStart(b, count);
        bases[b] = static_cast<int>(first);
        total += take;
    }
    return total;
}

} // namespace vexa::draw
