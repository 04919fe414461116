#include <vexa/ResourceId.h>

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>

using vexa::ResourceId;

TEST(ResourceId, ParsesTextFormAtTheFirstColonAndNeedsBothFields)
{
    // {text, type, name, valid}
    const std::tuple<std::string, std::string, std::string, bool> cases[] = {
        {"PointCloudResource:scans/a", "PointCloudResource", "scans/a", true},
        {"a:b:c", "a", "b:c", true},
        {"cloud", "cloud", "cloud", true}, // a bare name is type and name
        {":cloud", "", "cloud", false},
        {"T:", "T", "", false},
        {"", "", "", false},
    };
    for (const auto& [text, type, name, valid] : cases) {
        const ResourceId id{text};
        EXPECT_EQ(std::make_tuple(id.type, id.name, id.IsValid()), std::make_tuple(type, name, valid))
            << text;
    }
    const ResourceId cloud("PointCloudResource:scans/a");
    EXPECT_EQ(ResourceId(cloud.ToString()), cloud);
    EXPECT_EQ(ResourceId(std::string()), ResourceId::INVALID);
    EXPECT_EQ(ResourceId::INVALID.ToString(), ":");

    ResourceId id("T:x");
    id.Invalidate();
    EXPECT_EQ(id, ResourceId::INVALID);
}

TEST(ResourceId, SplitsNameAtLastSlashOnly)
{
    // {name, path, leaf}
    const std::pair<std::string, std::pair<std::string, std::string>> cases[] = {{"T:a/b/c", {"a/b", "c"}},
                                                                                 {"T:a\\b", {"", "a\\b"}},
                                                                                 {"T:dir/", {"dir", ""}},
                                                                                 {"T:/leaf", {"", "leaf"}}};
    for (const auto& [text, split] : cases) {
        const ResourceId id(text);
        EXPECT_EQ(std::make_pair(id.GetNamePath(), id.GetNameWithoutPath()), split) << text;
    }
}

TEST(ResourceId, OrdersByTypeThenNameBytewise)
{
    EXPECT_TRUE(ResourceId("same", "TypeA") < ResourceId("same", "TypeB"));
    EXPECT_TRUE(ResourceId("zzz", "A") < ResourceId("aaa", "B"));
    EXPECT_TRUE(ResourceId("a", "T") < ResourceId("b", "T"));
    // High bytes sort after ASCII: the order is unsigned.
    EXPECT_TRUE(ResourceId("z", "T") < ResourceId("\xC3\xA9", "T"));
}

TEST(ResourceId, MoveLeavesSourceEmpty)
{
    ResourceId source("T:x");
    ResourceId moved(std::move(source));
    EXPECT_EQ(moved.ToString(), "T:x");
    EXPECT_TRUE(source.name.empty() && source.type.empty()); // NOLINT(bugprone-use-after-move)

    ResourceId target("U:y");
    target = std::move(moved);
    EXPECT_EQ(target.ToString(), "T:x");
    EXPECT_EQ(moved, ResourceId::INVALID); // NOLINT(bugprone-use-after-move)
}
