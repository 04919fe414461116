#pragma once
// A vertex array with its buffers. Data handed in before a context exists is kept on the CPU
// and uploaded at the first Draw; after upload the CPU copy is dropped unless asked to keep it.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

namespace plor {

enum class PrimitiveType { Points, Lines, LineStrip, LineLoop, Triangles, TriangleStrip, TriangleFan };
enum class DataType { Float, UnsignedByte, Byte, UnsignedShort, Short, UnsignedInt, Int };
enum class BufferUsage { Static, Dynamic, Stream };

/// One vertex attribute read from a buffer.
struct Attribute {
    unsigned int location = 0;
    int components = 3;
    DataType type = DataType::Float;
    bool normalized = false;
    int stride = 0;         ///< bytes between vertices; 0 = tightly packed
    std::size_t offset = 0; ///< bytes from the start of the buffer
    /// Integer types read as integers (int / uint / ivec / uvec shader inputs) rather than
    /// converted to floats; `normalized` is then ignored.
    bool integer = false;
};

/// Data of any trivially copyable element type that an array object owns until upload, so a
/// caller's std::vector can be handed over without a copy into bytes.
class OwnedBytes {
public:
    OwnedBytes() = default;
    virtual ~OwnedBytes() = default;
    OwnedBytes(const OwnedBytes&) = delete;
    OwnedBytes& operator=(const OwnedBytes&) = delete;
    virtual std::span<const std::byte> Bytes() const = 0;
};

template <class T>
class OwnedVector final : public OwnedBytes {
public:
    explicit OwnedVector(std::vector<T>&& values) : values_(std::move(values)) {}
    std::span<const std::byte> Bytes() const override { return std::as_bytes(std::span<const T>(values_)); }

private:
    std::vector<T> values_;
};

/// Read-only access to the bytes of one buffer of an array object, for as long as it lives:
/// either the data still waiting on the CPU, or the GPU buffer mapped for reading (whether
/// that copies is the driver's choice; where buffers live in system memory, as with Mesa's
/// software rasteriser, it does not). The mapping is undone when the view goes, which needs
/// the same context to be current. The buffer must not be drawn from or changed meanwhile.
class BufferReadView {
public:
    BufferReadView() = default;
    ~BufferReadView();
    BufferReadView(BufferReadView&& other) noexcept;
    BufferReadView& operator=(BufferReadView&& other) noexcept;
    BufferReadView(const BufferReadView&) = delete;
    BufferReadView& operator=(const BufferReadView&) = delete;

    /// Empty when the slot holds nothing or could not be read.
    std::span<const std::byte> Bytes() const { return bytes_; }

    /// The bytes as an array of T (the slot must hold whole elements of T).
    template <class T>
    std::span<const T> As() const
    {
        static_assert(std::is_trivially_copyable_v<T>);
        return {reinterpret_cast<const T*>(bytes_.data()), bytes_.size() / sizeof(T)};
    }

private:
    friend class ArrayObject;
    BufferReadView(std::span<const std::byte> bytes, unsigned int mappedBuffer)
        : bytes_(bytes), buffer_(mappedBuffer)
    {
    }
    void Unmap();

    std::span<const std::byte> bytes_;
    unsigned int buffer_ = 0;
};

class ArrayObject {
public:
    ArrayObject() = default;
    ~ArrayObject();
    ArrayObject(const ArrayObject&) = delete;
    ArrayObject& operator=(const ArrayObject&) = delete;

    /// Sets buffer number `slot` (0, 1, ...) to a copy of `bytes` and the attributes read
    /// from it. Replaces what the slot held. Uploaded at the next Draw or Upload.
    void SetBuffer(std::size_t slot, std::span<const std::byte> bytes, std::vector<Attribute> attributes,
                   BufferUsage usage = BufferUsage::Static);
    /// Same, taking ownership of the bytes without a copy.
    void SetBuffer(std::size_t slot, std::vector<std::byte>&& bytes, std::vector<Attribute> attributes,
                   BufferUsage usage = BufferUsage::Static);
    /// Same, taking ownership of a typed array (colours, vectors, ...) without a copy.
    template <class T>
    void SetBuffer(std::size_t slot, std::vector<T>&& values, std::vector<Attribute> attributes,
                   BufferUsage usage = BufferUsage::Static)
    {
        static_assert(std::is_trivially_copyable_v<T>, "buffer data is uploaded as raw bytes");
        SetBuffer(slot, std::unique_ptr<OwnedBytes>(std::make_unique<OwnedVector<T>>(std::move(values))),
                  std::move(attributes), usage);
    }
    /// Same, taking any owner of the bytes (see UploadBytes for large arrays).
    void SetBuffer(std::size_t slot, std::unique_ptr<OwnedBytes> data, std::vector<Attribute> attributes,
                   BufferUsage usage = BufferUsage::Static);
    /// Replaces the contents of an existing slot with data of the same layout.
    void UpdateBuffer(std::size_t slot, std::span<const std::byte> bytes);
    /// Same, taking ownership of a typed array without a copy.
    template <class T>
    void UpdateBuffer(std::size_t slot, std::vector<T>&& values)
    {
        static_assert(std::is_trivially_copyable_v<T>, "buffer data is uploaded as raw bytes");
        UpdateBuffer(slot, std::unique_ptr<OwnedBytes>(std::make_unique<OwnedVector<T>>(std::move(values))));
    }
    void UpdateBuffer(std::size_t slot, std::unique_ptr<OwnedBytes> data);
    /// Removes a slot's buffer and disables its attributes.
    void ClearBuffer(std::size_t slot);

