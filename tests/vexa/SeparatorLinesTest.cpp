// The lines between view areas: inner edges only, in clip space.

#include "core/SeparatorLines.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

TEST(SeparatorLines, OnlyInnerEdgesGetALine)
{
    // One area: no line at all.
    EXPECT_TRUE(vexa::SeparatorLines::ComputeVertices({{0, 0, 800, 600}}, 800, 600).empty());

    // Quad split: each inner edge is drawn, the window border never.
    const std::vector<glm::vec4> quad = {
        {0, 0, 400, 300}, {400, 0, 400, 300}, {0, 300, 400, 300}, {400, 300, 400, 300}};
    const std::vector<glm::vec3> lines = vexa::SeparatorLines::ComputeVertices(quad, 800, 600);
    ASSERT_EQ(lines.size() % 2, 0u);
    EXPECT_EQ(lines.size(), 8u) << "a right edge in each left area, a bottom edge in each top area";
    for (std::size_t i = 0; i < lines.size(); i += 2) {
        const bool vertical = lines[i].x == lines[i + 1].x;
        if (vertical)
            EXPECT_FLOAT_EQ(lines[i].x, 0.0f) << "the middle column";
        else
            EXPECT_FLOAT_EQ(lines[i].y, 0.0f) << "the middle row";
        for (const glm::vec3& v : {lines[i], lines[i + 1]}) {
            EXPECT_GE(std::min(v.x, v.y), -1.0f);
            EXPECT_LE(std::max(v.x, v.y), 1.0f);
        }
    }

    // A zero-sized window does not divide by zero.
    for (const glm::vec3& v : vexa::SeparatorLines::ComputeVertices(quad, 0, 0))
        EXPECT_TRUE(std::isfinite(v.x) && std::isfinite(v.y));
}
