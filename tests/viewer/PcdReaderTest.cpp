#include "PcdReader.h"

#include "LogCapture.h"
#include "LzfWriter.h"
#include "ReaderChecks.h"
#include "TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

using testing_support::PropertyNames;
using testing_support::Reads;
using vexa::viewer::ReadPcd;
using vexa::viewer::ReadPcdFromMemory;

namespace {

const auto Pcd = [](auto&&... arguments) { return ReadPcdFromMemory(arguments...); };

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();

struct FieldLayout {
    std::string name;
    char type = 'F';
    int size = 4;
    int count = 1;
};

// Writes the same points in any DATA form, so that one test can compare the forms.
class PcdWriter {
public:
    PcdWriter(std::vector<FieldLayout> fields, std::uint64_t width, std::uint64_t height = 1)
        : fields_(std::move(fields)), width_(width), height_(height)
    {
    }

    /// One value per element of every field, in header order. Packed colours are given as
    /// their uint32 value: binary forms store those bits whatever TYPE says.
    PcdWriter& Point(const std::vector<double>& values)
    {
        points_.push_back(values);
        return *this;
    }
    template <typename... Values>
    PcdWriter& Point(Values... values)
    {
        return Point(std::vector<double>{static_cast<double>(values)...});
    }

    std::string Header(const std::string& form) const
    {
        std::string fields = "FIELDS", sizes = "SIZE", types = "TYPE", counts = "COUNT";
        for (const FieldLayout& f : fields_) {
            fields += " " + f.name;
            sizes += " " + std::to_string(f.size);
            types += std::string(" ") + f.type;
            counts += " " + std::to_string(f.count);
        }
        return "# .PCD v0.7 - Point Cloud Data file format\nVERSION 0.7\n" + fields + "\n" + sizes + "\n" +
               types + "\n" + counts + "\nWIDTH " + std::to_string(width_) + "\nHEIGHT " +
               std::to_string(height_) + "\nVIEWPOINT 0 0 0 1 0 0 0\nPOINTS " +
               std::to_string(width_ * height_) + "\nDATA " + form + "\n";
    }

    std::string Bytes(const std::string& form) const
    {
        if (form != "binary_compressed") {
            std::string body;
            for (const auto& point : points_) {
                std::size_t v = 0;
                for (const FieldLayout& f : fields_)
                    for (int c = 0; c < f.count; ++c, ++v)
                        body += form == "binary" ? Binary(f, point[v])
                                                 : Text(f, point[v]) + (v + 1 < point.size() ? " " : "\n");
            }
            return Header(form) + body;
        }
        // One column per field: every point's values of the first field, then the next...
        std::string columns;
        std::size_t first = 0;
        for (const FieldLayout& f : fields_) {
            for (const auto& point : points_)
                for (int c = 0; c < f.count; ++c)
                    columns += Binary(f, point[first + static_cast<std::size_t>(c)]);
            first += static_cast<std::size_t>(f.count);
        }
        const std::string packed = testing_support::LzfCompress(columns);
        return Header(form) + UInt32(packed.size()) + UInt32(columns.size()) + packed;
    }

    static std::string UInt32(std::size_t value)
    {
        const auto v = static_cast<std::uint32_t>(value);
        return std::string(reinterpret_cast<const char*>(&v), 4);
    }

private:
    static std::string Text(const FieldLayout& f, double value)
    {
        if (std::isnan(value))
            return "nan";
        char text[64];
        if (f.type == 'F' && f.size == 4 && !IsPacked(f))
            std::snprintf(text, sizeof text, "%.9g", static_cast<double>(static_cast<float>(value)));
        else
            std::snprintf(text, sizeof text, "%.17g", value);
        return text;
    }

    static bool IsPacked(const FieldLayout& f) { return f.name == "rgb" || f.name == "rgba"; }

    template <typename T>
    static std::string Raw(T value, std::size_t size = sizeof(T))
    {
        static_assert(std::endian::native == std::endian::little);
        return std::string(reinterpret_cast<const char*>(&value), size);
    }

