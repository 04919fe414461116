// Shift + left click on a drawn point tells the user which point it is.

#include "HostCase.h"

#include <cmath>
#include <cstdlib>
#include <regex>

namespace e2e {
namespace {

class Picking : public HostCase {};

/// The numbers in `text`, in order.
std::vector<double> Numbers(const std::string& text)
{
    std::vector<double> numbers;
    static const std::regex number(R"([-+]?(\d+\.?\d*|\.\d+)([eE][-+]?\d+)?)");
    for (auto it = std::sregex_iterator(text.begin(), text.end(), number); it != std::sregex_iterator(); ++it)
        numbers.push_back(std::strtod(it->str().c_str(), nullptr));
    return numbers;
}

/// Whether `wanted` appear in `numbers` in this order (not necessarily next to each other).
bool ContainsInOrder(const std::vector<double>& numbers, const std::vector<double>& wanted)
{
    std::size_t next = 0;
    for (double n : numbers)
        if (next < wanted.size() && std::abs(n - wanted[next]) < 1e-3)
            ++next;
    return next == wanted.size();
}

TEST_F(Picking, ShiftClickOnAPointReportsItsIndexPositionAndValues)
{
    ASSERT_NO_FATAL_FAILURE(OpenHost());
    const Blob marker = Marker(start);
    ASSERT_GE(marker.count, 3u);
    const int mx = static_cast<int>(marker.centroid.x), my = static_cast<int>(marker.centroid.y);

    x->MoveTo(mx, my);
    x->KeyDown("Shift_L");
    x->Press(Button::Left);
    XSession::Pause(40ms);
    x->Release(Button::Left);
    x->KeyUp("Shift_L");

    const std::string expected = std::string(host::kCloudName) + " point " + std::to_string(host::kMarkerIndex);
    ASSERT_TRUE(WaitForOutput(expected, 15s)) << "no report of \"" << expected << "\"\n" << Output();
    std::string report;
    for (const std::string& line : Lines())
        if (line.find(expected) != std::string::npos)
            report = line;
    EXPECT_EQ(report.rfind("[INFO]", 0), 0u) << "the report should come through rlog::Info: " << report;
    const std::string details = report.substr(report.find(expected) + expected.size());
    EXPECT_TRUE(ContainsInOrder(Numbers(details), {host::kMarkerX, host::kMarkerY, host::kMarkerZ}))
        << "the position is missing from: " << report;
    EXPECT_TRUE(ContainsInOrder(Numbers(details), {host::kMarkerTag})) << "the Tag value is missing from: " << report;

    // The notice at the bottom middle shows it too.
    Rect strip;
    EXPECT_FALSE(WaitForNotice(strip).Empty()) << "no notice at the bottom of the window";
    // A pick is no camera gesture.
    EXPECT_EQ(CountDifferences(start, Grab(), layout.RenderArea(), {strip}), 0u) << "the view moved";
}

} // namespace
} // namespace e2e
