#include "PlyReader.h"

#include "BinaryScalar.h"
#include "CoordinateShift.h"
#include "FileBytes.h"
#include "MeshReading.h"
#include "TextScan.h"

#include <runa/HugePages.h>
#include <runa/rlog.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <optional>
#include <span>
#include <vector>

namespace vexa::viewer {

namespace {

constexpr const char* Label = "vexa::viewer::ReadPly";

// ---------------------------------------------------------------------------------------------
// Header
// ---------------------------------------------------------------------------------------------

std::optional<Scalar> ScalarFromName(std::string_view name)
{
    struct Entry {
        std::string_view name;
        Scalar type;
    };
    static constexpr std::array<Entry, 16> Names = {{
        {"char", Scalar::Int8},
        {"int8", Scalar::Int8},
        {"uchar", Scalar::UInt8},
        {"uint8", Scalar::UInt8},
        {"short", Scalar::Int16},
        {"int16", Scalar::Int16},
        {"ushort", Scalar::UInt16},
        {"uint16", Scalar::UInt16},
        {"int", Scalar::Int32},
        {"int32", Scalar::Int32},
        {"uint", Scalar::UInt32},
        {"uint32", Scalar::UInt32},
        {"float", Scalar::Float32},
        {"float32", Scalar::Float32},
        {"double", Scalar::Float64},
        {"float64", Scalar::Float64},
    }};
    for (const Entry& entry : Names)
        if (entry.name == name)
            return entry.type;
    return std::nullopt;
}

struct PlyProperty {
    std::string name;
    Scalar type = Scalar::Float32; // the item type for a list
    bool isList = false;
    Scalar countType = Scalar::UInt8;
};

struct PlyElement {
    std::string name;
    std::uint64_t count = 0;
    std::size_t line = 0;
    std::vector<PlyProperty> properties;

