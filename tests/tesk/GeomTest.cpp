#include <tesk/Frustum.h>
#include <tesk/geom/Aabb.h>

#include <gtest/gtest.h>

#include <limits>

namespace {

TEST(GeomTest, AabbStartsEmptyAndGrowsByPoints)
{
    geom::TAabb<3, float> box;
    EXPECT_TRUE(box.IsEmpty());
    EXPECT_FALSE(box.IsValid());

    box.Extend({1, 2, 3});
    EXPECT_FALSE(box.IsEmpty());
    EXPECT_FALSE(box.IsValid()); // a single point has no extent

    box.Extend({-1, 4, 3});
    EXPECT_FALSE(box.IsValid()); // flat in z
    box.Extend({0, 0, 7});
    EXPECT_TRUE(box.IsValid());
    EXPECT_EQ(box.min, glm::vec3(-1, 0, 3));
    EXPECT_EQ(box.max, glm::vec3(1, 4, 7));
    EXPECT_EQ(box.Center(), glm::vec3(0, 2, 5));
    EXPECT_EQ(box.Size(), glm::vec3(2, 4, 4));
    EXPECT_TRUE(box.Contains({1, 4, 7}));
    EXPECT_FALSE(box.Contains({1, 4, 7.01f}));

    // A NaN coordinate does not poison the box.
    box.Extend({std::numeric_limits<float>::quiet_NaN(), 10, 0});
    EXPECT_EQ(box.min, glm::vec3(-1, 0, 0));
    EXPECT_EQ(box.max, glm::vec3(1, 10, 7));

    // Merging an empty box changes nothing; merging a real one grows.
    geom::TAabb<3, float> other;
    box.Extend(other);
    EXPECT_EQ(box.max, glm::vec3(1, 10, 7));
    other.Extend({5, 5, 5});
    box.Extend(other);
    EXPECT_EQ(box.max, glm::vec3(5, 10, 7));
}

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
        EXPECT_TRUE(f.Contains(corner)) << "corners computed in float count as inside";

    EXPECT_EQ(f.GetRight(), glm::vec3(1, 0, 0));
    EXPECT_NEAR(f.GetCorners()[tesk::Frustum::NearTopRight].x, 1.0f, 1e-5f);

    // Every corner lies on three of the planes and on the inner side of the other three.
    for (const glm::vec3& corner : f.GetCorners()) {
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
