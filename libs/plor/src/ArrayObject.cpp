#include <plor/ArrayObject.h>

#include <plor/Gl.h>

#include "GlContext.h"

#include <runa/rlog.h>

#include <glbinding/gl/gl.h>

#include <algorithm>
#include <atomic>
#include <utility>

using namespace gl;

namespace plor {

namespace {

GLenum ToGl(PrimitiveType primitive)
{
    switch (primitive) {
    case PrimitiveType::Points:
        return GL_POINTS;
    case PrimitiveType::Lines:
        return GL_LINES;
    case PrimitiveType::LineStrip:
        return GL_LINE_STRIP;
    case PrimitiveType::LineLoop:
        return GL_LINE_LOOP;
    case PrimitiveType::Triangles:
        return GL_TRIANGLES;
    case PrimitiveType::TriangleStrip:
        return GL_TRIANGLE_STRIP;
    case PrimitiveType::TriangleFan:
        return GL_TRIANGLE_FAN;
    }
    return GL_POINTS;
}

GLenum ToGl(DataType type)
{
    switch (type) {
    case DataType::Float:
        return GL_FLOAT;
    case DataType::UnsignedByte:
        return GL_UNSIGNED_BYTE;
    case DataType::Byte:
        return GL_BYTE;
    case DataType::UnsignedShort:
        return GL_UNSIGNED_SHORT;
    case DataType::Short:
        return GL_SHORT;
    case DataType::UnsignedInt:
        return GL_UNSIGNED_INT;
    case DataType::Int:
        return GL_INT;
    }
    return GL_FLOAT;
}

GLenum ToGl(BufferUsage usage)
{
    switch (usage) {
    case BufferUsage::Static:
        return GL_STATIC_DRAW;
    case BufferUsage::Dynamic:
        return GL_DYNAMIC_DRAW;
    case BufferUsage::Stream:
        return GL_STREAM_DRAW;
    }
    return GL_STATIC_DRAW;
}

/// Static data is uploaded once, so its CPU copy goes entirely; changing data keeps the
/// allocation for the next update of the same size.
template <class T>
void DropCpuCopy(std::vector<T>& data, bool keepCapacity)
{
    if (keepCapacity)
        data.clear();
    else
        std::vector<T>().swap(data);
}

std::atomic<std::uint64_t> uploadCount{0};
std::atomic<std::uint64_t> uploadedBytes{0};

/// Uploads into the buffer bound to `target`, reusing its storage when the size is unchanged.
void UploadBuffer(GLenum target, const void* data, std::size_t bytes, std::size_t& gpuBytes, GLenum usage)
{
    uploadCount.fetch_add(1, std::memory_order_relaxed);
    uploadedBytes.fetch_add(bytes, std::memory_order_relaxed);
    if (gpuBytes == bytes && bytes > 0)
        glBufferSubData(target, 0, static_cast<GLsizeiptr>(bytes), data);
    else
        glBufferData(target, static_cast<GLsizeiptr>(bytes), data, usage);
    gpuBytes = bytes;
}

} // namespace

ArrayObject::~ArrayObject()
{
    Release();
}

void ArrayObject::SetBuffer(std::size_t slot, std::span<const std::byte> bytes,
                            std::vector<Attribute> attributes, BufferUsage usage)
{
    Hold(SetSlot(slot, std::move(attributes), usage), bytes);
}

void ArrayObject::SetBuffer(std::size_t slot, std::vector<std::byte>&& bytes,
                            std::vector<Attribute> attributes, BufferUsage usage)
{
    Hold(SetSlot(slot, std::move(attributes), usage), std::move(bytes));
}

void ArrayObject::SetBuffer(std::size_t slot, std::unique_ptr<OwnedBytes> data,
                            std::vector<Attribute> attributes, BufferUsage usage)
{
    Hold(SetSlot(slot, std::move(attributes), usage), std::move(data));
}

void ArrayObject::UpdateBuffer(std::size_t slot, std::span<const std::byte> bytes)
{
    if (Slot* s = UpdateSlot(slot))
        Hold(*s, bytes);
}

void ArrayObject::UpdateBuffer(std::size_t slot, std::unique_ptr<OwnedBytes> data)
{
    if (Slot* s = UpdateSlot(slot))
        Hold(*s, std::move(data));
}

ArrayObject::Slot& ArrayObject::SetSlot(std::size_t slot, std::vector<Attribute>&& attributes,
                                        BufferUsage usage)
{
    if (slots_.size() <= slot)
        slots_.resize(slot + 1);
    Slot& s = slots_[slot];
    s.attributes = std::move(attributes);
    s.usage = usage;
    s.used = true;
    attributesDirty_ = true;
    return s;
}

ArrayObject::Slot* ArrayObject::UpdateSlot(std::size_t slot)
{
    if (slot >= slots_.size() || !slots_[slot].used) {
        rlog::Warn("Buffer slot " + std::to_string(slot) + " was never set; use SetBuffer first",
                   "plor::ArrayObject::UpdateBuffer");
        return nullptr;
    }
    return &slots_[slot];
}

void ArrayObject::Hold(Slot& slot, std::span<const std::byte> bytes)
{
    // Assigning keeps the allocation of a dynamic buffer's previous update.
    slot.pending.assign(bytes.begin(), bytes.end());
    slot.owned.reset();
    slot.dirty = true;
}

void ArrayObject::Hold(Slot& slot, std::vector<std::byte>&& bytes)
{
    slot.pending = std::move(bytes);
    slot.owned.reset();
    slot.dirty = true;
}

void ArrayObject::Hold(Slot& slot, std::unique_ptr<OwnedBytes> data)
{
    std::vector<std::byte>().swap(slot.pending);
    slot.owned = std::move(data); // null: an empty buffer
    slot.dirty = true;
}

std::span<const std::byte> ArrayObject::PendingOf(const Slot& slot)
{
    if (slot.owned)
        return slot.owned->Bytes();
    return slot.pending;
}

void ArrayObject::ClearBuffer(std::size_t slot)
{
    if (slot >= slots_.size() || !slots_[slot].used)
        return;
    Slot& s = slots_[slot];
    DeleteGlObject(GlObjectKind::Buffer, s.buffer);
    s = Slot();
    attributesDirty_ = true;
}

void ArrayObject::SetIndices(std::span<const std::uint32_t> indices)
{
    pendingIndices_.assign(indices.begin(), indices.end());
    indexCount_ = pendingIndices_.size();
    indicesDirty_ = true;
}

void ArrayObject::SetIndices(std::vector<std::uint32_t>&& indices)
{
    pendingIndices_ = std::move(indices);
    indexCount_ = pendingIndices_.size();
    indicesDirty_ = true;
}

bool ArrayObject::HasPendingData() const
{
    if (indicesDirty_ || attributesDirty_)
        return true;
    return std::any_of(slots_.begin(), slots_.end(), [](const Slot& s) { return s.dirty; });
}

std::size_t ArrayObject::PendingBytes() const
{
    std::size_t bytes = indicesDirty_ ? pendingIndices_.size() * sizeof(std::uint32_t) : 0;
    for (const Slot& s : slots_)
        if (s.dirty)
            bytes += PendingOf(s).size();
    return bytes;
}

bool ArrayObject::Upload()
{
    if (!detail::HasCurrentContext()) {
        rlog::Fail("No OpenGL context is current", "plor::ArrayObject::Upload");
        return false;
    }
    if (vao_ == 0) {
        glGenVertexArrays(1, &vao_);
        attributesDirty_ = true;
    }
    glBindVertexArray(vao_);
    bool ok = true;

    for (std::size_t i = 0; i < slots_.size(); ++i) {
        Slot& s = slots_[i];
        if (!s.used || !s.dirty)
            continue;
        if (s.buffer == 0) {
            glGenBuffers(1, &s.buffer);
            s.gpuBytes = 0;
        }
        glBindBuffer(GL_ARRAY_BUFFER, s.buffer);
        const std::span<const std::byte> data = PendingOf(s);
        UploadBuffer(GL_ARRAY_BUFFER, data.data(), data.size(), s.gpuBytes, ToGl(s.usage));
        if (const GLenum error = glGetError(); error != GL_NO_ERROR) {
            // Keeps the data so that a later Draw can try again.
            rlog::Fail("Uploading buffer slot " + std::to_string(i) + " (" + std::to_string(data.size()) +
                           " bytes) failed with " + detail::GlErrorName(static_cast<unsigned>(error)),
                       "plor::ArrayObject::Upload");
            s.gpuBytes = 0;
            ok = false;
            continue;
        }
        s.dirty = false;
        s.owned.reset();
        DropCpuCopy(s.pending, s.usage != BufferUsage::Static);
    }

    if (attributesDirty_ && ok) {
        // Attributes of replaced or cleared slots must not keep reading stale buffers.
        GLint maxAttributes = 16;
        glGetIntegerv(GL_MAX_VERTEX_ATTRIBS, &maxAttributes);
        for (GLint location = 0; location < maxAttributes; ++location)
            glDisableVertexAttribArray(static_cast<GLuint>(location));
        for (const Slot& s : slots_) {
            if (!s.used || s.buffer == 0)
                continue;
            glBindBuffer(GL_ARRAY_BUFFER, s.buffer);
            for (const Attribute& a : s.attributes) {
                if (a.location >= static_cast<unsigned>(maxAttributes) || a.components < 1 ||
                    a.components > 4) {
                    rlog::Warn("Skipping attribute at location " + std::to_string(a.location) + " with " +
                                   std::to_string(a.components) + " components",
                               "plor::ArrayObject::Upload");
                    continue;
                }
                const auto* offset = reinterpret_cast<const void*>(a.offset);
                glEnableVertexAttribArray(a.location);
                if (a.integer && a.type != DataType::Float)
                    glVertexAttribIPointer(a.location, a.components, ToGl(a.type), a.stride, offset);
                else
                    glVertexAttribPointer(a.location, a.components, ToGl(a.type),
                                          a.normalized ? GL_TRUE : GL_FALSE, a.stride, offset);
            }
        }
        attributesDirty_ = false;
    }

    if (indicesDirty_) {
        if (indexBuffer_ == 0) {
            glGenBuffers(1, &indexBuffer_);
            indexGpuBytes_ = 0;
        }
        // Bound while the vertex array is, so the array remembers it.
        glBindBuffer(GL_ELEMENT_ARRAY_BUFFER, indexBuffer_);
        UploadBuffer(GL_ELEMENT_ARRAY_BUFFER, pendingIndices_.data(),
                     pendingIndices_.size() * sizeof(std::uint32_t), indexGpuBytes_, GL_STATIC_DRAW);
        if (const GLenum error = glGetError(); error != GL_NO_ERROR) {
            rlog::Fail("Uploading " + std::to_string(pendingIndices_.size()) + " indices failed with " +
                           detail::GlErrorName(static_cast<unsigned>(error)),
                       "plor::ArrayObject::Upload");
            indexGpuBytes_ = 0;
            ok = false;
        } else {
            indicesDirty_ = false;
            DropCpuCopy(pendingIndices_, false);
        }
    }

    glBindVertexArray(0);
    glBindBuffer(GL_ARRAY_BUFFER, 0);
    return ok;
}

void ArrayObject::Bind()
{
    glBindVertexArray(vao_);
}

void ArrayObject::Draw(PrimitiveType primitive, std::size_t first, std::size_t count)
{
    // An array without buffers still needs its vertex array: shaders may draw from gl_VertexID.
    if ((vao_ == 0 || HasPendingData()) && !Upload())
        return;
    if (vao_ == 0)
        return;
    if (count == 0)
        count = first < vertexCount_ ? vertexCount_ - first : 0;
    else if (vertexCount_ > 0)
        count = first < vertexCount_ ? std::min(count, vertexCount_ - first) : 0;
    if (count == 0)
        return;
    Bind();
    glDrawArrays(ToGl(primitive), static_cast<GLint>(first), static_cast<GLsizei>(count));
    // Other code (a GUI, say) binding an element buffer must not change this array.
    glBindVertexArray(0);
}

void ArrayObject::DrawElementRuns(PrimitiveType primitive, std::span<const int> counts,
                                  std::span<const std::size_t> starts, std::span<const int> bases)
{
    if ((vao_ == 0 || HasPendingData()) && !Upload())
        return;
    const std::size_t runs = std::min({counts.size(), starts.size(), bases.size()});
    if (vao_ == 0 || indexBuffer_ == 0 || runs == 0)
        return;
    // GL takes the starts as byte offsets into the bound index buffer, in pointers.
    runOffsets_.resize(runs);
    for (std::size_t i = 0; i < runs; ++i)
        runOffsets_[i] =
            reinterpret_cast<const void*>(std::min(starts[i], indexCount_) * sizeof(std::uint32_t));
    Bind();
    glMultiDrawElementsBaseVertex(ToGl(primitive), counts.data(), GL_UNSIGNED_INT, runOffsets_.data(),
                                  static_cast<GLsizei>(runs), bases.data());
    glBindVertexArray(0);
}

void ArrayObject::DrawElements(PrimitiveType primitive, std::size_t first, std::size_t count)
{
    // An array without buffers still needs its vertex array: shaders may draw from gl_VertexID.
    if ((vao_ == 0 || HasPendingData()) && !Upload())
        return;
    if (vao_ == 0 || indexBuffer_ == 0 || first >= indexCount_)
        return;
    count = count == 0 ? indexCount_ - first : std::min(count, indexCount_ - first);
    Bind();
    glDrawElements(ToGl(primitive), static_cast<GLsizei>(count), GL_UNSIGNED_INT,
                   reinterpret_cast<const void*>(first * sizeof(std::uint32_t)));
    glBindVertexArray(0);
}

BufferReadView ArrayObject::ReadBuffer(std::size_t slot) const
{
    if (slot >= slots_.size() || !slots_[slot].used)
        return {};
    const Slot& s = slots_[slot];
    if (s.dirty)
        return BufferReadView(PendingOf(s), 0);
    if (s.buffer == 0 || s.gpuBytes == 0)
        return {};
    if (!detail::HasCurrentContext()) {
        rlog::Warn("No OpenGL context is current; buffer slot " + std::to_string(slot) + " cannot be read",
                   "plor::ArrayObject::ReadBuffer");
        return {};
    }
    // The binding of GL_ARRAY_BUFFER is not part of a vertex array's state; whoever bound
    // something there gets it back.
    GLint previous = 0;
    glGetIntegerv(GL_ARRAY_BUFFER_BINDING, &previous);
    glBindBuffer(GL_ARRAY_BUFFER, s.buffer);
    const void* data =
        glMapBufferRange(GL_ARRAY_BUFFER, 0, static_cast<GLsizeiptr>(s.gpuBytes), GL_MAP_READ_BIT);
    glBindBuffer(GL_ARRAY_BUFFER, static_cast<GLuint>(previous));
    if (data == nullptr) {
        const GLenum error = glGetError();
        rlog::Fail("Mapping buffer slot " + std::to_string(slot) + " (" + std::to_string(s.gpuBytes) +
                       " bytes) for reading failed with " + detail::GlErrorName(static_cast<unsigned>(error)),
                   "plor::ArrayObject::ReadBuffer");
        return {};
    }
    return BufferReadView(std::span<const std::byte>(static_cast<const std::byte*>(data), s.gpuBytes),
                          s.buffer);
}

BufferReadView::~BufferReadView()
{
    Unmap();
}

BufferReadView::BufferReadView(BufferReadView&& other) noexcept
    : bytes_(std::exchange(other.bytes_, {})), buffer_(std::exchange(other.buffer_, 0u))
{
}

BufferReadView& BufferReadView::operator=(BufferReadView&& other) noexcept
{
    if (this != &other) {
        Unmap();
        bytes_ = std::exchange(other.bytes_, {});
        buffer_ = std::exchange(other.buffer_, 0u);
    }
    return *this;
}

void BufferReadView::Unmap()
{
    bytes_ = {};
    if (buffer_ == 0)
        return;
    if (detail::HasCurrentContext()) {
        GLint previous = 0;
        glGetIntegerv(GL_ARRAY_BUFFER_BINDING, &previous);
        glBindBuffer(GL_ARRAY_BUFFER, buffer_);
        glUnmapBuffer(GL_ARRAY_BUFFER);
        glBindBuffer(GL_ARRAY_BUFFER, static_cast<GLuint>(previous));
    }
    buffer_ = 0;
}

std::uint64_t ArrayObject::GetUploadCount()
{
    return uploadCount.load(std::memory_order_relaxed);
}

std::uint64_t ArrayObject::GetUploadedBytes()
{
    return uploadedBytes.load(std::memory_order_relaxed);
}

void ArrayObject::Release()
{
    for (Slot& s : slots_)
        DeleteGlObject(GlObjectKind::Buffer, s.buffer);
    DeleteGlObject(GlObjectKind::Buffer, indexBuffer_);
    DeleteGlObject(GlObjectKind::VertexArray, vao_);
    std::vector<Slot>().swap(slots_);
    std::vector<std::uint32_t>().swap(pendingIndices_);
    indicesDirty_ = false;
    indexBuffer_ = 0;
    indexGpuBytes_ = 0;
    indexCount_ = 0;
    vertexCount_ = 0;
    vao_ = 0;
    attributesDirty_ = false;
}

} // namespace plor