    bool HasLists() const
    {
        return std::any_of(properties.begin(), properties.end(),
                           [](const PlyProperty& p) { return p.isList; });
    }
    /// Bytes of one item when it has no list; the smallest an item can be otherwise.
    std::size_t MinimumItemSize() const
    {
        std::size_t size = 0;
        for (const PlyProperty& p : properties)
            size += p.isList ? ScalarSize(p.countType) : ScalarSize(p.type);
        return size;
    }
};

enum class Encoding { Ascii, BinaryLittleEndian, BinaryBigEndian };

struct PlyHeader {
    Encoding encoding = Encoding::Ascii;
    std::vector<PlyElement> elements;
    std::size_t bodyOffset = 0; // first byte after the end_header line
    std::size_t endLine = 0;    // number of the end_header line
};

std::string At(std::size_t line)
{
    return "line " + std::to_string(line) + ": ";
}

std::string Quoted(std::string_view text)
{
    return "'" + Printable(text) + "'";
}

bool ParseHeader(std::string_view bytes, PlyHeader& header, std::string& message)
{
    LineCursor cursor(bytes);
    std::string_view line;
    std::vector<std::string_view> tokens;
    const auto blank = [](char c) { return IsBlank(c); };

    if (!cursor.Next(line) || (SplitTokens(line, tokens, blank), tokens.size() != 1 || tokens[0] != "ply")) {
        message = At(1) + "not a PLY file (the first line is not 'ply')";
        return false;
    }

    bool haveFormat = false;
    while (cursor.Next(line)) {
        const std::size_t number = cursor.LineNumber();
        SplitTokens(line, tokens, blank);
        if (tokens.empty())
            continue;
        const std::string_view keyword = tokens[0];
        if (keyword == "comment" || keyword == "obj_info")
            continue;
        if (keyword == "end_header") {
            if (!haveFormat) {
                message = At(number) + "the header has no 'format' line";
                return false;
            }
            header.bodyOffset = cursor.Position();
            header.endLine = number;
            return true;
        }
        if (keyword == "format") {
            if (tokens.size() != 3) {
                message = At(number) + "expected 'format <encoding> 1.0'";
                return false;
            }
            if (tokens[1] == "ascii")
                header.encoding = Encoding::Ascii;
            else if (tokens[1] == "binary_little_endian")
                header.encoding = Encoding::BinaryLittleEndian;
            else if (tokens[1] == "binary_big_endian")
                header.encoding = Encoding::BinaryBigEndian;
            else {
                message = At(number) + "unknown format " + Quoted(tokens[1]);
                return false;
            }
            haveFormat = true;
            continue;
        }
        if (keyword == "element") {
            unsigned long long count = 0;
            if (tokens.size() != 3) {
                message = At(number) + "expected 'element <name> <count>'";
                return false;
            }
            if (!ParseCount(tokens[2], count)) {
                message = At(number) + "bad element count " + Quoted(tokens[2]);
                return false;
            }
            header.elements.push_back({std::string(tokens[1]), count, number, {}});
            continue;
        }
        if (keyword == "property") {
            if (header.elements.empty()) {
                message = At(number) + "property before any element";
                return false;
            }
            PlyProperty property;
            std::size_t typeToken = 1;
            if (tokens.size() >= 2 && tokens[1] == "list") {
                if (tokens.size() != 5) {
                    message = At(number) + "expected 'property list <count type> <item type> <name>'";
                    return false;
                }
                const std::optional<Scalar> countType = ScalarFromName(tokens[2]);
                if (!countType) {
                    message = At(number) + "unknown property type " + Quoted(tokens[2]);
                    return false;
                }
                if (!IsInteger(*countType)) {
                    message = At(number) + "list count type " + Quoted(tokens[2]) + " is not an integer type";
                    return false;
                }
                property.isList = true;
                property.countType = *countType;
                typeToken = 3;
            } else if (tokens.size() != 3) {
                message = At(number) + "expected 'property <type> <name>'";
                return false;
            }
            const std::optional<Scalar> type = ScalarFromName(tokens[typeToken]);
            if (!type) {
                message = At(number) + "unknown property type " + Quoted(tokens[typeToken]);
                return false;
            }
            property.type = *type;
            property.name = std::string(tokens[typeToken + 1]);
            header.elements.back().properties.push_back(std::move(property));
            continue;
        }
        message = At(number) + "unknown header line " + Quoted(line);
        return false;
    }
    message = At(cursor.LineNumber()) + "file ends inside the header (no 'end_header' line)";
    return false;
}

// ---------------------------------------------------------------------------------------------
// What each vertex property becomes
// ---------------------------------------------------------------------------------------------

enum class Role : std::uint8_t { Ignore, Position, Normal, Color, UV, Extra };

struct PropertyRole {
    Role role = Role::Ignore;
    std::uint8_t component = 0; // x y z, r g b or u v
    std::size_t extraIndex = 0;
};

struct VertexLayout {
    std::vector<PropertyRole> roles; // one per vertex property
    bool hasNormals = false;
    bool hasColors = false;
    bool hasUVs = false;
    std::vector<std::string> extraNames;
};

std::optional<std::size_t> FindScalar(const PlyElement& element, std::string_view name)
{
    for (std::size_t i = 0; i < element.properties.size(); ++i)
        if (element.properties[i].name == name && !element.properties[i].isList)
            return i;
    return std::nullopt;
}

/// Colour components of 8 and 16 bit types are brought to 0..1 by their range; wider integers
/// are taken to hold 0..255 as some writers store bytes in ints; floats are 0..1 already.
bool MapVertexProperties(const PlyElement& vertex, VertexLayout& layout, std::string& message)
{
    layout.roles.assign(vertex.properties.size(), PropertyRole{});
    static constexpr std::array<std::string_view, 3> Axes = {"x", "y", "z"};
    for (std::uint8_t c = 0; c < 3; ++c) {
        const std::optional<std::size_t> index = FindScalar(vertex, Axes[c]);
        if (!index) {
            const bool isList = std::any_of(vertex.properties.begin(), vertex.properties.end(),
                                            [&](const PlyProperty& p) { return p.name == Axes[c]; });
            message = At(vertex.line) + "element 'vertex' " +
                      (isList ? "has a list property " : "has no property ") + Quoted(Axes[c]);
            return false;
        }
        layout.roles[*index] = {Role::Position, c, 0};
    }

    // Every name in `names` must be a free scalar for the group to count.
    const auto assignGroup = [&](std::span<const std::string_view> names, Role role) {
        std::array<std::optional<std::size_t>, 3> found;
        for (std::size_t c = 0; c < names.size(); ++c) {
            found[c] = FindScalar(vertex, names[c]);
            if (!found[c] || layout.roles[*found[c]].role != Role::Ignore)
                return false;
        }
        for (std::size_t c = 0; c < names.size(); ++c)
            layout.roles[*found[c]] = {role, static_cast<std::uint8_t>(c), 0};
        return true;
    };
    static constexpr std::array<std::array<std::string_view, 3>, 2> NormalNames = {{
        {"nx", "ny", "nz"},
        {"normal_x", "normal_y", "normal_z"},
    }};
    for (const auto& names : NormalNames)
        if (!layout.hasNormals)
            layout.hasNormals = assignGroup(names, Role::Normal);

    static constexpr std::array<std::array<std::string_view, 4>, 3> ColorFamilies = {{
        {"red", "green", "blue", "alpha"},
        {"diffuse_red", "diffuse_green", "diffuse_blue", "diffuse_alpha"},
        {"r", "g", "b", "a"},
    }};
    std::string_view alphaName;
    for (const auto& family : ColorFamilies) {
        if (assignGroup(std::span(family).first(3), Role::Color)) {
            layout.hasColors = true;
            alphaName = family[3];
            break;
        }
    }

    static constexpr std::array<std::array<std::string_view, 2>, 4> UVNames = {{
        {"s", "t"},
        {"u", "v"},
        {"texture_u", "texture_v"},
        {"texture_s", "texture_t"},
    }};
    for (const auto& names : UVNames)
        if (!layout.hasUVs)
            layout.hasUVs = assignGroup(names, Role::UV);

    for (std::size_t i = 0; i < vertex.properties.size(); ++i) {
        const PlyProperty& property = vertex.properties[i];
        if (layout.roles[i].role != Role::Ignore || property.isList)
            continue;
        const bool isAlpha = property.name == "alpha" || property.name == "diffuse_alpha" ||
                             (!alphaName.empty() && property.name == alphaName);
        if (isAlpha)
            continue;
        layout.roles[i] = {Role::Extra, 0, layout.extraNames.size()};
        layout.extraNames.push_back(property.name);
    }
    return true;
}

/// The element that holds the faces, and which of its properties lists the corners.
struct FaceLayout {
    std::size_t element = 0;
    std::size_t indexProperty = 0;
};

std::optional<FaceLayout> FindFaces(const PlyHeader& header)
{
    for (std::size_t e = 0; e < header.elements.size(); ++e) {
        const PlyElement& element = header.elements[e];
        if (element.name != "face")
            continue;
        for (std::size_t p = 0; p < element.properties.size(); ++p) {
            const PlyProperty& property = element.properties[p];
            if (property.isList && (property.name == "vertex_indices" || property.name == "vertex_index"))
                return FaceLayout{e, p};
        }
    }
    return std::nullopt;
}

// ---------------------------------------------------------------------------------------------
// Destination arrays
// ---------------------------------------------------------------------------------------------

/// Where one vertex property's values go: value i is written to out[i * stride], divided by
/// divisor. Positions have an axis (0..2) and have the shift subtracted, in double.
struct Target {
    float* out = nullptr;
    std::size_t stride = 0;
    float divisor = 1.0f;
    int axis = -1;
    double offset = 0.0;
};

struct VertexArrays {
    std::vector<glm::vec3> positions;
    std::vector<glm::vec3> normals;
    std::vector<tesk::Color3f> colors;
    std::vector<glm::vec2> uvs;
    std::vector<std::vector<float>> extras;
    std::vector<Target> targets; // one per vertex property; out is null for ignored ones
    CoordinateShift shift;
    // Colours all read from uchar properties go to the cloud as bytes, a quarter of the memory.
    bool byteColors = true;
};

static_assert(sizeof(glm::vec3) == 3 * sizeof(float), "glm::vec3 is three packed floats");
static_assert(sizeof(glm::vec2) == 2 * sizeof(float), "glm::vec2 is two packed floats");
static_assert(sizeof(tesk::Color3f) == 3 * sizeof(float), "Color3f is three packed floats");

void AllocateArrays(const PlyElement& vertex, const VertexLayout& layout, std::size_t count,
                    VertexArrays& arrays)
{
    runa::ResizeFresh(arrays.positions, count);
    if (layout.hasNormals)
        runa::ResizeFresh(arrays.normals, count);
    if (layout.hasColors)
        runa::ResizeFresh(arrays.colors, count);
    if (layout.hasUVs)
        runa::ResizeFresh(arrays.uvs, count);
    arrays.extras.resize(layout.extraNames.size());
    for (auto& extra : arrays.extras)
        runa::ResizeFresh(extra, count);

    arrays.targets.assign(vertex.properties.size(), Target{});
    if (count == 0)
        return;
    for (std::size_t i = 0; i < layout.roles.size(); ++i) {
        const PropertyRole& role = layout.roles[i];
        Target& target = arrays.targets[i];
        switch (role.role) {
        case Role::Ignore:
            break;
        case Role::Position:
            target = {&arrays.positions.data()->x + role.component, 3, 1.0f, role.component, 0.0};
            break;
        case Role::Normal:
            target = {&arrays.normals.data()->x + role.component, 3, 1.0f};
            break;
        case Role::Color:
            target = {&arrays.colors.data()->r + role.component, 3, ColorDivisor(vertex.properties[i].type)};
            arrays.byteColors = arrays.byteColors && target.divisor == 255.0f;
            break;
        case Role::UV:
            target = {&arrays.uvs.data()->x + role.component, 2, 1.0f};
            break;
        case Role::Extra:
            target = {arrays.extras[role.extraIndex].data(), 1, 1.0f};
            break;
        }
    }
}

/// Once the shift is decided, the position columns subtract it.
void ApplyShiftToTargets(VertexArrays& arrays)
{
    for (Target& target : arrays.targets)
        if (target.axis >= 0)
            target.offset = arrays.shift.Offset()[target.axis];
}

void StoreInCloud(VertexArrays& arrays, const VertexLayout& layout, tesk::PointCloud& cloud)
{
    cloud.SetPositions(std::move(arrays.positions));
    cloud.SetOriginOffset(arrays.shift.Offset());
    if (layout.hasNormals && !cloud.Empty())
        cloud.SetNormals(std::move(arrays.normals));
    if (layout.hasColors && arrays.byteColors) {
        std::vector<tesk::Color3b> bytes;
        runa::ReserveFresh(bytes, arrays.colors.size());
        for (const tesk::Color3f& color : arrays.colors)
            bytes.push_back(color.ToByte());
        std::vector<tesk::Color3f>().swap(arrays.colors);
        cloud.AddColorProperty("RGB", std::move(bytes));
    } else if (layout.hasColors) {
        cloud.AddColorProperty("RGB", std::move(arrays.colors));
    }
    if (layout.hasUVs)
        cloud.SetUVs(std::move(arrays.uvs));
    for (std::size_t i = 0; i < arrays.extras.size(); ++i)
        cloud.AddFloatProperty(layout.extraNames[i], std::move(arrays.extras[i]));
}

/// Positions of one vertex gathered in double on the slow paths, stored through the shift.
struct PendingPosition {
    double xyz[3] = {0.0, 0.0, 0.0};

