#include "PcdReader.h"

#include "BinaryScalar.h"
#include "CoordinateShift.h"
#include "FileBytes.h"
#include "Lzf.h"
#include "MeshReading.h"
#include "TextScan.h"

#include <runa/HugePages.h>
#include <runa/rlog.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <stdexcept>
#include <vector>

namespace vexa::viewer {

namespace {

constexpr const char* Label = "vexa::viewer::ReadPcd";

// Binary PCD bodies are memory images of the writer's points; every writer in use is little
// endian, and so are the machines the viewer runs on.
static_assert(std::endian::native == std::endian::little,
              "binary PCD data is read in place as little endian");
static_assert(sizeof(glm::vec3) == 3 * sizeof(float), "glm::vec3 is three packed floats");
static_assert(sizeof(tesk::Color3f) == 3 * sizeof(float), "Color3f is three packed floats");

std::string At(std::size_t line)
{
    return "line " + std::to_string(line) + ": ";
}

std::string AtByte(std::size_t offset)
{
    return "byte " + std::to_string(offset) + ": ";
}

std::string Quoted(std::string_view text)
{
    return "'" + Printable(text) + "'";
}

// ---------------------------------------------------------------------------------------------
// Header
// ---------------------------------------------------------------------------------------------

std::optional<Scalar> ScalarOf(char type, std::size_t size)
{
    const int log = size == 1 ? 0 : size == 2 ? 1 : size == 4 ? 2 : size == 8 ? 3 : -1;
    if (log < 0)
        return std::nullopt;
    switch (type) {
    case 'I':
        return static_cast<Scalar>(static_cast<int>(Scalar::Int8) + log);
    case 'U':
        return static_cast<Scalar>(static_cast<int>(Scalar::UInt8) + log);
    case 'F':
        if (size == 4)
            return Scalar::Float32;
        if (size == 8)
            return Scalar::Float64;
        return std::nullopt;
    default:
        return std::nullopt;
    }
}

struct PcdField {
    std::string name;
    std::size_t size = 4;
    char type = 'F';
    Scalar scalar = Scalar::Float32;
    std::uint64_t count = 1;
    std::size_t offset = 0;     // bytes before this field in a point record
    std::size_t firstValue = 0; // values before this field on an ascii line

