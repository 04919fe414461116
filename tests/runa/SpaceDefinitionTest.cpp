#include <runa/BinaryStream.h>
#include <runa/SpaceDefinition.h>
#include <runa/Utf8.h>

#include "LogCapture.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <functional>
#include <sstream>
#include <stdexcept>

using runa::Axis;
using runa::BasisDefinition;
using runa::BinaryWriter;
using runa::LengthUnit;
using runa::SpaceCategory;
using runa::SpaceDefinition;

namespace {

const char* const kBasisLabel = "runa::BasisDefinition::ReadFromStream";
const char* const kSpaceLabel = "runa::SpaceDefinition::ReadFromStream";

// A basis record as the given version wrote it; version 0 had no name.
void WriteBasis(BinaryWriter& writer, std::uint8_t version, const std::string& name)
{
    writer.Write(version);
    if (version >= 1)
        writer.WriteString(name);
    writer.Write(std::uint8_t{Axis::NegY}).Write(std::uint8_t{Axis::PosX}).Write(false);
}

/// Reads `target` from what `write` puts into a fresh stream.
template <class T>
bool ReadWritten(T& target, const std::function<void(BinaryWriter&)>& write)
{
    std::stringstream stream;
    BinaryWriter writer(stream);
    write(writer);
    return target.ReadFromStream(stream);
}

} // namespace

TEST(SpaceDefinition, JsonOfDefaultAndPresetShowsNegativeZeros)
{
    const auto expected = [](const char* id, const char* up, const char* category) {
        return nlohmann::json{{"id", id},
                              {"up", up},
                              {"forward", "0.000000, 0.000000, 1.000000"},
                              {"handedness", "right"},
                              {"category", category},
                              {"units", "mm"}};
    };
    nlohmann::json json = nlohmann::json::object();
    SpaceDefinition().WriteJson(json);
    EXPECT_EQ(json, expected("custom", "0.000000, 1.000000, 0.000000", "custom"));
    nlohmann::json preset;
    SpaceDefinition::TivraCamera.WriteJson(preset);
    EXPECT_EQ(preset, expected("Tivra Camera", "-0.000000, -1.000000, -0.000000", "camera"));

    // Other categories and handedness have their words.
    SpaceDefinition odd("odd", 7, LengthUnit::Inch, Axis::NegX, 9, false);
    nlohmann::json oddJson;
    odd.WriteJson(oddJson);
    EXPECT_EQ(oddJson["handedness"], "left");
    EXPECT_EQ(oddJson["category"], "");
    EXPECT_EQ(oddJson["units"], "in");
    EXPECT_EQ(oddJson["forward"], "0.000000, 0.000000, 0.000000");
}

TEST(SpaceDefinition, UnknownUnitsThrow)
{
    EXPECT_THROW(SpaceDefinition::GetUnitNames(10), std::out_of_range);
    SpaceDefinition unknown;
    unknown.units = 200;
    nlohmann::json json;
    EXPECT_THROW(unknown.WriteJson(json), std::out_of_range);
}

TEST(SpaceDefinition, StreamLayoutAndRoundTrip)
{
    const SpaceDefinition written("abc", SpaceCategory::Camera, LengthUnit::Inch, Axis::NegY, Axis::PosX,
                                  false);
    std::stringstream stream;
    // Through the base reference: the derived part must still be written and read.
    const BasisDefinition& asBasis = written;
    asBasis.WriteToStream(stream);
    const std::string expected("\x01\x03\x00\x00\x00"
                               "abc"
                               "\x04\x00\x00"
                               "\x02\x09\x01",
                               14);
    EXPECT_EQ(stream.str(), expected);

    SpaceDefinition read = SpaceDefinition::TivraMarker;
    BasisDefinition& target = read;
    EXPECT_TRUE(target.ReadFromStream(stream));
    EXPECT_TRUE(read == written);
}

TEST(SpaceDefinition, OlderRecordVersions)
{
    testing_support::LogCapture log;
    // Basis version 0 carries no name: the old one stays.
    BasisDefinition basis("kept", Axis::PosY, Axis::PosZ, true);
    EXPECT_TRUE(ReadWritten(basis, [](BinaryWriter& w) { WriteBasis(w, 0, ""); }));
    EXPECT_EQ(basis, BasisDefinition("kept", Axis::NegY, Axis::PosX, false));

    // Derived version 1 has no category: the previous one stays.
    SpaceDefinition space = SpaceDefinition::TivraMarker;
    EXPECT_TRUE(ReadWritten(space, [](BinaryWriter& w) {
        WriteBasis(w, 1, "v1");
        w.Write(std::uint8_t{1}).Write(std::uint8_t{LengthUnit::Foot});
    }));
    EXPECT_EQ(space,
              SpaceDefinition("v1", SpaceCategory::Marker, LengthUnit::Foot, Axis::NegY, Axis::PosX, false));

    // Derived version 0 repeats the name, and that copy wins.
    space = SpaceDefinition::TivraCamera;
    EXPECT_TRUE(ReadWritten(space, [](BinaryWriter& w) {
        WriteBasis(w, 0, "");
        w.Write(std::uint8_t{0}).WriteString("derived").Write(std::uint8_t{LengthUnit::Meter});
    }));
    EXPECT_EQ(space, SpaceDefinition("derived", SpaceCategory::Camera, LengthUnit::Meter, Axis::NegY,
                                     Axis::PosX, false));
    EXPECT_TRUE(log.messages.empty());
}

