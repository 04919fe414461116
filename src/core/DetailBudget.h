#pragma once
// How many points each point cloud may draw in a frame while the camera moves, so that a
// drag over ten million points still answers at an interactive rate on a slow GPU (or a
// software one) while a fast one keeps drawing everything.
//
// The budget follows the measured frame time: after a full frame slower than the target it
// starts from that frame's cost per point, and after every frame drawn while moving it is
// scaled by target / measured (within limits, so one odd frame does not swing it). A full
// frame that fits the target lifts the limit again.

#include <cstddef>

namespace vexa {

class DetailBudget {
public:
    /// The frame time aimed at while moving.
    static constexpr double kTargetSeconds = 0.035;
    /// Fewer points than this no longer show what the cloud is.
    static constexpr std::size_t kMinimumPoints = 20'000;

    /// Points per cloud for the next frame while moving; 0 when there is no limit.
    std::size_t Get() const { return budget_; }

    /// A frame took `seconds` and drew `drawnPoints` points of clouds; `moving` tells whether
    /// the budget applied to it.
    void Record(double seconds, std::size_t drawnPoints, bool moving);

private:
    std::size_t budget_ = 0;
};

} // namespace vexa
