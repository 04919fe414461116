#pragma once
// Pieces every mesh reader needs: numbers parsed in double (coordinates far from the origin
// must keep their last digits until the shift is subtracted), polygons cut into triangles,
// and the one way a reader reports failure.

#include "TextScan.h"

#include <glm/vec3.hpp>

#include <runa/rlog.h>

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace vexa::viewer {

/// Parses a whole token as a signed integer (an optional '+' allowed).
inline bool ParseInteger(std::string_view token, long long& value)
{
    if (!token.empty() && token.front() == '+')
        token.remove_prefix(1);
    const char* last = token.data() + token.size();
    auto [end, code] = std::from_chars(token.data(), last, value);
    return code == std::errc() && end == last && !token.empty();
}

/// Collects one polygon's vertex indices and cuts it into a fan of triangles. A polygon that
/// refers to a missing vertex is dropped whole and counted, so the caller can warn once.
class PolygonFan {
public:
    explicit PolygonFan(std::vector<glm::uvec3>& faces, std::uint64_t vertexCount)
        : faces_(faces), vertexCount_(vertexCount)
    {
    }

    void Begin()
    {
        corners_.clear();
        bad_ = false;
    }
    /// `index` counts from 0; anything past the vertices (or negative, wrapped) spoils the polygon.
    void Add(std::uint64_t index)
    {
        if (index >= vertexCount_)
            bad_ = true;
        else
            corners_.push_back(static_cast<std::uint32_t>(index));
    }
    void MarkBad() { bad_ = true; }
    /// `number` (from 1) names the polygon in the warning.
    void End(std::uint64_t number)
    {
        if (bad_) {
            if (dropped_++ == 0)
                firstDropped_ = number;
            return;
        }
        for (std::size_t k = 1; k + 1 < corners_.size(); ++k)
            faces_.push_back({corners_[0], corners_[k], corners_[k + 1]});
    }
    /// A triangle without the scratch list, for the common case.
    void Triangle(std::uint64_t a, std::uint64_t b, std::uint64_t c, std::uint64_t number)
    {
        if (a < vertexCount_ && b < vertexCount_ && c < vertexCount_) {
            faces_.push_back({static_cast<std::uint32_t>(a), static_cast<std::uint32_t>(b),
                              static_cast<std::uint32_t>(c)});
        } else if (dropped_++ == 0) {
            firstDropped_ = number;
        }
    }

    std::uint64_t Dropped() const { return dropped_; }
    std::uint64_t FirstDropped() const { return firstDropped_; }

    /// The one warning for every dropped polygon (to follow "<file>: "), or an empty string
    /// when none was.
    std::string DroppedMessage(std::string_view what = "face") const
    {
        if (dropped_ == 0)
            return {};
        return "skipped " + std::to_string(dropped_) + " " + std::string(what) + (dropped_ == 1 ? "" : "s") +
               " that refer to missing vertices (first: " + std::string(what) + " " +
               std::to_string(firstDropped_) + " of the file; " + std::to_string(vertexCount_) + " vertices)";
    }

private:
    std::vector<glm::uvec3>& faces_;
    std::uint64_t vertexCount_;
    std::vector<std::uint32_t> corners_;
    bool bad_ = false;
    std::uint64_t dropped_ = 0;
    std::uint64_t firstDropped_ = 0;
};

/// Runs `parse` (returning bool, filling `message` on failure), turns running out of memory
/// into a message, and reports failure as "<name>: <message>" in `error` and the log.
template <typename Parse>
bool RunReader(const std::string& name, const char* label, std::string& error, Parse&& parse)
{
    std::string message;
    bool ok = false;
    try {
        ok = parse(message);
    } catch (const std::bad_alloc&) {
        message = "not enough memory to hold the model";
    } catch (const std::length_error&) {
        message = "not enough memory to hold the model";
    }
    if (ok)
        return true;
    error = name + ": " + message;
    rlog::Fail(error, label);
    return false;
}

} // namespace vexa::viewer
