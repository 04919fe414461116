#pragma once
// Line-by-line and token-by-token scanning of text already in memory, shared by the PLY
// header and body and by the plain-text cloud reader. Nothing here allocates per line:
// lines and tokens are views into the file buffer.

#include <cctype>
#include <charconv>
#include <cstddef>
#include <filesystem>
#include <limits>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace vexa::viewer {

/// `text` in lower case (ASCII letters only: keywords and file extensions).
inline std::string Lower(std::string_view text)
{
    std::string lower(text);
    for (char& c : lower)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return lower;
}

/// The extension of `path` with its dot, in lower case: how the viewer tells file kinds apart.
inline std::string LowerExtension(const std::string& path)
{
    return Lower(std::filesystem::path(path).extension().string());
}

/// Walks the lines of a buffer, counting them from 1. A line excludes its '\n' and a '\r'
/// before it, so files with Windows line endings read the same.
class LineCursor {
public:
    explicit LineCursor(std::string_view text, std::size_t position = 0, std::size_t lineNumber = 0)
        : text_(text), position_(position), lineNumber_(lineNumber)
    {
    }

    /// False at the end of the buffer. A last line without '\n' still counts.
    bool Next(std::string_view& line)
    {
        if (position_ >= text_.size())
            return false;
        const std::size_t end = text_.find('\n', position_);
        const std::size_t stop = end == std::string_view::npos ? text_.size() : end;
        line = text_.substr(position_, stop - position_);
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        position_ = end == std::string_view::npos ? text_.size() : end + 1;
        ++lineNumber_;
        return true;
    }

    /// Number of the line Next returned last (0 before the first).
    std::size_t LineNumber() const { return lineNumber_; }
    /// Offset of the first byte after the line Next returned last.
    std::size_t Position() const { return position_; }

private:
    std::string_view text_;
    std::size_t position_;
    std::size_t lineNumber_;
};

inline bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f';
}

/// Splits `line` at runs of separators into `tokens` (cleared first, capacity kept).
template <typename IsSeparator>
void SplitTokens(std::string_view line, std::vector<std::string_view>& tokens, IsSeparator isSeparator)
{
    tokens.clear();
    std::size_t i = 0;
    const std::size_t n = line.size();
    while (i < n) {
        while (i < n && isSeparator(line[i]))
            ++i;
        const std::size_t start = i;
        while (i < n && !isSeparator(line[i]))
            ++i;
        if (i > start)
            tokens.push_back(line.substr(start, i - start));
    }
}

/// Drops an optional leading '+'; false for "+-" (one sign only).
inline bool StripPlus(std::string_view& token)
{
    if (token.empty() || token.front() != '+')
        return true;
    token.remove_prefix(1);
    return token.empty() || token.front() != '-';
}

/// Parses the whole token as a double: decimal, exponent, "nan" and "inf" forms, with an
/// optional sign. Values beyond double's range become infinity (or zero, by the exponent's
/// sign) as they would in a program that wrote them.
inline bool ParseDouble(std::string_view token, double& value)
{
    if (!StripPlus(token))
        return false;
    const char* last = token.data() + token.size();
    auto [end, code] = std::from_chars(token.data(), last, value);
    if (code == std::errc::result_out_of_range && end == last) {
        const std::size_t e = token.find_first_of("eE");
        const bool tiny = e != std::string_view::npos && e + 1 < token.size() && token[e + 1] == '-';
        const bool negative = token.front() == '-';
        const double inf = std::numeric_limits<double>::infinity();
        value = tiny ? (negative ? -0.0 : 0.0) : (negative ? -inf : inf);
        return true;
    }
    return code == std::errc() && end == last;
}

/// The same as a float, rounded once. Values beyond float's range become infinity (or zero,
/// or a subnormal) instead of failing, as they would when a program reads them as double and
/// stores them as float.
inline bool ParseFloat(std::string_view token, float& value)
{
    if (!StripPlus(token))
        return false;
    const char* last = token.data() + token.size();
    auto [end, code] = std::from_chars(token.data(), last, value);
    if (code == std::errc::result_out_of_range) {
        double wide = 0.0;
        if (!ParseDouble(token, wide))
            return false;
        value = static_cast<float>(wide);
        return true;
    }
    return code == std::errc() && end == last;
}

/// `text` as it may appear in a one-line message: control and non-ASCII bytes (a binary file
/// read as text) become '?', and long text is cut with "...".
inline std::string Printable(std::string_view text, std::size_t maxLength = 40)
{
    std::string shown;
    for (std::size_t i = 0; i < text.size() && i < maxLength; ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        shown += (c >= 0x20 && c < 0x7F) ? static_cast<char>(c) : '?';
    }
    if (text.size() > maxLength)
        shown += "...";
    return shown;
}

/// Parses the whole token as an unsigned integer (no sign, no fraction).
inline bool ParseCount(std::string_view token, unsigned long long& value)
{
    const char* last = token.data() + token.size();
    auto [end, code] = std::from_chars(token.data(), last, value);
    return code == std::errc() && end == last && !token.empty();
}

} // namespace vexa::viewer
