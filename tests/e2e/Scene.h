#pragma once
// The scene the camera cases look at and the places of the viewer's own widgets.
//
// The scene is four small balls of points: red at (1,0,0), green at (0,1,0), blue at (0,0,1)
// and white at the origin. From the picture alone, each ball's centroid, the mean of the four
// and their spread tell what the camera did: an orbit moves the balls against each other, a
// pan moves them all alike, a roll turns them about their mean, a dolly or zoom scales them.

#include "Picture.h"

#include <array>
#include <filesystem>
#include <string>
#include <vector>

namespace e2e {

/// Writes the four balls as an ASCII PLY with colours (`pointsPerBall` each, radius 0.08).
void WriteClusterPly(const std::filesystem::path& file, int pointsPerBall = 1500);

/// The balls' colours as drawn. The scene's axis lines are drawn in softer reds, greens and
/// blues (235,41,41 and alike); the limits keep them, and the grid's greys, out.
bool IsRed(Rgb c);
bool IsGreen(Rgb c);
bool IsBlue(Rgb c);
bool IsWhite(Rgb c);
/// The host's one magenta point.
bool IsMagenta(Rgb c);

struct ClusterLayout {
    /// Red, green, blue, white.
    std::array<Blob, 4> balls;

    /// Every ball shows with at least `pixels` pixels.
    bool AllVisible(std::size_t pixels = 150) const;
    Point Mean() const;
    /// Mean distance of the balls' centroids from their mean.
    double Spread() const;
    std::string Describe() const;
};

/// Both layouts, for a failure message.
std::string Compare(const ClusterLayout& before, const ClusterLayout& after);

ClusterLayout MeasureClusters(const Picture& picture, const Rect& area, const std::vector<Rect>& holes = {});

double Distance(Point a, Point b);

/// Where a view area's widgets are, from assets/resources/ViewArea.layout and the sidebar
/// panel template (src/gui/GuiPanel.cpp): the sidebar is 270 px wide along the right edge,
/// its toolbar 32 px high; the toggle arrow sits at the 3D area's top right, 26..6 px from its
/// right edge and 6..26 px from the top; panels are indented 7 px and open with a 24 px header holding the
/// focus button at its left and the pin and remove buttons (24 px each) at its right.
struct ViewAreaLayout {
    Rect area;
    bool sidebarVisible = true;

    static constexpr int kSidebarWidth = 270;
    static constexpr int kToolbarHeight = 32;
    static constexpr int kPanelIndent = 7;
    static constexpr int kHeaderHeight = 24;

    Rect Sidebar() const;
    /// The part the scene is drawn in: the view area left of the sidebar.
    Rect RenderArea() const;
    Rect SidebarToggle() const;
    /// The camera button at the view area's top-left that opens the view options pop-up.
    Rect ViewOptionsButton() const { return {area.x0 + 6, area.y0 + 6, area.x0 + 26, area.y0 + 26}; }
    /// The column of the panels below the toolbar.
    Rect PanelColumn() const;
};

/// Header colours of a resource panel: "FF5D5D5D", and "FF435B72" when its resource is selected.
constexpr Rgb kHeaderColor{0x5D, 0x5D, 0x5D};
constexpr Rgb kSelectedHeaderColor{0x43, 0x5B, 0x72};
/// Edit boxes (also a spinner's) are filled with the look's input colour "FF3C3F41".
constexpr Rgb kInputColor{0x3C, 0x3F, 0x41};

/// A panel header found on screen.
struct PanelHeader {
    Rect rect;
    bool selected = false;
    /// Whether it has the focus button a resource panel has.
    bool focusButton = false;

    Point FocusButton() const { return {rect.x0 + 12.0, rect.y0 + 12.0}; }
    Point PinButton() const { return {rect.x1 - 36.0, rect.y0 + 12.0}; }
    Point RemoveButton() const { return {rect.x1 - 12.0, rect.y0 + 12.0}; }
    /// The pin button's rectangle.
    Rect PinRect() const { return {rect.x1 - 48, rect.y0, rect.x1 - 24, rect.y1}; }
};

/// The resource panels' headers in the column, top to bottom: 24 px high runs of a header
/// colour in the gap between the focus button and the title, with the focus glyph beside them.
std::vector<PanelHeader> FindPanelHeaders(const Picture& picture, const ViewAreaLayout& layout);
/// Every header in the column, the built-in panels' (resource inspector, global options; no
/// focus button) too.
std::vector<PanelHeader> FindAllPanelHeaders(const Picture& picture, const ViewAreaLayout& layout);

/// The first edit box below `top` inside `column` (a run of the input colour at least 40 px
/// wide); an empty rectangle when there is none.
Rect FindEditBox(const Picture& picture, const Rect& column, int top);

/// A push button's border colour "FF5F6266".
constexpr Rgb kButtonBorderColor{0x5F, 0x62, 0x66};

/// The wide push buttons of `column` between rows `top` and `bottom`, top to bottom: a
/// button's top edge is a run of the border colour over half the column or more.
std::vector<Rect> FindWideButtons(const Picture& picture, const Rect& column, int top, int bottom);

/// How many pixels of `area` show a glyph of the icon colour (near white) - the pin, for one.
std::size_t CountLightPixels(const Picture& picture, const Rect& area);

} // namespace e2e
