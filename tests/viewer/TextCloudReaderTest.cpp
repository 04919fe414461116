#include "TextCloudReader.h"

#include "LogCapture.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using vexa::viewer::ReadTextCloudFromMemory;

namespace {

std::vector<std::string> PropertyNames(const tesk::PointCloud& cloud)
{
    std::vector<std::string> names;
    for (const tesk::PointProperty& property : cloud.GetProperties())
        names.push_back(property.GetName());
    return names;
}

} // namespace

TEST(TextCloudReader, UnnamedColumnsWithByteColoursAndComments)
{
    const std::string text = "# exported points\r\n"
                             "// x y z r g b\r\n"
                             "\r\n"
                             "1 2 3 255 0 51 0.5 -1\r\n"
                             "  4\t5  6 0 255 102 1.5e2 nan\r\n"
                             "\n"
                             "7 8 9 10 20 30 -0 +2\n";
    tesk::PointCloud cloud;
    std::string error;
    ASSERT_TRUE(ReadTextCloudFromMemory(text, "a.xyz", cloud, error)) << error;
    ASSERT_EQ(cloud.Size(), 3u);
    EXPECT_EQ(cloud.GetPositions()[1], glm::vec3(4.0f, 5.0f, 6.0f));
    EXPECT_EQ(PropertyNames(cloud), (std::vector<std::string>{"RGB", "Value 1", "Value 2"}));
    EXPECT_EQ(cloud.GetColorProperty("RGB")[0], tesk::Color3f(1.0f, 0.0f, 0.2f));
    EXPECT_FLOAT_EQ(cloud.GetColorProperty("RGB")[2].g, 20.0f / 255.0f);
    EXPECT_EQ(cloud.GetFloatProperty("Value 1")[1], 150.0f);
    EXPECT_EQ(cloud.GetFloatProperty("Value 2")[2], 2.0f);

    // Columns 4..6 that are not bytes on the first data line are plain values.
    ASSERT_TRUE(ReadTextCloudFromMemory("0 0 0 0.5 1 1\n1 1 1 2 3 4\n", "b.xyz", cloud, error)) << error;
    EXPECT_EQ(PropertyNames(cloud), (std::vector<std::string>{"Value 1", "Value 2", "Value 3"}));
    ASSERT_TRUE(ReadTextCloudFromMemory("0 0 0 1 1 256\n", "c.xyz", cloud, error)) << error;
    EXPECT_FALSE(cloud.HasProperty("RGB"));
    ASSERT_TRUE(ReadTextCloudFromMemory("0 0 0 9\n", "d.xyz", cloud, error)) << error;
    EXPECT_EQ(PropertyNames(cloud), (std::vector<std::string>{"Value 1"}));
}