    static std::string Binary(const FieldLayout& f, double value)
    {
        if (IsPacked(f))
            return Raw(static_cast<std::uint32_t>(value));
        if (f.type == 'F')
            return f.size == 4 ? Raw(static_cast<float>(value)) : Raw(value);
        // Integers: the low bytes of their two's complement.
        const auto bits = f.type == 'I' ? static_cast<std::uint64_t>(static_cast<std::int64_t>(value))
                                        : static_cast<std::uint64_t>(value);
        return Raw(bits, static_cast<std::size_t>(f.size));
    }

    std::vector<FieldLayout> fields_;
    std::uint64_t width_;
    std::uint64_t height_;
    std::vector<std::vector<double>> points_;
};

const std::vector<std::string> Forms = {"ascii", "binary", "binary_compressed"};

/// Position by position, NaN matching NaN, so organised clouds compare too; then the normals
/// and every property.
void ExpectSameCloud(const tesk::PointCloud& a, const tesk::PointCloud& b)
{
    ASSERT_EQ(a.Size(), b.Size());
    for (std::size_t i = 0; i < a.Size(); ++i)
        for (int c = 0; c < 3; ++c) {
            const float x = a.GetPositions()[i][c];
            const float y = b.GetPositions()[i][c];
            EXPECT_TRUE(x == y || (std::isnan(x) && std::isnan(y))) << "point " << i << " axis " << c;
        }
    EXPECT_TRUE(std::ranges::equal(a.GetNormals(), b.GetNormals()));
    ASSERT_EQ(PropertyNames(a), PropertyNames(b));
    for (const tesk::PointProperty& property : a.GetProperties()) {
        if (property.GetName() == "RGB")
            EXPECT_TRUE(std::ranges::equal(a.GetColorProperty("RGB"), b.GetColorProperty("RGB")));
        else
            EXPECT_TRUE(std::ranges::equal(a.GetFloatProperty(property.GetName()),
                                           b.GetFloatProperty(property.GetName())))
                << property.GetName();
    }
}

} // namespace

TEST(PcdReader, EveryDataFormGivesTheSameCloud)
{
    // Padding and a histogram between the fields that are read, values of every type.
    const auto field = [](std::string name, char type = 'F', int size = 4, int count = 1) {
        return FieldLayout{std::move(name), type, size, count};
    };
    PcdWriter writer({field("x"), field("y"), field("z"), field("_", 'U', 1, 4), field("normal_x"),
                      field("normal_y"), field("normal_z"), field("rgb"), field("intensity", 'U', 2),
                      field("fpfh", 'F', 4, 3), field("curvature"), field("label", 'I'),
                      field("time", 'F', 8), field("ring", 'U', 1), field("big", 'I', 8)},
                     5);
    for (int i = 0; i < 5; ++i) {
        const double f = i;
        // x y z, padding, normal, rgb, intensity, fpfh, curvature, label, time, ring, big.
        writer.Point(0.25 * f, -1.5 + f, 1e-3 * f, 0, 0, 0, 0, 0.0, 0.6, 0.8, double(0xFF3366u + i),
                     1000.0 * f, 9, 9, 9, 0.125 / (f + 1), -7.0 * f, 1.7e9 + f / 8, f, -(1LL << 40) - f);
    }

    tesk::PointCloud reference;
    for (const std::string& form : Forms) {
        SCOPED_TRACE(form);
        tesk::PointCloud cloud;
        ASSERT_TRUE(Reads(Pcd, writer.Bytes(form), cloud));
        ASSERT_EQ(cloud.Size(), 5u);
        EXPECT_EQ(cloud.GetPositions()[2], glm::vec3(0.5f, 0.5f, 2e-3f));
        ASSERT_TRUE(cloud.HasNormals());
        EXPECT_EQ(cloud.GetNormals()[4], glm::vec3(0.0f, 0.6f, 0.8f));
        EXPECT_EQ(PropertyNames(cloud), (std::vector<std::string>{"RGB", "intensity", "curvature", "label",
                                                                  "time", "ring", "big"}));
        EXPECT_EQ(cloud.GetColorProperty("RGB")[0], tesk::Color3f(1.0f, 0.2f, 0.4f));
        EXPECT_EQ(cloud.GetColorProperty("RGB")[3], tesk::Color3f(1.0f, 0.2f, 105.0f / 255.0f));
        EXPECT_EQ(cloud.GetFloatProperty("intensity")[3], 3000.0f);
        EXPECT_EQ(cloud.GetFloatProperty("curvature")[1], 0.0625f);
        EXPECT_EQ(cloud.GetFloatProperty("label")[2], -14.0f);
        EXPECT_EQ(cloud.GetFloatProperty("time")[4], static_cast<float>(1.7e9 + 0.5));
        EXPECT_EQ(cloud.GetFloatProperty("big")[1], static_cast<float>(-(1LL << 40) - 1));
        EXPECT_FALSE(cloud.HasOriginOffset());

        if (!reference.Empty())
            ExpectSameCloud(cloud, reference);
        reference = cloud;
    }
}

