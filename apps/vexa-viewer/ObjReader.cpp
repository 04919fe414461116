#include "ObjReader.h"

#include "CoordinateShift.h"
#include "FileBytes.h"
#include "MeshReading.h"
#include "TextScan.h"

#include <runa/rlog.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <map>
#include <optional>
#include <system_error>
#include <unordered_map>
#include <vector>

namespace vexa::viewer {

namespace {

constexpr const char* Label = "vexa::viewer::ReadObj";
constexpr std::uint32_t None = std::numeric_limits<std::uint32_t>::max();

std::string At(std::size_t line)
{
    return "line " + std::to_string(line) + ": ";
}

std::string Quoted(std::string_view text)
{
    return "'" + Printable(text) + "'";
}

bool IsWordChar(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

/// One face corner: indices from 0 into positions, texture coordinates and normals.
struct Corner {
    std::uint32_t v = None;
    std::uint32_t vt = None;
    std::uint32_t vn = None;

    bool operator==(const Corner&) const = default;
};

struct CornerHash {
    std::size_t operator()(const Corner& c) const
    {
        std::uint64_t h =
            (static_cast<std::uint64_t>(c.v) << 32) ^ (static_cast<std::uint64_t>(c.vt) << 16) ^ c.vn;
        h ^= h >> 33;
        h *= 0xff51afd7ed558ccdULL;
        h ^= h >> 33;
        return static_cast<std::size_t>(h);
    }
};

/// Everything the file's statements hold, before vertices are made.
struct ObjData {
    std::vector<glm::vec3> positions;
    std::vector<tesk::Color3f> colors; // as long as positions once any vertex had a colour
    bool colorsAbove1 = false;
    std::vector<glm::vec2> uvs;
    std::vector<glm::vec3> normals;
    std::vector<Corner> corners; // three per triangle
    CoordinateShift shift;
    std::vector<std::string> libraries;
    std::string firstMaterial;
    std::uint64_t droppedFaces = 0;
    std::size_t firstDroppedLine = 0;
};

/// Resolves one index of a corner: 1-based, or negative counting back from `count`.
/// Nothing is written for an empty part; false for text that is no index at all.
enum class IndexResult { Ok, Missing, Bad, Zero };

IndexResult ResolveIndex(std::string_view part, std::size_t count, std::uint32_t& index)
{
    long long value = 0;
    if (!ParseInteger(part, value))
        return IndexResult::Bad;
    if (value == 0)
        return IndexResult::Zero;
    const long long resolved = value > 0 ? value - 1 : static_cast<long long>(count) + value;
    if (resolved < 0 || resolved >= static_cast<long long>(count))
        return IndexResult::Missing;
    index = static_cast<std::uint32_t>(resolved);
    return IndexResult::Ok;
}

class ObjParser {
public:
    explicit ObjParser(ObjData& data) : data_(data) {}

    bool Statement(std::string_view line, std::size_t number, std::string& message)
    {
        SplitTokens(line, tokens_, [](char c) { return IsBlank(c); });
        if (tokens_.empty())
            return true;
        const std::string_view keyword = tokens_[0];
        if (keyword == "v")
            return Vertex(number, message);
        if (keyword == "vt") {
            if (!Numbers(number, 1, 3, message))
                return false;
            data_.uvs.emplace_back(static_cast<float>(values_[0]),
                                   values_.size() > 1 ? static_cast<float>(values_[1]) : 0.0f);
            return true;
        }
        if (keyword == "vn") {
            if (!Numbers(number, 3, 3, message))
                return false;
            data_.normals.emplace_back(static_cast<float>(values_[0]), static_cast<float>(values_[1]),
                                       static_cast<float>(values_[2]));
            return true;
        }
        if (keyword == "f" || keyword == "fo")
            return Face(number, message);
        if (keyword == "mtllib") {
            if (tokens_.size() > 1)
                data_.libraries.emplace_back(RestOfLine(line, 1));
            return true;
        }
        if (keyword == "usemtl") {
            if (data_.firstMaterial.empty() && tokens_.size() > 1)
                data_.firstMaterial = std::string(RestOfLine(line, 1));
            return true;
        }
        // Groups, objects, smoothing, lines, points and free-form geometry do not change the
        // triangles. A keyword of other characters means the file is not OBJ text at all.
        if (!std::all_of(keyword.begin(), keyword.end(), IsWordChar)) {
            message = At(number) + "unknown statement " + Quoted(keyword);
            return false;
        }
        return true;
    }

private:
    /// The text after the first `skip` tokens, for names that may hold spaces.
    std::string_view RestOfLine(std::string_view line, std::size_t skip) const
    {
        const std::size_t start = static_cast<std::size_t>(tokens_[skip].data() - line.data());
        const std::string_view last = tokens_.back();
        const std::size_t end = static_cast<std::size_t>(last.data() - line.data()) + last.size();
        return line.substr(start, end - start);
    }

    bool Numbers(std::size_t number, std::size_t minimum, std::size_t maximum, std::string& message)
    {
        const std::size_t count = tokens_.size() - 1;
        if (count < minimum || count > maximum) {
            message = At(number) + "expected " +
                      (minimum == maximum ? std::to_string(minimum)
                                          : std::to_string(minimum) + " to " + std::to_string(maximum)) +
                      " numbers after " + Quoted(tokens_[0]) + ", found " + std::to_string(count);
            return false;
        }
        values_.resize(count);
        for (std::size_t i = 0; i < count; ++i) {
            if (!ParseDouble(tokens_[i + 1], values_[i])) {
                message = At(number) + Quoted(tokens_[i + 1]) + " is not a number";
                return false;
            }
        }
        return true;
    }

    bool Vertex(std::size_t number, std::string& message)
    {
        // x y z, x y z w, x y z r g b, or x y z r g b a as some scanners write them.
        if (!Numbers(number, 3, 7, message))
            return false;
        if (values_.size() == 5) {
            message = At(number) + "expected 3, 4, 6 or 7 numbers after 'v', found 5";
            return false;
        }
        data_.positions.push_back(data_.shift.Apply(values_[0], values_[1], values_[2]));
        if (values_.size() >= 6) {
            if (data_.colors.size() + 1 < data_.positions.size())
                data_.colors.resize(data_.positions.size() - 1, tesk::Color3f(1.0f, 1.0f, 1.0f));
            const tesk::Color3f color(static_cast<float>(values_[3]), static_cast<float>(values_[4]),
                                      static_cast<float>(values_[5]));
            data_.colorsAbove1 = data_.colorsAbove1 || color.r > 1.0f || color.g > 1.0f || color.b > 1.0f;
            data_.colors.push_back(color);
        }
        return true;
    }

    bool Face(std::size_t number, std::string& message)
    {
        polygon_.clear();
        bool missing = false;
        for (std::size_t i = 1; i < tokens_.size(); ++i) {
            const std::string_view token = tokens_[i];
            std::string_view parts[3];
            std::size_t partCount = 0;
            std::size_t start = 0;
            while (partCount < 3) {
                const std::size_t slash = token.find('/', start);
                parts[partCount++] = token.substr(
                    start, slash == std::string_view::npos ? std::string_view::npos : slash - start);
                if (slash == std::string_view::npos)
                    break;
                start = slash + 1;
                if (partCount == 3) {
                    message = At(number) + "bad face corner " + Quoted(token);
                    return false;
                }
            }
            Corner corner;
            const std::size_t counts[3] = {data_.positions.size(), data_.uvs.size(), data_.normals.size()};
            std::uint32_t* slots[3] = {&corner.v, &corner.vt, &corner.vn};
            for (std::size_t p = 0; p < partCount; ++p) {
                if (p > 0 && parts[p].empty())
                    continue;
                switch (ResolveIndex(parts[p], counts[p], *slots[p])) {
                case IndexResult::Ok:
                    break;
                case IndexResult::Missing:
                    missing = true;
                    break;
                case IndexResult::Zero:
                    message =
                        At(number) + "index 0 in face corner " + Quoted(token) + " (indices start at 1)";
                    return false;
                case IndexResult::Bad:
                    message = At(number) + "bad face corner " + Quoted(token);
                    return false;
                }
            }
            polygon_.push_back(corner);
        }
        if (missing) {
            if (data_.droppedFaces++ == 0)
                data_.firstDroppedLine = number;
            return true;
        }
        for (std::size_t k = 1; k + 1 < polygon_.size(); ++k) {
            data_.corners.push_back(polygon_[0]);
            data_.corners.push_back(polygon_[k]);
            data_.corners.push_back(polygon_[k + 1]);
        }
        return true;
    }

    ObjData& data_;
    std::vector<std::string_view> tokens_;
    std::vector<double> values_;
    std::vector<Corner> polygon_;
};

bool ParseStatements(std::string_view text, ObjData& data, std::string& message)
{
    ObjParser parser(data);
    LineCursor cursor(text);
    std::string_view line;
    std::string joined; // a statement continued over lines ending in '\'
    std::size_t firstLine = 0;
    while (cursor.Next(line)) {
        const std::size_t hash = line.find('#');
        if (hash != std::string_view::npos)
            line = line.substr(0, hash);
        if (!line.empty() && line.back() == '\\') {
            if (joined.empty())
                firstLine = cursor.LineNumber();
            joined.append(line.substr(0, line.size() - 1)).push_back(' ');
            continue;
        }
        bool ok = true;
        if (!joined.empty()) {
            joined.append(line);
            ok = parser.Statement(joined, firstLine, message);
            joined.clear();
        } else {
            ok = parser.Statement(line, cursor.LineNumber(), message);
        }
        if (!ok)
            return false;
    }
    return joined.empty() || parser.Statement(joined, firstLine, message);
}

/// Makes the mesh's vertices from the corners the faces use.
void BuildMesh(ObjData& data, tesk::Mesh& mesh)
{
    if (!data.colors.empty())
        data.colors.resize(data.positions.size(), tesk::Color3f(1.0f, 1.0f, 1.0f));
    if (data.colorsAbove1)
        for (tesk::Color3f& c : data.colors)
            c = tesk::Color3f(c.r / 255.0f, c.g / 255.0f, c.b / 255.0f);

    bool usesUVs = false;
    bool usesNormals = false;
    bool direct = true;
    for (const Corner& c : data.corners) {
        usesUVs = usesUVs || c.vt != None;
        usesNormals = usesNormals || c.vn != None;
        direct = direct && (c.vt == None || c.vt == c.v) && (c.vn == None || c.vn == c.v);
    }
    tesk::PointCloud& cloud = mesh.GetVertices();
    std::vector<glm::uvec3> faces(data.corners.size() / 3);

    if (direct) {
        for (std::size_t f = 0; f < faces.size(); ++f)
            faces[f] = {data.corners[3 * f].v, data.corners[3 * f + 1].v, data.corners[3 * f + 2].v};
        const std::size_t count = data.positions.size();
        // A cloud written as v and vn lines carries its normals without any face.
        const bool pointNormals = data.corners.empty() && data.normals.size() == count;
        cloud.SetPositions(std::move(data.positions));
        if (!data.colors.empty())
            cloud.AddColorProperty("RGB", std::move(data.colors));
        if ((usesNormals || pointNormals) && count > 0) {
            data.normals.resize(count, glm::vec3(0.0f));
            cloud.SetNormals(std::move(data.normals));
        }
        if (usesUVs && count > 0) {
            data.uvs.resize(count, glm::vec2(0.0f));
            cloud.SetUVs(std::move(data.uvs));
        }
    } else {
        std::unordered_map<Corner, std::uint32_t, CornerHash> made;
        made.reserve(data.corners.size() / 2);
        std::vector<glm::vec3> positions;
        std::vector<tesk::Color3f> colors;
        std::vector<glm::vec2> uvs;
        std::vector<glm::vec3> normals;
        for (std::size_t i = 0; i < data.corners.size(); ++i) {
            const Corner& c = data.corners[i];
            const auto [it, isNew] = made.try_emplace(c, static_cast<std::uint32_t>(positions.size()));
            if (isNew) {
                positions.push_back(data.positions[c.v]);
                if (!data.colors.empty())
                    colors.push_back(data.colors[c.v]);
                if (usesUVs)
                    uvs.push_back(c.vt != None ? data.uvs[c.vt] : glm::vec2(0.0f));
                if (usesNormals)
                    normals.push_back(c.vn != None ? data.normals[c.vn] : glm::vec3(0.0f));
            }
            faces[i / 3][static_cast<glm::length_t>(i % 3)] = it->second;
        }
        cloud.SetPositions(std::move(positions));
        if (!data.colors.empty())
            cloud.AddColorProperty("RGB", std::move(colors));
        if (usesNormals)
            cloud.SetNormals(std::move(normals));
        if (usesUVs)
            cloud.SetUVs(std::move(uvs));
    }
    cloud.SetOriginOffset(data.shift.Offset());
    mesh.SetFaces(std::move(faces));
}

// ---------------------------------------------------------------------------------------------
// Material libraries
// ---------------------------------------------------------------------------------------------

/// The file name of a map_Kd statement: options and their arguments skipped, the rest of the
/// line taken whole (names may hold spaces), Windows separators turned around.
std::string TextureName(std::string_view line, const std::vector<std::string_view>& tokens)
{
    std::size_t t = 1;
    while (t < tokens.size() && tokens[t].size() > 1 && tokens[t][0] == '-') {
        const std::string_view option = tokens[t++];
        const bool upToThree = option == "-o" || option == "-s" || option == "-t";
        const std::size_t arguments = option == "-mm" ? 2 : 1;
        double ignored = 0.0;
        if (upToThree) {
            for (std::size_t n = 0; n < 3 && t < tokens.size() && ParseDouble(tokens[t], ignored); ++n)
                ++t;
        } else {
            t += arguments;
        }
    }
    if (t >= tokens.size())
        return {};
    const std::size_t start = static_cast<std::size_t>(tokens[t].data() - line.data());
    const std::size_t end =
        static_cast<std::size_t>(tokens.back().data() - line.data()) + tokens.back().size();
    std::string name(line.substr(start, end - start));
    std::replace(name.begin(), name.end(), '\\', '/');
    return name;
}

/// One specular strength from a specular colour: its strongest component.
float Strongest(double r, double g, double b)
{
    return static_cast<float>(std::max({r, g, b}));
}

/// Reads every material of one library into `materials`; returns a warning for what it
/// could not read, empty when all went well.
std::string ReadLibrary(const std::filesystem::path& file,
                        std::map<std::string, tesk::MaterialModel>& materials)
{
    FileBytes bytes;
    std::string error;
    if (!bytes.Load(file.string(), error))
        return error + "; the model is shown without its material";
    const std::filesystem::path folder = file.parent_path();
    LineCursor cursor(bytes.View());
    std::string_view line;
    std::vector<std::string_view> tokens;
    tesk::MaterialModel* current = nullptr;
    std::size_t badLine = 0;
    while (cursor.Next(line)) {
        SplitTokens(line, tokens, [](char c) { return IsBlank(c); });
        if (tokens.empty() || tokens[0].front() == '#')
            continue;
        const std::string_view keyword = tokens[0];
        if (keyword == "newmtl") {
            const std::string name = tokens.size() > 1 ? std::string(tokens[1]) : std::string();
            current = &(materials[name] = tesk::MaterialModel(name));
            continue;
        }
        if (current == nullptr)
            continue;
        double v[3] = {0.0, 0.0, 0.0};
        const auto numbers = [&](std::size_t count) {
            if (tokens.size() < count + 1)
                return false;
            for (std::size_t i = 0; i < count; ++i)
                if (!ParseDouble(tokens[i + 1], v[i]))
                    return false;
            return true;
        };
        bool ok = true;
        if (keyword == "Kd") {
            if ((ok = numbers(3)))
                current->SetAlbedo(tesk::Color3f(static_cast<float>(v[0]), static_cast<float>(v[1]),
                                                 static_cast<float>(v[2])));
        } else if (keyword == "Ks") {
            if ((ok = numbers(3)))
                current->SetSpecular(Strongest(v[0], v[1], v[2]));
        } else if (keyword == "Ns") {
            if ((ok = numbers(1)))
                current->SetShininess(static_cast<float>(v[0]));
        } else if (keyword == "Pm") {
            if ((ok = numbers(1)))
                current->SetMetallic(static_cast<float>(v[0]));
        } else if (keyword == "map_Kd") {
            const std::string name = TextureName(line, tokens);
            ok = !name.empty();
            if (ok) {
                const std::filesystem::path texture(name);
                current->SetAlbedoTexture(
                    (texture.is_absolute() ? texture : (folder / texture)).lexically_normal().string());
            }
        }
        if (!ok && badLine == 0)
            badLine = cursor.LineNumber();
    }
    if (badLine != 0)
        return DisplayName(file.string()) + ": line " + std::to_string(badLine) +
               ": statement not understood, skipped";
    return {};
}

/// The material of the first usemtl, or the only one in the libraries.
void ReadMaterial(const ObjData& data, const std::string& folder, tesk::Mesh& mesh,
                  std::vector<std::string>& warnings)
{
    if (folder.empty() || data.libraries.empty())
        return;
    std::map<std::string, tesk::MaterialModel> materials;
    for (const std::string& library : data.libraries) {
        std::string whole = library;
        std::replace(whole.begin(), whole.end(), '\\', '/');
        // One name with spaces, or several names on one line.
        std::vector<std::string> names{whole};
        std::error_code code;
        if (!std::filesystem::exists(std::filesystem::path(folder) / whole, code)) {
            std::vector<std::string_view> parts;
            SplitTokens(whole, parts, [](char c) { return IsBlank(c); });
            names.assign(parts.begin(), parts.end());
        }
        for (const std::string& name : names) {
            const std::string warning = ReadLibrary(std::filesystem::path(folder) / name, materials);
            if (!warning.empty())
                warnings.push_back(warning);
        }
    }
    const auto used = materials.find(data.firstMaterial);
    if (used != materials.end())
        mesh.SetMaterial(used->second);
    else if (materials.size() == 1)
        mesh.SetMaterial(materials.begin()->second);
}

} // namespace

bool ReadObjFromMemory(std::string_view text, const std::string& name, const std::string& folder,
                       tesk::Mesh& mesh, std::string& error)
{
    std::vector<std::string> warnings;
    const bool ok = RunReader(name, Label, error, [&](std::string& message) {
        ObjData data;
        if (!ParseStatements(text, data, message))
            return false;
        if (data.droppedFaces > 0)
            warnings.push_back(name + ": skipped " + std::to_string(data.droppedFaces) + " face" +
                               (data.droppedFaces == 1 ? "" : "s") +
                               " that refer to missing vertices (first: line " +
                               std::to_string(data.firstDroppedLine) + ")");
        tesk::Mesh result;
        BuildMesh(data, result);
        ReadMaterial(data, folder, result, warnings);
        mesh = std::move(result);
        return true;
    });
    for (const std::string& warning : warnings)
        rlog::Warn(warning, Label);
    return ok;
}

bool ReadObj(const std::string& path, tesk::Mesh& mesh, std::string& error)
{
    FileBytes file;
    if (!file.Load(path, error)) {
        rlog::Fail(error, Label);
        return false;
    }
    std::string folder = std::filesystem::path(path).parent_path().string();
    if (folder.empty())
        folder = ".";
    return ReadObjFromMemory(file.View(), DisplayName(path), folder, mesh, error);
}

} // namespace vexa::viewer
