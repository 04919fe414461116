#include "TextCloudReader.h"

#include "ReaderChecks.h"
#include "TempFolder.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <tuple>
#include <vector>

using testing_support::PropertyNames;
using testing_support::Reads;
using vexa::viewer::ReadTextCloudFromMemory;
using vexa::viewer::TextLayout;

namespace {

const auto Text = [](auto&&... arguments) { return ReadTextCloudFromMemory(arguments...); };
// Read with this layout, whatever the name says.
const auto As = [](TextLayout layout) {
    return [layout](auto&&... arguments) { return ReadTextCloudFromMemory(arguments..., layout); };
};
// Read from the file at this path, the layout told by its extension.
const auto FromFile = [](std::string_view path, const std::string&, tesk::PointCloud& cloud,
                         std::string& error) {
    return vexa::viewer::ReadTextCloud(std::string(path), cloud, error);
};

} // namespace

TEST(TextCloudReader, UnnamedColumnsWithByteColoursAndComments)
{
    const std::string text = "# exported points\r\n// x y z r g b\r\n\r\n1 2 3 255 0 51 0.5 -1\r\n"
                             "  4\t5  6 0 255 102 1.5e2 nan\r\n\n7 8 9 10 20 30 -0 +2\n";
    tesk::PointCloud cloud;
    ASSERT_TRUE(Reads(Text, text, cloud));
    ASSERT_EQ(cloud.Size(), 3u);
    EXPECT_EQ(cloud.GetPositions()[1], glm::vec3(4.0f, 5.0f, 6.0f));
    EXPECT_EQ(PropertyNames(cloud), (std::vector<std::string>{"RGB", "Value 1", "Value 2"}));
    EXPECT_EQ(cloud.GetColorProperty("RGB")[0], tesk::Color3f(1.0f, 0.0f, 0.2f));
    EXPECT_FLOAT_EQ(cloud.GetColorProperty("RGB")[2].g, 20.0f / 255.0f);
    EXPECT_EQ(cloud.GetFloatProperty("Value 1")[1], 150.0f);
    EXPECT_EQ(cloud.GetFloatProperty("Value 2")[2], 2.0f);

    // Columns 4..6 that are not bytes on the first data line are plain values.
    ASSERT_TRUE(Reads(Text, "0 0 0 0.5 1 1\n1 1 1 2 3 4\n", cloud));
    EXPECT_EQ(PropertyNames(cloud), (std::vector<std::string>{"Value 1", "Value 2", "Value 3"}));
    ASSERT_TRUE(Reads(Text, "0 0 0 1 1 256\n", cloud));
    EXPECT_FALSE(cloud.HasProperty("RGB"));
}

TEST(TextCloudReader, HeaderNamesTheColumns)
{
    tesk::PointCloud cloud;

    // Comma separated, colours as bytes, position columns not first.
    ASSERT_TRUE(Reads(Text,
                      "\xEF\xBB\xBFid,X,Y,Z,red,green,blue,intensity\n5, 1.5, 2, 3, 255, 128, 0, 0.25\n"
                      "6, 4, 5, 6, 0, 0, 1, 0.75\n",
                      cloud));
    ASSERT_EQ(cloud.Size(), 2u);
    EXPECT_EQ(cloud.GetPositions()[0], glm::vec3(1.5f, 2.0f, 3.0f));
    EXPECT_EQ(PropertyNames(cloud), (std::vector<std::string>{"RGB", "id", "intensity"}));
    EXPECT_FLOAT_EQ(cloud.GetColorProperty("RGB")[1].b, 1.0f / 255.0f) << "integer 1 is a byte";
    EXPECT_EQ(cloud.GetFloatProperty("id")[1], 6.0f);
    EXPECT_EQ(cloud.GetFloatProperty("intensity")[0], 0.25f);

    // Semicolons, fractional colours kept as they are, normals by name.
    ASSERT_TRUE(Reads(Text, "x;y;z;nx;ny;nz;r;g;b\n0;0;0;0;0;1;0.5;1;0\n", cloud));
    ASSERT_TRUE(cloud.HasNormals());
    EXPECT_EQ(cloud.GetNormals()[0], glm::vec3(0.0f, 0.0f, 1.0f));
    EXPECT_EQ(cloud.GetColorProperty("RGB")[0], tesk::Color3f(0.5f, 1.0f, 0.0f));
    EXPECT_EQ(cloud.PropertyCount(), 1u);

    // Values that cannot be colours stay float properties under their names.
    ASSERT_TRUE(Reads(Text, "a b c R G B\n0 0 0 -1 300 2\n", cloud));
    EXPECT_EQ(cloud.GetPositions()[0], glm::vec3(0.0f));
    EXPECT_EQ(PropertyNames(cloud), (std::vector<std::string>{"R", "G", "B"}));
    EXPECT_EQ(cloud.GetFloatProperty("G")[0], 300.0f);

    // A header with no data is an empty cloud.
    ASSERT_TRUE(Reads(Text, "x y z\n", cloud));
    EXPECT_TRUE(cloud.Empty());
}