TEST(PcdReader, PackedAndSeparateColours)
{
    tesk::PointCloud cloud;
    // rgba as an unsigned field: alpha is dropped, the rest is 0xAARRGGBB.
    PcdWriter rgba({{"x"}, {"y"}, {"z"}, {"rgba", 'U', 4, 1}}, 1);
    rgba.Point({1, 2, 3, double(0x80336699u)});
    for (const std::string& form : Forms) {
        ASSERT_TRUE(Reads(Pcd, rgba.Bytes(form), cloud));
        EXPECT_EQ(cloud.GetColorProperty("RGB")[0], tesk::Color3f(0.2f, 0.4f, 0.6f)) << form;
        EXPECT_EQ(cloud.PropertyCount(), 1u);
    }

    // Older writers print the float that a packed colour's bits make: 0x4A808000 is 4210688.0f,
    // whose low three bytes are 80 80 00.
    ASSERT_TRUE(Reads(Pcd,
                      "VERSION .7\nFIELDS x y z rgb\nSIZE 4 4 4 4\nTYPE F F F F\nWIDTH 2\nHEIGHT 1\n"
                      "POINTS 2\nDATA ascii\n0.5 0.25 0 4.2106880e+06\n1 1 1 4278190335\n",
                      cloud));
    EXPECT_EQ(cloud.GetColorProperty("RGB")[0], tesk::Color3f(128.0f / 255.0f, 128.0f / 255.0f, 0.0f));
    EXPECT_EQ(cloud.GetColorProperty("RGB")[1], tesk::Color3f(0.0f, 0.0f, 1.0f)) << "0xFF0000FF";

    // Channels in fields of their own, bytes brought to 0..1.
    PcdWriter channels({{"x"}, {"y"}, {"z"}, {"r", 'U', 1, 1}, {"g", 'U', 1, 1}, {"b", 'U', 1, 1}}, 1);
    channels.Point({0, 0, 0, 255, 51, 0});
    ASSERT_TRUE(Reads(Pcd, channels.Bytes("binary"), cloud));
    EXPECT_EQ(cloud.GetColorProperty("RGB")[0], tesk::Color3f(1.0f, 0.2f, 0.0f));
    EXPECT_EQ(cloud.PropertyCount(), 1u);
}

