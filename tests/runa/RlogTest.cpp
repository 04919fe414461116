#include <runa/rlog.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

struct Entry {
    rlog::Level level;
    std::string message;
    std::string label;
};

rlog::Sink CollectInto(std::vector<Entry>& entries)
{
    return [&entries](rlog::Level level, const std::string& message, const std::string& label) {
        entries.push_back({level, message, label});
    };
}

} // namespace

TEST(Rlog, SinksReachEveryFunctionAndTheDefaultComesBack)
{
    std::vector<Entry> entries;
    std::vector<Entry> inner;
    {
        const rlog::ScopedSink scope(CollectInto(entries));
        {
            const rlog::ScopedSink innerScope(CollectInto(inner));
            rlog::Info("inner", "t");
        }
        rlog::Info("i", "a::Info");
        rlog::Warn("w", "a::Warn");
        rlog::Fail("f", "a::Fail");
        rlog::Crash("c", "a::Crash");
        rlog::Log(rlog::Level::Warning, "l", "a::Log");
    }
    ASSERT_EQ(inner.size(), 1u);
    EXPECT_EQ(inner[0].message, "inner");
    std::vector<rlog::Level> levels;
    for (const Entry& entry : entries)
        levels.push_back(entry.level);
    EXPECT_EQ(levels, (std::vector{rlog::Level::Info, rlog::Level::Warning, rlog::Level::Failure,
                                   rlog::Level::Crash, rlog::Level::Warning}));
    EXPECT_EQ(entries[2].message + " " + entries[2].label, "f a::Fail");

    testing::internal::CaptureStderr();
    rlog::Warn("after", "t::After");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "[WARN] t::After: after\n");
    EXPECT_EQ(entries.size(), 5u);

    // SetSink returns the sink it replaces, still usable; an empty one brings back the default.
    std::vector<Entry> second;
    const rlog::Sink original = rlog::SetSink(CollectInto(entries));
    const rlog::Sink previous = rlog::SetSink(CollectInto(second));
    ASSERT_TRUE(original && previous);
    previous(rlog::Level::Info, "direct", "t");
    EXPECT_EQ(entries.back().message, "direct");
    rlog::SetSink(nullptr);
    testing::internal::CaptureStderr();
    rlog::Fail("shown", "test::Label");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "[FAIL] test::Label: shown\n");
    EXPECT_TRUE(second.empty());
    rlog::SetSink(original);
}
