#pragma once
// Cases that run the test host (hosts/E2eHost.cpp): the four balls plus one magenta marker
// point, key callbacks and log messages on its standard output.

#include "E2eTest.h"

#include "hosts/HostScene.h"

#include <algorithm>
#include <string>
#include <vector>

namespace e2e {

class HostCase : public E2eTest {
protected:
    struct HostOptions {
        /// Adds the second resource (a yellow ball).
        bool second = false;
        /// The look's rule for the cloud: selected in the sidebar from the start.
        bool selectCloud = false;
        /// Whether the cloud has a panel in the sidebar.
        bool cloudPanel = true;
    };

    /// Writes a look (one view area, 1100 x 760), starts the host and waits until it is ready
    /// and the balls and the marker are drawn and hold still.
    void OpenHost(const HostOptions& options);
    void OpenHost() { OpenHost(HostOptions{}); }

    /// The diameter the marker point is drawn with, from its area (points are round).
    double MarkerDiameter(const Picture& picture) const;
    /// Waits for the marker to be drawn `diameter` px wide (within 2 px); fails if it is not.
    void ExpectMarkerDiameter(double diameter, const std::string& label);
    Blob Marker(const Picture& picture) const { return FindBlob(picture, layout.RenderArea(), IsMagenta); }
    /// How many lines of the output are exactly `line`.
    std::size_t CountLines(const std::string& line) const
    {
        return static_cast<std::size_t>(std::ranges::count(Lines(), line));
    }
    std::vector<std::string> Lines() const;
    /// Waits for `line` to appear `count` times in the host's output.
    bool WaitForLines(const std::string& line, std::size_t count,
                      std::chrono::milliseconds timeout = 10s) const
    {
        return WaitFor([&] { return CountLines(line) >= count; }, timeout);
    }
    /// The cloud panel's first field, "Point size", in `picture` (the cloud's panel first);
    /// fails the case and is empty when not found.
    Rect FindPointSizeField(const Picture& picture);
};

} // namespace e2e
