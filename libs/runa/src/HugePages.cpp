#include <runa/HugePages.h>

#include <cstdint>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace runa {

void AdviseHugePages([[maybe_unused]] void* data, [[maybe_unused]] std::size_t bytes)
{
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    constexpr std::uintptr_t HugePage = std::uintptr_t(2) << 20;
    if (data == nullptr || bytes < 2 * HugePage)
        return;
    const auto begin = reinterpret_cast<std::uintptr_t>(data);
    const std::uintptr_t first = (begin + HugePage - 1) & ~(HugePage - 1);
    const std::uintptr_t last = (begin + bytes) & ~(HugePage - 1);
    // Only advice: if the kernel refuses, the memory works the same, just slower to fault in.
    if (last > first)
        madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
#endif
}

} // namespace runa
