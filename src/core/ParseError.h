#pragma once
// Thrown by the text parsers of the look (look file, composite coordinates) after they have
// logged what was wrong; the engine catches it and starts with the default look.

#include <stdexcept>
#include <string>

namespace vexa {

class ParseError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace vexa
