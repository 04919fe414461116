#include <runa/BinaryStream.h>

#include "LogCapture.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <sstream>
#include <vector>

// Records the largest allocation while tracking is on, to prove that a corrupt length is
// refused before any buffer of that size is requested.
namespace {
bool trackAllocations = false;
std::size_t largestAllocation = 0;
} // namespace

void* operator new(std::size_t size)
{
    if (trackAllocations && size > largestAllocation)
        largestAllocation = size;
    if (void* memory = std::malloc(size == 0 ? 1 : size))
        return memory;
    throw std::bad_alloc();
}
// GCC pairs the inlined malloc with a call to delete and mistakes the pair for a mismatch.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
void operator delete(void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}
#pragma GCC diagnostic pop

namespace {

using runa::BinaryReader;
using runa::BinaryWriter;

enum class Shade : std::uint16_t { Dark = 0x0102, Light = 0xA0B0 };

std::vector<unsigned char> Bytes(const std::stringstream& stream)
{
    const std::string text = stream.str();
    return {text.begin(), text.end()};
}

template <class T>
bool SameBits(T a, T b)
{
    return std::memcmp(&a, &b, sizeof(T)) == 0;
}

/// The next value of the reader; `value` is what the target held before, so a skipped read shows.
template <class T>
T ReadBack(BinaryReader& reader, T value)
{
    EXPECT_TRUE(reader.Read(value));
    return value;
}

} // namespace

TEST(BinaryStream, WritesLittleEndianAndReadsEveryKindBack)
{
    std::stringstream stream;
    BinaryWriter writer(stream);
    writer.Write(std::uint32_t{0x01020304})
        .Write(std::int16_t{-2})
        .Write(1.0f)
        .Write(true)
        .Write(false)
        .Write(Shade::Light)
        .WriteString("ab")
        .WriteVersion(3);
    const std::vector<unsigned char> expected = {
        0x04, 0x03, 0x02, 0x01,                                   // u32
        0xFE, 0xFF,                                               // i16 -2
        0x00, 0x00, 0x80, 0x3F,                                   // 1.0f
        0x01, 0x00,                                               // bools are one byte
        0xB0, 0xA0,                                               // enum in its underlying width
        0x02, 0x00, 0x00, 0x00, 'a', 'b', 0x03, 0x00, 0x00, 0x00, // version word
    };
    EXPECT_EQ(Bytes(stream), expected);
    const std::string longText(300, 'x');
    const std::string withNul("a\0b", 3);
    writer.Write(std::int32_t{std::numeric_limits<std::int32_t>::min()})
        .Write(std::uint64_t{0x0102030405060708ull})
        .Write(-0.0f)
        .Write(3.25)
        .WriteString("")
        .WriteString(withNul)
        .WriteString(longText)
        .WriteVersion(2);
    EXPECT_TRUE(writer.Good());

    testing_support::LogCapture log;
    BinaryReader reader(stream);
    EXPECT_EQ(ReadBack(reader, std::uint32_t{0}), 0x01020304u);
    EXPECT_EQ(ReadBack(reader, std::int16_t{0}), -2);
    EXPECT_EQ(ReadBack(reader, 0.0f), 1.0f);
    EXPECT_TRUE(ReadBack(reader, false));
    EXPECT_FALSE(ReadBack(reader, true));
    EXPECT_EQ(ReadBack(reader, Shade::Dark), Shade::Light);
    std::string read;
    EXPECT_TRUE(reader.ReadString(read));
    EXPECT_EQ(read, "ab");
    EXPECT_TRUE(reader.ReadVersion(3));
    EXPECT_EQ(ReadBack(reader, std::int32_t{0}), std::numeric_limits<std::int32_t>::min());
    EXPECT_EQ(ReadBack(reader, std::uint64_t{0}), 0x0102030405060708ull);
    EXPECT_TRUE(SameBits(ReadBack(reader, 1.0f), -0.0f));
    EXPECT_EQ(ReadBack(reader, 0.0), 3.25);
    for (const std::string& text : {std::string(), withNul, longText}) {
        read = "not empty";
        EXPECT_TRUE(reader.ReadString(read));
        EXPECT_EQ(read, text);
    }
    EXPECT_TRUE(reader.Good());
    EXPECT_EQ(reader.Offset(), stream.str().size() - 4);

    // A version word must match; a mismatch is the caller's to report, with its own context.
    EXPECT_FALSE(reader.ReadVersion(1));
    EXPECT_FALSE(reader.Good());
    EXPECT_FALSE(reader.Truncated());
    EXPECT_TRUE(log.messages.empty());
}

