#pragma once
// Placement of a view area inside the window as a fraction of the window plus a pixel
// offset, so that a layout such as "left half less 10 pixels" survives resizing. The look
// file writes them as text: "relative,pixels" for one value and "x;y" (or "width;height")
// for a pair, e.g. "0.5,-5;1,0".

#include <string>

namespace vexa {

struct CompositeFloat {
    /// Fraction of the parent extent: 1.0 is the whole extent.
    float relative = 0.0f;
    /// Offset in pixels, may be negative.
    float pixels = 0.0f;

    /// relative * parentExtent + pixels.
    float Resolve(float parentExtent) const { return relative * parentExtent + pixels; }

    bool operator==(const CompositeFloat&) const = default;
};

struct CompositePosition {
    CompositeFloat x;
    CompositeFloat y;

    bool operator==(const CompositePosition&) const = default;
};

struct CompositeSize {
    CompositeFloat width;
    CompositeFloat height;

    bool operator==(const CompositeSize&) const = default;
};

// All three log a wrong number of parts through rlog::Fail and throw vexa::ParseError (a
// std::exception). A part that is not a number throws std::invalid_argument and one out of
// float range std::out_of_range, as std::stof does; those are not logged here. Text after
// a number is ignored ("1px" is 1).

/// "relative,pixels". Empty pieces between commas are dropped; pieces are trimmed.
CompositeFloat StringToCompositeFloat(const std::string& text);
/// "x;y", each a composite.
CompositePosition StringToCompositePosition(const std::string& text);
/// "width;height", each a composite.
CompositeSize StringToCompositeSize(const std::string& text);

} // namespace vexa
