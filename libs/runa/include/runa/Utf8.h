#pragma once
// Names read from files are shown in the GUI and written to JSON, and both take nothing but
// well-formed UTF-8; readers check them with this before keeping them.

#include <string_view>

namespace runa {

/// True when `text` is well-formed UTF-8 (no overlong forms, surrogates or code points past
/// U+10FFFF).
bool IsValidUtf8(std::string_view text);

} // namespace runa