TEST(BinaryStream, TruncationAtEveryOffsetFailsOnceAndKeepsTargets)
{
    std::stringstream full;
    BinaryWriter(full).Write(std::int16_t{-300}).Write(-8.0).WriteString("abc").Write(true);
    const std::string data = full.str();
    // Offset at which each of the four fields ends.
    const std::size_t ends[] = {2, 10, 17, 18};
    ASSERT_EQ(data.size(), ends[3]);

    for (std::size_t size = 0; size < data.size(); ++size) {
        SCOPED_TRACE("record cut to " + std::to_string(size) + " bytes");
        std::istringstream in(data.substr(0, size));
        testing_support::LogCapture log;
        BinaryReader reader(in, "test::Record");
        std::int16_t small = 1234;
        double wide = 1234.0;
        std::string text = "untouched";
        bool flag = false;
        // Every read is attempted so that reads past the end are seen to stay quiet.
        const bool results[] = {reader.Read(small), reader.Read(wide), reader.ReadString(text),
                                reader.Read(flag)};
        for (int field = 0; field < 4; ++field)
            EXPECT_EQ(results[field], ends[field] <= size) << "field " << field;
        EXPECT_EQ(small, ends[0] <= size ? -300 : 1234);
        EXPECT_EQ(wide, ends[1] <= size ? -8.0 : 1234.0);
        EXPECT_EQ(text, ends[2] <= size ? "abc" : "untouched");
        EXPECT_FALSE(flag);

        EXPECT_TRUE(reader.Truncated());
        EXPECT_FALSE(reader.Good());
        ASSERT_EQ(log.messages.size(), 1u);
        EXPECT_EQ(log.messages[0].level, rlog::Level::Warning);
        EXPECT_EQ(log.messages[0].label, "test::Record");
        if (size == 3) {
            EXPECT_EQ(log.messages[0].message,
                      "Stream is truncated: wanted 8 bytes at byte offset 2, only 1 left");
        }
    }
}

TEST(BinaryStream, OversizeStringIsRefusedWithoutAllocating)
{
    std::stringstream stream;
    BinaryWriter(stream).Write(std::uint32_t{0xFFFFFFFF}).WriteString("tail");
    testing_support::LogCapture log;
    BinaryReader reader(stream, "test::Huge");
    std::string text = "kept";

    largestAllocation = 0;
    trackAllocations = true;
    const bool read = reader.ReadString(text);
    trackAllocations = false;

    EXPECT_FALSE(read);
    EXPECT_EQ(text, "kept");
    EXPECT_LT(largestAllocation, 4096u);
    EXPECT_FALSE(reader.Good());
    EXPECT_FALSE(reader.Truncated());
    EXPECT_TRUE(log.Contains("String of 4294967295 bytes at byte offset 0 exceeds the limit of " +
                                 std::to_string(BinaryReader::kDefaultMaxString) + " bytes",
                             "test::Huge"));
    EXPECT_EQ(log.messages.size(), 1u);

    // The limit is inclusive.
    std::stringstream exact;
    BinaryWriter(exact).WriteString("12345").WriteString("12345");
    BinaryReader limited(exact);
    EXPECT_TRUE(limited.ReadString(text, 5));
    EXPECT_EQ(text, "12345");
    text = "kept";
    EXPECT_FALSE(limited.ReadString(text, 4));
    EXPECT_EQ(text, "kept");
}
