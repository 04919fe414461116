#include "core/GeneralOptions.h"

#include "FakeEngine.h"
#include "LogCapture.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <string>
#include <tuple>
#include <vector>

#if __has_include(<plor/Window.h>)
#include "core/WindowManager.h"
#define VEXA_TEST_WINDOW_MANAGER 1
#endif

using namespace vexa;
namespace fs = std::filesystem;

namespace {

using Bytes = std::vector<std::uint8_t>;

void WriteBytes(const std::string& path, const Bytes& bytes)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

class SettingsFilesTest : public ::testing::Test {
protected:
    Bytes ReadFile(const std::string& name) const
    {
        std::ifstream in(directory_ + name, std::ios::binary);
        return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }

    // The fake engine's private directory, removed again with it.
    testing_support::FakeEngine engine_;
    const std::string directory_ = engine_.GetIntermediateDirectory();
};

/// Everything a rejected file must leave alone, compared as one value.
auto StateOf(const GeneralOptions& options)
{
    return std::make_tuple(options.GetAntiAliasing(), options.IsWhiteBackground(),
                           options.GetStoredSensitivity(), options.IsOptimizedRendering(),
                           options.IsShortcutsEnabled(), options.GetViewLayout(), options.IsDirty());
}

/// Counts hook calls, so a rejected file is seen to apply nothing.
struct HookLog {
    std::vector<int> antiAliasing;
    std::vector<tesk::Color3b> backgrounds;
    std::vector<float> sensitivities;

    GeneralOptions::Hooks Hooks()
    {
        return {[this](int method) { antiAliasing.push_back(method); },
                [this](const tesk::Color3b& color) { backgrounds.push_back(color); },
                [this](float sensitivity) { sensitivities.push_back(sensitivity); }};
    }
    std::size_t Calls() const { return antiAliasing.size() + backgrounds.size() + sensitivities.size(); }
};

/// Feeds `bytes` as the storage's file and checks that it is rejected with exactly one
/// warning that names the file.
template <class Storage, class State>
void ExpectRejected(const std::string& directory, const Bytes& bytes, Storage& storage, State stateOf,
                    const std::string& what)
{
    SCOPED_TRACE(what);
    WriteBytes(storage.GetFilePath(directory), bytes);
    const auto before = stateOf(storage);
    testing_support::LogCapture log;
    EXPECT_FALSE(storage.Load(directory));
    EXPECT_TRUE(stateOf(storage) == before);
    ASSERT_EQ(log.messages.size(), 1u);
    EXPECT_EQ(log.messages[0].level, rlog::Level::Warning);
    EXPECT_EQ(log.messages[0].label, "vexa::FileStorage::Load");
    EXPECT_NE(log.messages[0].message.find(storage.GetFilePath(directory)), std::string::npos)
        << log.messages[0].message;
}

/// Every proper prefix of `valid` must be rejected.
template <class Storage, class State>
void ExpectEveryCutRejected(const std::string& directory, const Bytes& valid, Storage& storage, State stateOf)
{
    for (std::size_t length = 0; length < valid.size(); ++length)
        ExpectRejected(directory, Bytes(valid.begin(), valid.begin() + static_cast<std::ptrdiff_t>(length)),
                       storage, stateOf, "truncated to " + std::to_string(length));
}

} // namespace

#ifdef VEXA_TEST_WINDOW_MANAGER

namespace {

Bytes WindowFile(std::uint32_t version, int x, int y, int width, int height, std::uint8_t maximized)
{
    Bytes bytes;
    for (const int value : {static_cast<int>(version), x, y, width, height})
        for (int i = 0; i < 4; ++i)
            bytes.push_back(static_cast<std::uint8_t>(static_cast<std::uint32_t>(value) >> (8 * i)));
    bytes.insert(bytes.end(), {maximized, 0, 0, 0});
    return bytes;
}

} // namespace

