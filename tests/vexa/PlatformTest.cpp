#include "core/Platform.h"

#include "FakeEngine.h"
#include "LogCapture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

using namespace vexa;
namespace fs = std::filesystem;

namespace {

class PlatformTest : public ::testing::Test {
protected:
    // The fake engine's private directory without its final slash, removed again with it.
    testing_support::FakeEngine engine_;
    const std::string root_ = fs::path(engine_.GetIntermediateDirectory()).parent_path().string();
};

} // namespace

TEST_F(PlatformTest, IntermediateDirectoryGetsOneSlashAndIsCreatedOneLevelDeep)
{
    // {given, created, taken}. A backslash is not a separator here: the slash goes after it.
    // Only the last level is created, yet the path is still taken; "" is never the root.
    const std::tuple<std::string, bool, std::string> cases[] = {{root_ + "/state", true, root_ + "/state/"},
                                                                {root_ + "/kept/", true, root_ + "/kept/"},
                                                                {root_ + "/win\\", true, root_ + "/win\\/"},
                                                                {root_ + "/a/b", false, root_ + "/a/b/"},
                                                                {"", false, ""}};
    std::string directory;
    for (const auto& [given, created, taken] : cases) {
        EXPECT_EQ(NormalizeIntermediateDirectory(given, directory), created) << given;
        EXPECT_EQ(directory, taken);
    }
    EXPECT_TRUE(fs::is_directory(root_ + "/state"));
    EXPECT_FALSE(fs::exists(root_ + "/a"));
}

TEST_F(PlatformTest, AssetDirectoryMustExistAndKeepsATrailingSeparator)
{
    // A slash is added when missing (GeometryModuleGl's assets); a backslash counts as one.
    std::string directory;
    fs::create_directory(root_ + "/assets\\");
    EXPECT_TRUE(NormalizeAssetDirectory(root_ + "/assets\\", directory));
    EXPECT_EQ(directory, root_ + "/assets\\");

    testing_support::LogCapture log;
    const std::string missing = root_ + "/missing";
    EXPECT_FALSE(NormalizeAssetDirectory(missing, directory));
    EXPECT_EQ(directory, root_ + "/assets\\") << "the previous directory stays";
    ASSERT_EQ(log.messages.size(), 1u);
    EXPECT_EQ(log.messages[0].level, rlog::Level::Warning);
    EXPECT_TRUE(log.Contains("Specified asset directory does not exist. Assets will not be loaded. \nPath: " +
                                 missing,
                             "vexa::SetAssetDirectory"));
}

TEST_F(PlatformTest, MessageBoxesAreLoggedAndGoToTheReplaceableHandler)
{
    using Call = std::tuple<std::string, std::string, MessageIcon>;
    std::vector<Call> calls;
    const MessageBoxHandler previous =
        SetMessageBoxHandler([&calls](const std::string& caption, const std::string& text, MessageIcon icon) {
            calls.emplace_back(caption, text, icon);
        });
    testing_support::LogCapture log;
    ShowMessageBox(kInitializationErrorCaption, kAssetDirectoryInvalidText, MessageIcon::Error);
    ShowMessageBox(kGpuWarningCaption, "driver", MessageIcon::Warning);
    EXPECT_EQ(calls, (std::vector<Call>{
                         {"VEXA Initialization Error", "Asset directory is invalid.", MessageIcon::Error},
                         {"VEXA GPU Warning", "driver", MessageIcon::Warning}}));
    ASSERT_EQ(log.messages.size(), 2u);
    EXPECT_EQ(log.messages[0].level, rlog::Level::Failure);
    EXPECT_EQ(log.messages[1].level, rlog::Level::Warning);
    EXPECT_TRUE(log.Contains("Asset directory is invalid.", "vexa::MessageBox"));

    // An empty handler brings back the default, which writes to standard error.
    SetMessageBoxHandler({});
    ::testing::internal::CaptureStderr();
    ShowMessageBox(kInitializationCaption, kLookParseErrorText, MessageIcon::Warning);
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "VEXA Initialization: Errors occurred when parsing look json. See log for more info.\n");
    EXPECT_EQ(calls.size(), 2u);
    SetMessageBoxHandler(previous);
}

TEST_F(PlatformTest, TicksAreHundredNanoseconds)
{
    const std::uint64_t first = GetTicks();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const std::uint64_t second = GetTicks();
    EXPECT_GE(second - first, 20u * kTicksPerSecond / 1000);
    EXPECT_LT(second - first, 10u * kTicksPerSecond) << "ticks are not 100 ns";
}

TEST_F(PlatformTest, GpuWarningTextNamesWhatWasFound)
{
    EXPECT_EQ(ComposeGpuWarning("NVIDIA Corporation", "GeForce", "4.6.0 NVIDIA 550.54", {4, 6, 0}), "");
    EXPECT_EQ(ComposeGpuWarning("NVIDIA Corporation", "GeForce", "4.5.0", {4, 5, 0}),
              "OpenGl version on your system is lower then the recommended version 4.6.0.\n\nDetected:\n"
              "NVIDIA Corporation\nGeForce\nOpenGl version 4.5.0");
    EXPECT_EQ(ComposeGpuWarning("Mesa", "llvmpipe", "4.5 (Core Profile) Mesa 24.0", {4, 5, 0}),
              "Graphics card vendor is not supported. Errors may occur."
              "OpenGl version on your system is lower then the recommended version 4.6.0.\n\nDetected:\n"
              "Mesa\nllvmpipe\nOpenGl version 4.5 (Core Profile) Mesa 24.0");
    EXPECT_EQ(ComposeGpuWarning("Mesa", "llvmpipe", "5.0", {5, 0, 0}),
              "Graphics card vendor is not supported. Errors may occur.\n\nDetected:\nMesa\nllvmpipe\nOpenGl "
              "version 5.0");
}
