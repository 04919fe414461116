#include <tesk/Interpolator.h>

#include <gtest/gtest.h>

#include "../common/LogCapture.h"

#include <string>

namespace {

TEST(InterpolatorTest, KeysStayOrderedAndEqualTimesKeepInsertionOrder)
{
    tesk::Interpolator<float> keys;
    EXPECT_TRUE(keys.Empty());
    EXPECT_EQ(keys.LastTime(), 0.0f);

    keys.Insert(2.0f, 20.0f);
    keys.Insert(0.0f, 0.0f);
    keys.Insert(2.0f, 21.0f);
    keys.Insert(1.0f, 10.0f);
    keys.Insert(2.0f, 22.0f);

    ASSERT_EQ(keys.Size(), 5u);
    const float times[] = {0, 1, 2, 2, 2};
    const float values[] = {0, 10, 20, 21, 22};
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(keys.GetTime(i), times[i]);
        EXPECT_EQ(keys.GetValue(i), values[i]);
    }
    EXPECT_EQ(keys.FirstTime(), 0.0f);
    EXPECT_EQ(keys.LastTime(), 2.0f);

    keys.RemoveLast();
    EXPECT_EQ(keys.Size(), 4u);
    EXPECT_EQ(keys.GetValue(3), 21.0f);

    testing_support::LogCapture log;
    EXPECT_EQ(keys.GetValue(9), 0.0f);
    EXPECT_EQ(log.messages.size(), 1u);

    // Without keys every query logs a failure and gives the default.
    tesk::Interpolator<glm::vec3> none;
    EXPECT_EQ(none.GetValueAtTimeCubic(1.5f), glm::vec3(0.0f));
    EXPECT_TRUE(log.Contains("Can not interpolate to time 1.500000 when no key frames available.",
                             "tesk::Interpolator::GetValueAtTimeCubic"));
    EXPECT_EQ(none.GetValueAtTime(-2.0f), glm::vec3(0.0f));
    EXPECT_TRUE(log.Contains("Can not interpolate to time -2.000000 when no key frames available.",
                             "tesk::Interpolator::GetValueAtTime"));
    EXPECT_EQ(log.messages.back().level, rlog::Level::Failure);
}

TEST(InterpolatorTest, KeyTimesGiveKeyValuesAndOutsideClamps)
{
    tesk::Interpolator<glm::vec3> keys;
    keys.Insert(0.0f, {0, 0, 0});
    keys.Insert(0.5f, {1, 2, 3});
    keys.Insert(3.0f, {-4, 1, 0});
    keys.Insert(3.1f, {5, 5, 5});

    for (const auto& key : keys.Keys()) {
        EXPECT_EQ(keys.GetValueAtTime(key.time), key.value);
        EXPECT_EQ(keys.GetValueAtTimeCubic(key.time), key.value);
    }
    for (const float t : {-1.0f, 9.0f}) {
        const glm::vec3 end = t < 0.0f ? glm::vec3(0, 0, 0) : glm::vec3(5, 5, 5);
        EXPECT_EQ(keys.GetValueAtTime(t), end);
        EXPECT_EQ(keys.GetValueAtTimeCubic(t), end);
    }
    // Linear uses the position inside the segment, not the segment count.
    EXPECT_LT(glm::distance(keys.GetValueAtTime(1.75f), glm::vec3(-1.5f, 1.5f, 1.5f)), 1e-5f);

    // A single key is the answer at every time.
    tesk::Interpolator<float> one;
    one.Insert(2.0f, 7.0f);
    EXPECT_EQ(one.GetValueAtTimeCubic(0.0f), 7.0f);
    EXPECT_EQ(one.GetValueAtTimeCubic(5.0f), 7.0f);
}

TEST(InterpolatorTest, CubicIsContinuousAcrossUnevenKeys)
{
    // Keys on a straight line at uneven times: Catmull-Rom reproduces the line between the
    // key values, and approaching a key from either side meets its value.
    tesk::Interpolator<float> keys;
    const float times[] = {0.0f, 0.1f, 2.0f, 2.2f, 7.0f};
    for (int i = 0; i < 5; ++i)
        keys.Insert(times[i], static_cast<float>(i));

    EXPECT_NEAR(keys.GetValueAtTimeCubic(1.05f), 1.5f, 1e-5f); // middle of the long segment
    for (int i = 1; i < 4; ++i) {
        const float t = times[i];
        EXPECT_NEAR(keys.GetValueAtTimeCubic(t - 1e-4f), static_cast<float>(i), 1e-2f) << i;
        EXPECT_NEAR(keys.GetValueAtTimeCubic(t + 1e-4f), static_cast<float>(i), 1e-2f) << i;
    }

    // Between equal neighbours the curve stays flat: no overshoot from the repeated ends.
    tesk::Interpolator<float> plateau;
    plateau.Insert(0.0f, 1.0f);
    plateau.Insert(1.0f, 1.0f);
    plateau.Insert(5.0f, 1.0f);
    EXPECT_FLOAT_EQ(plateau.GetValueAtTimeCubic(0.3f), 1.0f);
    EXPECT_FLOAT_EQ(plateau.GetValueAtTimeCubic(4.0f), 1.0f);
}

// A user type's own blending, found by argument-dependent lookup, is what the camera poses of
// the animation gadget use (e2e CameraFlight); here, the library's own quaternion blending.
TEST(InterpolatorTest, QuaternionsBlendAlongTheSphere)
{
    tesk::Interpolator<glm::quat> rotations;
    rotations.Insert(0.0f, glm::quat(1, 0, 0, 0));
    rotations.Insert(1.0f, glm::angleAxis(1.0f, glm::vec3(0, 0, 1)));
    rotations.Insert(2.0f, glm::angleAxis(2.0f, glm::vec3(0, 0, 1)));
    rotations.Insert(3.0f, glm::angleAxis(3.0f, glm::vec3(0, 0, 1)));
    const glm::quat halfway = rotations.GetValueAtTime(0.5f);
    EXPECT_NEAR(glm::angle(halfway), 0.5f, 1e-5f);
    const glm::quat smooth = rotations.GetValueAtTimeCubic(1.5f);
    EXPECT_NEAR(glm::length(smooth), 1.0f, 1e-5f);
    EXPECT_NEAR(glm::angle(smooth), 1.5f, 2e-3f);
}

} // namespace