    void Store(VertexArrays& arrays, std::size_t item)
    {
        arrays.positions[item] = arrays.shift.Apply(xyz[0], xyz[1], xyz[2]);
    }
};

// ---------------------------------------------------------------------------------------------
// Binary body
// ---------------------------------------------------------------------------------------------

// The inner loop of binary reading: one property of `count` consecutive vertices, with the
// type and byte order fixed at compile time so it compiles to a plain strided copy.
template <typename T, bool Swap>
void ConvertColumn(const unsigned char* source, std::size_t stride, std::size_t count, const Target& target,
                   std::size_t first)
{
    float* out = target.out + first * target.stride;
    if (target.offset == 0.0) {
        for (std::size_t i = 0; i < count; ++i, source += stride, out += target.stride)
            *out = static_cast<float>(Load<T, Swap>(source)) / target.divisor;
    } else {
        for (std::size_t i = 0; i < count; ++i, source += stride, out += target.stride)
            *out = static_cast<float>(static_cast<double>(Load<T, Swap>(source)) - target.offset);
    }
}

template <bool Swap>
void ConvertColumn(Scalar type, const unsigned char* source, std::size_t stride, std::size_t count,
                   const Target& target, std::size_t first)
{
    VisitScalar(type, [&]<class T>() { ConvertColumn<T, Swap>(source, stride, count, target, first); });
}

/// A face corner read as a double (any index type) as a vertex number; negative, fractional
/// and non-finite values become one that is always past the end.
std::uint64_t IndexFromDouble(double value)
{
    if (!(value >= 0.0) || value >= 18446744073709551615.0 || value != std::floor(value))
        return std::numeric_limits<std::uint64_t>::max();
    return static_cast<std::uint64_t>(value);
}

class BinaryBody {
public:
    BinaryBody(std::string_view bytes, std::size_t offset, bool swap)
        : data_(reinterpret_cast<const unsigned char*>(bytes.data())), size_(bytes.size()), offset_(offset),
          swap_(swap)
    {
    }

