#include "core/ViewareaSettings.h"

#include "FakeEngine.h"
#include "LogCapture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

using namespace vexa;
namespace fs = std::filesystem;

namespace {

// Each record's fields are the look record's own tests' business; here only the list counts.
std::vector<ViewareaLook> TwoDifferentAreas()
{
    std::vector<ViewareaLook> areas(2);
    areas[0].gridUnits = 0.25f;
    areas[1].camera.position = {-8.0f, 2.0f, 0.0f};
    return areas;
}

} // namespace

TEST(ViewareaSettings, TwoViewareasSurviveSaveAndLoadAndDamagedFilesKeepTheCurrentRecords)
{
    const testing_support::FakeEngine engine; // for its private directory
    const std::string directory = engine.GetIntermediateDirectory();
    ViewareaSettings saved;
    saved.SetRecords(TwoDifferentAreas());
    saved.SetDirty();
    ASSERT_TRUE(saved.Save(directory));
    EXPECT_FALSE(saved.IsDirty());

    ViewareaSettings loaded;
    ASSERT_TRUE(loaded.Load(directory));
    EXPECT_EQ(loaded.GetRecords(), saved.GetRecords());

    // An empty list is a valid file too (no view areas captured yet).
    ASSERT_TRUE(ViewareaSettings().Save(directory));
    ASSERT_TRUE(loaded.Load(directory));
    EXPECT_TRUE(loaded.GetRecords().empty());

    ASSERT_TRUE(saved.Save(directory));
    const std::string path = saved.GetFilePath(directory);
    const auto fullSize = fs::file_size(path);
    ViewareaSettings target;
    const std::vector<ViewareaLook> defaults{ViewareaLook{}};
    for (const auto size : {fullSize - 1, fullSize / 2, std::uintmax_t{6}, std::uintmax_t{2}}) {
        ASSERT_TRUE(saved.Save(directory));
        fs::resize_file(path, size);
        target.SetRecords(defaults);
        testing_support::LogCapture log;
        EXPECT_FALSE(target.Load(directory)) << "size " << size;
        EXPECT_EQ(target.GetRecords(), defaults) << "size " << size;
    }

    // Right version, then a count no layout makes, or one record of bytes that are no record.
    for (const std::vector<std::uint32_t>& words :
         {std::vector<std::uint32_t>{1u, 0xFFFFFFFFu, 0xDEADBEEFu, 7u}, {1u, 1u, 0xDEADBEEFu, 7u, 9u}}) {
        std::ofstream(path, std::ios::binary | std::ios::trunc)
            .write(reinterpret_cast<const char*>(words.data()),
                   static_cast<std::streamsize>(4 * words.size()));
        testing_support::LogCapture log;
        EXPECT_FALSE(target.Load(directory));
        EXPECT_EQ(target.GetRecords(), defaults);
    }
}
