#pragma once
#include <vexa/draw/Style.h>

namespace vexa::draw {

/// Style of a 2D line graph. The inherited colour is the colour of the frame, the zero axes
/// and the range labels.
class GraphStyle : public Style {
public:
    GraphStyle();

    /// Width of the polyline in window pixels (the GUI slider offers 1..8); drawn at least 1
    /// and at most kMaxLineWidth wide.
    int lineWidth = 2;
    /// Diameter of the round marker at each point in window pixels; 0 draws no markers.
    /// Drawn at most kMaxPointSize wide.
    int pointSize = 0;
    tesk::Color3f lineColor{0.25f, 0.65f, 1.0f};
    tesk::Color3f pointColor{1.0f, 0.6f, 0.15f};

    static constexpr int kMaxLineWidth = 32;
    static constexpr int kMaxPointSize = 64;

    /// Version 1: line width and point size (32-bit ints), line colour, point colour, then
    /// the base style's block (visible and colour). A line width below 1 or a negative point
    /// size is refused.
    void WriteToStream(std::ostream& out) const override;
    bool ReadFromStream(std::istream& in) override;
};

} // namespace vexa::draw