    std::size_t Remaining() const { return size_ - offset_; }
    std::size_t Offset() const { return offset_; }

    /// Steps over `count` items of an element the viewer does not use.
    bool SkipElement(const PlyElement& element, std::string& message)
    {
        if (!element.HasLists()) {
            const std::size_t size = element.MinimumItemSize();
            if (size == 0)
                return true;
            if (element.count > Remaining() / size) {
                const std::size_t whole = Remaining() / size;
                message = EndsInside(element, whole, offset_ + whole * size);
                return false;
            }
            offset_ += static_cast<std::size_t>(element.count) * size;
            return true;
        }
        // Every item holds at least one list count, so this loop ends with the file.
        for (std::uint64_t item = 0; item < element.count; ++item) {
            const std::size_t start = offset_;
            for (const PlyProperty& property : element.properties)
                if (!SkipProperty(property, element, item, start, message))
                    return false;
        }
        return true;
    }

    /// The first vertex with three finite coordinates decides the shift of the whole file.
    void DecideShift(const PlyElement& vertex, const std::vector<Target>& targets,
                     CoordinateShift& shift) const
    {
        const std::size_t stride = vertex.MinimumItemSize();
        std::array<std::size_t, 3> offsets{};
        std::array<Scalar, 3> types{};
        std::size_t at = 0;
        for (std::size_t p = 0; p < vertex.properties.size(); ++p) {
            if (targets[p].axis >= 0) {
                offsets[static_cast<std::size_t>(targets[p].axis)] = at;
                types[static_cast<std::size_t>(targets[p].axis)] = vertex.properties[p].type;
            }
            at += ScalarSize(vertex.properties[p].type);
        }
        for (std::uint64_t item = 0; item < vertex.count && !shift.IsDecided(); ++item) {
            const unsigned char* row = data_ + offset_ + item * stride;
            std::array<double, 3> xyz{};
            for (std::size_t c = 0; c < 3; ++c)
                xyz[c] = swap_ ? LoadScalar<true>(types[c], row + offsets[c])
                               : LoadScalar<false>(types[c], row + offsets[c]);
            shift.Decide(xyz[0], xyz[1], xyz[2]);
        }
    }

