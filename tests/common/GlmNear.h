#pragma once
// Vector comparisons with a tolerance per component, printing both vectors on failure.

#include <glm/vec3.hpp>
#include <glm/vector_relational.hpp>

#include <gtest/gtest.h>

namespace testing_support {

inline ::testing::AssertionResult Near(const glm::vec3& actual, const glm::vec3& expected, float tolerance = 1e-5f)
{
    if (glm::all(glm::lessThanEqual(glm::abs(actual - expected), glm::vec3(tolerance))))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "(" << actual.x << ", " << actual.y << ", " << actual.z
                                         << ") is not within " << tolerance << " of (" << expected.x << ", "
                                         << expected.y << ", " << expected.z << ")";
}

inline void ExpectNear(const glm::vec3& actual, const glm::vec3& expected, float tolerance = 1e-5f)
{
    EXPECT_TRUE(Near(actual, expected, tolerance));
}

} // namespace testing_support
