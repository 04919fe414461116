#include "StlReader.h"

#include "CoordinateShift.h"
#include "FileBytes.h"
#include "MeshReading.h"
#include "TextScan.h"

#include <runa/HugePages.h>
#include <runa/rlog.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <vector>

namespace vexa::viewer {

namespace {

constexpr const char* Label = "vexa::viewer::ReadStl";
constexpr std::size_t HeaderSize = 84;
constexpr std::size_t RecordSize = 50;

std::string At(std::size_t line)
{
    return "line " + std::to_string(line) + ": ";
}

/// Gives each distinct position (by its bits) one vertex index. Open addressing over the
/// vertex array itself: a slot holds an index + 1, so no key is stored twice.
class VertexMerger {
public:
    explicit VertexMerger(std::size_t expectedVertices)
    {
        std::size_t capacity = 64;
        while (capacity < expectedVertices * 2)
            capacity *= 2;
        slots_.assign(capacity, 0);
        runa::ReserveFresh(positions_, expectedVertices);
    }

    std::uint32_t Index(const glm::vec3& p)
    {
        std::uint32_t bits[3];
        std::memcpy(bits, &p, sizeof bits);
        std::size_t slot = Hash(bits) & (slots_.size() - 1);
        while (true) {
            const std::uint32_t held = slots_[slot];
            if (held == 0)
                break;
            if (std::memcmp(&positions_[held - 1], bits, sizeof bits) == 0)
                return held - 1;
            slot = (slot + 1) & (slots_.size() - 1);
        }
        const auto index = static_cast<std::uint32_t>(positions_.size());
        positions_.push_back(p);
        slots_[slot] = index + 1;
        if (positions_.size() * 2 > slots_.size())
            Grow();
        return index;
    }

    std::vector<glm::vec3>& Positions() { return positions_; }

private:
    static std::size_t Hash(const std::uint32_t bits[3])
    {
        std::uint64_t h = bits[0] * 0x9E3779B97F4A7C15ULL;
        h ^= (bits[1] + (h >> 29)) * 0xC2B2AE3D27D4EB4FULL;
        h ^= (bits[2] + (h >> 31)) * 0x165667B19E3779F9ULL;
        return static_cast<std::size_t>(h ^ (h >> 32));
    }

    void Grow()
    {
        std::vector<std::uint32_t> slots(slots_.size() * 2, 0);
        for (std::size_t i = 0; i < positions_.size(); ++i) {
            std::uint32_t bits[3];
            std::memcpy(bits, &positions_[i], sizeof bits);
            std::size_t slot = Hash(bits) & (slots.size() - 1);
            while (slots[slot] != 0)
                slot = (slot + 1) & (slots.size() - 1);
            slots[slot] = static_cast<std::uint32_t>(i + 1);
        }
        slots_ = std::move(slots);
    }

