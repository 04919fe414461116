#include <vexa/ResourceId.h>

#include <gtest/gtest.h>

#include <map>

using vexa::ResourceId;

TEST(ResourceId, ParsesTextFormAtFirstColon)
{
    const ResourceId cloud("PointCloudResource:scans/a");
    EXPECT_EQ(cloud.type, "PointCloudResource");
    EXPECT_EQ(cloud.name, "scans/a");
    EXPECT_EQ(cloud.ToString(), "PointCloudResource:scans/a");
    EXPECT_EQ(ResourceId(cloud.ToString()), cloud);

    const ResourceId nested("a:b:c");
    EXPECT_EQ(nested.type, "a");
    EXPECT_EQ(nested.name, "b:c");
}

TEST(ResourceId, BareNameBecomesTypeAndName)
{
    const ResourceId bare("cloud");
    EXPECT_EQ(bare.type, "cloud");
    EXPECT_EQ(bare.name, "cloud");
    EXPECT_TRUE(bare.IsValid());
}

TEST(ResourceId, ValidityNeedsBothFields)
{
    EXPECT_EQ(ResourceId(std::string()), ResourceId::INVALID);
    EXPECT_FALSE(ResourceId::INVALID.IsValid());
    EXPECT_EQ(ResourceId::INVALID.ToString(), ":");

    const ResourceId noType(":cloud");
    EXPECT_EQ(noType.type, "");
    EXPECT_EQ(noType.name, "cloud");
    EXPECT_FALSE(noType.IsValid());

    const ResourceId noName("T:");
    EXPECT_EQ(noName.type, "T");
    EXPECT_EQ(noName.name, "");
    EXPECT_FALSE(noName.IsValid());

    ResourceId id("T:x");
    id.Invalidate();
    EXPECT_FALSE(id.IsValid());
    EXPECT_EQ(id, ResourceId::INVALID);
}

TEST(ResourceId, SplitsNameAtLastSlashOnly)
{
    const ResourceId deep("T:a/b/c");
    EXPECT_EQ(deep.GetNamePath(), "a/b");
    EXPECT_EQ(deep.GetNameWithoutPath(), "c");

    const ResourceId backslash("T:a\\b");
    EXPECT_EQ(backslash.GetNamePath(), "");
    EXPECT_EQ(backslash.GetNameWithoutPath(), "a\\b");

    const ResourceId trailing("T:dir/");
    EXPECT_EQ(trailing.GetNamePath(), "dir");
    EXPECT_EQ(trailing.GetNameWithoutPath(), "");

    const ResourceId leading("T:/leaf");
    EXPECT_EQ(leading.GetNamePath(), "");
    EXPECT_EQ(leading.GetNameWithoutPath(), "leaf");
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
