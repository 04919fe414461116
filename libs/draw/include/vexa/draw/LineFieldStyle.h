#pragma once
#include <vexa/draw/Style.h>

namespace vexa::draw {

/// Style of a set of line segments: the inherited colour applies to segments without their
/// own colour.
class LineFieldStyle : public Style {
public:
    float lineWidth = 1.5f;
    /// Draw over the scene's content (debug lines stay visible inside objects).
    bool onTop = false;
    /// Use the per-segment colours when the renderer has them.
    bool useSegmentColors = true;

    void WriteToStream(std::ostream& out) const override;
    bool ReadFromStream(std::istream& in) override;
};

} // namespace vexa::draw