    /// Vertices without list properties have a fixed stride: convert them a block at a time,
    /// one property after another, so the block stays in cache and no type test runs per value.
    void ReadFixedVertices(const PlyElement& vertex, const std::vector<Target>& targets)
    {
        const std::size_t stride = vertex.MinimumItemSize();
        const auto count = static_cast<std::size_t>(vertex.count);
        std::vector<std::size_t> offsets;
        std::size_t at = 0;
        for (const PlyProperty& property : vertex.properties) {
            offsets.push_back(at);
            at += ScalarSize(property.type);
        }
        // Native floats x y z side by side, unshifted, are the bytes of glm::vec3 already: copied
        // a row at a time (the whole array at once for xyz-only files).
        std::optional<std::size_t> packed;
        for (std::size_t p = 0; p + 2 < targets.size(); ++p) {
            const bool xyz = targets[p].axis == 0 && targets[p + 1].axis == 1 && targets[p + 2].axis == 2;
            if (xyz && !swap_ && targets[p].offset == 0.0 && targets[p + 1].offset == 0.0 &&
                targets[p + 2].offset == 0.0 && vertex.properties[p].type == Scalar::Float32 &&
                vertex.properties[p + 1].type == Scalar::Float32 &&
                vertex.properties[p + 2].type == Scalar::Float32)
                packed = p;
        }
        if (packed && count > 0) {
            auto* out = reinterpret_cast<unsigned char*>(targets[*packed].out);
            const unsigned char* in = data_ + offset_ + offsets[*packed];
            if (stride == 12) {
                std::memcpy(out, in, count * 12);
            } else {
                for (std::size_t i = 0; i < count; ++i, in += stride, out += 12)
                    std::memcpy(out, in, 12);
            }
        }

        constexpr std::size_t Block = 2048;
        for (std::size_t first = 0; first < count; first += Block) {
            const std::size_t n = std::min(Block, count - first);
            const unsigned char* rows = data_ + offset_ + first * stride;
            for (std::size_t p = 0; p < targets.size(); ++p) {
                if (targets[p].out == nullptr || (packed && p >= *packed && p < *packed + 3))
                    continue;
                if (swap_)
                    ConvertColumn<true>(vertex.properties[p].type, rows + offsets[p], stride, n, targets[p],
                                        first);
                else
                    ConvertColumn<false>(vertex.properties[p].type, rows + offsets[p], stride, n, targets[p],
                                         first);
            }
        }
        offset_ += count * stride;
    }

    /// Vertices with list properties (rare): walked value by value.
    bool ReadVariableVertices(const PlyElement& vertex, VertexArrays& arrays, std::string& message)
    {
        const std::vector<Target>& targets = arrays.targets;
        for (std::uint64_t item = 0; item < vertex.count; ++item) {
            const std::size_t start = offset_;
            PendingPosition position;
            for (std::size_t p = 0; p < vertex.properties.size(); ++p) {
                const PlyProperty& property = vertex.properties[p];
                if (property.isList) {
                    if (!SkipProperty(property, vertex, item, start, message))
                        return false;
                    continue;
                }
                const std::size_t size = ScalarSize(property.type);
                if (Remaining() < size) {
                    message = EndsInside(vertex, item, start);
                    return false;
                }
                const Target& target = targets[p];
                if (target.out != nullptr) {
                    const double value = swap_ ? LoadScalar<true>(property.type, data_ + offset_)
                                               : LoadScalar<false>(property.type, data_ + offset_);
                    if (target.axis >= 0)
                        position.xyz[target.axis] = value;
                    else
                        target.out[item * target.stride] = static_cast<float>(value) / target.divisor;
                }
                offset_ += size;
            }
            position.Store(arrays, static_cast<std::size_t>(item));
        }
        return true;
    }

    /// Reads the faces, fanning polygons into triangles.
    bool ReadFaces(const PlyElement& element, std::size_t indexProperty, PolygonFan& fan,
                   std::string& message)
    {
        const PlyProperty& list = element.properties[indexProperty];
        if (element.properties.size() == 1 && IsInteger(list.type) && ScalarSize(list.type) == 4) {
            // The usual layout ("list uchar int vertex_indices" and kin) has its own loop.
            const bool isSigned = list.type == Scalar::Int32;
            return swap_ ? ReadPlainFaces<true>(element, list.countType, isSigned, fan, message)
                         : ReadPlainFaces<false>(element, list.countType, isSigned, fan, message);
        }
        for (std::uint64_t item = 0; item < element.count; ++item) {
            const std::size_t start = offset_;
            for (std::size_t p = 0; p < element.properties.size(); ++p) {
                const PlyProperty& property = element.properties[p];
                if (p != indexProperty) {
                    if (!SkipProperty(property, element, item, start, message))
                        return false;
                    continue;
                }
                std::size_t length = 0;
                if (!ReadListLength(property, element, item, start, length, message))
                    return false;
                const std::size_t itemSize = ScalarSize(property.type);
                fan.Begin();
                for (std::size_t i = 0; i < length; ++i, offset_ += itemSize) {
                    const double value = swap_ ? LoadScalar<true>(property.type, data_ + offset_)
                                               : LoadScalar<false>(property.type, data_ + offset_);
                    fan.Add(IndexFromDouble(value));
                }
                fan.End(item + 1);
            }
        }
        return true;
    }

    std::string EndsInside(const PlyElement& element, std::uint64_t item, std::size_t itemStart) const
    {
        return "byte " + std::to_string(itemStart) + ": file ends inside " + element.name + " " +
               std::to_string(item + 1) + " of " + std::to_string(element.count);
    }

private:
    template <bool Swap>
    bool ReadPlainFaces(const PlyElement& element, Scalar countType, bool isSigned, PolygonFan& fan,
                        std::string& message)
    {
        const PlyProperty& list = element.properties.front();
        const auto corner = [&](const unsigned char* at) -> std::uint64_t {
            // A negative index wraps to a huge one, which the fan refuses like any other.
            return isSigned
                       ? static_cast<std::uint64_t>(static_cast<std::int64_t>(Load<std::int32_t, Swap>(at)))
                       : Load<std::uint32_t, Swap>(at);
        };
        for (std::uint64_t item = 0; item < element.count; ++item) {
            const std::size_t start = offset_;
            std::size_t length = 0;
            if (countType == Scalar::UInt8 && Remaining() >= 13 && data_[offset_] == 3) {
                const unsigned char* at = data_ + offset_ + 1;
                fan.Triangle(corner(at), corner(at + 4), corner(at + 8), item + 1);
                offset_ += 13;
                continue;
            }
            if (!ReadListLength(list, element, item, start, length, message))
                return false;
            fan.Begin();
            for (std::size_t i = 0; i < length; ++i, offset_ += 4)
                fan.Add(corner(data_ + offset_));
            fan.End(item + 1);
        }
        return true;
    }

