#pragma once
// What the test host shows, known to the host and to the cases that check it.

namespace e2e::host {

/// Four balls of points as in the viewer cases (red, green, blue, white) and, away from
/// them, one magenta point at kMarkerIndex whose "Tag" value is kMarkerTag (0 elsewhere).
constexpr const char* kCloudName = "E2E/Cloud";
constexpr int kPointsPerBall = 400;
constexpr int kMarkerIndex = 1234;
constexpr float kMarkerX = 0.5f;
constexpr float kMarkerY = 0.5f;
constexpr float kMarkerZ = 0.0f;
constexpr float kMarkerTag = 7.25f;

/// With --second: a yellow ball at (0, 1, 1), a resource of its own.
constexpr const char* kSecondName = "E2E/Second";

/// Printed once the scene is handed over and the loop starts.
constexpr const char* kReadyLine = "host: ready";
/// Printed when the IsOpen loop has ended.
constexpr const char* kLoopEndedLine = "host: loop ended";
/// Printed after Terminate, just before main returns 0.
constexpr const char* kDoneLine = "host: done";

} // namespace e2e::host