TEST(TextCloudReader, PtsCountLineIsSkipped)
{
    tesk::PointCloud cloud;
    ASSERT_TRUE(Reads(Text, "2\n1 2 3 -5 10 20 30\n4 5 6 7 40 50 60\n", cloud));
    ASSERT_EQ(cloud.Size(), 2u);
    EXPECT_EQ(cloud.GetPositions()[0], glm::vec3(1.0f, 2.0f, 3.0f));
    EXPECT_EQ(PropertyNames(cloud), (std::vector<std::string>{"Value 1", "Value 2", "Value 3", "Value 4"}))
        << "column 4 holds -5, so columns 4..6 are not colours";

    // A count that lies about the size only affects how much is reserved.
    ASSERT_TRUE(Reads(Text, "99999999999\n1 2 3\n", cloud));
    EXPECT_EQ(cloud.Size(), 1u);
}

TEST(TextCloudReader, BadLinesFailWithTheirNumberAndLeaveTheCloudAlone)
{
    testing_support::ExpectEachFails<tesk::PointCloud>(
        Text, "bad.xyz", "vexa::viewer::ReadTextCloud",
        {
            {"1 2 3 4\n5 6 7 8\n# note\n9 10 11\n", "line 4: expected 4 values, found 3"},
            {"1,2,3\n4,5,6,7\n", "line 2: expected 3 values, found 4"},
            {"1 2 3\n4 5 x\n", "line 2: 'x' is not a number"},
            {"1 2\n", "line 1: expected at least 3 values (x y z), found 2"},
            {"x y z i\n1 2 3\n", "line 2: the header names 4 columns but this line has 3 values"},
            {"x y z\nx y z\n", "line 2: 'x' is not a number"},
            // A '.' in the first lines means comma separators, whatever comes later.
            {"1,5;2,5;3,5\n1,5;2.5;3,5\n", "line 2: expected 6 values, found 5"},
        });
    testing_support::ExpectEachFails<tesk::PointCloud>(
        As(TextLayout::XyzNormals), "short.xyzn", "vexa::viewer::ReadTextCloud",
        {{"1 2 3 4 5\n", "line 1: expected at least 6 values (x y z nx ny nz), found 5"}});
}

TEST(TextCloudReader, ExtensionsFixWhatTheColumnsHold)
{
    // .pts and .xyzn are read by their path below.
    EXPECT_EQ(vexa::viewer::TextLayoutForPath("dir.x/a.XyzRgb"), TextLayout::XyzColors);
    EXPECT_EQ(vexa::viewer::TextLayoutForPath("a.xyz"), TextLayout::Columns);

    testing_support::TempFolder folder;
    tesk::PointCloud cloud;

    // Scanner PTS: intensity and colours both kept, whatever sign the intensity has.
    ASSERT_TRUE(Reads(FromFile, folder.Write("scan.pts", "2\n1 2 3 -5 255 51 0\n4 5 6 7 0 0 102\n"), cloud));
    ASSERT_EQ(cloud.Size(), 2u);
    EXPECT_EQ(PropertyNames(cloud), (std::vector<std::string>{"RGB", "Intensity"}));
    EXPECT_EQ(cloud.GetFloatProperty("Intensity")[0], -5.0f);
    EXPECT_EQ(cloud.GetColorProperty("RGB")[0], tesk::Color3f(1.0f, 0.2f, 0.0f));
    EXPECT_EQ(cloud.GetColorProperty("RGB")[1], tesk::Color3f(0.0f, 0.0f, 0.4f));
    ASSERT_TRUE(Reads(As(TextLayout::Pts), "1 2 3 0.25\n", cloud));
    EXPECT_EQ(PropertyNames(cloud), (std::vector<std::string>{"Intensity"}));
    EXPECT_EQ(cloud.GetFloatProperty("Intensity")[0], 0.25f);
    ASSERT_TRUE(Reads(As(TextLayout::Pts), "1 2 3 9 8 7\n", cloud));
    EXPECT_EQ(cloud.GetColorProperty("RGB")[0], tesk::Color3f(9.0f / 255.0f, 8.0f / 255.0f, 7.0f / 255.0f));

    // Normals, and extra columns after them.
    ASSERT_TRUE(Reads(FromFile, folder.Write("n.xyzn", "0 0 0 0 0 1 5\n1 1 1 1 0 0 6\n"), cloud));
    ASSERT_TRUE(cloud.HasNormals());
    EXPECT_EQ(cloud.GetNormals()[1], glm::vec3(1.0f, 0.0f, 0.0f));
    EXPECT_EQ(PropertyNames(cloud), (std::vector<std::string>{"Value 1"}));

    // Colours as bytes or as fractions, told apart over the whole file.
    ASSERT_TRUE(Reads(As(TextLayout::XyzColors), "0 0 0 0 0.5 1\n1 1 1 1 1 0\n", cloud));
    EXPECT_EQ(cloud.GetColorProperty("RGB")[0], tesk::Color3f(0.0f, 0.5f, 1.0f));
    ASSERT_TRUE(Reads(As(TextLayout::XyzColors), "0 0 0 0 0 1\n1 1 1 255 51 0\n", cloud));
    EXPECT_EQ(cloud.GetColorProperty("RGB")[0], tesk::Color3f(0.0f, 0.0f, 1.0f / 255.0f));
    EXPECT_EQ(cloud.GetColorProperty("RGB")[1], tesk::Color3f(1.0f, 0.2f, 0.0f));
}