    /// 32-bit indices for DrawElements.
    void SetIndices(std::span<const std::uint32_t> indices);
    void SetIndices(std::vector<std::uint32_t>&& indices);

    /// Vertex count used by Draw when no count is given.
    void SetVertexCount(std::size_t count) { vertexCount_ = count; }
    std::size_t GetVertexCount() const { return vertexCount_; }
    std::size_t GetIndexCount() const { return indexCount_; }

    /// Uploads pending data. Needs a current context. Returns false on a GL failure.
    bool Upload();
    bool IsUploaded() const { return vao_ != 0 && !HasPendingData(); }
    bool HasPendingData() const;

    /// Draws `count` vertices from `first` (count 0 = all), uploading first if needed.
    void Draw(PrimitiveType primitive, std::size_t first = 0, std::size_t count = 0);
    /// Draws several runs of the index buffer in one call: run i takes `counts[i]` indices from
    /// index `starts[i]` on, each added to `bases[i]` (all three of one length).
    void DrawElementRuns(PrimitiveType primitive, std::span<const int> counts,
                         std::span<const std::size_t> starts, std::span<const int> bases);
    /// Draws with the index buffer (count 0 = all indices).
    void DrawElements(PrimitiveType primitive, std::size_t first = 0, std::size_t count = 0);

    /// Bytes held on the CPU waiting for upload.
    std::size_t PendingBytes() const;

    /// Reads buffer `slot` without keeping a copy of it: its CPU data while that waits for
    /// upload (no context needed), else the uploaded buffer mapped for reading (needs a
    /// current context; logged and empty without one or when mapping fails).
    BufferReadView ReadBuffer(std::size_t slot) const;

    /// Deletes GL objects (deferred without a context) and forgets CPU data.
    void Release();

    /// Buffer transfers to the GPU (one per vertex slot or index buffer uploaded) and their
    /// bytes, summed over every array object of the process since it started. Lets tests and
    /// benchmarks prove that a frame re-uploaded nothing.
    static std::uint64_t GetUploadCount();
    static std::uint64_t GetUploadedBytes();

private:
    struct Slot {
        std::vector<std::byte> pending;
        /// Set instead of `pending` when the data was handed over with its owner (a typed array,
        /// an UploadBytes block).
        std::unique_ptr<OwnedBytes> owned;
        bool dirty = false;
        std::vector<Attribute> attributes;
        BufferUsage usage = BufferUsage::Static;
        unsigned int buffer = 0;
        std::size_t gpuBytes = 0;
        bool used = false;
    };
    void Bind();
    static std::span<const std::byte> PendingOf(const Slot& slot);
    /// The slot, grown into and given its layout; its data comes from one of the Hold calls.
    Slot& SetSlot(std::size_t slot, std::vector<Attribute>&& attributes, BufferUsage usage);
    /// The slot if SetBuffer set it before, else null (logged).
    Slot* UpdateSlot(std::size_t slot);
    static void Hold(Slot& slot, std::span<const std::byte> bytes);
    static void Hold(Slot& slot, std::vector<std::byte>&& bytes);
    static void Hold(Slot& slot, std::unique_ptr<OwnedBytes> data);

    std::vector<Slot> slots_;
    std::vector<std::uint32_t> pendingIndices_;
    /// DrawElementRuns' offsets, kept so that drawing allocates only when the run count grows.
    std::vector<const void*> runOffsets_;
    bool indicesDirty_ = false;
    unsigned int indexBuffer_ = 0;
    std::size_t indexGpuBytes_ = 0;
    std::size_t indexCount_ = 0;
    std::size_t vertexCount_ = 0;
    unsigned int vao_ = 0;
    bool attributesDirty_ = false;
};

/// View any trivially copyable array as bytes for SetBuffer.
template <class T>
std::span<const std::byte> AsBytes(std::span<const T> values)
{
    return std::as_bytes(values);
}
template <class T>
std::span<const std::byte> AsBytes(const std::vector<T>& values)
{
    return std::as_bytes(std::span<const T>(values));
}

} // namespace plor
