#pragma once
// Little-endian binary streams for every state file of the library (window placement,
// options, view areas, gadget state). Readers never trust their input: a read that would
// run past the end of the data fails, leaves its target untouched and is reported once.

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <istream>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>

namespace runa {

namespace detail {

template <class T>
T ToLittleEndian(T value)
{
    if constexpr (std::endian::native == std::endian::little || sizeof(T) == 1) {
        return value;
    } else {
        unsigned char bytes[sizeof(T)];
        std::memcpy(bytes, &value, sizeof(T));
        for (std::size_t i = 0; i < sizeof(T) / 2; ++i) {
            const unsigned char swap = bytes[i];
            bytes[i] = bytes[sizeof(T) - 1 - i];
            bytes[sizeof(T) - 1 - i] = swap;
        }
        std::memcpy(&value, bytes, sizeof(T));
        return value;
    }
}

} // namespace detail

/// Values a stream writes and reads as one little-endian word: integers, enums, floats.
template <class T>
concept StreamScalar = std::is_arithmetic_v<T> || std::is_enum_v<T>;

class BinaryWriter {
public:
    explicit BinaryWriter(std::ostream& out) : out_(out) {}

    /// Writes a scalar in little-endian order; bool is one byte, 0 or 1.
    template <StreamScalar T>
    BinaryWriter& Write(T value)
    {
        if constexpr (std::is_same_v<T, bool>) {
            const std::uint8_t byte = value ? 1 : 0;
            return WriteBytes(&byte, 1);
        } else {
            const T little = detail::ToLittleEndian(value);
            return WriteBytes(&little, sizeof(T));
        }
    }

    /// A 32-bit format version that introduces a record.
    BinaryWriter& WriteVersion(std::uint32_t version) { return Write(version); }

    /// A 32-bit byte count followed by the bytes.
    BinaryWriter& WriteString(std::string_view text);

    BinaryWriter& WriteBytes(const void* data, std::size_t size);

    bool Good() const { return static_cast<bool>(out_); }

private:
    std::ostream& out_;
};

class BinaryReader {
public:
    /// Strings longer than this are taken as corruption, not as a reason to allocate.
    static constexpr std::size_t kDefaultMaxString = 1u << 20;

    /// `label` names the reader in the message logged when the data is truncated.
    explicit BinaryReader(std::istream& in, std::string label = "runa::BinaryReader")
        : in_(in), label_(std::move(label))
    {
    }

    /// Reads a scalar written by BinaryWriter::Write. On failure `value` keeps its content.
    template <StreamScalar T>
    bool Read(T& value)
    {
        if constexpr (std::is_same_v<T, bool>) {
            std::uint8_t byte = 0;
            if (!ReadBytes(&byte, 1))
                return false;
            value = byte != 0;
            return true;
        } else {
            T little;
            if (!ReadBytes(&little, sizeof(T)))
                return false;
            value = detail::ToLittleEndian(little);
            return true;
        }
    }

    /// Reads a 32-bit version word; true when it could be read and equals `expected`.
    bool ReadVersion(std::uint32_t expected);

    /// Reads a string written by BinaryWriter::WriteString. A length above `maxLength`
    /// fails without consuming the bytes.
    bool ReadString(std::string& text, std::size_t maxLength = kDefaultMaxString);

    bool ReadBytes(void* data, std::size_t size);

    /// True once a read asked for more bytes than the stream held.
    bool Truncated() const { return truncated_; }
    /// True while every read so far succeeded.
    bool Good() const { return !failed_; }
    /// Bytes consumed so far by this reader.
    std::size_t Offset() const { return offset_; }

private:
    void ReportTruncation(std::size_t wanted, std::size_t got);

    std::istream& in_;
    std::string label_;
    std::size_t offset_ = 0;
    bool truncated_ = false;
    bool failed_ = false;
};

} // namespace runa
