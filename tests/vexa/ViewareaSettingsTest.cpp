#include "core/ViewareaSettings.h"

#include "LogCapture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

using namespace vexa;
namespace fs = std::filesystem;

namespace {

std::string FreshDirectory(const std::string& name)
{
    const fs::path directory = fs::temp_directory_path() / ("vexa-viewareas-" + name + "-" + std::to_string(::getpid()));
    fs::remove_all(directory);
    fs::create_directories(directory);
    return directory.string() + "/";
}

std::vector<ViewareaLook> TwoDifferentAreas()
{
    ViewareaLook left;
    left.axes = false;
    left.gridMode = ViewareaLook::GridXY;
    left.gridUnits = 0.25f;
    left.sidebarVisible = false;
    left.nearPlane = 0.01f;
    left.farPlane = 150.0f;
    left.camera.position = {5.0f, -1.0f, 3.0f};
    left.camera.target = {1.0f, 0.5f, 0.0f};
    left.camera.up = {0.0f, 0.0f, 1.0f};
    left.camera.fixedRotationEnabled = true;
    left.camera.axis = {0.0f, 0.0f, 1.0f};

    ViewareaLook right;
    right.position = {{0.5f, 0.0f}, {0.0f, 0.0f}};
    right.gridMode = ViewareaLook::GridZX;
    right.gridUnits = 10.0f;
    right.camera.position = {-8.0f, 2.0f, 0.0f};
    return {left, right};
}

} // namespace

TEST(ViewareaSettings, TwoViewareasSurviveSaveAndLoad)
{
    const std::string directory = FreshDirectory("roundtrip");
    ViewareaSettings saved;
    EXPECT_EQ(saved.GetFileName(), "viewareas.bin");
    saved.SetRecords(TwoDifferentAreas());
    saved.SetDirty();
    ASSERT_TRUE(saved.Save(directory));
    EXPECT_FALSE(saved.IsDirty());

    ViewareaSettings loaded;
    ASSERT_TRUE(loaded.Load(directory));
    ASSERT_EQ(loaded.GetRecords().size(), 2u);
    EXPECT_EQ(loaded.GetRecords(), saved.GetRecords());
    EXPECT_NE(loaded.GetRecords()[0], loaded.GetRecords()[1]);

    // An empty list is a valid file too (no view areas captured yet).
    ViewareaSettings empty;
    ASSERT_TRUE(empty.Save(directory));
    ASSERT_TRUE(loaded.Load(directory));
    EXPECT_TRUE(loaded.GetRecords().empty());
    fs::remove_all(directory);
}

TEST(ViewareaSettings, TruncatedOrGarbageFileKeepsCurrentRecords)
{
    const std::string directory = FreshDirectory("corrupt");
    ViewareaSettings source;
    source.SetRecords(TwoDifferentAreas());
    ASSERT_TRUE(source.Save(directory));
    const std::string path = source.GetFilePath(directory);
    const auto fullSize = fs::file_size(path);

    ViewareaSettings target;
    const std::vector<ViewareaLook> defaults{ViewareaLook{}};
    for (const auto size : {fullSize - 1, fullSize / 2, std::uintmax_t{6}, std::uintmax_t{2}})
    {
        ASSERT_TRUE(source.Save(directory));
        fs::resize_file(path, size);
        target.SetRecords(defaults);
        testing_support::LogCapture log;
        EXPECT_FALSE(target.Load(directory)) << "size " << size;
        EXPECT_EQ(target.GetRecords(), defaults) << "size " << size;
    }

    // Right version, then a count no layout makes and bytes that are not records.
    {
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        const std::uint32_t header[] = {1u, 0xFFFFFFFFu, 0xDEADBEEFu, 7u};
        out.write(reinterpret_cast<const char*>(header), sizeof(header));
    }
    {
        testing_support::LogCapture log;
        EXPECT_FALSE(target.Load(directory));
        EXPECT_EQ(target.GetRecords(), defaults);
    }
    {
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        const std::uint32_t header[] = {1u, 1u, 0xDEADBEEFu, 7u, 9u};
        out.write(reinterpret_cast<const char*>(header), sizeof(header));
    }
    {
        testing_support::LogCapture log;
        EXPECT_FALSE(target.Load(directory));
        EXPECT_EQ(target.GetRecords(), defaults);
    }
    fs::remove_all(directory);
}
