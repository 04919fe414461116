#include "runa/Version.h"

#include <charconv>
#include <limits>

namespace runa {
namespace {

std::string_view Trim(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\n\f\v";
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    const auto last = text.find_last_not_of(blanks);
    return text.substr(first, last - first + 1);
}

} // namespace

std::optional<Version> Version::Parse(std::string_view text)
{
    text = Trim(text);
    if (text.empty())
        return std::nullopt;

    std::uint32_t parts[3] = {0, 0, 0};
    std::size_t count = 0;
    const char* cursor = text.data();
    const char* end = text.data() + text.size();
    while (true) {
        if (count == 3 || cursor == end || *cursor < '0' || *cursor > '9')
            return std::nullopt;
        const auto [next, error] = std::from_chars(cursor, end, parts[count]);
        if (error != std::errc())
            return std::nullopt;
        ++count;
        cursor = next;
        if (cursor == end)
            break;
        if (*cursor != '.')
            return std::nullopt;
        ++cursor;
    }
    return Version{parts[0], parts[1], parts[2]};
}

std::string Version::ToString() const
{
    return std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(patch);
}

} // namespace runa
