// The point budget of frames drawn while the camera moves, as frame times come in.

#include "core/DetailBudget.h"

#include <gtest/gtest.h>

using vexa::DetailBudget;

TEST(DetailBudget, FollowsTheFrameTimeAndLiftsTheLimitWhenEverythingFits)
{
    constexpr double kTarget = DetailBudget::kTargetSeconds;
    DetailBudget budget;
    EXPECT_EQ(budget.Get(), 0u) << "no limit before anything was measured";

    // A full frame four times too slow: a quarter of its points per moving frame.
    budget.Record(4 * kTarget, 1'000'000, false);
    EXPECT_EQ(budget.Get(), 250'000u);

    // Moving frames: too slow shrinks, too fast grows, each step at most by half or double.
    budget.Record(kTarget * 1.25, 250'000, true);
    EXPECT_EQ(budget.Get(), 200'000u);
    budget.Record(kTarget / 10, 200'000, true);
    EXPECT_EQ(budget.Get(), 400'000u);
    budget.Record(kTarget * 100, 400'000, true);
    EXPECT_EQ(budget.Get(), 200'000u);

    // A slow full frame keeps the budget the moving frames found; it never falls below what
    // still shows the cloud.
    budget.Record(kTarget * 50, 1'000'000, false);
    EXPECT_EQ(budget.Get(), 200'000u);
    for (int i = 0; i < 20; ++i)
        budget.Record(kTarget * 10, 100, true);
    EXPECT_EQ(budget.Get(), DetailBudget::kMinimumPoints);

    // A full frame within the target (a fast GPU, a smaller cloud): everything, always.
    budget.Record(kTarget / 2, 1'000'000, false);
    EXPECT_EQ(budget.Get(), 0u);
    // Frames that drew nothing or could not be timed change nothing.
    budget.Record(kTarget * 10, 0, true);
    budget.Record(0.0, 1000, true);
    EXPECT_EQ(budget.Get(), 0u);
}
