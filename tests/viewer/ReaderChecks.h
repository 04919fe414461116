#pragma once
// What every reader test checks the same way: a file that must read (the reader's message
// shown when it does not), and bad files that must fail fast with exactly their message,
// logged under the reader's label, leaving what the caller passed in as it was.

#include "LogCapture.h"

#include <tesk/Mesh.h>
#include <tesk/PointCloud.h>

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

namespace testing_support {

/// `read(bytes, name, target, error)` as an assertion that carries the reader's message.
template <typename Read, typename Target>
::testing::AssertionResult Reads(const Read& read, std::string_view bytes, Target& target,
                                 const std::string& name = "test")
{
    std::string error;
    if (read(bytes, name, target, error))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << error;
}

inline std::vector<std::string> PropertyNames(const tesk::PointCloud& cloud)
{
    std::vector<std::string> names;
    for (const tesk::PointProperty& property : cloud.GetProperties())
        names.push_back(property.GetName());
    return names;
}

/// A file and the message it must fail with, after "<name>: ".
struct BadFile {
    std::string bytes;
    std::string error;
};

inline void MakeOnePoint(tesk::PointCloud& cloud)
{
    cloud = tesk::PointCloud(std::vector<glm::vec3>{{7.0f, 7.0f, 7.0f}});
}
inline void MakeOnePoint(tesk::Mesh& mesh)
{
    tesk::PointCloud cloud;
    MakeOnePoint(cloud);
    mesh = tesk::Mesh(cloud);
    mesh.SetFaces(std::vector<glm::uvec3>{{0, 0, 0}});
}
inline void ExpectOnePoint(const tesk::PointCloud& cloud)
{
    ASSERT_EQ(cloud.Size(), 1u);
    EXPECT_EQ(cloud.GetPositions()[0], glm::vec3(7.0f));
}
inline void ExpectOnePoint(const tesk::Mesh& mesh)
{
    EXPECT_EQ(mesh.FaceCount(), 1u);
    ExpectOnePoint(mesh.GetVertices());
}

/// Each file fails within a second (nothing is allocated for what a file only claims) with
/// exactly "<name>: <error>", logged under `label`, and a one-point target is left alone.
template <typename Target, typename Read>
void ExpectEachFails(const Read& read, const std::string& name, const std::string& label,
                     const std::vector<BadFile>& files)
{
    for (const BadFile& file : files) {
        SCOPED_TRACE(file.error);
        LogCapture log;
        Target target;
        MakeOnePoint(target);
        std::string error;
        const auto start = std::chrono::steady_clock::now();
        EXPECT_FALSE(read(file.bytes, name, target, error));
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
        EXPECT_EQ(error, name + ": " + file.error);
        EXPECT_TRUE(log.Contains(name + ": " + file.error, label));
        ExpectOnePoint(target);
    }
}

} // namespace testing_support
