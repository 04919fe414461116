#include "TextCloudReader.h"

#include "CoordinateShift.h"
#include "FileBytes.h"
#include "MeshReading.h"
#include "TextScan.h"
#include <runa/HugePages.h>

#include <runa/rlog.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <new>
#include <optional>
#include <stdexcept>
#include <vector>

namespace vexa::viewer {

namespace {

constexpr const char* Label = "vexa::viewer::ReadTextCloud";
// Far more columns than any scanner writes. Each one becomes a property of its own, and the
// cost of a property grows with the number of them: a 5 MB line of numbers would otherwise
// keep the reader busy for hours.
constexpr std::size_t kMaxColumns = 1024;

bool IsSeparator(char c)
{
    return IsBlank(c) || c == ',' || c == ';';
}

bool IsComment(std::string_view line)
{
    const std::size_t start = line.find_first_not_of(" \t");
    if (start == std::string_view::npos)
        return false;
    line.remove_prefix(start);
    return line.front() == '#' || line.starts_with("//");
}

/// Digits only (an optional '+'): how a colour byte is written, as opposed to "0.5" or "1e2".
bool IsIntegerText(std::string_view token)
{
    if (!token.empty() && token.front() == '+')
        token.remove_prefix(1);
    return !token.empty() &&
           std::all_of(token.begin(), token.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::string At(std::size_t line)
{
    return "line " + std::to_string(line) + ": ";
}

enum class Role : std::uint8_t { Position, Normal, Color, Extra };

struct Column {
    Role role = Role::Extra;
    std::uint8_t component = 0;
    std::size_t extraIndex = 0;
};

/// What each column of the file becomes.
struct ColumnLayout {
    std::vector<Column> columns;
    std::vector<std::string> extraNames;
    std::array<std::size_t, 3> position = {0, 1, 2};
    std::array<std::size_t, 3> normal = {};
    std::array<std::size_t, 3> color = {};
    std::array<std::string, 3> colorNames; // kept in case the values turn out not to be colours
    bool hasNormals = false;
    bool hasColors = false;
};

/// Index of the first column whose lower-case name is one of `names` and is still unused.
std::optional<std::size_t> FindColumn(const std::vector<std::string>& lowerNames,
                                      const std::vector<bool>& used,
                                      std::initializer_list<std::string_view> names)
{
    for (std::size_t i = 0; i < lowerNames.size(); ++i)
        if (!used[i] && std::find(names.begin(), names.end(), lowerNames[i]) != names.end())
            return i;
    return std::nullopt;
}

ColumnLayout LayoutFromNames(const std::vector<std::string>& names)
{
    ColumnLayout layout;
    const std::size_t count = names.size();
    layout.columns.assign(count, Column{});
    std::vector<std::string> lower;
    for (const std::string& name : names)
        lower.push_back(Lower(name));
    std::vector<bool> used(count, false);

    // Finds three columns by name, one per component; claims them only when all three exist.
    const auto claim = [&](const std::array<std::initializer_list<std::string_view>, 3>& choices,
                           std::array<std::size_t, 3>& found) {
        std::vector<bool> trial = used;
        for (std::size_t c = 0; c < 3; ++c) {
            const std::optional<std::size_t> index = FindColumn(lower, trial, choices[c]);
            if (!index)
                return false;
            found[c] = *index;
            trial[*index] = true;
        }
        used = trial;
        return true;
    };

    if (!claim({{{"x"}, {"y"}, {"z"}}}, layout.position)) {
        layout.position = {0, 1, 2};
        used[0] = used[1] = used[2] = true;
    }
    layout.hasNormals = claim({{{"nx"}, {"ny"}, {"nz"}}}, layout.normal);
    layout.hasColors =
        claim({{{"r", "red", "diffuse_red"}, {"g", "green", "diffuse_green"}, {"b", "blue", "diffuse_blue"}}},
              layout.color);

    for (std::uint8_t c = 0; c < 3; ++c) {
        layout.columns[layout.position[c]] = {Role::Position, c, 0};
        if (layout.hasNormals)
            layout.columns[layout.normal[c]] = {Role::Normal, c, 0};
        if (layout.hasColors) {
            layout.columns[layout.color[c]] = {Role::Color, c, 0};
            layout.colorNames[c] = names[layout.color[c]];
        }
    }
    for (std::size_t i = 0; i < count; ++i) {
        if (used[i])
            continue;
        layout.columns[i] = {Role::Extra, 0, layout.extraNames.size()};
        layout.extraNames.push_back(names[i]);
    }
    return layout;
}

/// What columns hold when no line names them: x y z first, then in this order an intensity,
/// normals and colours when the layout has them, and numbered values for the rest.
struct FixedColumns {
    bool intensity = false;
    bool normals = false;
    bool colors = false;
};

ColumnLayout LayoutWithoutNames(std::size_t count, FixedColumns fixed)
{
    ColumnLayout layout;
    layout.columns.assign(count, Column{});
    std::size_t next = 0;
    for (std::uint8_t c = 0; c < 3; ++c)
        layout.columns[next++] = {Role::Position, c, 0};
    if (fixed.intensity) {
        layout.columns[next++] = {Role::Extra, 0, layout.extraNames.size()};
        layout.extraNames.push_back("Intensity");
    }
    if (fixed.normals) {
        layout.hasNormals = true;
        for (std::uint8_t c = 0; c < 3; ++c) {
            layout.normal[c] = next;
            layout.columns[next++] = {Role::Normal, c, 0};
        }
    }
    if (fixed.colors) {
        layout.hasColors = true;
        for (std::uint8_t c = 0; c < 3; ++c) {
            layout.color[c] = next;
            layout.colorNames[c] = std::string(1, "rgb"[c]);
            layout.columns[next++] = {Role::Color, c, 0};
        }
    }
    std::size_t numbered = 0;
    for (; next < count; ++next) {
        layout.columns[next] = {Role::Extra, 0, layout.extraNames.size()};
        layout.extraNames.push_back("Value " + std::to_string(++numbered));
    }
    return layout;
}

/// A number written with a decimal comma: digits, one ',' followed by digits, an optional
/// sign and exponent. Integers qualify too; a '.' anywhere does not.
bool IsDecimalCommaNumber(std::string_view token)
{
    std::size_t i = 0;
    const auto digits = [&]() {
        const std::size_t start = i;
        while (i < token.size() && token[i] >= '0' && token[i] <= '9')
            ++i;
        return i > start;
    };
    if (i < token.size() && (token[i] == '-' || token[i] == '+'))
        ++i;
    if (!digits())
        return false;
    if (i < token.size() && token[i] == ',') {
        ++i;
        if (!digits())
            return false;
    }
    if (i < token.size() && (token[i] == 'e' || token[i] == 'E')) {
        ++i;
        if (i < token.size() && (token[i] == '-' || token[i] == '+'))
            ++i;
        if (!digits())
            return false;
    }
    return i == token.size();
}

bool IsDecimalCommaSeparator(char c)
{
    return IsBlank(c) || c == ';';
}

struct TextArrays {
    std::vector<glm::vec3> positions;
    std::vector<glm::vec3> normals;
    std::vector<tesk::Color3f> colors; // as written in the file until the scale is known
    std::vector<std::vector<float>> extras;

    void Reserve(std::size_t count, bool withNormals, bool withColors)
    {
        runa::ReserveFresh(positions, count);
        if (withNormals)
            runa::ReserveFresh(normals, count);
        if (withColors)
            runa::ReserveFresh(colors, count);
        for (auto& extra : extras)
            runa::ReserveFresh(extra, count);
    }
};

/// How the colour columns were written, to decide at the end how to scale them.
struct ColorStats {
    bool allIntegers = true;
    float minimum = 0.0f;
    float maximum = 0.0f;
};

class TextCloudParser {
public:
    TextCloudParser(std::string_view text, TextLayout layout) : text_(text), fixedLayout_(layout)
    {
        // A UTF-8 byte order mark, as spreadsheet programs write before CSV files.
        if (text_.starts_with("\xEF\xBB\xBF"))
            text_.remove_prefix(3);
    }

    bool Parse(tesk::PointCloud& cloud, std::string& message)
    {
        decimalComma_ = HasDecimalCommas();
        LineCursor cursor(text_);
        std::string_view line;
        std::vector<std::string_view> tokens;
        std::size_t contentLines = 0;
        bool sawCount = false;
        unsigned long long countHint = 0;

        while (cursor.Next(line)) {
            Split(line, tokens);
            if (tokens.empty() || IsComment(line))
                continue;
            const std::size_t number = cursor.LineNumber();
            ++contentLines;
            if (!started_) {
                if (contentLines == 1 && tokens.size() == 1 && ParseCount(tokens[0], countHint)) {
                    sawCount = true;
                    continue;
                }
                const bool firstLine = contentLines == 1 || (contentLines == 2 && sawCount);
                if (firstLine && names_.empty() && AllNames(tokens)) {
                    for (std::string_view token : tokens)
                        names_.emplace_back(token);
                    continue;
                }
                if (!Start(tokens, number, message))
                    return false;
                const std::size_t left = text_.size() - cursor.Position() + line.size() + 1;
                const std::size_t estimate = left / (line.size() + 1) + 1;
                const std::size_t plausible = left / (2 * columnCount_) + 1;
                arrays_.Reserve(sawCount && countHint <= plausible ? static_cast<std::size_t>(countHint)
                                                                   : std::min(estimate, plausible),
                                layout_.hasNormals, layout_.hasColors);
            }
            if (!ReadLine(tokens, number, message))
                return false;
        }
        Store(cloud);
        return true;
    }

private:
    void Split(std::string_view line, std::vector<std::string_view>& tokens) const
    {
        // Lambdas rather than function pointers: each split then compiles with its test inlined.
        if (decimalComma_)
            SplitTokens(line, tokens, [](char c) { return IsDecimalCommaSeparator(c); });
        else
            SplitTokens(line, tokens, [](char c) { return IsSeparator(c); });
    }

    /// Decimal commas are told from comma separators by the first data lines: split at blanks
    /// and semicolons only, each must hold at least three numbers of the decimal-comma form,
    /// and some must have a comma. "1.5,2.25,3.0" is one token there, so it does not qualify.
    bool HasDecimalCommas() const
    {
        LineCursor cursor(text_);
        std::string_view line;
        std::vector<std::string_view> tokens;
        std::size_t examined = 0;
        bool sawComma = false;
        unsigned long long ignored = 0;
        while (examined < 8 && cursor.Next(line)) {
            SplitTokens(line, tokens, IsDecimalCommaSeparator);
            if (tokens.empty() || IsComment(line) || (tokens.size() == 1 && ParseCount(tokens[0], ignored)))
                continue;
            if (examined == 0 && AllNames(tokens))
                continue;
            if (tokens.size() < 3 || !std::all_of(tokens.begin(), tokens.end(), IsDecimalCommaNumber))
                return false;
            sawComma = sawComma || line.find(',') != std::string_view::npos;
            ++examined;
        }
        return sawComma;
    }

    /// The token with its decimal comma made a point, in `scratch`; the token itself otherwise.
    std::string_view Normalised(std::string_view token, std::string& scratch) const
    {
        if (!decimalComma_ || token.find(',') == std::string_view::npos)
            return token;
        scratch.assign(token);
        std::replace(scratch.begin(), scratch.end(), ',', '.');
        return scratch;
    }

    static bool AllNames(const std::vector<std::string_view>& tokens)
    {
        float ignored = 0.0f;
        return std::none_of(tokens.begin(), tokens.end(),
                            [&](std::string_view t) { return ParseFloat(t, ignored); });
    }

    bool Start(const std::vector<std::string_view>& tokens, std::size_t number, std::string& message)
    {
        columnCount_ = tokens.size();
        if (columnCount_ < 3) {
            message =
                At(number) + "expected at least 3 values (x y z), found " + std::to_string(columnCount_);
            return false;
        }
        if (columnCount_ > kMaxColumns) {
            message = At(number) + std::to_string(columnCount_) + " values on one line; at most " +
                      std::to_string(kMaxColumns) + " columns are read";
            return false;
        }
        if (!names_.empty()) {
            if (names_.size() != columnCount_) {
                message = At(number) + "the header names " + std::to_string(names_.size()) +
                          " columns but this line has " + std::to_string(columnCount_) + " values";
                return false;
            }
            layout_ = LayoutFromNames(names_);
            namedColors_ = layout_.hasColors;
        } else if (!StartFixed(tokens, number, message)) {
            return false;
        }
        arrays_.extras.resize(layout_.extraNames.size());
        row_.assign(columnCount_, 0.0f);
        started_ = true;
        return true;
    }

    /// Whether columns first..first+2 of the first data line hold bytes, as colours are written.
    bool BytesAt(const std::vector<std::string_view>& tokens, std::size_t first) const
    {
        if (tokens.size() < first + 3)
            return false;
        for (std::size_t c = first; c < first + 3; ++c) {
            float value = 0.0f;
            if (!IsIntegerText(tokens[c]) || !ParseFloat(tokens[c], value) || value > 255.0f)
                return false;
        }
        return true;
    }

    bool StartFixed(const std::vector<std::string_view>& tokens, std::size_t number, std::string& message)
    {
        const auto needSix = [&](const char* columns) {
            if (columnCount_ >= 6)
                return true;
            message = At(number) + "expected at least 6 values (" + columns + "), found " +
                      std::to_string(columnCount_);
            return false;
        };
        FixedColumns fixed;
        switch (fixedLayout_) {
        case TextLayout::Columns:
            fixed.colors = BytesAt(tokens, 3);
            break;
        case TextLayout::Pts:
            // Scanners write "x y z intensity" and "x y z intensity r g b"; six columns are
            // "x y z r g b".
            fixed.intensity = columnCount_ == 4 || columnCount_ >= 7;
            fixed.colors = BytesAt(tokens, fixed.intensity ? 4 : 3);
            break;
        case TextLayout::XyzNormals:
            if (!needSix("x y z nx ny nz"))
                return false;
            fixed.normals = true;
            break;
        case TextLayout::XyzColors:
            if (!needSix("x y z r g b"))
                return false;
            // Bytes or fractions, decided over the whole file as for named colour columns.
            fixed.colors = true;
            namedColors_ = true;
            break;
        }
        layout_ = LayoutWithoutNames(columnCount_, fixed);
        return true;
    }

    bool ReadLine(const std::vector<std::string_view>& tokens, std::size_t number, std::string& message)
    {
        if (tokens.size() != columnCount_) {
            message = At(number) + "expected " + std::to_string(columnCount_) + " values, found " +
                      std::to_string(tokens.size());
            return false;
        }
        std::array<double, 3> xyz{};
        for (std::size_t c = 0; c < columnCount_; ++c) {
            const std::string_view token = Normalised(tokens[c], scratch_);
            const Column& column = layout_.columns[c];
            const bool ok = column.role == Role::Position ? ParseDouble(token, xyz[column.component])
                                                          : ParseFloat(token, row_[c]);
            if (!ok) {
                message = At(number) + "'" + Printable(tokens[c]) + "' is not a number";
                return false;
            }
        }
        arrays_.positions.push_back(shift_.Apply(xyz[0], xyz[1], xyz[2]));
        if (layout_.hasNormals) {
            const auto& n = layout_.normal;
            arrays_.normals.push_back({row_[n[0]], row_[n[1]], row_[n[2]]});
        }
        if (layout_.hasColors) {
            const auto& k = layout_.color;
            arrays_.colors.push_back({row_[k[0]], row_[k[1]], row_[k[2]]});
            if (namedColors_)
                Observe(tokens);
        }
        for (std::size_t c = 0; c < columnCount_; ++c)
            if (layout_.columns[c].role == Role::Extra)
                arrays_.extras[layout_.columns[c].extraIndex].push_back(row_[c]);
        return true;
    }

    void Observe(const std::vector<std::string_view>& tokens)
    {
        for (std::size_t column : layout_.color) {
            const float value = row_[column];
            colorStats_.allIntegers = colorStats_.allIntegers && IsIntegerText(tokens[column]);
            colorStats_.minimum = std::min(colorStats_.minimum, value);
            colorStats_.maximum = std::max(colorStats_.maximum, value);
        }
    }

    /// Named colour columns hold bytes (integers up to 255) or fractions (all at most 1); floats
    /// up to 255 are bytes written with a decimal point. Anything else is not a colour, and the
    /// columns are kept as float properties under their names.
    std::optional<float> NamedColorDivisor() const
    {
        const ColorStats& s = colorStats_;
        if (!(s.minimum >= 0.0f) || !(s.maximum <= 255.0f))
            return std::nullopt;
        if (s.allIntegers || s.maximum > 1.0f)
            return 255.0f;
        return 1.0f;
    }

    void Store(tesk::PointCloud& cloud)
    {
        tesk::PointCloud result;
        result.SetPositions(std::move(arrays_.positions));
        if (layout_.hasNormals && !result.Empty())
            result.SetNormals(std::move(arrays_.normals));
        std::vector<std::vector<float>> demoted;
        if (layout_.hasColors) {
            // Divided rather than multiplied by 1/255, so that byte 51 becomes exactly 0.2f.
            const std::optional<float> divisor =
                namedColors_ ? NamedColorDivisor() : std::optional<float>(255.0f);
            if (divisor) {
                for (tesk::Color3f& color : arrays_.colors)
                    color = {color.r / *divisor, color.g / *divisor, color.b / *divisor};
                result.AddColorProperty("RGB", std::move(arrays_.colors));
            } else {
                demoted.resize(3);
                for (const tesk::Color3f& color : arrays_.colors) {
                    demoted[0].push_back(color.r);
                    demoted[1].push_back(color.g);
                    demoted[2].push_back(color.b);
                }
            }
        }
        for (std::size_t i = 0; i < arrays_.extras.size(); ++i)
            result.AddFloatProperty(layout_.extraNames[i], std::move(arrays_.extras[i]));
        for (std::size_t c = 0; c < demoted.size(); ++c)
            result.AddFloatProperty(layout_.colorNames[c], std::move(demoted[c]));
        result.SetOriginOffset(shift_.Offset());
        cloud = std::move(result);
    }

    std::string_view text_;
    TextLayout fixedLayout_;
    bool decimalComma_ = false;
    std::string scratch_;
    CoordinateShift shift_;
    std::vector<std::string> names_;
    bool started_ = false;
    bool namedColors_ = false;
    std::size_t columnCount_ = 0;
    ColumnLayout layout_;
    TextArrays arrays_;
    ColorStats colorStats_;
    std::vector<float> row_;
};

} // namespace

TextLayout TextLayoutForPath(const std::string& path)
{
    const std::string extension = LowerExtension(path);
    if (extension == ".pts")
        return TextLayout::Pts;
    if (extension == ".xyzn")
        return TextLayout::XyzNormals;
    if (extension == ".xyzrgb")
        return TextLayout::XyzColors;
    return TextLayout::Columns;
}

bool ReadTextCloudFromMemory(std::string_view text, const std::string& name, tesk::PointCloud& cloud,
                             std::string& error, TextLayout layout)
{
    std::string message;
    bool ok = false;
    try {
        TextCloudParser parser(text, layout);
        ok = parser.Parse(cloud, message);
    } catch (const std::bad_alloc&) {
        message = "not enough memory to hold the points";
    } catch (const std::length_error&) {
        message = "not enough memory to hold the points";
    }
    if (ok)
        return true;
    error = name + ": " + message;
    rlog::Fail(error, Label);
    return false;
}

bool ReadTextCloud(const std::string& path, tesk::PointCloud& cloud, std::string& error, TextLayout layout)
{
    FileBytes file;
    if (!file.Load(path, error)) {
        rlog::Fail(error, Label);
        return false;
    }
    return ReadTextCloudFromMemory(file.View(), DisplayName(path), cloud, error, layout);
}

bool ReadTextCloud(const std::string& path, tesk::PointCloud& cloud, std::string& error)
{
    return ReadTextCloud(path, cloud, error, TextLayoutForPath(path));
}

} // namespace vexa::viewer
