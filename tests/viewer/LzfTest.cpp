#include "Lzf.h"

#include "LzfWriter.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

using testing_support::LzfCompress;
using vexa::viewer::LzfDecompress;
using vexa::viewer::LzfProblem;

namespace {

std::span<const unsigned char> Bytes(const std::string& text)
{
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

bool Unpack(const std::string& packed, std::size_t size, std::string& out, LzfProblem& problem)
{
    out.assign(size, '\0');
    return LzfDecompress(Bytes(packed), {reinterpret_cast<unsigned char*>(out.data()), out.size()}, problem);
}

} // namespace

TEST(Lzf, RoundTripsEveryKindOfItem)
{
    std::mt19937 random(7);
    std::string noise(700, '\0');
    for (char& c : noise)
        c = static_cast<char>(random());
    const std::vector<std::string> inputs = {
        "a",
        "abcabcabcabcabcabcabcabcabcabcabc", // overlapping references
        std::string(1000, 'z'),              // references longer than 9 bytes, distance 1
        noise,                               // literal runs of 32 bytes
        noise.substr(0, 300) + noise.substr(0, 300) + "tail",
    };
    for (const std::string& input : inputs) {
        SCOPED_TRACE(input.size());
        const std::string packed = LzfCompress(input);
        std::string out;
        LzfProblem problem;
        ASSERT_TRUE(Unpack(packed, input.size(), out, problem)) << problem.what;
        EXPECT_EQ(out, input);
    }
    LzfProblem problem;
    EXPECT_TRUE(LzfDecompress({}, {}, problem)) << "nothing unpacks to nothing";
}

TEST(Lzf, CorruptStreamsFailWhereTheyGoWrong)
{
    struct Case {
        std::string packed;
        std::size_t size;
        std::size_t offset;
        std::string what;
    };
    const std::string literal = std::string(1, '\x02') + "abc"; // 3 bytes
    const std::vector<Case> cases = {
        {std::string("\x20\x00", 2), 8, 0,
         "a back reference reaches 1 bytes back, before the start of the data"},
        {literal + std::string("\x20\x05", 2), 8, 4,
         "a back reference reaches 6 bytes back, before the start of the data"},
        {std::string("\x05"
                     "ab",
                     3),
         8, 0, "a literal run of 6 bytes runs past the end of the data"},
        {literal + "\xE0", 8, 4, "a back reference is cut off by the end of the data"},
        {literal + "\xE0\x01", 8, 4, "a back reference is cut off by the end of the data"},
        {literal, 2, 0, "the data unpacks to more than 2 bytes"},
        {literal + std::string("\x20\x00", 2), 4, 4, "the data unpacks to more than 4 bytes"},
        {literal, 5, 4, "the data ends after 3 of 5 bytes"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        std::string out;
        LzfProblem problem;
        EXPECT_FALSE(Unpack(c.packed, c.size, out, problem));
        EXPECT_EQ(problem.inputOffset, c.offset);
        EXPECT_EQ(problem.what, c.what);
    }
}