TEST(PcdReader, OrganisedFarCloudKeepsInvalidCellsAndItsMillimetres)
{
    PcdWriter writer({{"x", 'F', 8, 1}, {"y", 'F', 8, 1}, {"z", 'F', 8, 1}, {"intensity"}}, 3, 2);
    for (int i = 0; i < 6; ++i) {
        if (i == 0 || i == 4)
            writer.Point({NaN, NaN, NaN, double(i)});
        else
            writer.Point({500000.001 + i, 5400000.0 + 2.0 * i, 0.5, double(i)});
    }
    tesk::PointCloud reference;
    for (const std::string& form : Forms) {
        SCOPED_TRACE(form);
        tesk::PointCloud cloud;
        ASSERT_TRUE(Reads(Pcd, writer.Bytes(form), cloud));
        ASSERT_EQ(cloud.Size(), 6u) << "rows of 3, invalid cells included";
        EXPECT_EQ(cloud.CountNonFinite(), 2u);
        EXPECT_TRUE(std::isnan(cloud.GetPositions()[4].y));
        EXPECT_EQ(cloud.GetFloatProperty("intensity")[4], 4.0f);
        EXPECT_EQ(cloud.GetOriginOffset(), glm::dvec3(500000.0, 5400000.0, 0.0))
            << "from the first valid point";
        EXPECT_NEAR(cloud.GetPositions()[5].x, 5.001, 1e-4);
        EXPECT_EQ(cloud.GetPositions()[5].y, 10.0f);
        if (!reference.Empty())
            ExpectSameCloud(cloud, reference);
        reference = cloud;
    }
}

TEST(PcdReader, FilesReadInPiecesGiveTheCloudReadWhole)
{
    // Several megabytes, so that a file is read in more than one piece; the first complete
    // point, which decides the shift, comes in a later piece than points with a finite x.
    PcdWriter writer({{"x", 'F', 8, 1}, {"y", 'F', 8, 1}, {"z", 'F', 8, 1}, {"intensity"}}, 200000);
    for (int i = 0; i < 200000; ++i)
        writer.Point({700000.0 + i * 1e-3, i < 180000 ? NaN : 5e6 + i, 1.0, double(i % 100)});
    testing_support::TempFolder folder;
    const std::string bytes = writer.Bytes("binary");
    tesk::PointCloud whole, pieces;
    std::string error;
    ASSERT_TRUE(Reads(Pcd, bytes, whole));
    ASSERT_TRUE(ReadPcd(folder.Write("big.pcd", bytes), pieces, error)) << error;
    EXPECT_EQ(pieces.GetOriginOffset(), glm::dvec3(700000.0, 5180000.0, 0.0));
    EXPECT_EQ(pieces.GetOriginOffset(), whole.GetOriginOffset());
    ExpectSameCloud(pieces, whole);
    EXPECT_EQ(pieces.GetPositions()[1000].x, 1.0f) << "shifted although read before the shift was known";

    // A header longer than the first piece.
    const std::string longHeader = "# " + std::string(100000, '-') + "\n" + bytes;
    ASSERT_TRUE(ReadPcd(folder.Write("long.pcd", longHeader), pieces, error)) << error;
    ExpectSameCloud(pieces, whole);

    // Cut short: the same message as in memory.
    testing_support::LogCapture log;
    const std::string cut = bytes.substr(0, bytes.size() - 5);
    std::string fromMemory;
    EXPECT_FALSE(ReadPcdFromMemory(cut, "cut.pcd", pieces, fromMemory));
    EXPECT_FALSE(ReadPcd(folder.Write("cut.pcd", cut), pieces, error));
    EXPECT_EQ(error, fromMemory);
    EXPECT_EQ(pieces.Size(), 200000u);
    EXPECT_FALSE(ReadPcd(folder.PathOf("missing.pcd"), pieces, error));
    EXPECT_EQ(error.rfind("missing.pcd: cannot open file", 0), 0u) << error;
}

