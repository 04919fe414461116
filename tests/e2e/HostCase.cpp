#include "HostCase.h"

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
            << (options.selectCloud ? "true" : "false") << " }, "
            << R"( { "id": "PointCloudResource:)" << host::kSecondName << R"(" } ] } ] } })" << "\n";
    }
    std::vector<std::string> arguments{"--look", look.string()};
    if (options.second)
        arguments.push_back("--second");
    ASSERT_TRUE(LaunchHost(arguments));
    ASSERT_TRUE(WaitForOutput(host::kReadyLine, 30s)) << Output();
    const Rect window = x->WindowArea();
    layout.area = {0, 0, window.Width(), window.Height()};
    start = WaitForSettled([&](const Picture& p) { return Measure(p).AllVisible(100) && Marker(p).count >= 3; }, 30s);
    if (start.Empty())
    {
        const Picture last = Grab();
        Keep("start-timeout", last);
        FAIL() << "the balls and the marker did not appear; " << Measure(last).Describe() << "; marker "
               << Marker(last).count << " px";
    }
    Keep("start", start);
}

double HostCase::MarkerDiameter(const Picture& picture) const
{
    return std::sqrt(static_cast<double>(Marker(picture).count) * 4.0 / std::numbers::pi);
}

std::vector<std::string> HostCase::Lines() const
{
    std::vector<std::string> lines;
    std::istringstream in(Output());
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

std::size_t HostCase::CountLines(const std::string& line) const
{
    std::size_t count = 0;
    for (const std::string& l : Lines())
        if (l == line)
            ++count;
    return count;
}

} // namespace e2e
