#include "../common/LogCapture.h"

#include <tesk/Scan.h>

#include <gtest/gtest.h>

#include <limits>

using tesk::Scan;

TEST(Scan, CameraValuesRefuseNonsense)
{
    Scan scan;
    // Camera looking along -x with y up: columns x' = (0, 0, 1), y' = (0, 1, 0), z' = (-1, 0, 0).
    const glm::mat3 turned(glm::vec3(0, 0, 1), glm::vec3(0, 1, 0), glm::vec3(-1, 0, 0));
    ASSERT_TRUE(scan.SetCameraBasis(turned));
    EXPECT_EQ(scan.GetViewDirection(), glm::vec3(-1, 0, 0)); // the definition's forward is +z

    testing_support::LogCapture log;
    const glm::mat3 scaled(2.0f);
    const glm::mat3 skewed(glm::vec3(1, 0, 0), glm::vec3(1, 1, 0), glm::vec3(0, 0, 1));
    const glm::mat3 mirror(glm::vec3(-1, 0, 0), glm::vec3(0, 1, 0), glm::vec3(0, 0, 1));
    EXPECT_FALSE(scan.SetCameraBasis(scaled));
    EXPECT_FALSE(scan.SetCameraBasis(skewed));
    EXPECT_FALSE(scan.SetCameraBasis(mirror));
    glm::mat3 broken(1.0f);
    broken[1][1] = std::numeric_limits<float>::quiet_NaN();
    EXPECT_FALSE(scan.SetCameraBasis(broken));
    EXPECT_EQ(log.messages.size(), 4u);
    EXPECT_EQ(scan.GetCameraBasis(), turned);

    EXPECT_FALSE(scan.SetCameraUp(glm::vec3(0.0f)));
    ASSERT_TRUE(scan.SetCameraUp({0, 0, 5}));
    EXPECT_EQ(scan.GetCameraUp(), glm::vec3(0, 0, 1));

    tesk::ScanCameraParams params;
    params.intrinsics.fx = 500.0f;
    params.depthScale = 0.0f;
    EXPECT_FALSE(scan.SetCameraParams(params));
    params.depthScale = 0.001f;
    params.minRange = 2.0f;
    params.maxRange = 1.0f;
    EXPECT_FALSE(scan.SetCameraParams(params));
    params.maxRange = 0.0f; // unknown maximum
    ASSERT_TRUE(scan.SetCameraParams(params));
    EXPECT_EQ(scan.GetCameraParams().intrinsics.fx, 500.0f);
    EXPECT_EQ(log.messages.size(), 7u);
}