TEST(SpaceDefinition, NewerRecordVersionsAreRejected)
{
    // The basis part is read before the derived version is seen; the rest is kept.
    SpaceDefinition space = SpaceDefinition::TivraMarker;
    testing_support::LogCapture log;
    EXPECT_FALSE(ReadWritten(space, [](BinaryWriter& w) {
        WriteBasis(w, 1, "newer");
        w.Write(std::uint8_t{3}).Write(std::uint8_t{LengthUnit::Inch}).Write(std::uint8_t{0});
    }));
    EXPECT_EQ(space, SpaceDefinition("newer", SpaceCategory::Marker, LengthUnit::Millimeter, Axis::NegY,
                                     Axis::PosX, false));
    space = SpaceDefinition::TeskCamera;
    EXPECT_FALSE(ReadWritten(space, [](BinaryWriter& w) { WriteBasis(w, 2, "future"); }));
    EXPECT_EQ(space, SpaceDefinition::TeskCamera);
    ASSERT_EQ(log.messages.size(), 2u);
    EXPECT_EQ(log.messages[0].label, kSpaceLabel);
    EXPECT_EQ(log.messages[1].label, kBasisLabel);
}

TEST(SpaceDefinition, TruncationAtEveryOffsetKeepsWhatWasRead)
{
    const SpaceDefinition written("abc", SpaceCategory::Camera, LengthUnit::Inch, Axis::NegY, Axis::PosX,
                                  false);
    std::stringstream full;
    written.WriteToStream(full);
    const std::string data = full.str();
    ASSERT_EQ(data.size(), 14u);
    const SpaceDefinition& old = SpaceDefinition::TivraMarker;

    for (std::size_t size = 0; size < data.size(); ++size) {
        SCOPED_TRACE("record cut to " + std::to_string(size) + " bytes");
        testing_support::LogCapture log;
        std::istringstream in(data.substr(0, size));
        SpaceDefinition space = old;
        EXPECT_FALSE(space.ReadFromStream(in));
        EXPECT_EQ(space.name, size >= 8 ? written.name : old.name);
        EXPECT_EQ(space.up, size >= 9 ? written.up : old.up);
        EXPECT_EQ(space.forward, size >= 10 ? written.forward : old.forward);
        EXPECT_EQ(space.rightHanded, size >= 11 ? written.rightHanded : old.rightHanded);
        EXPECT_EQ(space.units, size >= 13 ? written.units : old.units);
        EXPECT_EQ(space.category, old.category);
        ASSERT_EQ(log.messages.size(), 1u);
        EXPECT_EQ(log.messages[0].label, size >= 11 ? kSpaceLabel : kBasisLabel);
    }
}

TEST(SpaceDefinition, UnknownUnitIsRefusedWhereItIsRead)
{
    // An unknown unit would throw from every later use (its name, the JSON form), so the
    // stream reader refuses it and the definition keeps a unit it can show.
    SpaceDefinition space = SpaceDefinition::TivraMarker;
    testing_support::LogCapture log;
    EXPECT_FALSE(ReadWritten(space, [](BinaryWriter& w) {
        WriteBasis(w, 1, "odd");
        w.Write(std::uint8_t{2}).Write(std::uint8_t{200}).Write(std::uint8_t{SpaceCategory::Camera});
    }));
    EXPECT_EQ(space.units, LengthUnit::Millimeter);
    EXPECT_EQ(space.category, SpaceCategory::Marker);
    nlohmann::json json;
    EXPECT_NO_THROW(space.WriteJson(json));
    ASSERT_EQ(log.messages.size(), 1u);
    EXPECT_EQ(log.messages[0].label, kSpaceLabel);
    EXPECT_NE(log.messages[0].message.find("Unknown length unit 200 at byte 1 of the space part"),
              std::string::npos)
        << log.messages[0].message;
}

TEST(SpaceDefinition, NamesThatAreNotUtf8AreRefused)
{
    // {name, is UTF-8}: the name is shown in panels and written to JSON, which take only UTF-8.
    const std::vector<std::pair<std::string, bool>> names{
        {"Tivra \xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", true},
        {"", true},
        {"cut \xC3", false},
        {"\xFF\xFF", false},
        {"overlong \xC0\xAF", false},
        {"surrogate \xED\xA0\x80", false},
        {"past \xF4\x90\x80\x80", false},
    };
    for (const auto& entry : names) {
        // A structured binding cannot be captured before clang 16.
        const std::string& name = entry.first;
        const bool valid = entry.second;
        SCOPED_TRACE(name);
        EXPECT_EQ(runa::IsValidUtf8(name), valid);
        testing_support::LogCapture log;
        SpaceDefinition space = SpaceDefinition::TivraMarker;
        EXPECT_EQ(
            ReadWritten(
                space,
                [&name](BinaryWriter& w) {
                    WriteBasis(w, 1, name);
                    w.Write(std::uint8_t{2}).Write(std::uint8_t{LengthUnit::Inch}).Write(std::uint8_t{0});
                }),
            valid);
        EXPECT_EQ(space.name, valid ? name : "Tivra Marker");
        nlohmann::json json;
        space.WriteJson(json);
        EXPECT_NO_THROW(json.dump());
        EXPECT_EQ(log.messages.size(), valid ? 0u : 1u);
    }
    // The older derived record's own copy of the name is checked the same way.
    SpaceDefinition space = SpaceDefinition::TeskCamera;
    testing_support::LogCapture log;
    EXPECT_FALSE(ReadWritten(space, [](BinaryWriter& w) {
        WriteBasis(w, 0, "");
        w.Write(std::uint8_t{0}).WriteString("\xFF").Write(std::uint8_t{LengthUnit::Meter});
    }));
    EXPECT_EQ(space.name, "TESK Camera");
    ASSERT_EQ(log.messages.size(), 1u);
    EXPECT_EQ(log.messages[0].label, kSpaceLabel);
}
