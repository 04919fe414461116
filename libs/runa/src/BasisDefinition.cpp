#include "runa/BasisDefinition.h"

#include "runa/BinaryStream.h"
#include "runa/Utf8.h"
#include "runa/rlog.h"

#include <nlohmann/json.hpp>

#include <array>
#include <cstdio>
#include <utility>

namespace runa {
namespace {

// Highest basis record version this code reads; 0 predates the stored name.
constexpr std::uint8_t kBasisVersion = 1;

} // namespace

glm::vec3 AxisVector(std::uint8_t code)
{
    // The negative axes are written with negative zeros so that their text form keeps the
    // sign of every component ("-0.000000, -1.000000, -0.000000").
    switch (code) {
    case Axis::PosX:
        return {1.0f, 0.0f, 0.0f};
    case Axis::PosY:
        return {0.0f, 1.0f, 0.0f};
    case Axis::PosZ:
        return {0.0f, 0.0f, 1.0f};
    case Axis::NegX:
        return {-1.0f, -0.0f, -0.0f};
    case Axis::NegY:
        return {-0.0f, -1.0f, -0.0f};
    case Axis::NegZ:
        return {-0.0f, -0.0f, -1.0f};
    default:
        return {0.0f, 0.0f, 0.0f};
    }
}

std::string VectorToString(const glm::vec3& vector)
{
    // "%f" of the largest float needs 47 characters; three of them and the separators fit.
    std::array<char, 192> buffer{};
    const int length =
        std::snprintf(buffer.data(), buffer.size(), "%f, %f, %f", static_cast<double>(vector.x),
                      static_cast<double>(vector.y), static_cast<double>(vector.z));
    if (length <= 0)
        return {};
    return std::string(buffer.data(), static_cast<std::size_t>(length));
}

BasisDefinition::BasisDefinition(std::string basisName, std::uint8_t upAxis, std::uint8_t forwardAxis,
                                 bool isRightHanded)
    : name(std::move(basisName)), up(upAxis), forward(forwardAxis), rightHanded(isRightHanded)
{
}

void BasisDefinition::WriteToStream(std::ostream& out) const
{
    BinaryWriter writer(out);
    writer.Write(kBasisVersion);
    writer.WriteString(name);
    writer.Write(up);
    writer.Write(forward);
    writer.Write(rightHanded);
}

void BasisDefinition::WriteJson(nlohmann::json& json) const
{
    json["id"] = name;
    json["up"] = VectorToString(GetUpVector());
    json["forward"] = VectorToString(GetForwardVector());
    json["handedness"] = rightHanded ? "right" : "left";
}

bool BasisDefinition::ReadFromStream(std::istream& in)
{
    static const std::string label = "runa::BasisDefinition::ReadFromStream";
    BinaryReader reader(in, label);

    // Fields are read straight into the members: a record cut short keeps what it held.
    std::uint8_t version = 0;
    if (!reader.Read(version))
        return false;
    if (version > kBasisVersion) {
        rlog::Warn("Unsupported basis definition version " + std::to_string(version) + " (newest known is " +
                       std::to_string(kBasisVersion) + ")",
                   label);
        return false;
    }
    if (version >= 1) {
        std::string read;
        if (!reader.ReadString(read))
            return false;
        if (!IsValidUtf8(read)) {
            rlog::Warn("The basis name ending at byte " + std::to_string(reader.Offset()) +
                           " is not UTF-8; keeping \"" + name + "\"",
                       label);
            return false;
        }
        name = std::move(read);
    }
    return reader.Read(up) && reader.Read(forward) && reader.Read(rightHanded);
}

bool BasisDefinition::operator==(const BasisDefinition& other) const
{
    return name == other.name && up == other.up && forward == other.forward &&
           rightHanded == other.rightHanded;
}

} // namespace runa
