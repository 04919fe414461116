#include "runa/SpaceDefinition.h"

#include "runa/BinaryStream.h"
#include "runa/Utf8.h"
#include "runa/rlog.h"

#include <nlohmann/json.hpp>

#include <stdexcept>
#include <utility>

namespace runa {
namespace {

// Highest version of the part a space definition adds after its basis. Version 0 stored a
// second copy of the name, version 1 added nothing but the units, version 2 the category.
constexpr std::uint8_t kSpaceVersion = 2;

} // namespace

// The presets are built from literals only, so they are safe to use from any other
// translation unit once this library is loaded; the unit table is reached lazily.
const SpaceDefinition SpaceDefinition::TivraMarker("Tivra Marker", SpaceCategory::Marker,
                                                   LengthUnit::Millimeter, Axis::PosZ, Axis::NegX, true);
const SpaceDefinition SpaceDefinition::TeskMarker("TESK Marker", SpaceCategory::Marker, LengthUnit::Meter,
                                                  Axis::PosY, Axis::PosZ, true);
const SpaceDefinition SpaceDefinition::TivraCamera("Tivra Camera", SpaceCategory::Camera,
                                                   LengthUnit::Millimeter, Axis::NegY, Axis::PosZ, true);
const SpaceDefinition SpaceDefinition::TeskCamera("TESK Camera", SpaceCategory::Camera, LengthUnit::Meter,
                                                  Axis::PosY, Axis::NegZ, true);

SpaceDefinition::SpaceDefinition(std::string spaceName, std::uint8_t categoryCode, std::uint8_t unitIndex,
                                 std::uint8_t upAxis, std::uint8_t forwardAxis, bool isRightHanded)
    : BasisDefinition(std::move(spaceName), upAxis, forwardAxis, isRightHanded), category(categoryCode),
      units(unitIndex)
{
}

const std::map<std::uint8_t, UnitNames>& SpaceDefinition::UnitTable()
{
    // Function-local so that lookups during other libraries' static initialisation work.
    static const std::map<std::uint8_t, UnitNames> table = {
        {LengthUnit::Kilometer, {"kilometer", "kilometers", "km"}},
        {LengthUnit::Meter, {"meter", "meters", "m"}},
        {LengthUnit::Decimeter, {"decimeter", "decimeters", "dm"}},
        {LengthUnit::Centimeter, {"centimeter", "centimeters", "cm"}},
        {LengthUnit::Millimeter, {"millimeter", "millimeters", "mm"}},
        {LengthUnit::Micrometer, {"micrometer", "micrometers", "um"}},
        {LengthUnit::Nanometer, {"nanometer", "nanometers", "nm"}},
        {LengthUnit::Mile, {"mile", "miles", "mi"}},
        {LengthUnit::Foot, {"foot", "feet", "ft"}},
        {LengthUnit::Inch, {"inch", "inches", "in"}},
    };
    return table;
}

const UnitNames& SpaceDefinition::GetUnitNames(std::uint8_t unit)
{
    const auto& table = UnitTable();
    const auto found = table.find(unit);
    // Hosts match on this exact text, which std::map::at does not give on every library.
    if (found == table.end())
        throw std::out_of_range("invalid map<K, T> key");
    return found->second;
}

std::string SpaceDefinition::CategoryName(std::uint8_t code)
{
    switch (code) {
    case SpaceCategory::Custom:
        return "custom";
    case SpaceCategory::Camera:
        return "camera";
    case SpaceCategory::Marker:
        return "marker";
    default:
        return "";
    }
}

void SpaceDefinition::WriteToStream(std::ostream& out) const
{
    BasisDefinition::WriteToStream(out);
    BinaryWriter writer(out);
    writer.Write(kSpaceVersion);
    writer.Write(units);
    writer.Write(category);
}

void SpaceDefinition::WriteJson(nlohmann::json& json) const
{
    BasisDefinition::WriteJson(json);
    json["category"] = CategoryName(category);
    json["units"] = GetUnitAbbreviation();
}

bool SpaceDefinition::ReadFromStream(std::istream& in)
{
    if (!BasisDefinition::ReadFromStream(in))
        return false;

    static const std::string label = "runa::SpaceDefinition::ReadFromStream";
    BinaryReader reader(in, label);
    std::uint8_t version = 0;
    if (!reader.Read(version))
        return false;
    if (version > kSpaceVersion) {
        rlog::Warn("Unsupported space definition version " + std::to_string(version) + " (newest known is " +
                       std::to_string(kSpaceVersion) + ")",
                   label);
        return false;
    }
    if (version == 0) {
        std::string read;
        if (!reader.ReadString(read))
            return false;
        if (!IsValidUtf8(read)) {
            rlog::Warn("The space name ending at byte " + std::to_string(reader.Offset()) +
                           " of the space part is not UTF-8; keeping \"" + name + "\"",
                       label);
            return false;
        }
        name = std::move(read);
    }
    std::uint8_t unit = units;
    if (!reader.Read(unit))
        return false;
    // Every later use of the unit looks it up in the table, and an unknown one throws there:
    // a damaged byte must stop here, where it can still be refused.
    if (UnitTable().count(unit) == 0) {
        rlog::Warn("Unknown length unit " + std::to_string(unit) + " at byte " +
                       std::to_string(reader.Offset() - 1) + " of the space part; keeping the previous unit",
                   label);
        return false;
    }
    units = unit;
    if (version >= 2 && !reader.Read(category))
        return false;
    return true;
}

bool SpaceDefinition::operator==(const SpaceDefinition& other) const
{
    return BasisDefinition::operator==(other) && category == other.category && units == other.units;
}

} // namespace runa
