#include <tesk/geom/Aabb.h>
#include <tesk/geom/LineSegment.h>
#include <tesk/geom/Sphere.h>

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
    EXPECT_EQ(box.min, glm::vec3(1, 2, 3));
    EXPECT_EQ(box.max, glm::vec3(1, 2, 3));

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

    // Both spellings name the same type.
    tesk::geom::TAabb<2, int> flat({0, 0}, {3, 0});
    EXPECT_FALSE(flat.IsValid());
}

TEST(GeomTest, SphereAndSegment)
{
    const geom::TSphere<3, float> s({1, 0, 0}, 2.0f);
    EXPECT_TRUE(s.Contains({3, 0, 0}));
    EXPECT_FALSE(s.Contains({3.01f, 0, 0}));

    const geom::LineSegment3 line{{0, 0, 0}, {3, 4, 0}};
    EXPECT_FLOAT_EQ(line.Length(), 5.0f);
    EXPECT_EQ(line.PointAt(0.5f), glm::vec3(1.5f, 2.0f, 0.0f));
}

} // namespace
