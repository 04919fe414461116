// Shift + left click on a drawn point tells the user which point it is.

#include "HostCase.h"

namespace e2e {
namespace {

class Picking : public HostCase {};

TEST_F(Picking, ShiftClickOnAPointReportsItsIndexPositionAndValues)
{
    ASSERT_NO_FATAL_FAILURE(OpenHost());
    const Blob marker = Marker(start);
    ASSERT_GE(marker.count, 3u);

    x->Drag(Button::Left, marker.centroid, marker.centroid, {"Shift_L"}, 1);

    const std::string expected =
        std::string(host::kCloudName) + " point " + std::to_string(host::kMarkerIndex);
    ASSERT_TRUE(WaitForOutput(expected, 15s)) << "no report of \"" << expected << "\"\n" << Output();
    std::string report;
    for (const std::string& line : Lines())
        if (line.find(expected) != std::string::npos)
            report = line;
    EXPECT_EQ(report.rfind("[INFO]", 0), 0u) << "the report should come through rlog::Info: " << report;
    // The marker's position and its "Tag" value, as the panel's number format writes them.
    EXPECT_NE(report.find(expected + " at (0.5, 0.5, 0);"), std::string::npos) << report;
    EXPECT_NE(report.find("; Tag 7.25"), std::string::npos) << report;

    // The notice at the bottom middle shows it too.
    Rect strip;
    EXPECT_FALSE(WaitForNotice(strip).Empty()) << "no notice at the bottom of the window";
    // A pick is no camera gesture.
    EXPECT_EQ(CountDifferences(start, Grab(), layout.RenderArea(), {strip}), 0u) << "the view moved";
}

} // namespace
} // namespace e2e
