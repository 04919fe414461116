#pragma once
// A basis plus what kind of frame it is and the length unit of the content in it.

#include "runa/BasisDefinition.h"

#include <map>
#include <string>

namespace runa {

/// What a space describes, stored as one byte.
struct SpaceCategory {
    enum Code : std::uint8_t { Custom = 0, Camera = 1, Marker = 2 };
};

/// Indices into the unit table (see UnitTable), stored as one byte.
struct LengthUnit {
    enum Code : std::uint8_t {
        Kilometer = 0,
        Meter = 1,
        Decimeter = 2,
        Centimeter = 3,
        Millimeter = 4,
        Micrometer = 5,
        Nanometer = 6,
        Mile = 7,
        Foot = 8,
        Inch = 9
    };
};

struct UnitNames {
    std::string singular;
    std::string plural;
    std::string abbreviation;
};

class SpaceDefinition : public BasisDefinition {
public:
    SpaceDefinition() = default;
    SpaceDefinition(std::string name, std::uint8_t category, std::uint8_t units, std::uint8_t up,
                    std::uint8_t forward, bool rightHanded);

    /// The base part, then version byte 2, the units byte and the category byte.
    void WriteToStream(std::ostream& out) const override;
    /// The base keys, then "category" and "units" (the unit's abbreviation).
    void WriteJson(nlohmann::json& json) const override;
    /// The base part, then a derived version up to 2: version 0 carries a name that replaces
    /// the base one, version 2 carries the category, older versions keep the category.
    bool ReadFromStream(std::istream& in) override;

    std::uint8_t category = SpaceCategory::Custom;
    std::uint8_t units = LengthUnit::Millimeter;

    /// The unit table: index -> singular, plural, abbreviation.
    static const std::map<std::uint8_t, UnitNames>& UnitTable();
    /// Names of a unit; throws std::out_of_range("invalid map<K, T> key") for unknown indices.
    static const UnitNames& GetUnitNames(std::uint8_t unit);
    /// "custom", "camera", "marker", or "" for other values.
    static std::string CategoryName(std::uint8_t category);

    /// Abbreviation of this definition's unit ("mm").
    const std::string& GetUnitAbbreviation() const { return GetUnitNames(units).abbreviation; }

    bool operator==(const SpaceDefinition& other) const;

    static const SpaceDefinition TivraMarker; // "Tivra Marker"
    static const SpaceDefinition TeskMarker;  // "TESK Marker"
    static const SpaceDefinition TivraCamera; // "Tivra Camera"
    static const SpaceDefinition TeskCamera;  // "TESK Camera"
};

} // namespace runa
