#include "OffReader.h"

#include "CoordinateShift.h"
#include "FileBytes.h"
#include "MeshReading.h"
#include "TextScan.h"

#include <runa/HugePages.h>
#include <runa/rlog.h>

#include <algorithm>
#include <cstdint>
#include <vector>

namespace vexa::viewer {

namespace {

constexpr const char* Label = "vexa::viewer::ReadOff";

std::string At(std::size_t line)
{
    return "line " + std::to_string(line) + ": ";
}

std::string Quoted(std::string_view text)
{
    return "'" + Printable(text) + "'";
}

bool IsIntegerText(std::string_view token)
{
    if (!token.empty() && (token.front() == '+' || token.front() == '-'))
        token.remove_prefix(1);
    return !token.empty() &&
           std::all_of(token.begin(), token.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/// What the keyword says each vertex line holds besides x y z.
struct OffKind {
    bool textures = false;
    bool colors = false;
    bool normals = false;
};

/// Lines with comments cut off and blank ones skipped.
class OffLines {
public:
    explicit OffLines(std::string_view text) : cursor_(text) {}

    bool Next()
    {
        std::string_view line;
        while (cursor_.Next(line)) {
            const std::size_t hash = line.find('#');
            if (hash != std::string_view::npos)
                line = line.substr(0, hash);
            SplitTokens(line, tokens, [](char c) { return IsBlank(c); });
            if (!tokens.empty())
                return true;
        }
        return false;
    }
    std::size_t Number() const { return cursor_.LineNumber(); }
    std::size_t Position() const { return cursor_.Position(); }

    std::vector<std::string_view> tokens;

private:
    LineCursor cursor_;
};

bool ParseKeyword(std::string_view keyword, OffKind& kind, std::string& message, std::size_t number)
{
    std::string_view prefix = keyword.substr(0, keyword.size() - 3);
    if (prefix.starts_with("ST")) {
        kind.textures = true;
        prefix.remove_prefix(2);
    }
    if (prefix.starts_with("C")) {
        kind.colors = true;
        prefix.remove_prefix(1);
    }
    if (prefix.starts_with("N")) {
        kind.normals = true;
        prefix.remove_prefix(1);
    }
    if (!prefix.empty()) {
        message = At(number) + "unsupported OFF variant " + Quoted(keyword);
        return false;
    }
    return true;
}

bool Parse(std::string_view text, tesk::Mesh& mesh, std::string& message, std::string& warning)
{
    OffLines lines(text);
    if (!lines.Next()) {
        message = At(std::max<std::size_t>(lines.Number(), 1)) + "empty file";
        return false;
    }
    OffKind kind;
    std::size_t t = 0;
    const std::string_view first = lines.tokens[0];
    if (first.ends_with("OFF")) {
        if (!ParseKeyword(first, kind, message, lines.Number()))
            return false;
        if (lines.tokens.size() > 1 && lines.tokens[1] == "BINARY") {
            message = At(lines.Number()) + "binary OFF files are not supported";
            return false;
        }
        t = 1;
        if (lines.tokens.size() == 1) {
            if (!lines.Next()) {
                message = At(lines.Number()) + "file ends before the vertex and face counts";
                return false;
            }
            t = 0;
        }
    } else if (!IsIntegerText(first)) {
        message = At(lines.Number()) + "not an OFF file (it starts with " + Quoted(first) + ")";
        return false;
    }
    unsigned long long vertexCount = 0;
    unsigned long long faceCount = 0;
    if (lines.tokens.size() - t < 2 || !ParseCount(lines.tokens[t], vertexCount) ||
        !ParseCount(lines.tokens[t + 1], faceCount)) {
        message = At(lines.Number()) + "expected the vertex, face and edge counts";
        return false;
    }
    // A vertex line takes at least 6 characters ("0 0 0\n"): arrays are reserved for what the
    // rest of the file can hold at most, so an absurd count fails when the lines run out
    // instead of allocating for it first.
    const std::size_t remaining = text.size() - std::min(text.size(), lines.Position());
    const std::size_t fits = std::min<std::size_t>(
        static_cast<std::size_t>(std::min<unsigned long long>(vertexCount, SIZE_MAX)), (remaining + 1) / 6);
    const unsigned long long count = vertexCount;

    std::vector<glm::vec3> positions;
    std::vector<glm::vec3> normals;
    std::vector<tesk::Color3f> colors;
    std::vector<glm::vec2> uvs;
    runa::ReserveFresh(positions, fits);
    if (kind.normals)
        normals.reserve(fits);
    if (kind.colors)
        colors.reserve(fits);
    if (kind.textures)
        uvs.reserve(fits);
    CoordinateShift shift;
    const std::size_t fixed = 3 + (kind.normals ? 3 : 0) + (kind.textures ? 2 : 0);
    double values[12];
    for (unsigned long long v = 0; v < count; ++v) {
        if (!lines.Next()) {
            message = At(lines.Number()) + "file ends after " + std::to_string(v) + " of " +
                      std::to_string(count) + " vertices";
            return false;
        }
        const auto& tokens = lines.tokens;
        const std::size_t colorValues = kind.colors ? tokens.size() - std::min(tokens.size(), fixed) : 0;
        if (tokens.size() < fixed || (kind.colors && colorValues != 3 && colorValues != 4)) {
            message = At(lines.Number()) + "expected " + std::to_string(fixed) +
                      (kind.colors ? " values and a colour" : " values") + ", found " +
                      std::to_string(tokens.size()) + " values";
            return false;
        }
        // Plain OFF vertices may carry more values than the keyword says; they are ignored.
        const std::size_t used = std::min<std::size_t>(fixed + colorValues, 12);
        for (std::size_t i = 0; i < used; ++i) {
            if (!ParseDouble(tokens[i], values[i])) {
                message = At(lines.Number()) + Quoted(tokens[i]) + " is not a number";
                return false;
            }
        }
        positions.push_back(shift.Apply(values[0], values[1], values[2]));
        std::size_t at = 3;
        if (kind.normals) {
            normals.emplace_back(glm::vec3(static_cast<float>(values[3]), static_cast<float>(values[4]),
                                           static_cast<float>(values[5])));
            at += 3;
        }
        if (kind.colors) {
            // Whole numbers beyond 1 are bytes; "0 1 0" is green either way.
            bool bytes = false;
            bool whole = true;
            for (std::size_t i = at; i < at + colorValues; ++i) {
                whole = whole && IsIntegerText(tokens[i]);
                bytes = bytes || values[i] > 1.0;
            }
            const float divisor = whole && bytes ? 255.0f : 1.0f;
            colors.emplace_back(static_cast<float>(values[at]) / divisor,
                                static_cast<float>(values[at + 1]) / divisor,
                                static_cast<float>(values[at + 2]) / divisor);
            at += colorValues;
        }
        if (kind.textures)
            uvs.emplace_back(static_cast<float>(values[at]), static_cast<float>(values[at + 1]));
    }

    std::vector<glm::uvec3> faces;
    const std::size_t rest = text.size() - std::min(text.size(), lines.Position());
    faces.reserve(std::min<std::size_t>(
        static_cast<std::size_t>(std::min<unsigned long long>(faceCount, SIZE_MAX)), (rest + 1) / 8));
    PolygonFan fan(faces, vertexCount);
    for (std::uint64_t f = 0; f < faceCount; ++f) {
        if (!lines.Next()) {
            message = At(lines.Number()) + "file ends after " + std::to_string(f) + " of " +
                      std::to_string(faceCount) + " faces";
            return false;
        }
        const auto& tokens = lines.tokens;
        unsigned long long corners = 0;
        if (!ParseCount(tokens[0], corners)) {
            message = At(lines.Number()) + "bad corner count " + Quoted(tokens[0]);
            return false;
        }
        if (corners >= tokens.size()) {
            message = At(lines.Number()) + "the face has " + std::to_string(tokens.size() - 1) +
                      " indices, not " + std::to_string(corners);
            return false;
        }
        fan.Begin();
        for (std::size_t i = 1; i <= corners; ++i) {
            long long index = 0;
            if (!ParseInteger(tokens[i], index)) {
                message = At(lines.Number()) + Quoted(tokens[i]) + " is not a vertex index";
                return false;
            }
            fan.Add(static_cast<std::uint64_t>(index)); // negative wraps past every vertex
        }
        fan.End(f + 1);
    }
    warning = fan.DroppedMessage();

    tesk::Mesh result;
    tesk::PointCloud& cloud = result.GetVertices();
    cloud.SetPositions(std::move(positions));
    cloud.SetOriginOffset(shift.Offset());
    if (kind.normals && !cloud.Empty())
        cloud.SetNormals(std::move(normals));
    if (kind.colors)
        cloud.AddColorProperty("RGB", std::move(colors));
    if (kind.textures)
        cloud.SetUVs(std::move(uvs));
    result.SetFaces(std::move(faces));
    mesh = std::move(result);
    return true;
}

} // namespace

bool ReadOffFromMemory(std::string_view text, const std::string& name, tesk::Mesh& mesh, std::string& error)
{
    std::string warning;
    const bool ok = RunReader(name, Label, error,
                              [&](std::string& message) { return Parse(text, mesh, message, warning); });
    if (ok && !warning.empty())
        rlog::Warn(name + ": " + warning, Label);
    return ok;
}

bool ReadOff(const std::string& path, tesk::Mesh& mesh, std::string& error)
{
    FileBytes file;
    if (!file.Load(path, error)) {
        rlog::Fail(error, Label);
        return false;
    }
    return ReadOffFromMemory(file.View(), DisplayName(path), mesh, error);
}

} // namespace vexa::viewer
