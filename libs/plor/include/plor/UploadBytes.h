#pragma once
// Memory for one array on its way to a vertex buffer: filled once, uploaded, freed.
//
// Large blocks are mapped straight from the system on transparent huge pages and faulted in
// with one call. Filling fresh memory otherwise costs a page fault per 4 KiB, which in a
// virtual machine can take ten times longer than the copy itself; and freeing a mapping
// gives the memory back to the system at once instead of leaving it in the heap.

#include <plor/ArrayObject.h>

#include <cstddef>
#include <memory>
#include <span>

namespace plor {

class UploadBytes final : public OwnedBytes {
public:
    /// Blocks at least this large are mapped; smaller ones come from the heap.
    static constexpr std::size_t kMapThreshold = std::size_t(4) << 20;

    /// `size` bytes of unspecified contents, to be filled through MutableBytes().
    explicit UploadBytes(std::size_t size);
    ~UploadBytes() override;

    /// A block holding a copy of `bytes`, made with a single memcpy.
    static std::unique_ptr<UploadBytes> CopyOf(std::span<const std::byte> bytes);

    std::span<const std::byte> Bytes() const override { return {data_, size_}; }
    std::span<std::byte> MutableBytes() { return {data_, size_}; }
    std::size_t Size() const { return size_; }
    /// True when the block is a mapping of its own rather than heap memory.
    bool IsMapped() const { return mappedSize_ > 0; }

private:
    std::byte* data_ = nullptr;
    std::size_t size_ = 0;
    std::size_t mappedSize_ = 0;
};

} // namespace plor
