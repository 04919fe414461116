#include "core/CompositeCoordinates.h"

#include "core/ParseError.h"

#include <runa/rlog.h>

#include <string_view>
#include <utility>
#include <vector>

namespace vexa {

namespace {

/// Cuts `text` at every `separator` and drops the empty pieces, so doubled separators or a
/// separator at either end are harmless.
std::vector<std::string_view> SplitDroppingEmpty(std::string_view text, char separator)
{
    std::vector<std::string_view> pieces;
    std::size_t start = 0;
    while (start <= text.size()) {
        auto end = text.find(separator, start);
        if (end == std::string_view::npos)
            end = text.size();
        if (end > start)
            pieces.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return pieces;
}

std::string Trim(std::string_view piece)
{
    constexpr std::string_view blanks = " \t\n\r\f\v";
    const auto first = piece.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    const auto last = piece.find_last_not_of(blanks);
    return std::string(piece.substr(first, last - first + 1));
}

[[noreturn]] void FailAndThrow(const std::string& message, const std::string& label)
{
    rlog::Fail(message, label);
    throw ParseError(message);
}

std::string SeparatorMessage(const char* head, char separator)
{
    return std::string(head) + separator + "\"";
}

/// Both composites of a position or size, or a logged failure with the caller's wording.
std::pair<CompositeFloat, CompositeFloat> ParsePair(const std::string& text, const char* head,
                                                    const char* label)
{
    constexpr char separator = ';';
    const auto pieces = SplitDroppingEmpty(text, separator);
    if (pieces.size() != 2)
        FailAndThrow(SeparatorMessage(head, separator), label);
    return {StringToCompositeFloat(std::string(pieces[0])), StringToCompositeFloat(std::string(pieces[1]))};
}

} // namespace

CompositeFloat StringToCompositeFloat(const std::string& text)
{
    constexpr char separator = ',';
    const auto pieces = SplitDroppingEmpty(text, separator);
    if (pieces.size() != 2)
        FailAndThrow(
            SeparatorMessage("Composite must have two parameters (percents and pixels) separated by a \"",
                             separator),
            "vexa::StringToCompositeFloat");
    CompositeFloat value;
    value.relative = std::stof(Trim(pieces[0]));
    value.pixels = std::stof(Trim(pieces[1]));
    return value;
}

CompositePosition StringToCompositePosition(const std::string& text)
{
    const auto [x, y] = ParsePair(text, "Position must contain two composites (x and y) separated by a \"",
                                  "vexa::StringToCompositePosition");
    return CompositePosition{x, y};
}

CompositeSize StringToCompositeSize(const std::string& text)
{
    const auto [width, height] =
        ParsePair(text, "Size must contain two composites (width and height) separated by a \"",
                  "vexa::StringToCompositeSize");
    return CompositeSize{width, height};
}

} // namespace vexa