    std::vector<std::uint32_t> slots_;
    std::vector<glm::vec3> positions_;
};

/// STL is little endian whatever the machine.
std::uint32_t LoadCount(const unsigned char* at)
{
    return static_cast<std::uint32_t>(at[0]) | static_cast<std::uint32_t>(at[1]) << 8 |
           static_cast<std::uint32_t>(at[2]) << 16 | static_cast<std::uint32_t>(at[3]) << 24;
}

float LoadFloat(const unsigned char* at)
{
    return std::bit_cast<float>(LoadCount(at));
}

bool ReadBinary(std::string_view bytes, tesk::Mesh& mesh, std::string& message)
{
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
    if (bytes.size() < HeaderSize) {
        message = "byte 0: too short for a binary STL (" + std::to_string(bytes.size()) +
                  " bytes, and it does not "
                  "start with 'solid')";
        return false;
    }
    const std::uint64_t count = LoadCount(data + 80);
    const std::uint64_t needed = HeaderSize + count * RecordSize;
    if (needed != bytes.size()) {
        const std::uint64_t whole = (bytes.size() - HeaderSize) / RecordSize;
        message = needed > bytes.size()
                      ? "byte " + std::to_string(HeaderSize + whole * RecordSize) +
                            ": file ends inside triangle " + std::to_string(whole + 1) + " of " +
                            std::to_string(count)
                      : "byte " + std::to_string(needed) + ": " + std::to_string(bytes.size() - needed) +
                            " bytes after the last of " + std::to_string(count) + " triangles";
        return false;
    }
    // A closed surface has about half as many vertices as triangles.
    VertexMerger merger(static_cast<std::size_t>(count / 2 + 16));
    CoordinateShift shift;
    std::vector<glm::uvec3> faces;
    runa::ResizeFresh(faces, static_cast<std::size_t>(count));
    const unsigned char* record = data + HeaderSize;
    for (std::size_t t = 0; t < count; ++t, record += RecordSize) {
        // 12 bytes of facet normal first, then three corners.
        for (int c = 0; c < 3; ++c) {
            const unsigned char* at = record + 12 + 12 * c;
            const glm::vec3 p = shift.Apply(LoadFloat(at), LoadFloat(at + 4), LoadFloat(at + 8));
            faces[t][c] = merger.Index(p);
        }
    }
    tesk::Mesh result;
    result.GetVertices().SetPositions(std::move(merger.Positions()));
    result.GetVertices().SetOriginOffset(shift.Offset());
    result.SetFaces(std::move(faces));
    mesh = std::move(result);
    return true;
}

bool ReadAscii(std::string_view text, tesk::Mesh& mesh, std::string& message)
{
    LineCursor cursor(text);
    std::string_view line;
    std::vector<std::string_view> tokens;
    // Corners take at least "vertex 0 0 0" each: an upper bound for the reservation.
    VertexMerger merger(text.size() / 64 + 16);
    CoordinateShift shift;
    std::vector<glm::uvec3> faces;
    std::vector<std::uint32_t> loop;
    bool inLoop = false;
    bool inFacet = false;
    std::size_t facetLine = 0;
    while (cursor.Next(line)) {
        SplitTokens(line, tokens, [](char c) { return IsBlank(c); });
        if (tokens.empty())
            continue;
        const std::size_t number = cursor.LineNumber();
        const std::string keyword = Lower(tokens[0]);
        if (keyword == "vertex") {
            double xyz[3];
            if (tokens.size() != 4) {
                message = At(number) + "expected 3 numbers after 'vertex', found " +
                          std::to_string(tokens.size() - 1);
                return false;
            }
            for (std::size_t i = 0; i < 3; ++i) {
                if (!ParseDouble(tokens[i + 1], xyz[i])) {
                    message = At(number) + "'" + Printable(tokens[i + 1]) + "' is not a number";
                    return false;
                }
            }
            if (!inLoop) {
                message = At(number) + "'vertex' outside 'outer loop'";
                return false;
            }
            loop.push_back(merger.Index(shift.Apply(xyz[0], xyz[1], xyz[2])));
        } else if (keyword == "facet") {
            inFacet = true;
            facetLine = number;
        } else if (keyword == "outer") {
            inLoop = true;
            loop.clear();
        } else if (keyword == "endloop") {
            // Some writers put polygons in a loop: fanned like any other format's.
            for (std::size_t k = 1; k + 1 < loop.size(); ++k)
                faces.push_back({loop[0], loop[k], loop[k + 1]});
            inLoop = false;
        } else if (keyword == "endfacet") {
            inFacet = false;
        } else if (keyword != "solid" && keyword != "endsolid") {
            message = At(number) + "unexpected '" + Printable(tokens[0]) + "'";
            return false;
        }
    }
    if (inFacet || inLoop) {
        message = At(cursor.LineNumber()) + "file ends inside the facet of line " + std::to_string(facetLine);
        return false;
    }
    tesk::Mesh result;
    result.GetVertices().SetPositions(std::move(merger.Positions()));
    result.GetVertices().SetOriginOffset(shift.Offset());
    result.SetFaces(std::move(faces));
    mesh = std::move(result);
    return true;
}

/// ASCII when the file starts with "solid" and is not exactly the size of a binary file with
/// the triangle count at byte 80, and its first kilobyte holds no bytes text never has.
bool IsAscii(std::string_view bytes)
{
    const std::size_t start = std::min(bytes.find_first_not_of(" \t\r\n"), bytes.size());
    if (Lower(bytes.substr(start, 5)) != "solid")
        return false;
    if (bytes.size() >= HeaderSize) {
        const std::uint64_t count = LoadCount(reinterpret_cast<const unsigned char*>(bytes.data()) + 80);
        if (HeaderSize + count * RecordSize == bytes.size())
            return false;
    }
    const std::string_view head = bytes.substr(0, 1024);
    return std::none_of(head.begin(), head.end(), [](char c) {
        const auto u = static_cast<unsigned char>(c);
        return u < 0x20 && u != '\n' && u != '\r' && u != '\t' && u != '\f' && u != '\v';
    });
}

} // namespace

bool ReadStlFromMemory(std::string_view bytes, const std::string& name, tesk::Mesh& mesh, std::string& error)
{
    return RunReader(name, Label, error, [&](std::string& message) {
        return IsAscii(bytes) ? ReadAscii(bytes, mesh, message) : ReadBinary(bytes, mesh, message);
    });
}

bool ReadStl(const std::string& path, tesk::Mesh& mesh, std::string& error)
{
    FileBytes file;
    if (!file.Load(path, error)) {
        rlog::Fail(error, Label);
        return false;
    }
    return ReadStlFromMemory(file.View(), DisplayName(path), mesh, error);
}

} // namespace vexa::viewer