    /// Reads a list's length and checks that its items fit in the file; leaves the offset on
    /// the first item.
    bool ReadListLength(const PlyProperty& property, const PlyElement& element, std::uint64_t item,
                        std::size_t itemStart, std::size_t& length, std::string& message)
    {
        const std::size_t countSize = ScalarSize(property.countType);
        if (Remaining() < countSize) {
            message = EndsInside(element, item, itemStart);
            return false;
        }
        const double value = swap_ ? LoadScalar<true>(property.countType, data_ + offset_)
                                   : LoadScalar<false>(property.countType, data_ + offset_);
        if (value < 0.0) {
            message = "byte " + std::to_string(offset_) + ": negative list length " +
                      std::to_string(static_cast<long long>(value)) + " in " + element.name + " " +
                      std::to_string(item + 1);
            return false;
        }
        offset_ += countSize;
        length = static_cast<std::size_t>(value);
        if (length > Remaining() / ScalarSize(property.type)) {
            message = EndsInside(element, item, itemStart);
            return false;
        }
        return true;
    }

    bool SkipProperty(const PlyProperty& property, const PlyElement& element, std::uint64_t item,
                      std::size_t itemStart, std::string& message)
    {
        if (!property.isList) {
            const std::size_t size = ScalarSize(property.type);
            if (Remaining() < size) {
                message = EndsInside(element, item, itemStart);
                return false;
            }
            offset_ += size;
            return true;
        }
        std::size_t length = 0;
        if (!ReadListLength(property, element, item, itemStart, length, message))
            return false;
        offset_ += length * ScalarSize(property.type);
        return true;
    }

    const unsigned char* data_;
    std::size_t size_;
    std::size_t offset_;
    bool swap_;
};

/// What the body readers fill.
struct BodyOutput {
    VertexArrays arrays;
    std::vector<glm::uvec3> faces;
    std::string droppedMessage; // empty when every face was kept
};

/// What the body readers need to know.
struct BodyPlan {
    std::size_t vertexIndex = 0;
    std::optional<FaceLayout> faces; // empty when faces are not wanted or there are none
    const VertexLayout* layout = nullptr;
};

bool ReadBinary(std::string_view bytes, const PlyHeader& header, const BodyPlan& plan, BodyOutput& output,
                std::string& message)
{
    const bool fileIsLittle = header.encoding == Encoding::BinaryLittleEndian;
    const bool swap = fileIsLittle != (std::endian::native == std::endian::little);
    BinaryBody body(bytes, header.bodyOffset, swap);
    const PlyElement& vertex = header.elements[plan.vertexIndex];
    PolygonFan fan(output.faces, vertex.count);
    const std::size_t last = std::max(plan.vertexIndex, plan.faces ? plan.faces->element : 0);

    for (std::size_t e = 0; e <= last; ++e) {
        const PlyElement& element = header.elements[e];
        if (plan.faces && e == plan.faces->element) {
            // Check the claimed count against what is left before reserving anything for it.
            const std::size_t minimum = element.MinimumItemSize();
            if (element.count > body.Remaining() / minimum) {
                message = "byte " + std::to_string(body.Offset()) + ": file is too short for " +
                          std::to_string(element.count) + " faces";
                return false;
            }
            // Reserved for triangles at most, so zero-length lists cannot claim more than the file.
            const PlyProperty& list = element.properties[plan.faces->indexProperty];
            const std::size_t triangle = minimum + 3 * ScalarSize(list.type);
            output.faces.reserve(
                std::min(static_cast<std::size_t>(element.count), body.Remaining() / triangle));
            if (!body.ReadFaces(element, plan.faces->indexProperty, fan, message))
                return false;
            continue;
        }
        if (e != plan.vertexIndex) {
            if (!body.SkipElement(element, message))
                return false;
            continue;
        }
        const std::size_t minimum = vertex.MinimumItemSize();
        if (vertex.count > body.Remaining() / minimum) {
            const std::size_t whole = body.Remaining() / minimum;
            message = vertex.HasLists()
                          ? "byte " + std::to_string(body.Offset()) + ": file is too short for " +
                                std::to_string(vertex.count) + " vertices"
                          : body.EndsInside(vertex, whole, body.Offset() + whole * minimum);
            return false;
        }
        VertexArrays& arrays = output.arrays;
        AllocateArrays(vertex, *plan.layout, static_cast<std::size_t>(vertex.count), arrays);
        if (vertex.HasLists()) {
            if (!body.ReadVariableVertices(vertex, arrays, message))
                return false;
            continue;
        }
        if (vertex.count > 0) {
            body.DecideShift(vertex, arrays.targets, arrays.shift);
            ApplyShiftToTargets(arrays);
        }
        body.ReadFixedVertices(vertex, arrays.targets);
    }
    output.droppedMessage = fan.DroppedMessage();
    return true;
}

// ---------------------------------------------------------------------------------------------
// Ascii body
// ---------------------------------------------------------------------------------------------

class AsciiBody {
public:
    AsciiBody(std::string_view bytes, const PlyHeader& header)
        : bytes_(bytes), cursor_(bytes, header.bodyOffset, header.endLine)
    {
    }