TEST(PcdReader, BadFilesFailWithTheirPlaceAndLeaveTheCloudAlone)
{
    const auto header = [](const std::string& fields, const std::string& data,
                           const std::string& size = "4 4 4", const std::string& type = "F F F",
                           const std::string& points = "2") {
        return "VERSION .7\nFIELDS " + fields + "\nSIZE " + size + "\nTYPE " + type +
               "\nCOUNT 1 1 1\nWIDTH 2\nHEIGHT 1\nVIEWPOINT 0 0 0 1 0 0 0\nPOINTS " + points + "\nDATA " +
               data + "\n";
    };
    const std::string ascii = header("x y z", "ascii");
    const std::string compressed = header("x y z", "binary_compressed");
    const std::string c = std::to_string(compressed.size());
    const std::string c8 = std::to_string(compressed.size() + 8);
    const std::string literalRun = std::string(1, '\x17') + std::string(24, '\0'); // 24 bytes as they are

    // Counts far beyond what the file holds fail before anything is allocated for them.
    const std::string huge = "FIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nWIDTH 4000000000000\nHEIGHT 1000\nDATA ";
    testing_support::ExpectEachFails<tesk::PointCloud>(
        Pcd, "bad.pcd", "vexa::viewer::ReadPcd",
        {
            {"VERSION .7\nFIELDS x y z\nSIZES 4 4 4\n", "line 3: unknown header keyword 'SIZES'"},
            {header("x y z", "ascii", "4 4"), "line 3: SIZE lists 2 values but FIELDS names 3"},
            {header("x y z w", "ascii", "4 4 4 4", "F F F F"),
             "line 5: COUNT lists 3 values but FIELDS names 4"},
            {header("x y z", "ascii", "4 4 2"),
             "line 4: field 'z' has TYPE 'F' and SIZE 2; expected F (4 or 8), I or U (1, 2, 4 or 8)"},
            {header("x y z", "ascii", "4 4 4", "F F F", "3"),
             "line 9: POINTS 3 does not match WIDTH 2 x HEIGHT 1"},
            {header("a b c", "ascii"), "line 2: FIELDS has no single-valued x, y and z"},
            {header("x y z", "gzip"),
             "line 10: unknown DATA form 'gzip'; expected ascii, binary or binary_compressed"},
            {"VERSION .7\nFIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nWIDTH 1\n",
             "line 5: file ends inside the header (no DATA line)"},
            {"FIELDS x y z\nTYPE F F F\nWIDTH 1\nDATA ascii\n", "line 4: the header has no SIZE line"},
            {"VERSION .7\nFIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nWIDTH 18446744073709551615\nHEIGHT 2\nDATA "
             "binary\n",
             "line 6: WIDTH x HEIGHT is too large"},
            {"FIELDS x y z\nSIZE 4 4 4\nTYPE F F F\nVIEWPOINT 0 0 0\nWIDTH 1\nDATA ascii\n",
             "line 4: expected 'VIEWPOINT tx ty tz qw qx qy qz'"},
            {ascii + "1 2 3\n4 5\n", "line 12: expected 3 values, found 2"},
            {ascii + "1 2 3\n\n4 5 x\n", "line 13: 'x' is not a number (field 'z')"},
            {compressed + "\x01\x02", "byte " + c + ": file ends before the sizes of the compressed data"},
            {compressed + PcdWriter::UInt32(25) + PcdWriter::UInt32(20) + literalRun,
             "byte " + std::to_string(compressed.size() + 4) +
                 ": the compressed data unpacks to 20 bytes, but 2 points of 12 bytes need 24"},
            {compressed + PcdWriter::UInt32(1000) + PcdWriter::UInt32(24) + literalRun,
             "byte " + c + ": compressed data of 1000 bytes runs past the end of the file (25 bytes left)"},
            {compressed + PcdWriter::UInt32(0) + PcdWriter::UInt32(24),
             "byte " + c + ": 0 compressed bytes cannot unpack to 24"},
            {compressed + PcdWriter::UInt32(2) + PcdWriter::UInt32(24) + std::string("\x20\x00", 2),
             "byte " + c8 +
                 ": corrupt compressed data: a back reference reaches 1 bytes back, before the start of the "
                 "data"},
            {huge + "ascii\n1 2 3\n1 2 3\n", "line 8: file ends after 2 of 4000000000000000 points"},
            {huge + "binary\n1 2 3\n1 2 3\n", "byte " + std::to_string(huge.size() + 7 + 12) +
                                                  ": file ends inside point 2 of 4000000000000000"},
            {huge + "binary_compressed\n1 2 3\n1 2 3\n",
             "byte " + std::to_string(huge.size() + 18 + 4) +
                 ": the compressed data unpacks to 540084787 bytes, but "
                 "4000000000000000 points of 12 bytes need 48000000000000000"},
        });
}
