#pragma once
// Cases that run the test host (hosts/E2eHost.cpp): the four balls plus one magenta marker
// point, key callbacks and log messages on its standard output.

#include "E2eTest.h"
#include "Scene.h"

#include "hosts/HostScene.h"

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
    };

    /// Writes a look (one view area, 1100 x 760), starts the host and waits until it is ready
    /// and the balls and the marker are drawn and hold still.
    void OpenHost(const HostOptions& options);
    void OpenHost() { OpenHost(HostOptions{}); }

    /// The balls in the 3D area; the sidebar arrow's and the camera button's glyphs, as white as
    /// the white ball, are left out.
    ClusterLayout Measure(const Picture& picture) const
    {
        return MeasureClusters(picture, layout.RenderArea(), {layout.SidebarToggle(), layout.ViewOptionsButton()});
    }
    /// The diameter the marker point is drawn with, from its area (points are round).
    double MarkerDiameter(const Picture& picture) const;
    Blob Marker(const Picture& picture) const { return FindBlob(picture, layout.RenderArea(), IsMagenta); }
    /// How many lines of the output are exactly `line`.
    std::size_t CountLines(const std::string& line) const;
    std::vector<std::string> Lines() const;

    Picture start;
    ViewAreaLayout layout;
};

} // namespace e2e
