#pragma once
// Our strings are UTF-8; CEGUI's String takes and gives UTF-8 only through its utf8 API
// (its std::string constructor would read every byte as a code point).

#include <CEGUI/String.h>

#include <string>

namespace vexa::gui {

inline CEGUI::String ToCeguiText(const std::string& text)
{
    return CEGUI::String(reinterpret_cast<const CEGUI::utf8*>(text.data()), text.size());
}

inline std::string FromCeguiText(const CEGUI::String& text)
{
    return std::string(text.c_str());
}

} // namespace vexa::gui
