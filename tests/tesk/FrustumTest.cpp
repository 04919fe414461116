#include <tesk/Frustum.h>

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr float kPi = 3.14159265358979f;

// Camera at (0, 0, 5) looking down -z, 90 x 60 degrees, depth 1..10.
tesk::Frustum MakeFrustum()
{
    return tesk::Frustum({0, 0, 5}, {0, 0, -2}, {0, 1, 0}, 1.0f, 10.0f, kPi / 2.0f, kPi / 3.0f);
}

TEST(FrustumTest, ContainsWhatTheCameraSeesAndCornersAndPlanesAgree)
{
    const tesk::Frustum f = MakeFrustum();
    EXPECT_TRUE(f.Contains({0, 0, 0}));
    EXPECT_TRUE(f.Contains({3.9f, 0, 0}));   // 5 deep, half width 5
    EXPECT_FALSE(f.Contains({5.5f, 0, 0}));  // beside it
    EXPECT_TRUE(f.Contains({0, 2.8f, 0}));   // half height 5 * tan(30) = 2.89
    EXPECT_FALSE(f.Contains({0, 3.0f, 0}));  // above it
    EXPECT_FALSE(f.Contains({0, 0, 6}));     // behind the camera
    EXPECT_FALSE(f.Contains({0, 0, 4.5f}));  // before the near plane
    EXPECT_FALSE(f.Contains({0, 0, -5.5f})); // beyond the far plane
    EXPECT_FALSE(f.Contains({std::numeric_limits<float>::quiet_NaN(), 0, 0}));

    for (const glm::vec3& corner : f.GetCorners())
        EXPECT_TRUE(f.Contains(corner));

    EXPECT_EQ(f.GetRight(), glm::vec3(1, 0, 0));

    const auto c = f.GetCorners();
    EXPECT_NEAR(c[tesk::Frustum::NearTopRight].x, 1.0f, 1e-5f);
    EXPECT_NEAR(c[tesk::Frustum::NearTopRight].z, 4.0f, 1e-5f);
    EXPECT_NEAR(c[tesk::Frustum::FarBottomLeft].x, -10.0f, 1e-4f);
    EXPECT_NEAR(c[tesk::Frustum::FarBottomLeft].y, -10.0f * std::tan(kPi / 6.0f), 1e-4f);
    EXPECT_NEAR(c[tesk::Frustum::FarBottomLeft].z, -5.0f, 1e-5f);

    // Every corner lies on three of the planes and on the inner side of the other three.
    for (const glm::vec3& corner : c) {
        int onPlane = 0;
        for (const geom::Plane3& plane : f.GetPlanes()) {
            const float d = plane.SignedDistance(corner);
            EXPECT_GT(d, -1e-4f);
            onPlane += std::abs(d) < 1e-4f ? 1 : 0;
        }
        EXPECT_EQ(onPlane, 3);
    }

    const auto box = f.GetBoundingBox();
    EXPECT_TRUE(box.IsValid());
    EXPECT_NEAR(box.min.z, -5.0f, 1e-5f);
    EXPECT_NEAR(box.max.z, 4.0f, 1e-5f);
    EXPECT_NEAR(box.max.x, 10.0f, 1e-4f);
}

TEST(FrustumTest, UpAlongTheViewStillGivesAUsableFrustum)
{
    // Looking straight down with the up vector also pointing down.
    const tesk::Frustum f({0, 10, 0}, {0, -1, 0}, {0, -1, 0}, 1.0f, 100.0f, 1.0f, 1.0f);
    const glm::vec3 right = f.GetRight();
    EXPECT_NEAR(glm::length(right), 1.0f, 1e-6f);
    EXPECT_NEAR(glm::dot(right, f.GetForward()), 0.0f, 1e-6f);
    EXPECT_TRUE(f.Contains({0, 0, 0}));
    EXPECT_FALSE(f.Contains({0, 20, 0}));
}

} // namespace