TEST(TextCloudReader, DecimalCommasAreToldFromCommaSeparators)
{
    tesk::PointCloud cloud;
    for (const std::string text : {"x;y;z;intensity\n1,5;2,25;3,0;7\n-4,5;1e3;0,125;8\n",
                                   "# from a spreadsheet\n1,5\t2,25\t3,0\t7\n-4,5\t1e3\t0,125\t8\n",
                                   "1,5 2,25 3,0 7\n-4,5 1e3 0,125 8\n"}) {
        SCOPED_TRACE(text);
        ASSERT_TRUE(Reads(Text, text, cloud));
        ASSERT_EQ(cloud.Size(), 2u);
        EXPECT_EQ(cloud.GetPositions()[0], glm::vec3(1.5f, 2.25f, 3.0f));
        EXPECT_EQ(cloud.GetPositions()[1], glm::vec3(-4.5f, 1000.0f, 0.125f));
        ASSERT_EQ(cloud.PropertyCount(), 1u);
        EXPECT_EQ(cloud.GetFloatProperty(cloud.GetProperties()[0].GetName())[1], 8.0f);
    }

    // Dot decimals separated by commas, and whole numbers separated by commas, stay as they were.
    ASSERT_TRUE(Reads(Text, "1.5,2.25,3.0\n4,5,6\n", cloud));
    EXPECT_EQ(cloud.GetPositions()[0], glm::vec3(1.5f, 2.25f, 3.0f));
    EXPECT_EQ(cloud.GetPositions()[1], glm::vec3(4.0f, 5.0f, 6.0f));
    ASSERT_TRUE(Reads(Text, "1,2,3\n4,5,6\n", cloud));
    EXPECT_EQ(cloud.GetPositions()[1], glm::vec3(4.0f, 5.0f, 6.0f));
    ASSERT_TRUE(Reads(Text, "1.5, 2.5, 3.5\n", cloud));
    EXPECT_EQ(cloud.GetPositions()[0], glm::vec3(1.5f, 2.5f, 3.5f));
}

TEST(TextCloudReader, FarCoordinatesKeepTheirMillimetres)
{
    tesk::PointCloud cloud;
    ASSERT_TRUE(Reads(Text, "500123.4567 5400321.1234 12.5\n499000.001 5401999.999 -3\n", cloud));
    const glm::dvec3 offset = cloud.GetOriginOffset();
    EXPECT_EQ(offset, glm::dvec3(500000.0, 5400000.0, 0.0));
    const glm::vec3 p = cloud.GetPositions()[1];
    EXPECT_NEAR(p.x + offset.x, 499000.001, 1e-4);
    EXPECT_NEAR(p.y + offset.y, 5401999.999, 1e-4);
    EXPECT_EQ(p.z, -3.0f);

    ASSERT_TRUE(Reads(Text, "1 2 3\n", cloud));
    EXPECT_FALSE(cloud.HasOriginOffset()) << "a new read starts without the last file's offset";
}

TEST(TextCloudReader, FiveMegabyteLinesAreHandledWithinASecond)
{
    const std::size_t fiveMegabytes = 5u << 20;
    std::string manyColumns = "1 2 3";
    while (manyColumns.size() < fiveMegabytes)
        manyColumns += " 4.5";
    const std::string columnCount = std::to_string((manyColumns.size() - 5) / 4 + 3);

    // {text, points read (0: refused), message after "long.xyz: "}
    const std::vector<std::tuple<std::string, std::size_t, std::string>> cases{
        {manyColumns, 0, "line 1: " + columnCount + " values on one line; at most 1024 columns are read"},
        {"1 2 3\n4 5 " + std::string(fiveMegabytes, 'x') + "\n", 0,
         "line 2: '" + std::string(40, 'x') + "...' is not a number"},
        {"1 2 " + std::string(fiveMegabytes, '7') + "\n", 1, ""},
        {"# " + std::string(fiveMegabytes, '=') + "\n1 2 3\n", 1, ""},
        {"1 2 3" + std::string(fiveMegabytes, ' ') + "\n4 5 6\n", 2, ""},
    };
    for (const auto& [text, points, message] : cases) {
        SCOPED_TRACE(message.empty() ? std::to_string(points) + " points" : message.substr(0, 60));
        testing_support::LogCapture log;
        tesk::PointCloud cloud;
        std::string error;
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(ReadTextCloudFromMemory(text, "long.xyz", cloud, error), points > 0);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
        EXPECT_EQ(cloud.Size(), points);
        EXPECT_EQ(error, message.empty() ? "" : "long.xyz: " + message);
        if (!message.empty()) {
            EXPECT_TRUE(log.Contains("long.xyz: " + message, "vexa::viewer::ReadTextCloud"));
        }
    }
}