TEST(TextCloudReader, HeaderNamesTheColumns)
{
    tesk::PointCloud cloud;
    std::string error;

    // Comma separated, colours as bytes, position columns not first.
    ASSERT_TRUE(ReadTextCloudFromMemory("\xEF\xBB\xBFid,X,Y,Z,red,green,blue,intensity\n"
                                        "5, 1.5, 2, 3, 255, 128, 0, 0.25\n"
                                        "6, 4, 5, 6, 0, 0, 1, 0.75\n",
                                        "h.csv", cloud, error))
        << error;
    ASSERT_EQ(cloud.Size(), 2u);
    EXPECT_EQ(cloud.GetPositions()[0], glm::vec3(1.5f, 2.0f, 3.0f));
    EXPECT_EQ(PropertyNames(cloud), (std::vector<std::string>{"RGB", "id", "intensity"}));
    EXPECT_FLOAT_EQ(cloud.GetColorProperty("RGB")[1].b, 1.0f / 255.0f) << "integer 1 is a byte";
    EXPECT_EQ(cloud.GetFloatProperty("id")[1], 6.0f);
    EXPECT_EQ(cloud.GetFloatProperty("intensity")[0], 0.25f);

    // Semicolons, fractional colours kept as they are, normals by name.
    ASSERT_TRUE(ReadTextCloudFromMemory("x;y;z;nx;ny;nz;r;g;b\n0;0;0;0;0;1;0.5;1;0\n", "f.txt", cloud, error))
        << error;
    ASSERT_TRUE(cloud.HasNormals());
    EXPECT_EQ(cloud.GetNormals()[0], glm::vec3(0.0f, 0.0f, 1.0f));
    EXPECT_EQ(cloud.GetColorProperty("RGB")[0], tesk::Color3f(0.5f, 1.0f, 0.0f));
    EXPECT_EQ(cloud.PropertyCount(), 1u);

    // Values that cannot be colours stay float properties under their names.
    ASSERT_TRUE(ReadTextCloudFromMemory("a b c R G B\n0 0 0 -1 300 2\n", "g.txt", cloud, error)) << error;
    EXPECT_EQ(cloud.GetPositions()[0], glm::vec3(0.0f));
    EXPECT_EQ(PropertyNames(cloud), (std::vector<std::string>{"R", "G", "B"}));
    EXPECT_EQ(cloud.GetFloatProperty("G")[0], 300.0f);

    // A header with no data is an empty cloud.
    ASSERT_TRUE(ReadTextCloudFromMemory("x y z\n", "e.txt", cloud, error)) << error;
    EXPECT_TRUE(cloud.Empty());
}

TEST(TextCloudReader, PtsCountLineIsSkipped)
{
    tesk::PointCloud cloud;
    std::string error;
    ASSERT_TRUE(ReadTextCloudFromMemory("2\n1 2 3 -5 10 20 30\n4 5 6 7 40 50 60\n", "s.pts", cloud, error)) << error;
    ASSERT_EQ(cloud.Size(), 2u);
    EXPECT_EQ(cloud.GetPositions()[0], glm::vec3(1.0f, 2.0f, 3.0f));
    EXPECT_EQ(PropertyNames(cloud), (std::vector<std::string>{"Value 1", "Value 2", "Value 3", "Value 4"}))
        << "column 4 holds -5, so columns 4..6 are not colours";

    // A count that lies about the size only affects how much is reserved.
    ASSERT_TRUE(ReadTextCloudFromMemory("99999999999\n1 2 3\n", "t.pts", cloud, error)) << error;
    EXPECT_EQ(cloud.Size(), 1u);
}

TEST(TextCloudReader, BadLinesFailWithTheirNumberAndLeaveTheCloudAlone)
{
    struct Case {
        std::string text;
        std::string error;
    };
    const std::vector<Case> cases = {
        {"1 2 3 4\n5 6 7 8\n# note\n9 10 11\n", "bad.xyz: line 4: expected 4 values, found 3"},
        {"1,2,3\n4,5,6,7\n", "bad.xyz: line 2: expected 3 values, found 4"},
        {"1 2 3\n4 5 x\n", "bad.xyz: line 2: 'x' is not a number"},
        {"1 2\n", "bad.xyz: line 1: expected at least 3 values (x y z), found 2"},
        {"x y z i\n1 2 3\n", "bad.xyz: line 2: the header names 4 columns but this line has 3 values"},
        {"x y z\nx y z\n", "bad.xyz: line 2: 'x' is not a number"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.error);
        testing_support::LogCapture log;
        tesk::PointCloud cloud(std::vector<glm::vec3>{{7.0f, 7.0f, 7.0f}});
        std::string error;
        EXPECT_FALSE(ReadTextCloudFromMemory(c.text, "bad.xyz", cloud, error));
        EXPECT_EQ(error, c.error);
        EXPECT_TRUE(log.Contains(c.error, "vexa::viewer::ReadTextCloud"));
        ASSERT_EQ(cloud.Size(), 1u);
        EXPECT_EQ(cloud.GetPositions()[0], glm::vec3(7.0f));
    }
}
