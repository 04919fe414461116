#pragma once
// A vertex array with its buffers. Data handed in before a context exists is kept on the CPU
// and uploaded at the first Draw; after upload the CPU copy is dropped unless asked to keep it.

#include <cstddef>
#include <cstdint>
#include <span>
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
    int stride = 0;          ///< bytes between vertices; 0 = tightly packed
    std::size_t offset = 0;  ///< bytes from the start of the buffer
    /// Integer types read as integers (int / uint / ivec / uvec shader inputs) rather than
    /// converted to floats; `normalized` is then ignored.
    bool integer = false;
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
    /// Replaces the contents of an existing slot with data of the same layout.
    void UpdateBuffer(std::size_t slot, std::span<const std::byte> bytes);
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
    /// Draws with the index buffer (count 0 = all indices).
    void DrawElements(PrimitiveType primitive, std::size_t first = 0, std::size_t count = 0);

    /// Bytes held on the CPU waiting for upload.
    std::size_t PendingBytes() const;

    /// Deletes GL objects (deferred without a context) and forgets CPU data.
    void Release();

private:
    struct Slot {
        std::vector<std::byte> pending;
        bool dirty = false;
        std::vector<Attribute> attributes;
        BufferUsage usage = BufferUsage::Static;
        unsigned int buffer = 0;
        std::size_t gpuBytes = 0;
        bool used = false;
    };
    void Bind();

    std::vector<Slot> slots_;
    std::vector<std::uint32_t> pendingIndices_;
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