TEST_F(SettingsFilesTest, WindowPlacementFollowsEventsAndRoundTripsAsTwentyBytes)
{
    WindowManager manager;
    EXPECT_FALSE(manager.IsDirty());
    manager.OnWindowMoved(-30, 45);
    EXPECT_TRUE(manager.IsDirty());
    EXPECT_FALSE(manager.FileExists(directory_)) << "moving only marks the placement for the next save";
    manager.OnWindowResized(1280, 720);
    manager.OnWindowResized(0, 0); // iconified on some window systems: the size is kept
    EXPECT_EQ(manager.GetPlacement(), (WindowManager::Placement{-30, 45, 1280, 720, false}));

    ASSERT_TRUE(manager.Save(directory_));
    EXPECT_FALSE(manager.IsDirty());
    EXPECT_EQ(ReadFile("window.bin"), WindowFile(1, -30, 45, 1280, 720, 0));

    WindowManager restored;
    ASSERT_TRUE(restored.Load(directory_));
    EXPECT_EQ(restored.GetPlacement(), manager.GetPlacement());
    const plor::WindowParams& params = restored.GetWindowParams();
    EXPECT_EQ(std::tie(params.positionX, params.positionY, params.width, params.height, params.maximized),
              std::make_tuple(-30, 45, 1280, 720, false));
    EXPECT_FALSE(restored.IsDirty());

    WriteBytes(directory_ + "window.bin", WindowFile(1, 5, 6, 800, 600, 1));
    ASSERT_TRUE(restored.Load(directory_));
    EXPECT_TRUE(restored.GetWindowParams().maximized);
    EXPECT_TRUE(restored.GetPlacement().maximized);
}

TEST_F(SettingsFilesTest, DamagedWindowFilesOrOnesWithoutAUsableSizeAreIgnored)
{
    WindowManager manager;
    // What the look asked for stays when the file is refused.
    manager.GetWindowParams().width = 1024;
    manager.GetWindowParams().height = 768;
    const auto PlacementOf = std::mem_fn(&WindowManager::GetPlacement);
    ExpectEveryCutRejected(directory_, WindowFile(1, 1, 2, 300, 400, 0), manager, PlacementOf);
    const int tooLarge = WindowManager::kMaxWindowExtent + 1;
    const std::pair<Bytes, const char*> refused[] = {
        {WindowFile(2, 1, 2, 300, 400, 0), "another format version"},
        {WindowFile(1, 10, 10, 0, 600, 0), "width 0"},
        {WindowFile(1, 10, 10, 800, tooLarge, 0), "height past the limit"},
        {WindowFile(1, 10, 10, 800, 600, 7), "maximised not a bool"},
    };
    for (const auto& [bytes, what] : refused)
        ExpectRejected(directory_, bytes, manager, PlacementOf, what);
    EXPECT_EQ(manager.GetPlacement(), WindowManager::Placement{});
    manager.CopyPlacementFromParams();
    EXPECT_EQ(manager.GetPlacement(), (WindowManager::Placement{100, 100, 1024, 768, false}));
}

#endif // VEXA_TEST_WINDOW_MANAGER

TEST_F(SettingsFilesTest, OptionsExactFileLayout)
{
    GeneralOptions options;
    options.SetAntiAliasing(5);
    options.SetWhiteBackground(true);
    options.SetStoredSensitivity(0.25f);
    options.SetOptimizedRendering(false);
    options.SetShortcutsEnabled(false);
    options.SetViewLayout(3);
    ASSERT_TRUE(options.Save(directory_));
    EXPECT_EQ(ReadFile("options.bin"),
              (Bytes{0x02, 0x00, 0x00, 0x00, 0x05, 0x01, 0x00, 0x00, 0x80, 0x3E, 0x00, 0x00, 0x03}));

    // Reading applies the effects through the hooks, the sensitivity already converted.
    GeneralOptions restored;
    HookLog hooks;
    restored.SetHooks(hooks.Hooks());
    ASSERT_TRUE(restored.Load(directory_));
    EXPECT_EQ(hooks.antiAliasing, std::vector<int>{5});
    EXPECT_EQ(hooks.backgrounds, std::vector<tesk::Color3b>{tesk::Color3b(255, 255, 255)});
    EXPECT_EQ(hooks.sensitivities, std::vector<float>{0.25f * 1.5999999f + 0.2f});
    EXPECT_EQ(StateOf(restored), std::make_tuple(5, true, 0.25f, false, false, std::uint8_t{3}, true));
}