    bool NextLine()
    {
        std::string_view line;
        while (cursor_.Next(line)) {
            SplitTokens(line, tokens_, [](char c) { return IsBlank(c); });
            if (!tokens_.empty())
                return true;
        }
        return false;
    }

    bool SkipElement(const PlyElement& element, std::string& message)
    {
        for (std::uint64_t item = 0; item < element.count; ++item)
            if (!NextLine()) {
                message = RunsOut(element, item, element.name + " lines");
                return false;
            }
        return true;
    }

    std::string RunsOut(const PlyElement& element, std::uint64_t item, const std::string& what) const
    {
        return At(cursor_.LineNumber()) + "file ends after " + std::to_string(item) + " of " +
               std::to_string(element.count) + " " + what;
    }

    /// How many items of `propertyCount` values the rest of the file can hold at most: each
    /// takes at least one character and one separator per value. Arrays are sized to that
    /// bound at most, so an absurd count in the header fails when the lines run out instead
    /// of allocating for it first.
    std::size_t Fits(std::uint64_t count, std::size_t propertyCount) const
    {
        const std::size_t remaining = bytes_.size() - std::min(bytes_.size(), cursor_.Position());
        const std::size_t fits = (remaining + 1) / (2 * std::max<std::size_t>(propertyCount, 1));
        return count < fits ? static_cast<std::size_t>(count) : fits;
    }

    bool ReadVertices(const PlyElement& vertex, const VertexLayout& layout, VertexArrays& arrays,
                      std::string& message)
    {
        const std::uint64_t count = vertex.count;
        const std::size_t allocated = Fits(count, vertex.properties.size());
        AllocateArrays(vertex, layout, allocated, arrays);
        const std::vector<Target>& targets = arrays.targets;
        const bool hasLists = vertex.HasLists();
        const std::size_t expected = vertex.properties.size();

        for (std::uint64_t item = 0; item < count; ++item) {
            if (!NextLine()) {
                message = RunsOut(vertex, item, "vertices");
                return false;
            }
            const std::size_t number = cursor_.LineNumber();
            if (!hasLists && tokens_.size() != expected) {
                message = At(number) + "expected " + std::to_string(expected) + " values, found " +
                          std::to_string(tokens_.size());
                return false;
            }
            PendingPosition position;
            std::size_t t = 0;
            for (std::size_t p = 0; p < expected; ++p) {
                const PlyProperty& property = vertex.properties[p];
                if (t >= tokens_.size()) {
                    message = At(number) + "the vertex line ends early, at property " + Quoted(property.name);
                    return false;
                }
                if (property.isList) {
                    unsigned long long length = 0;
                    if (!ParseListLength(property, t, number, length, message))
                        return false;
                    t += 1 + static_cast<std::size_t>(length);
                    continue;
                }
                const Target& target = targets[p];
                if (target.axis >= 0) {
                    if (!ParseDouble(tokens_[t], position.xyz[target.axis])) {
                        message = At(number) + Quoted(tokens_[t]) + " is not a number";
                        return false;
                    }
                    ++t;
                    continue;
                }
                float value = 0.0f;
                if (!ParseFloat(tokens_[t], value)) {
                    message = At(number) + Quoted(tokens_[t]) + " is not a number";
                    return false;
                }
                ++t;
                // Past `allocated` only a line that is about to fail can arrive: nothing to store.
                if (target.out != nullptr && item < allocated)
                    target.out[item * target.stride] = value / target.divisor;
            }
            if (t != tokens_.size()) {
                message = At(number) + "unexpected values after the last property";
                return false;
            }
            if (item < allocated)
                position.Store(arrays, static_cast<std::size_t>(item));
        }
        return true;
    }

    bool ReadFaces(const PlyElement& element, std::size_t indexProperty, PolygonFan& fan,
                   std::vector<glm::uvec3>& faces, std::string& message)
    {
        faces.reserve(Fits(element.count, 4));
        const bool floatIndices = !IsInteger(element.properties[indexProperty].type);
        for (std::uint64_t item = 0; item < element.count; ++item) {
            if (!NextLine()) {
                message = RunsOut(element, item, "faces");
                return false;
            }
            const std::size_t number = cursor_.LineNumber();
            std::size_t t = 0;
            for (std::size_t p = 0; p < element.properties.size(); ++p) {
                const PlyProperty& property = element.properties[p];
                if (t >= tokens_.size()) {
                    message = At(number) + "the face line ends early, at property " + Quoted(property.name);
                    return false;
                }
                if (!property.isList) {
                    ++t;
                    continue;
                }
                unsigned long long length = 0;
                if (!ParseListLength(property, t, number, length, message))
                    return false;
                ++t;
                if (p != indexProperty) {
                    t += static_cast<std::size_t>(length);
                    continue;
                }
                fan.Begin();
                for (unsigned long long i = 0; i < length; ++i, ++t) {
                    std::uint64_t index = 0;
                    if (!ParseCorner(tokens_[t], floatIndices, index)) {
                        message = At(number) + Quoted(tokens_[t]) + " is not a vertex index";
                        return false;
                    }
                    fan.Add(index);
                }
                fan.End(item + 1);
            }
            if (t != tokens_.size()) {
                message = At(number) + "unexpected values after the last property";
                return false;
            }
        }
        return true;
    }

private:
    bool ParseListLength(const PlyProperty& property, std::size_t t, std::size_t number,
                         unsigned long long& length, std::string& message) const
    {
        if (!ParseCount(tokens_[t], length)) {
            message = At(number) + "bad list length " + Quoted(tokens_[t]);
            return false;
        }
        if (length >= tokens_.size() - t) {
            message = At(number) + "the line ends early, inside list " + Quoted(property.name);
            return false;
        }
        return true;
    }

