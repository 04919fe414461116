#include "core/DetailBudget.h"

#include <algorithm>
#include <cmath>

namespace vexa {

namespace {

std::size_t Scaled(double points, double factor)
{
    const double scaled = points * factor;
    // Far beyond any cloud: the same as no limit, without overflowing a size_t.
    if (!(scaled < 1e15))
        return static_cast<std::size_t>(1e15);
    return std::max(DetailBudget::kMinimumPoints, static_cast<std::size_t>(std::llround(scaled)));
}

} // namespace

void DetailBudget::Record(double seconds, std::size_t drawnPoints, bool moving)
{
    if (!(seconds > 0.0) || drawnPoints == 0)
        return;
    const double speed = kTargetSeconds / seconds;
    if (!moving) {
        // A full frame within the target: everything can be drawn while moving, too.
        if (speed >= 1.0)
            budget_ = 0;
        else if (budget_ == 0)
            budget_ = Scaled(static_cast<double>(drawnPoints), speed);
        return;
    }
    if (budget_ == 0) {
        if (speed < 1.0)
            budget_ = Scaled(static_cast<double>(drawnPoints), speed);
        return;
    }
    // Part of a frame's time does not depend on the points (clearing, the GUI), so a
    // proportional step overshoots a little; the clamp keeps the walk to the target smooth.
    budget_ = Scaled(static_cast<double>(budget_), std::clamp(speed, 0.5, 2.0));
}

} // namespace vexa