TEST_F(SettingsFilesTest, OptionsDirtyRules)
{
    GeneralOptions options;
    HookLog hooks;
    options.SetHooks(hooks.Hooks());
    // A switch set to its current value is no change: GlobalOptionsPanelTest. The look's background is not
    // stored in options.bin and is shown only without white.
    options.SetBackgroundColor(tesk::Color3b(1, 2, 3));
    EXPECT_FALSE(options.IsDirty());
    EXPECT_EQ(hooks.backgrounds.back(), tesk::Color3b(1, 2, 3));
    options.SetWhiteBackground(true);
    EXPECT_TRUE(options.IsDirty());
    options.SetBackgroundColor(tesk::Color3b(4, 5, 6));
    EXPECT_EQ(hooks.backgrounds.back(), tesk::Color3b(255, 255, 255));
    options.SetWhiteBackground(false);
    EXPECT_EQ(hooks.backgrounds.back(), tesk::Color3b(4, 5, 6));

    // A file that only repeats the current values still dirties the options: the
    // anti-aliasing method and the sensitivity count as changed on every read.
    GeneralOptions defaults;
    ASSERT_TRUE(defaults.Save(directory_));
    GeneralOptions reread;
    ASSERT_TRUE(reread.Load(directory_));
    EXPECT_TRUE(reread.IsDirty());
    EXPECT_EQ(StateOf(reread), std::make_tuple(2, false, GeneralOptions::ToStoredSensitivity(1.0f), true,
                                               true, std::uint8_t{0}, true));

    testing_support::LogCapture log;
    options.SetDirty(false);
    options.SetAntiAliasing(6);
    options.SetViewLayout(5);
    options.SetStoredSensitivity(std::numeric_limits<float>::quiet_NaN());
    EXPECT_EQ(log.messages.size(), 3u);
    EXPECT_FALSE(options.IsDirty());
    options.SetStoredSensitivity(3.0f);
    EXPECT_EQ(options.GetStoredSensitivity(), 1.0f);
    EXPECT_FLOAT_EQ(hooks.sensitivities.back(), 1.8f);
}

TEST_F(SettingsFilesTest, DamagedOptionsFilesKeepEveryValue)
{
    // Version 2, anti-aliasing 5, white, sensitivity 0.75f, two switches off, view layout 4.
    const Bytes valid{0x02, 0x00, 0x00, 0x00, 0x05, 0x01, 0x00, 0x00, 0x40, 0x3F, 0x00, 0x00, 0x04};

    GeneralOptions options;
    HookLog hooks;
    options.SetHooks(hooks.Hooks());
    ExpectEveryCutRejected(directory_, valid, options, StateOf);

    // One byte changed: {offset, value, what}.
    for (const auto& [offset, value, what] :
         {std::tuple<std::size_t, std::uint8_t, const char*>{0, 1, "format version 1"},
          {valid.size() - 1, 5, "view layout 5"},
          {5, 2, "white background 2"},
          {4, 6, "anti-aliasing method 6"}}) {
        Bytes bad = valid;
        bad[offset] = value;
        ExpectRejected(directory_, bad, options, StateOf, what);
    }
    for (const float sensitivity : {std::numeric_limits<float>::quiet_NaN(), -0.5f, 1.5f}) {
        Bytes bad = valid;
        std::memcpy(&bad[6], &sensitivity, sizeof sensitivity);
        ExpectRejected(directory_, bad, options, StateOf, "sensitivity " + std::to_string(sensitivity));
    }
    EXPECT_EQ(hooks.Calls(), 0u) << "a refused file applies nothing";
    EXPECT_EQ(StateOf(options), StateOf(GeneralOptions{}));
}

TEST_F(SettingsFilesTest, MissingAndUnwritableFiles)
{
    GeneralOptions options;
    testing_support::LogCapture log;
    EXPECT_FALSE(options.FileExists(directory_));
    EXPECT_FALSE(options.Load(directory_));
    EXPECT_TRUE(log.messages.empty()) << "a first run is not worth a message";

    options.SetViewLayout(2);
    const std::string missing = directory_ + "no/such/directory/";
    EXPECT_FALSE(options.Save(missing));
    EXPECT_FALSE(options.IsDirty());
    EXPECT_FALSE(fs::exists(missing));
    EXPECT_TRUE(log.messages.empty());

    // A save replaces the file as a whole and leaves nothing beside it.
    ASSERT_TRUE(options.Save(directory_));
    options.SetViewLayout(4);
    ASSERT_TRUE(options.Save(directory_));
    EXPECT_EQ(std::distance(fs::directory_iterator(directory_), fs::directory_iterator()), 1);
    GeneralOptions reread;
    ASSERT_TRUE(reread.Load(directory_));
    EXPECT_EQ(reread.GetViewLayout(), 4);
}