    std::size_t Bytes() const { return size * static_cast<std::size_t>(count); }
};

enum class DataForm : std::uint8_t { Ascii, Binary, Compressed };

struct PcdHeader {
    std::vector<PcdField> fields;
    std::uint64_t points = 0;
    DataForm form = DataForm::Ascii;
    std::size_t recordSize = 0; // bytes of one point in binary form
    std::size_t lineValues = 0; // values of one point in ascii form
    std::size_t bodyOffset = 0; // first byte after the DATA line
    std::size_t dataLine = 0;   // number of the DATA line
    std::size_t fieldsLine = 0;
};

/// A header line's values as written, with the line they came from (0: absent).
struct Entry {
    std::vector<std::string_view> values;
    std::size_t line = 0;
};

bool ParseHeaderCount(const Entry& entry, std::string_view keyword, std::uint64_t& value,
                      std::string& message)
{
    unsigned long long parsed = 0;
    if (entry.values.size() != 1 || !ParseCount(entry.values[0], parsed)) {
        message = At(entry.line) + "expected '" + std::string(keyword) + " <count>'";
        return false;
    }
    value = parsed;
    return true;
}

/// Checks that SIZE, TYPE or COUNT lists one value per field.
bool MatchesFields(const Entry& entry, std::string_view keyword, std::size_t fieldCount, std::string& message)
{
    if (entry.values.size() == fieldCount)
        return true;
    message = At(entry.line) + std::string(keyword) + " lists " + std::to_string(entry.values.size()) +
              " values but FIELDS names " + std::to_string(fieldCount);
    return false;
}

bool BuildFields(const Entry& names, const Entry& sizes, const Entry& types, const Entry& counts,
                 PcdHeader& header, std::string& message)
{
    const std::size_t n = names.values.size();
    if (!MatchesFields(sizes, "SIZE", n, message) || !MatchesFields(types, "TYPE", n, message))
        return false;
    if (counts.line != 0 && !MatchesFields(counts, "COUNT", n, message))
        return false;

    // A point larger than this is no point cloud; the bound also keeps every sum below from
    // overflowing.
    constexpr std::uint64_t MaxRecord = std::uint64_t(1) << 30;
    std::uint64_t offset = 0;
    std::uint64_t values = 0;
    for (std::size_t i = 0; i < n; ++i) {
        PcdField field;
        field.name = std::string(names.values[i]);
        unsigned long long size = 0;
        if (!ParseCount(sizes.values[i], size) || size > 8) {
            message =
                At(sizes.line) + "bad SIZE " + Quoted(sizes.values[i]) + " for field " + Quoted(field.name);
            return false;
        }
        const std::string_view type = types.values[i];
        const std::optional<Scalar> scalar = type.size() == 1 ? ScalarOf(type[0], size) : std::nullopt;
        if (!scalar) {
            message = At(types.line) + "field " + Quoted(field.name) + " has TYPE " + Quoted(type) +
                      " and SIZE " + std::to_string(size) + "; expected F (4 or 8), I or U (1, 2, 4 or 8)";
            return false;
        }
        unsigned long long count = 1;
        if (counts.line != 0 && (!ParseCount(counts.values[i], count) || count == 0 || count > MaxRecord)) {
            message = At(counts.line) + "bad COUNT " + Quoted(counts.values[i]) + " for field " +
                      Quoted(field.name);
            return false;
        }
        field.size = static_cast<std::size_t>(size);
        field.type = type[0];
        field.scalar = *scalar;
        field.count = count;
        field.offset = static_cast<std::size_t>(offset);
        field.firstValue = static_cast<std::size_t>(values);
        offset += size * count;
        values += count;
        if (offset > MaxRecord) {
            message = At(counts.line != 0 ? counts.line : sizes.line) + "a point of more than " +
                      std::to_string(MaxRecord) + " bytes";
            return false;
        }
        header.fields.push_back(std::move(field));
    }
    header.recordSize = static_cast<std::size_t>(offset);
    header.lineValues = static_cast<std::size_t>(values);
    return true;
}

bool ParseHeader(std::string_view bytes, PcdHeader& header, std::string& message)
{
    LineCursor cursor(bytes);
    std::string_view line;
    std::vector<std::string_view> tokens;
    const auto blank = [](char c) { return IsBlank(c); };
    Entry names, sizes, types, counts, width, height, points, viewpoint;

    while (cursor.Next(line)) {
        const std::size_t number = cursor.LineNumber();
        // Writers put comments on lines of their own and after values ("FIELDS x y z # XYZ").
        const std::size_t hash = line.find('#');
        if (hash != std::string_view::npos)
            line = line.substr(0, hash);
        SplitTokens(line, tokens, blank);
        if (tokens.empty())
            continue;
        const std::string_view keyword = tokens[0];
        Entry entry{{tokens.begin() + 1, tokens.end()}, number};

        if (keyword == "VERSION") {
            if (entry.values.size() != 1) {
                message = At(number) + "expected 'VERSION <number>'";
                return false;
            }
        } else if (keyword == "FIELDS" || keyword == "COLUMNS") { // COLUMNS: the name before 0.6
            if (entry.values.empty()) {
                message = At(number) + "FIELDS names no field";
                return false;
            }
            names = std::move(entry);
        } else if (keyword == "SIZE") {
            sizes = std::move(entry);
        } else if (keyword == "TYPE") {
            types = std::move(entry);
        } else if (keyword == "COUNT") {
            counts = std::move(entry);
        } else if (keyword == "WIDTH") {
            width = std::move(entry);
        } else if (keyword == "HEIGHT") {
            height = std::move(entry);
        } else if (keyword == "POINTS") {
            points = std::move(entry);
        } else if (keyword == "VIEWPOINT") {
            // The sensor pose: checked, not applied; points are shown in the frame they were
            // stored in, as the programs that write them show them.
            double ignored = 0.0;
            if (entry.values.size() != 7 ||
                !std::all_of(entry.values.begin(), entry.values.end(),
                             [&](std::string_view v) { return ParseDouble(v, ignored); })) {
                message = At(number) + "expected 'VIEWPOINT tx ty tz qw qx qy qz'";
                return false;
            }
        } else if (keyword == "DATA") {
            if (entry.values.size() != 1) {
                message = At(number) + "expected 'DATA ascii', 'DATA binary' or 'DATA binary_compressed'";
                return false;
            }
            if (entry.values[0] == "ascii")
                header.form = DataForm::Ascii;
            else if (entry.values[0] == "binary")
                header.form = DataForm::Binary;
            else if (entry.values[0] == "binary_compressed")
                header.form = DataForm::Compressed;
            else {
                message = At(number) + "unknown DATA form " + Quoted(entry.values[0]) +
                          "; expected ascii, binary or binary_compressed";
                return false;
            }
            header.dataLine = number;
            header.bodyOffset = cursor.Position();
            break;
        } else {
            message = At(number) + "unknown header keyword " + Quoted(keyword);
            return false;
        }
    }
    if (header.dataLine == 0) {
        message =
            At(std::max<std::size_t>(cursor.LineNumber(), 1)) + "file ends inside the header (no DATA line)";
        return false;
    }

    const std::size_t dataLine = header.dataLine;
    const auto missing = [&](std::string_view keyword) {
        message = At(dataLine) + "the header has no " + std::string(keyword) + " line";
        return false;
    };
    if (names.line == 0)
        return missing("FIELDS");
    if (sizes.line == 0)
        return missing("SIZE");
    if (types.line == 0)
        return missing("TYPE");
    header.fieldsLine = names.line;
    if (!BuildFields(names, sizes, types, counts, header, message))
        return false;

    std::uint64_t w = 0;
    std::uint64_t h = 1;
    std::uint64_t total = 0;
    if (points.line != 0 && !ParseHeaderCount(points, "POINTS", total, message))
        return false;
    if (height.line != 0 && !ParseHeaderCount(height, "HEIGHT", h, message))
        return false;
    if (width.line != 0) {
        if (!ParseHeaderCount(width, "WIDTH", w, message))
            return false;
    } else if (points.line != 0 && h == 1) {
        w = total; // some early writers gave only the number of points
    } else {
        return missing("WIDTH");
    }
    if (h != 0 && w > std::numeric_limits<std::uint64_t>::max() / h) {
        message = At(height.line) + "WIDTH x HEIGHT is too large";
        return false;
    }
    header.points = w * h;
    if (points.line != 0 && total != header.points) {
        message = At(points.line) + "POINTS " + std::to_string(total) + " does not match WIDTH " +
                  std::to_string(w) + " x HEIGHT " + std::to_string(h);
        return false;
    }
    return true;
}

// ---------------------------------------------------------------------------------------------
// What each field becomes
// ---------------------------------------------------------------------------------------------

enum class Role : std::uint8_t { Ignore, Position, Normal, PackedColor, Color, Extra };

struct FieldRole {
    Role role = Role::Ignore;
    std::uint8_t component = 0;
    std::size_t extraIndex = 0;
    float divisor = 1.0f;
};

struct Layout {
    std::vector<FieldRole> roles; // one per field
    std::array<std::size_t, 3> position = {};
    bool hasNormals = false;
    bool hasColors = false;
    std::vector<std::string> extraNames;
};

bool MapFields(const PcdHeader& header, Layout& layout, std::string& message)
{
    const std::vector<PcdField>& fields = header.fields;
    layout.roles.assign(fields.size(), FieldRole{});
    // Only single values have a role: a histogram (COUNT > 1) is no per-point number to show,
    // and "_" is the writers' name for padding.
    const auto find = [&](std::string_view name) -> std::optional<std::size_t> {
        for (std::size_t i = 0; i < fields.size(); ++i)
            if (fields[i].name == name && fields[i].count == 1 && layout.roles[i].role == Role::Ignore)
                return i;
        return std::nullopt;
    };
    const auto claim = [&](const std::array<std::string_view, 3>& names, Role role,
                           std::array<std::size_t, 3>* found) {
        std::array<std::size_t, 3> index{};
        for (std::size_t c = 0; c < 3; ++c) {
            const std::optional<std::size_t> i = find(names[c]);
            if (!i)
                return false;
            index[c] = *i;
        }
        for (std::uint8_t c = 0; c < 3; ++c)
            layout.roles[index[c]] = {role, c, 0,
                                      role == Role::Color ? ColorDivisor(fields[index[c]].scalar) : 1.0f};
        if (found != nullptr)
            *found = index;
        return true;
    };

    if (!claim({"x", "y", "z"}, Role::Position, &layout.position)) {
        message = At(header.fieldsLine) + "FIELDS has no single-valued x, y and z";
        return false;
    }
    layout.hasNormals = claim({"normal_x", "normal_y", "normal_z"}, Role::Normal, nullptr);
    for (std::string_view packed : {"rgb", "rgba"}) {
        const std::optional<std::size_t> i = find(packed);
        if (i && fields[*i].size == 4) {
            layout.roles[*i] = {Role::PackedColor, 0, 0, 1.0f};
            layout.hasColors = true;
            break;
        }
    }
    if (!layout.hasColors)
        layout.hasColors = claim({"r", "g", "b"}, Role::Color, nullptr) ||
                           claim({"red", "green", "blue"}, Role::Color, nullptr);

    for (std::size_t i = 0; i < fields.size(); ++i) {
        const PcdField& field = fields[i];
        if (layout.roles[i].role != Role::Ignore || field.count != 1 || field.name == "_" ||
            field.name == "rgb" || field.name == "rgba")
            continue;
        if (std::find(layout.extraNames.begin(), layout.extraNames.end(), field.name) !=
            layout.extraNames.end())
            continue;
        layout.roles[i] = {Role::Extra, 0, layout.extraNames.size(), 1.0f};
        layout.extraNames.push_back(field.name);
    }
    return true;
}

// ---------------------------------------------------------------------------------------------
// Destination arrays
// ---------------------------------------------------------------------------------------------

struct CloudArrays {
    std::vector<glm::vec3> positions;
    std::vector<glm::vec3> normals;
    std::vector<tesk::Color3f> colors;
    std::vector<std::vector<float>> extras;