    static bool ParseCorner(std::string_view token, bool floatIndices, std::uint64_t& index)
    {
        if (!floatIndices) {
            long long value = 0;
            if (!ParseInteger(token, value))
                return false;
            index = static_cast<std::uint64_t>(value); // negative wraps past every vertex
            return true;
        }
        double value = 0.0;
        if (!ParseDouble(token, value))
            return false;
        index = IndexFromDouble(value);
        return true;
    }

    std::string_view bytes_;
    LineCursor cursor_;
    std::vector<std::string_view> tokens_;
};

bool ReadAscii(std::string_view bytes, const PlyHeader& header, const BodyPlan& plan, BodyOutput& output,
               std::string& message)
{
    AsciiBody body(bytes, header);
    const PlyElement& vertex = header.elements[plan.vertexIndex];
    PolygonFan fan(output.faces, vertex.count);
    const std::size_t last = std::max(plan.vertexIndex, plan.faces ? plan.faces->element : 0);
    for (std::size_t e = 0; e <= last; ++e) {
        const PlyElement& element = header.elements[e];
        bool ok = true;
        if (e == plan.vertexIndex)
            ok = body.ReadVertices(vertex, *plan.layout, output.arrays, message);
        else if (plan.faces && e == plan.faces->element)
            ok = body.ReadFaces(element, plan.faces->indexProperty, fan, output.faces, message);
        else
            ok = body.SkipElement(element, message);
        if (!ok)
            return false;
    }
    output.droppedMessage = fan.DroppedMessage();
    return true;
}

bool Parse(std::string_view bytes, bool wantFaces, tesk::Mesh& mesh, std::string& message,
           std::string& warning)
{
    PlyHeader header;
    if (!ParseHeader(bytes, header, message))
        return false;

    BodyPlan plan;
    plan.vertexIndex = header.elements.size();
    for (std::size_t e = 0; e < header.elements.size(); ++e) {
        if (header.elements[e].name == "vertex") {
            plan.vertexIndex = e;
            break;
        }
    }
    if (plan.vertexIndex == header.elements.size()) {
        message = At(header.endLine) + "the header declares no 'vertex' element";
        return false;
    }
    if (wantFaces)
        plan.faces = FindFaces(header);

    VertexLayout layout;
    if (!MapVertexProperties(header.elements[plan.vertexIndex], layout, message))
        return false;
    plan.layout = &layout;

    BodyOutput output;
    const bool read = header.encoding == Encoding::Ascii ? ReadAscii(bytes, header, plan, output, message)
                                                         : ReadBinary(bytes, header, plan, output, message);
    if (!read)
        return false;

    tesk::Mesh result;
    StoreInCloud(output.arrays, layout, result.GetVertices());
    result.SetFaces(std::move(output.faces));
    warning = std::move(output.droppedMessage);
    mesh = std::move(result);
    return true;
}

bool ParseAndReport(std::string_view bytes, const std::string& name, bool wantFaces, tesk::Mesh& mesh,
                    std::string& error)
{
    std::string warning;
    const bool ok = RunReader(name, Label, error, [&](std::string& message) {
        return Parse(bytes, wantFaces, mesh, message, warning);
    });
    if (ok && !warning.empty())
        rlog::Warn(name + ": " + warning, Label);
    return ok;
}

} // namespace

bool ReadPlyFromMemory(std::string_view bytes, const std::string& name, tesk::Mesh& mesh, std::string& error)
{
    return ParseAndReport(bytes, name, true, mesh, error);
}

bool ReadPlyFromMemory(std::string_view bytes, const std::string& name, tesk::PointCloud& cloud,
                       std::string& error)
{
    tesk::Mesh mesh;
    if (!ParseAndReport(bytes, name, false, mesh, error))
        return false;
    cloud = std::move(mesh.GetVertices());
    return true;
}

bool ReadPly(const std::string& path, tesk::Mesh& mesh, std::string& error)
{
    FileBytes file;
    if (!file.Load(path, error)) {
        rlog::Fail(error, Label);
        return false;
    }
    return ReadPlyFromMemory(file.View(), DisplayName(path), mesh, error);
}

bool ReadPly(const std::string& path, tesk::PointCloud& cloud, std::string& error)
{
    FileBytes file;
    if (!file.Load(path, error)) {
        rlog::Fail(error, Label);
        return false;
    }
    return ReadPlyFromMemory(file.View(), DisplayName(path), cloud, error);
}

} // namespace vexa::viewer
