#pragma once
// Base of every end-to-end case: a private X server, one program started in a fresh working
// directory, and waiting on pixels (the program has no frame callback a test could wait on:
// a change has happened when the picture differs and then holds still).
//
// Each case's files live in work/<Suite>.<Name>/ of the build folder: the program's working
// directory (cwd/), its output (program.log), the X server's log, and, when the case fails,
// every picture it judged as PNG so that a person can look at them. With VEXA_E2E_KEEP_PICTURES=1
// the pictures are written for passing cases too.

#include "ChildProcess.h"
#include "Picture.h"
#include "Scene.h"
#include "XSession.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace e2e {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

class E2eTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    const fs::path& CaseDirectory() const { return caseDirectory_; }
    /// The program's working directory: its ./vexa/ settings and ./screenshots/ land here.
    const fs::path& WorkingDirectory() const { return workingDirectory_; }

    /// Starts the program and waits until its window is mapped; `layout` then takes the whole
    /// window as its one view area.
    ::testing::AssertionResult Launch(const std::string& program, const std::vector<std::string>& arguments);
    /// The viewer with the source tree's assets.
    ::testing::AssertionResult LaunchViewer(const std::vector<std::string>& arguments);

    /// The whole file; empty when it cannot be read.
    static std::string ReadFile(const fs::path& file);
    /// What the program wrote to standard output and error so far.
    std::string Output() const { return ReadFile(outputFile_); }
    /// Polls until `done` holds; false after `timeout`.
    static bool WaitFor(const std::function<bool()>& done, std::chrono::milliseconds timeout);
    /// Waits until the output holds `text`.
    bool WaitForOutput(const std::string& text, std::chrono::milliseconds timeout = 10s) const
    {
        return WaitFor([&] { return Output().find(text) != std::string::npos; }, timeout);
    }

    Picture Grab() { return x->Grab(); }
    /// Keeps `picture`, or when it is empty the screen as it is now, under `label` for the
    /// failure report, and returns `picture`.
    Picture Keep(const std::string& label, const Picture& picture);

    using Accept = std::function<bool(const Picture&)>;
    /// The first picture that passes `accept`, with no wait for it to settle (fading notices
    /// never do); empty after `timeout`.
    Picture WaitUntil(const Accept& accept, std::chrono::milliseconds timeout = 15s);
    /// A picture that passes `accept` and then stays exactly the same for a settling time;
    /// empty after `timeout`.
    Picture WaitForSettled(const Accept& accept, std::chrono::milliseconds timeout = 15s);
    /// A settled picture that differs from `before` inside `area`.
    Picture WaitForChange(const Picture& before, const Rect& area)
    {
        return WaitForSettled([&](const Picture& p) { return CountDifferences(before, p, area) > 0; });
    }
    /// A settled picture, whatever it shows.
    Picture WaitForQuiet()
    {
        return WaitForSettled([](const Picture&) { return true; });
    }
    /// Waits as WaitForSettled, with the longer time a program takes to start, and keeps the
    /// result under `label`.
    Picture WaitForWindow(const Accept& accept, const std::string& label,
                          std::chrono::milliseconds timeout = 30s)
    {
        return Keep(label, WaitForSettled(accept, timeout));
    }
    /// The notice that fades in at the bottom middle of the window (a dark strip with light
    /// text), as first seen; empty after `timeout`. `strip` receives its place.
    Picture WaitForNotice(Rect& strip, std::chrono::milliseconds timeout = 15s);

    /// The balls in the 3D area; the sidebar arrow's and the camera button's glyphs, as white as
    /// the white ball, are left out.
    ClusterLayout Measure(const Picture& picture) const
    {
        return MeasureClusters(picture, layout.RenderArea(),
                               {layout.SidebarToggle(), layout.ViewOptionsButton()});
    }
    /// A point of the 3D area given as fractions of its width and height.
    Point At(double fx, double fy) const
    {
        const Rect r = layout.RenderArea();
        return {r.x0 + fx * r.Width(), r.y0 + fy * r.Height()};
    }
    /// Moves the pointer to the 3D area's lower left, out of every widget's way.
    void Rest() { x->MoveTo(static_cast<int>(At(0.1, 0.9).x), static_cast<int>(At(0.1, 0.9).y)); }
    void Click(Point at) { x->Click(Button::Left, static_cast<int>(at.x), static_cast<int>(at.y)); }
    void ClickCentre(const Rect& r) { x->Click(Button::Left, (r.x0 + r.x1) / 2, (r.y0 + r.y1) / 2); }

    std::unique_ptr<XSession> x;
    std::unique_ptr<ChildProcess> program;
    /// The picture a case starts from, and where the view area's widgets are.
    Picture start;
    ViewAreaLayout layout;

private:
    fs::path caseDirectory_;
    fs::path workingDirectory_;
    fs::path outputFile_;
    std::vector<std::pair<std::string, Picture>> kept_;
};

} // namespace e2e
