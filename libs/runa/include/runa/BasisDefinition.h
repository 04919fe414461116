#pragma once
// The coordinate frame in which content was captured: which axis is up, which is forward,
// and the handedness. Axes are coded by one byte (see AxisVector).

#include <nlohmann/json_fwd.hpp>

#include <glm/vec3.hpp>

#include <cstdint>
#include <istream>
#include <ostream>
#include <string>
#include <string_view>

namespace runa {

/// Axis codes, stored as one byte: `Axis::PosY` converts to the byte 1.
struct Axis {
    enum Code : std::uint8_t { PosX = 0, PosY = 1, PosZ = 2, NegX = 3, NegY = 4, NegZ = 5 };
};

/// The unit vector of an axis code. Negative axes keep negative zeros in their other
/// components (so -Y is (-0, -1, -0)); unknown codes give the zero vector.
glm::vec3 AxisVector(std::uint8_t code);

class BasisDefinition {
public:
    BasisDefinition() = default;
    BasisDefinition(std::string name, std::uint8_t up, std::uint8_t forward, bool rightHanded);
    virtual ~BasisDefinition() = default;
    BasisDefinition(const BasisDefinition&) = default;
    BasisDefinition& operator=(const BasisDefinition&) = default;
    BasisDefinition(BasisDefinition&&) = default;
    BasisDefinition& operator=(BasisDefinition&&) = default;

    /// Writes version byte 1, the name, then the up, forward and right-handed bytes.
    virtual void WriteToStream(std::ostream& out) const;
    /// Adds "id", "up", "forward" and "handedness" to `json`.
    virtual void WriteJson(nlohmann::json& json) const;
    /// Reads what WriteToStream wrote (version 0 has no name). A version above 1 fails.
    virtual bool ReadFromStream(std::istream& in);

    std::string name = "custom";
    std::uint8_t up = Axis::PosY;
    std::uint8_t forward = Axis::PosZ;
    bool rightHanded = true;

    glm::vec3 GetUpVector() const { return AxisVector(up); }
    glm::vec3 GetForwardVector() const { return AxisVector(forward); }

    bool operator==(const BasisDefinition& other) const;
};

/// "x, y, z" with each component printed by "%f", as the JSON forms write vectors.
std::string VectorToString(const glm::vec3& vector);

} // namespace runa