    void Allocate(const Layout& layout, std::size_t count)
    {
        runa::ResizeFresh(positions, count);
        if (layout.hasNormals)
            runa::ResizeFresh(normals, count);
        if (layout.hasColors)
            runa::ResizeFresh(colors, count);
        extras.resize(layout.extraNames.size());
        for (auto& extra : extras)
            runa::ResizeFresh(extra, count);
    }

    /// Where value `component` of the field's point `index` goes; null for a role without one.
    float* Slot(const FieldRole& role, std::size_t index)
    {
        switch (role.role) {
        case Role::Position:
            return &positions[index].x + role.component;
        case Role::Normal:
            return &normals[index].x + role.component;
        case Role::Color:
            return &colors[index].r + role.component;
        case Role::Extra:
            return extras[role.extraIndex].data() + index;
        default:
            return nullptr;
        }
    }

    void Store(const Layout& layout, const CoordinateShift& shift, tesk::PointCloud& cloud)
    {
        tesk::PointCloud result;
        result.SetPositions(std::move(positions));
        if (!result.Empty()) {
            if (layout.hasNormals)
                result.SetNormals(std::move(normals));
            if (layout.hasColors)
                result.AddColorProperty("RGB", std::move(colors));
            for (std::size_t i = 0; i < extras.size(); ++i)
                result.AddFloatProperty(layout.extraNames[i], std::move(extras[i]));
        }
        result.SetOriginOffset(shift.Offset());
        cloud = std::move(result);
    }
};

/// Byte b as b / 255.0f: divided rather than multiplied by 1/255, so that 51 becomes exactly
/// 0.2f, and looked up because three divisions per point would dominate the binary path.
const std::array<float, 256>& UnitBytes()
{
    static const std::array<float, 256> table = [] {
        std::array<float, 256> values{};
        for (std::size_t b = 0; b < values.size(); ++b)
            values[b] = static_cast<float>(b) / 255.0f;
        return values;
    }();
    return table;
}

tesk::Color3f Unpack(std::uint32_t packed, const std::array<float, 256>& unit = UnitBytes())
{
    return {unit[(packed >> 16) & 0xFFu], unit[(packed >> 8) & 0xFFu], unit[packed & 0xFFu]};
}

// ---------------------------------------------------------------------------------------------
// Binary bodies (binary and binary_compressed)
// ---------------------------------------------------------------------------------------------

/// The inner loop: one field of `count` consecutive points, its type fixed at compile time so
/// that it compiles to a plain strided copy.
template <typename T>
void ConvertColumn(const unsigned char* source, std::size_t stride, std::size_t count, float* out,
                   std::size_t outStride, float divisor)
{
    for (std::size_t i = 0; i < count; ++i, source += stride, out += outStride)
        *out = static_cast<float>(Load<T>(source)) / divisor;
}

void ConvertColumn(Scalar scalar, const unsigned char* source, std::size_t stride, std::size_t count,
                   float* out, std::size_t outStride, float divisor)
{
    VisitScalar(scalar, [&]<class T>() { ConvertColumn<T>(source, stride, count, out, outStride, divisor); });
}

/// Where each field's values start and how far apart they are: within records for binary
/// data, in one column per field for unpacked binary_compressed data.
struct Column {
    const unsigned char* first = nullptr;
    std::size_t stride = 0;
};

/// Coordinate `c` of point `index` of `columns`, exactly as stored.
double Coordinate(const PcdHeader& header, const Layout& layout, const std::vector<Column>& columns,
                  std::size_t c, std::size_t index)
{
    const std::size_t f = layout.position[c];
    return LoadScalar(header.fields[f].scalar, columns[f].first + index * columns[f].stride);
}

/// Lets the first point with three finite coordinates among `count` decide the shift.
void DecideShift(const PcdHeader& header, const Layout& layout, const std::vector<Column>& columns,
                 std::size_t count, CoordinateShift& shift)
{
    for (std::size_t i = 0; i < count && !shift.IsDecided(); ++i)
        shift.Decide(Coordinate(header, layout, columns, 0, i), Coordinate(header, layout, columns, 1, i),
                     Coordinate(header, layout, columns, 2, i));
}

/// Converts `count` points of `columns` into the arrays from point `target` on; the shift is
/// decided already.
void ConvertPoints(const PcdHeader& header, const Layout& layout, const std::vector<Column>& columns,
                   std::size_t count, std::size_t target, CoordinateShift& shift, CloudArrays& arrays)
{
    const std::vector<PcdField>& fields = header.fields;
    const bool shifting = shift.IsShifting();
    // The common record starts "x y z" in floats: one 12-byte copy per point instead of three
    // passes over the block.
    const auto& axes = layout.position;
    const bool packedXyz =
        !shifting && fields[axes[0]].scalar == Scalar::Float32 && fields[axes[1]].scalar == Scalar::Float32 &&
        fields[axes[2]].scalar == Scalar::Float32 && columns[axes[0]].stride == columns[axes[1]].stride &&
        columns[axes[0]].stride == columns[axes[2]].stride &&
        columns[axes[1]].first == columns[axes[0]].first + 4 &&
        columns[axes[2]].first == columns[axes[0]].first + 8;

    // Block by block, one field after another: the block's records stay in cache and no type
    // test runs per value.
    constexpr std::size_t Block = 4096;
    for (std::size_t first = 0; first < count; first += Block) {
        const std::size_t n = std::min(Block, count - first);
        const std::size_t out = target + first;
        for (std::size_t f = 0; f < fields.size(); ++f) {
            const FieldRole& role = layout.roles[f];
            const Column& column = columns[f];
            const unsigned char* source = column.first + first * column.stride;
            switch (role.role) {
            case Role::Ignore:
                break;
            case Role::Position:
                if (packedXyz) {
                    if (role.component == 0)
                        for (std::size_t i = 0; i < n; ++i, source += column.stride)
                            std::memcpy(&arrays.positions[out + i], source, sizeof(glm::vec3));
                } else if (!shifting)
                    ConvertColumn(fields[f].scalar, source, column.stride, n,
                                  &arrays.positions[out].x + role.component, 3, 1.0f);
                break;
            case Role::PackedColor: {
                tesk::Color3f* colors = arrays.colors.data() + out;
                const std::array<float, 256>& unit = UnitBytes();
                for (std::size_t i = 0; i < n; ++i, source += column.stride)
                    colors[i] = Unpack(Load<std::uint32_t>(source), unit);
                break;
            }
            case Role::Normal:
            case Role::Color:
            case Role::Extra: {
                const std::size_t outStride = role.role == Role::Extra ? 1 : 3;
                ConvertColumn(fields[f].scalar, source, column.stride, n, arrays.Slot(role, out), outStride,
                              role.divisor);
                break;
            }
            }
        }
        if (shifting)
            for (std::size_t i = first; i < first + n; ++i)
                arrays.positions[target + i] = shift.Apply(Coordinate(header, layout, columns, 0, i),
                                                           Coordinate(header, layout, columns, 1, i),
                                                           Coordinate(header, layout, columns, 2, i));
    }
}

/// Checks the claimed number of points against the file before anything is allocated for it.
bool BinaryBodyFits(const PcdHeader& header, std::uint64_t fileSize, std::string& message)
{
    const std::uint64_t remaining = fileSize - header.bodyOffset;
    const std::uint64_t record = header.recordSize; // at least 1: every field has a size
    if (header.points <= remaining / record)
        return true;
    const std::uint64_t whole = remaining / record;
    message = AtByte(static_cast<std::size_t>(header.bodyOffset + whole * record)) +
              "file ends inside point " + std::to_string(whole + 1) + " of " + std::to_string(header.points);
    return false;
}

bool ReadBinary(std::string_view bytes, const PcdHeader& header, const Layout& layout, CoordinateShift& shift,
                CloudArrays& arrays, std::string& message)
{
    if (!BinaryBodyFits(header, bytes.size(), message))
        return false;
    const std::size_t record = header.recordSize;
    const auto count = static_cast<std::size_t>(header.points);
    arrays.Allocate(layout, count);
    const auto* body = reinterpret_cast<const unsigned char*>(bytes.data()) + header.bodyOffset;
    std::vector<Column> columns;
    for (const PcdField& field : header.fields)
        columns.push_back({body + field.offset, record});
    DecideShift(header, layout, columns, count, shift);
    ConvertPoints(header, layout, columns, count, 0, shift, arrays);
    return true;
}

bool ReadCompressed(std::string_view bytes, const PcdHeader& header, const Layout& layout,
                    CoordinateShift& shift, CloudArrays& arrays, std::string& message)
{
    const std::size_t offset = header.bodyOffset;
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
    if (bytes.size() - offset < 8) {
        message = AtByte(offset) + "file ends before the sizes of the compressed data";
        return false;
    }
    const std::uint32_t packedSize = Load<std::uint32_t>(data + offset);
    const std::uint32_t unpackedSize = Load<std::uint32_t>(data + offset + 4);
    const std::size_t start = offset + 8;
    const std::size_t remaining = bytes.size() - start;

    // Checked in this order so that nothing is allocated for a size the file cannot back.
    const std::uint64_t expected = header.points * header.recordSize;
    const bool overflow = header.recordSize != 0 &&
                          header.points > std::numeric_limits<std::uint64_t>::max() / header.recordSize;
    if (overflow || expected != unpackedSize) {
        message = AtByte(offset + 4) + "the compressed data unpacks to " + std::to_string(unpackedSize) +
                  " bytes, but " + std::to_string(header.points) + " points of " +
                  std::to_string(header.recordSize) + " bytes need " +
                  (overflow ? std::string("more") : std::to_string(expected));
        return false;
    }
    if (packedSize > remaining) {
        message = AtByte(offset) + "compressed data of " + std::to_string(packedSize) +
                  " bytes runs past the end of the file (" + std::to_string(remaining) + " bytes left)";
        return false;
    }
    // The longest an item can unpack to is 264 bytes from 3.
    if (unpackedSize > std::uint64_t(packedSize) * 88) {
        message = AtByte(offset) + std::to_string(packedSize) + " compressed bytes cannot unpack to " +
                  std::to_string(unpackedSize);
        return false;
    }
    const auto count = static_cast<std::size_t>(header.points);
    std::unique_ptr<unsigned char[]> unpacked = std::make_unique_for_overwrite<unsigned char[]>(unpackedSize);
    runa::AdviseHugePages(unpacked.get(), unpackedSize);
    LzfProblem problem;
    if (!LzfDecompress({data + start, packedSize}, {unpacked.get(), unpackedSize}, problem)) {
        message = AtByte(start + problem.inputOffset) + "corrupt compressed data: " + problem.what;
        return false;
    }
    arrays.Allocate(layout, count);
    std::vector<Column> columns;
    for (const PcdField& field : header.fields)
        columns.push_back({unpacked.get() + field.offset * count, field.Bytes()});
    DecideShift(header, layout, columns, count, shift);
    ConvertPoints(header, layout, columns, count, 0, shift, arrays);
    return true;
}

// ---------------------------------------------------------------------------------------------
// Ascii body
// ---------------------------------------------------------------------------------------------

/// A packed colour written as text: writers print its bits as an unsigned integer (so that
/// no colour reads as NaN), older ones as the float those bits make.
bool ParsePacked(std::string_view token, std::uint32_t& packed)
{
    long long integer = 0;
    const char* last = token.data() + token.size();
    const auto [end, code] = std::from_chars(token.data(), last, integer);
    if (code == std::errc() && end == last) {
        packed = static_cast<std::uint32_t>(integer);
        return true;
    }
    float value = 0.0f;
    if (!ParseFloat(token, value))
        return false;
    packed = std::bit_cast<std::uint32_t>(value);
    return true;
}

bool ReadAscii(std::string_view bytes, const PcdHeader& header, const Layout& layout, CoordinateShift& shift,
               CloudArrays& arrays, std::string& message)
{
    LineCursor cursor(bytes, header.bodyOffset, header.dataLine);
    std::string_view line;
    std::vector<std::string_view> tokens;
    const auto blank = [](char c) { return IsBlank(c); };

    // A point line holds at least one character and one separator or line end per value, which
    // bounds how many points the rest of the file can hold: an absurd WIDTH fails when the lines
    // run out instead of allocating for it first.
    const std::size_t remaining = bytes.size() - header.bodyOffset;
    const std::size_t fits = (remaining + 1) / (2 * std::max<std::size_t>(header.lineValues, 1));
    const std::uint64_t count = header.points;
    const std::size_t allocated = count < fits ? static_cast<std::size_t>(count) : fits;
    arrays.Allocate(layout, allocated);
    const std::vector<PcdField>& fields = header.fields;

    for (std::uint64_t item = 0; item < count; ++item) {
        bool found = false;
        while (!found && cursor.Next(line)) {
            SplitTokens(line, tokens, blank);
            found = !tokens.empty();
        }
        if (!found) {
            message = At(cursor.LineNumber()) + "file ends after " + std::to_string(item) + " of " +
                      std::to_string(count) + " points";
            return false;
        }
        const std::size_t number = cursor.LineNumber();
        if (tokens.size() != header.lineValues) {
            message = At(number) + "expected " + std::to_string(header.lineValues) + " values, found " +
                      std::to_string(tokens.size());
            return false;
        }
        // Past `allocated` only a line that is about to fail can arrive: nothing to store.
        const bool store = item < allocated;
        const auto index = static_cast<std::size_t>(item);
        std::array<double, 3> position{};
        for (std::size_t f = 0; f < fields.size(); ++f) {
            const FieldRole& role = layout.roles[f];
            if (role.role == Role::Ignore)
                continue;
            const std::string_view token = tokens[fields[f].firstValue];
            bool ok = true;
            if (role.role == Role::Position) {
                ok = ParseDouble(token, position[role.component]);
            } else if (role.role == Role::PackedColor) {
                std::uint32_t packed = 0;
                ok = ParsePacked(token, packed);
                if (ok && store)
                    arrays.colors[index] = Unpack(packed);
            } else {
                float value = 0.0f;
                ok = ParseFloat(token, value);
                float* slot = store ? arrays.Slot(role, index) : nullptr;
                if (ok && slot != nullptr)
                    *slot = value / role.divisor;
            }
            if (!ok) {
                message =
                    At(number) + Quoted(token) + " is not a number (field " + Quoted(fields[f].name) + ")";
                return false;
            }
        }
        if (store)
            arrays.positions[index] = shift.Apply(position[0], position[1], position[2]);
    }
    return true;
}

bool Parse(std::string_view bytes, tesk::PointCloud& cloud, std::string& message)
{
    PcdHeader header;
    if (!ParseHeader(bytes, header, message))
        return false;
    Layout layout;
    if (!MapFields(header, layout, message))
        return false;
    CoordinateShift shift;
    CloudArrays arrays;
    bool read = false;
    switch (header.form) {
    case DataForm::Ascii:
        read = ReadAscii(bytes, header, layout, shift, arrays, message);
        break;
    case DataForm::Binary:
        read = ReadBinary(bytes, header, layout, shift, arrays, message);
        break;
    case DataForm::Compressed:
        read = ReadCompressed(bytes, header, layout, shift, arrays, message);
        break;
    }
    if (!read)
        return false;
    arrays.Store(layout, shift, cloud);
    return true;
}

// ---------------------------------------------------------------------------------------------
// Binary bodies straight from the file
// ---------------------------------------------------------------------------------------------

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

enum class Streamed : std::uint8_t { NotCovered, Read, Failed };

/// Converts a binary body from the file a few megabytes at a time, so the file never sits in
/// memory whole: for a large cloud that halves the peak memory and spares the kernel clearing
/// the pages of a buffer as large as the file, which costs more than the conversion itself.
/// Any other file (other DATA forms, a header it cannot read) is NotCovered, without a
/// message: the whole-file path reads it and reports on it.
Streamed StreamBinary(const std::string& path, tesk::PointCloud& cloud, std::string& message)
{
    std::error_code code;
    const std::uintmax_t size = std::filesystem::file_size(path, code);
    if (code)
        return Streamed::NotCovered;
    std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
    if (!file)
        return Streamed::NotCovered;
    // Headers take a few hundred bytes; a longer one goes the whole-file way.
    std::string prefix(static_cast<std::size_t>(std::min<std::uintmax_t>(size, 64 * 1024)), '\0');
    if (std::fread(prefix.data(), 1, prefix.size(), file.get()) != prefix.size())
        return Streamed::NotCovered;
    PcdHeader header;
    Layout layout;
    std::string ignored;
    if (!ParseHeader(prefix, header, ignored) || header.form != DataForm::Binary ||
        !MapFields(header, layout, ignored))
        return Streamed::NotCovered;
    // The DATA line must end inside the prefix: "DATA binary" could go on as "_compressed".
    if (prefix.size() < size && prefix[header.bodyOffset - 1] != '\n')
        return Streamed::NotCovered;
    if (!BinaryBodyFits(header, size, message))
        return Streamed::Failed;

    const std::size_t record = header.recordSize;
    const auto count = static_cast<std::size_t>(header.points);
    const std::size_t chunkPoints = std::max<std::size_t>(1, (std::size_t(4) << 20) / record);
    const std::unique_ptr<unsigned char[]> chunk =
        std::make_unique_for_overwrite<unsigned char[]>(chunkPoints * record);
    std::vector<Column> columns;
    for (const PcdField& field : header.fields)
        columns.push_back({chunk.get() + field.offset, record});
    CloudArrays arrays;
    arrays.Allocate(layout, count);

    const auto seekBody = [&]() {
        return std::fseek(file.get(), static_cast<long>(header.bodyOffset), SEEK_SET) == 0;
    };
    const auto readChunk = [&](std::size_t first, std::size_t n) {
        if (std::fread(chunk.get(), record, n, file.get()) == n)
            return true;
        message = AtByte(header.bodyOffset + first * record) + "the file could not be read (did it change?)";
        return false;
    };
    if (!seekBody()) {
        message = AtByte(header.bodyOffset) + "the file could not be read (did it change?)";
        return Streamed::Failed;
    }
    // Points before the first finite one may have been converted before the shift was known;
    // they are converted again once it is.
    CoordinateShift shift;
    std::size_t again = 0;
    for (std::size_t first = 0; first < count; first += chunkPoints) {
        const std::size_t n = std::min(chunkPoints, count - first);
        if (!readChunk(first, n))
            return Streamed::Failed;
        if (!shift.IsDecided()) {
            DecideShift(header, layout, columns, n, shift);
            if (shift.IsShifting())
                again = first;
        }
        ConvertPoints(header, layout, columns, n, first, shift, arrays);
    }
    if (again != 0 && !seekBody()) {
        message = AtByte(header.bodyOffset) + "the file could not be read (did it change?)";
        return Streamed::Failed;
    }
    for (std::size_t first = 0; first < again; first += chunkPoints) {
        const std::size_t n = std::min(chunkPoints, again - first);
        if (!readChunk(first, n))
            return Streamed::Failed;
        ConvertPoints(header, layout, columns, n, first, shift, arrays);
    }
    arrays.Store(layout, shift, cloud);
    return Streamed::Read;
}

bool Finish(bool ok, const std::string& name, const std::string& message, std::string& error)
{
    if (ok)
        return true;
    error = name + ": " + message;
    rlog::Fail(error, Label);
    return false;
}

} // namespace

bool ReadPcdFromMemory(std::string_view bytes, const std::string& name, tesk::PointCloud& cloud,
                       std::string& error)
{
    std::string message;
    bool ok = false;
    try {
        ok = Parse(bytes, cloud, message);
    } catch (const std::bad_alloc&) {
        message = "not enough memory to hold the points";
    } catch (const std::length_error&) {
        message = "not enough memory to hold the points";
    }
    return Finish(ok, name, message, error);
}

bool ReadPcd(const std::string& path, tesk::PointCloud& cloud, std::string& error)
{
    std::string message;
    Streamed streamed = Streamed::NotCovered;
    try {
        streamed = StreamBinary(path, cloud, message);
    } catch (const std::bad_alloc&) {
        streamed = Streamed::Failed;
        message = "not enough memory to hold the points";
    } catch (const std::length_error&) {
        streamed = Streamed::Failed;
        message = "not enough memory to hold the points";
    }
    if (streamed != Streamed::NotCovered)
        return Finish(streamed == Streamed::Read, DisplayName(path), message, error);

    FileBytes file;
    if (!file.Load(path, error)) {
        rlog::Fail(error, Label);
        return false;
    }
    return ReadPcdFromMemory(file.View(), DisplayName(path), cloud, error);
}

} // namespace vexa::viewer
