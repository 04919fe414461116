#include <vexa/ResourceId.h>

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>

using vexa::ResourceId;

TEST(ResourceId, ParsesTextFormAtTheFirstColonAndNeedsBothFields)
{
    struct Case {
        const char* text;
        const char* type;
        const char* name;
        bool valid;
    };
    const Case cases[] = {
        {"PointCloudResource:scans/a", "PointCloudResource", "scans/a", true},
        {"a:b:c", "a", "b:c", true},
        {"cloud", "cloud", "cloud", true}, // a bare name is type and name
        {":cloud", "", "cloud", false},
        {"T:", "T", "", false},
        {"", "", "", false},
    };
    for (const Case& c : cases) {
        const ResourceId id{std::string(c.text)};
        EXPECT_EQ(std::make_pair(id.type, id.name), std::make_pair(std::string(c.type), std::string(c.name))) << c.text;
        EXPECT_EQ(id.IsValid(), c.valid) << c.text;
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
    const std::pair<std::string, std::pair<std::string, std::string>> cases[] = {
        {"T:a/b/c", {"a/b", "c"}}, {"T:a\\b", {"", "a\\b"}}, {"T:dir/", {"dir", ""}}, {"T:/leaf", {"", "leaf"}}};
    for (const auto& [text, split] : cases) {
        const ResourceId id(text);
        EXPECT_EQ(std::make_pair(id.GetNamePath(), id.GetNameWithoutPath()), split) << text;
    }
}

TEST(ResourceId, OrdersByTypeThenNameBytewise)
{
    const ResourceId a("same", "TypeB");
    const ResourceId b("same", "TypeA");
    EXPECT_NE(a, b);
    EXPECT_TRUE(b < a);
    EXPECT_FALSE(a < b);

    EXPECT_TRUE(ResourceId("a", "T") < ResourceId("b", "T"));
    EXPECT_TRUE(ResourceId("zzz", "A") < ResourceId("aaa", "B"));
    // High bytes sort after ASCII: the order is unsigned.
    EXPECT_TRUE(ResourceId("z", "T") < ResourceId("\xC3\xA9", "T"));
    // A shorter prefix sorts first.
    EXPECT_TRUE(ResourceId("ab", "T") < ResourceId("abc", "T"));

    std::map<ResourceId, int> byId{{ResourceId("MeshResource:m"), 1}, {ResourceId("GeometryResource:g"), 2}};
    EXPECT_EQ(byId.begin()->first.type, "GeometryResource");
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
