#pragma once
// Vector comparisons with a tolerance per component, printing both vectors on failure.

#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <glm/vector_relational.hpp>

#include <gtest/gtest.h>

namespace testing_support {

inline ::testing::AssertionResult Near(const glm::vec3& actual, const glm::vec3& expected,
                                       float tolerance = 1e-5f)
{
    if (glm::all(glm::lessThanEqual(glm::abs(actual - expected), glm::vec3(tolerance))))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << "(" << actual.x << ", " << actual.y << ", " << actual.z << ") is not within " << tolerance
           << " of (" << expected.x << ", " << expected.y << ", " << expected.z << ")";
}

inline void ExpectNear(const glm::vec3& actual, const glm::vec3& expected, float tolerance = 1e-5f)
{
    EXPECT_TRUE(Near(actual, expected, tolerance));
}

/// Screen points: compared as (x, y, 0).
inline void ExpectNear(const glm::vec2& actual, const glm::vec2& expected, float tolerance = 1e-5f)
{
    EXPECT_TRUE(Near(glm::vec3(actual, 0.0f), glm::vec3(expected, 0.0f), tolerance));
}

} // namespace testing_support
