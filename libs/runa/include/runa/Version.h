#pragma once
#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace runa {

/// A release number major.minor.patch, ordered component by component.
struct Version {
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
    std::uint32_t patch = 0;

    /// Accepts "1", "1.2" and "1.2.3" (missing parts are 0), surrounding blanks allowed.
    /// Anything else, including negative numbers and trailing text, gives no value.
    static std::optional<Version> Parse(std::string_view text);

    /// "major.minor.patch".
    std::string ToString() const;

    auto operator<=>(const Version&) const = default;
    bool operator==(const Version&) const = default;
};

} // namespace runa
