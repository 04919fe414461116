#include "PointCloudFile.h"

#include "LogCapture.h"
#include "TempFolder.h"

#include <gtest/gtest.h>

#include <string>

using vexa::viewer::ReadPointCloudFile;

TEST(PointCloudFile, ChoosesTheReaderByExtensionInAnyCase)
{
    testing_support::TempFolder folder;
    const std::string ply = "ply\nformat ascii 1.0\nelement vertex 1\nproperty float x\nproperty float y\n"
                            "property float z\nend_header\n1 2 3\n";
    const std::string text = "4 5 6\n";

    for (const char* name : {"a.ply", "B.PLY"}) {
        tesk::PointCloud cloud;
        std::string error;
        ASSERT_TRUE(ReadPointCloudFile(folder.Write(name, ply), cloud, error)) << error;
        EXPECT_EQ(cloud.GetPositions()[0], glm::vec3(1.0f, 2.0f, 3.0f));
    }
    for (const char* name : {"a.xyz", "b.Pts", "c.TXT", "d.csv", "e.asc"}) {
        tesk::PointCloud cloud;
        std::string error;
        ASSERT_TRUE(ReadPointCloudFile(folder.Write(name, text), cloud, error)) << name << ": " << error;
        EXPECT_EQ(cloud.GetPositions()[0], glm::vec3(4.0f, 5.0f, 6.0f));
    }
    // Text in a .ply file is judged as PLY, not guessed at.
    tesk::PointCloud cloud;
    std::string error;
    EXPECT_FALSE(ReadPointCloudFile(folder.Write("wrong.ply", text), cloud, error));
    EXPECT_EQ(error, "wrong.ply: line 1: not a PLY file (the first line is not 'ply')");
}

TEST(PointCloudFile, UnknownOrMissingFilesFailWithTheirName)
{
    testing_support::TempFolder folder;
    testing_support::LogCapture log;
    tesk::PointCloud cloud(std::vector<glm::vec3>{{7.0f, 7.0f, 7.0f}});
    std::string error;

    EXPECT_FALSE(ReadPointCloudFile(folder.Write("mesh.obj", "v 1 2 3\n"), cloud, error));
    EXPECT_EQ(error, "mesh.obj: unsupported file type '.obj'; expected .ply, .xyz, .pts, .txt, .csv or .asc");
    EXPECT_TRUE(log.Contains(error, "vexa::viewer::ReadPointCloudFile"));

    EXPECT_FALSE(ReadPointCloudFile(folder.Write("README", "x"), cloud, error));
    EXPECT_EQ(error, "README: unsupported file type (no extension); expected .ply, .xyz, .pts, .txt, .csv or .asc");

    EXPECT_FALSE(ReadPointCloudFile(folder.PathOf("gone.ply"), cloud, error));
    EXPECT_EQ(error.rfind("gone.ply: cannot open file (", 0), 0u) << error;
    EXPECT_TRUE(log.Contains(error, "vexa::viewer::ReadPly"));

    EXPECT_EQ(cloud.Size(), 1u);
}
