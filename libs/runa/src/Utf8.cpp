#include "runa/Utf8.h"

#include <cstddef>
#include <cstdint>

namespace runa {

bool IsValidUtf8(std::string_view text)
{
    std::size_t i = 0;
    while (i < text.size()) {
        const auto lead = static_cast<unsigned char>(text[i]);
        std::size_t length = 0;
        std::uint32_t code = 0;
        if (lead < 0x80) {
            ++i;
            continue;
        } else if ((lead & 0xE0) == 0xC0) {
            length = 2;
            code = lead & 0x1Fu;
        } else if ((lead & 0xF0) == 0xE0) {
            length = 3;
            code = lead & 0x0Fu;
        } else if ((lead & 0xF8) == 0xF0) {
            length = 4;
            code = lead & 0x07u;
        } else {
            return false;
        }
        if (text.size() - i < length)
            return false;
        for (std::size_t k = 1; k < length; ++k) {
            const auto next = static_cast<unsigned char>(text[i + k]);
            if ((next & 0xC0) != 0x80)
                return false;
            code = (code << 6) | (next & 0x3Fu);
        }
        // Overlong forms, UTF-16 surrogates and code points past U+10FFFF are not UTF-8.
        static constexpr std::uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
        if (code < kSmallest[length] || (code >= 0xD800 && code <= 0xDFFF) || code > 0x10FFFF)
            return false;
        i += length;
    }
    return true;
}

} // namespace runa
