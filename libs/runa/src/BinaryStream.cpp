#include "runa/BinaryStream.h"

#include "runa/rlog.h"

#include <vector>

namespace runa {

BinaryWriter& BinaryWriter::WriteString(std::string_view text)
{
    Write(static_cast<std::uint32_t>(text.size()));
    return WriteBytes(text.data(), text.size());
}

BinaryWriter& BinaryWriter::WriteBytes(const void* data, std::size_t size)
{
    if (size > 0)
        out_.write(static_cast<const char*>(data), static_cast<std::streamsize>(size));
    return *this;
}

bool BinaryReader::ReadVersion(std::uint32_t expected)
{
    std::uint32_t version = 0;
    if (!Read(version))
        return false;
    if (version != expected) {
        failed_ = true;
        return false;
    }
    return true;
}

bool BinaryReader::ReadString(std::string& text, std::size_t maxLength)
{
    std::uint32_t length = 0;
    if (!Read(length))
        return false;
    if (length > maxLength) {
        failed_ = true;
        rlog::Warn("String of " + std::to_string(length) + " bytes at byte offset " +
                       std::to_string(offset_ - 4) + " exceeds the limit of " + std::to_string(maxLength) +
                       " bytes",
                   label_);
        return false;
    }
    std::string buffer(length, '\0');
    if (!ReadBytes(buffer.data(), length))
        return false;
    text = std::move(buffer);
    return true;
}

bool BinaryReader::ReadBytes(void* data, std::size_t size)
{
    if (failed_ && truncated_)
        return false; // nothing more to read past the end; do not report twice
    if (size == 0)
        return true;
    // Read into a scratch copy so that a short read never leaves half-written targets.
    char small[16];
    std::vector<char> large;
    char* scratch = small;
    if (size > sizeof(small)) {
        large.resize(size);
        scratch = large.data();
    }
    in_.read(scratch, static_cast<std::streamsize>(size));
    const auto got = static_cast<std::size_t>(in_.gcount());
    offset_ += got;
    if (got != size) {
        ReportTruncation(size, got);
        return false;
    }
    std::memcpy(data, scratch, size);
    return true;
}

void BinaryReader::ReportTruncation(std::size_t wanted, std::size_t got)
{
    failed_ = true;
    if (truncated_)
        return;
    truncated_ = true;
    rlog::Warn("Stream is truncated: wanted " + std::to_string(wanted) + " bytes at byte offset " +
                   std::to_string(offset_ - got) + ", only " + std::to_string(got) + " left",
               label_);
}

} // namespace runa
