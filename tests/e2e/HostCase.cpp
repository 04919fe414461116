#include "HostCase.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <numbers>
#include <sstream>

namespace e2e {

void HostCase::OpenHost(const HostOptions& options)
{
    const fs::path look = CaseDirectory() / "host-look.json";
    {
        std::ofstream out(look);
        out << R"({ "vexa": { "version": "1.0", "caption": "VEXA e2e host", "width": 1100, "height": 760,)"
            << R"( "background": "2E3138", "key-shortcuts-enabled": true, "views": [ {)"
            << R"( "position": "0, 0; 0, 0", "size": "1, 0; 1, 0", "units": [)"
            << R"( { "id": "PointCloudResource:)" << host::kCloudName << R"(", "auto-select": )"
            << (options.selectCloud ? "true" : "false") << R"(, "gui-enabled": )"
            << (options.cloudPanel ? "true" : "false") << " }, "
            << R"( { "id": "PointCloudResource:)" << host::kSecondName << R"(" } ] } ] } })"
            << "\n";
    }
    std::vector<std::string> arguments{"--look", look.string()};
    if (options.second)
        arguments.push_back("--second");
    ASSERT_TRUE(Launch(E2E_HOST, arguments));
    ASSERT_TRUE(WaitForOutput(host::kReadyLine, 30s)) << Output();
    start = WaitForWindow(
        [&](const Picture& p) { return Measure(p).AllVisible(100) && Marker(p).count >= 3; }, "start");
    ASSERT_FALSE(start.Empty()) << "the balls and the marker did not appear; " << Measure(Grab()).Describe()
                                << "; marker " << Marker(Grab()).count << " px";
}

double HostCase::MarkerDiameter(const Picture& picture) const
{
    return std::sqrt(static_cast<double>(Marker(picture).count) * 4.0 / std::numbers::pi);
}

void HostCase::ExpectMarkerDiameter(double diameter, const std::string& label)
{
    const Picture drawn = Keep(
        label,
        WaitForSettled([&](const Picture& p) { return std::abs(MarkerDiameter(p) - diameter) <= 2.0; }, 15s));
    EXPECT_FALSE(drawn.Empty()) << "the points should be drawn " << diameter
                                << " px wide; the marker point is " << MarkerDiameter(Grab()) << " px wide ("
                                << MarkerDiameter(start) << " px at the start)";
}

std::vector<std::string> HostCase::Lines() const
{
    std::vector<std::string> lines;
    std::istringstream in(Output());
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

Rect HostCase::FindPointSizeField(const Picture& picture)
{
    const std::vector<PanelHeader> headers = FindPanelHeaders(picture, layout);
    const Rect box =
        headers.empty() ? Rect{} : FindEditBox(picture, layout.PanelColumn(), headers[0].rect.y1);
    if (box.Width() == 0)
        ADD_FAILURE() << "no edit box in the cloud's panel";
    return box;
}

} // namespace e2e
