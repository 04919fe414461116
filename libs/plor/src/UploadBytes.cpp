#include <plor/UploadBytes.h>

#include <cstring>
#include <new>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace plor {

namespace {

#if defined(__linux__)
constexpr std::size_t kHugePage = std::size_t(2) << 20;
// Older headers lack it; kernels before 5.14 refuse it and the pages fault in as they are written.
#ifndef MADV_POPULATE_WRITE
#define MADV_POPULATE_WRITE 23
#endif
#endif

} // namespace

UploadBytes::UploadBytes(std::size_t size) : size_(size)
{
#if defined(__linux__)
    if (size >= kMapThreshold) {
        const std::size_t mapped = (size + kHugePage - 1) / kHugePage * kHugePage;
        void* block = mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (block != MAP_FAILED) {
            // Both are hints: without huge pages or pre-faulting the block still works, only slower.
            madvise(block, mapped, MADV_HUGEPAGE);
            madvise(block, mapped, MADV_POPULATE_WRITE);
            data_ = static_cast<std::byte*>(block);
            mappedSize_ = mapped;
            return;
        }
    }
#endif
    data_ = new std::byte[size];
}

UploadBytes::~UploadBytes()
{
#if defined(__linux__)
    if (mappedSize_ > 0) {
        munmap(data_, mappedSize_);
        return;
    }
#endif
    delete[] data_;
}

std::unique_ptr<UploadBytes> UploadBytes::CopyOf(std::span<const std::byte> bytes)
{
    auto block = std::make_unique<UploadBytes>(bytes.size());
    if (!bytes.empty())
        std::memcpy(block->data_, bytes.data(), bytes.size());
    return block;
}

} // namespace plor
