#pragma once
// Reads a look file: the window's caption, size and state, the general switches, the
// background and the view areas. Missing keys, and keys of another JSON type than expected,
// keep their defaults, so a look holding only {"vexa": {"version": "1.0"}} gives the default
// window with one full-window view area.
//
// Faults are logged through rlog::Fail. A file that cannot be read or parsed, a look without
// a version, and a malformed position or size throw (a std::exception); the other faults
// (no "vexa" object, an unsupported version, more than kMaxViewareas views, a view without
// position or size, a unit without id) make the look fail: Succeeded() is false and the
// whole look is the default one, because a half-applied look is harder to recognise than the
// plain defaults.

#include "core/Looks.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vexa {

class LookParser {
public:
    /// More view areas make the look fail. Each one is a GUI layout of its own, and the GUI's
    /// cost per view area grows with their number: a few hundred would stall the start for
    /// minutes, while a screen has no room for more than a few dozen.
    static constexpr std::size_t kMaxViewareas = 64;

    /// Reads the look file at `path`; throws when it cannot be read or parsed as JSON.
    explicit LookParser(const std::string& path);

    /// Reads a look from JSON text instead of a file.
    static LookParser FromString(const std::string& json);

    const WindowLook& GetWindowLook() const { return windowLook_; }
    /// The view areas of the window look; never empty.
    const std::vector<ViewareaLook>& GetViewareaLooks() const { return windowLook_.views; }
    bool Succeeded() const { return succeeded_; }

private:
    enum class Source { File, Text };
    LookParser(const std::string& source, Source kind);

    WindowLook windowLook_;
    bool succeeded_ = false;
};

} // namespace vexa
