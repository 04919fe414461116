#include "core/LookParser.h"

#include "LogCapture.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

using namespace vexa;
using testing_support::LogCapture;

namespace {

class LookParserTest : public testing::Test {
protected:
    void SetUp() override
    {
        const auto* info = testing::UnitTest::GetInstance()->current_test_info();
        dir_ = std::filesystem::path(testing::TempDir()) / (std::string("vexa_look_") + info->name());
        std::filesystem::remove_all(dir_);
        std::filesystem::create_directories(dir_);
    }

    void TearDown() override { std::filesystem::remove_all(dir_); }

    std::string WriteLook(const std::string& json, const std::string& name = "look.json")
    {
        const auto path = (dir_ / name).string();
        std::ofstream(path) << json;
        return path;
    }

    LookParser Parse(const std::string& json) { return LookParser(WriteLook(json)); }

    /// A look whose "vexa" object holds version 1.0 and `keys`.
    static std::string Look(const std::string& keys)
    {
        return R"({"vexa": {"version": "1.0")" + (keys.empty() ? "" : ", " + keys) + "}}";
    }

    std::filesystem::path dir_;
};

void ExpectDefaultLook(const LookParser& parser)
{
    EXPECT_EQ(parser.GetWindowLook(), WindowLook{});
    ASSERT_EQ(parser.GetViewareaLooks().size(), 1u);
    EXPECT_EQ(parser.GetViewareaLooks()[0], ViewareaLook{});
}

} // namespace

TEST_F(LookParserTest, MinimalLookGivesDefaultWindowWithOneFullWindowView)
{
    LogCapture log;
    const auto parser = Parse(Look(""));
    EXPECT_TRUE(parser.Succeeded());
    EXPECT_TRUE(log.messages.empty());

    const auto& window = parser.GetWindowLook();
    EXPECT_EQ(window.width, 640);
    EXPECT_EQ(window.height, 480);
    EXPECT_EQ(window.caption, "VEXA v0.7.0");
    EXPECT_FALSE(window.maximized);
    EXPECT_FALSE(window.fullscreen);
    EXPECT_EQ(window.background.ToHex(), "3D3D3D");

    ASSERT_EQ(parser.GetViewareaLooks().size(), 1u);
    const auto& view = parser.GetViewareaLooks()[0];
    EXPECT_FLOAT_EQ(view.position.x.Resolve(800.0f), 0.0f);
    EXPECT_FLOAT_EQ(view.size.width.Resolve(800.0f), 800.0f);
    EXPECT_FLOAT_EQ(view.size.height.Resolve(600.0f), 600.0f);
    EXPECT_TRUE(view.axes);
    EXPECT_TRUE(view.sidebarEnabled);
    EXPECT_TRUE(view.sidebarVisible);
    EXPECT_EQ(view.gridMode, 0u);
    EXPECT_EQ(view.camera.position, glm::vec3(2.0f, 2.0f, 2.0f));

    // An empty view list is the same as none.
    EXPECT_EQ(Parse(Look(R"("views": [])")).GetViewareaLooks().size(), 1u);
}

TEST_F(LookParserTest, ReadsWindowKeysViewsAndUnits)
{
    LogCapture log;
    const auto parser = Parse(Look(R"(
        "caption": "Scans", "maximized": true, "fullscreen": true, "width": 1024, "height": 768,
        "options-enabled": false, "background": "102030", "key-shortcuts-enabled": false,
        "views": [
            {"position": "0,0;0,0", "size": "0.5,-5;1,0", "grid-mode": "XY", "grid-units": 2,
             "axes": false, "sidebar-enabled": false, "sidebar-visible": false,
             "enable-camera-animator": false, "enable-settings": false},
            {"position": "0.5,5;0,0", "size": "0.5,-5;1,0", "grid-mode": "zx", "grid-units": 0.25,
             "units": [{"id": "PointCloudResource:scans/a", "permanent": true, "gui-enabled": false,
                        "select-enabled": false, "auto-select": true},
                       {"id": "MeshResource:m"}]},
            {"position": "0,0;0,0", "size": "1,0;1,0", "grid-mode": "yz"}
        ])"));
    EXPECT_TRUE(parser.Succeeded());
    EXPECT_TRUE(log.messages.empty());

    const auto& window = parser.GetWindowLook();
    EXPECT_EQ(window.caption, "Scans");
    EXPECT_TRUE(window.maximized);
    EXPECT_TRUE(window.fullscreen);
    EXPECT_EQ(window.width, 1024);
    EXPECT_EQ(window.height, 768);
    EXPECT_FALSE(window.optionsEnabled);
    EXPECT_FALSE(window.keyShortcutsEnabled);
    EXPECT_EQ(window.background, tesk::Color3b(0x10, 0x20, 0x30));

    const auto& views = parser.GetViewareaLooks();
    ASSERT_EQ(views.size(), 3u);
    EXPECT_EQ(views[0].gridMode, 0u); // grid planes are matched case-sensitively
    EXPECT_EQ(views[1].gridMode, 3u);
    EXPECT_EQ(views[2].gridMode, 2u);
    EXPECT_FLOAT_EQ(views[0].gridUnits, 2.0f);
    EXPECT_FLOAT_EQ(views[1].gridUnits, 0.25f);
    EXPECT_FLOAT_EQ(views[0].size.width.Resolve(800.0f), 395.0f);
    EXPECT_FLOAT_EQ(views[1].position.x.Resolve(800.0f), 405.0f);
    EXPECT_FALSE(views[0].axes);
    EXPECT_FALSE(views[0].sidebarEnabled);
    EXPECT_FALSE(views[0].sidebarVisible);
    EXPECT_FALSE(views[0].cameraAnimatorEnabled);
    EXPECT_FALSE(views[0].settingsEnabled);
    EXPECT_TRUE(views[1].axes);
    EXPECT_TRUE(views[1].settingsEnabled);

    ASSERT_EQ(views[1].resourceLooks.size(), 2u);
    const auto& cloud = views[1].resourceLooks[0];
    EXPECT_EQ(cloud.id, ResourceId("scans/a", "PointCloudResource"));
    EXPECT_TRUE(cloud.permanent);
    EXPECT_FALSE(cloud.guiEnabled);
    EXPECT_FALSE(cloud.selectEnabled);
    EXPECT_TRUE(cloud.autoSelect);
    ResourceLook meshDefaults;
    meshDefaults.id = ResourceId("MeshResource:m");
    EXPECT_EQ(views[1].resourceLooks[1], meshDefaults);
}

TEST_F(LookParserTest, MistypedKeysKeepTheirDefaults)
{
    LogCapture log;
    const auto parser = Parse(Look(R"(
        "caption": 7, "maximized": "yes", "width": "800", "height": 600.5, "options-enabled": 0,
        "background": 3947580, "key-shortcuts-enabled": null,
        "views": [{"position": "0,0;0,0", "size": "1,0;1,0", "axes": "false", "grid-mode": 1,
                   "grid-units": "2", "units": {"id": "MeshResource:m"}}])"));
    EXPECT_TRUE(parser.Succeeded());
    EXPECT_TRUE(log.messages.empty());
    ExpectDefaultLook(parser);

    // A "views" that is no array is ignored as well.
    EXPECT_EQ(Parse(Look(R"("views": {"position": "0.5,0;0,0"})")).GetViewareaLooks()[0], ViewareaLook{});
}

TEST_F(LookParserTest, OutOfRangeValuesAreWarnedAndKeepDefaults)
{
    LogCapture log;
    const auto parser = Parse(Look(R"("width": -3, "height": 0, "background": "3D3D3G",
        "views": [{"position": "0,0;0,0", "size": "1,0;1,0", "grid-units": 0, "units": [{"id": ""}]}])"));
    EXPECT_TRUE(parser.Succeeded());
    ExpectDefaultLook(parser);
    EXPECT_EQ(log.messages.size(), 5u);
    for (const auto& message : log.messages)
        EXPECT_EQ(message.level, rlog::Level::Warning) << message.message;
}

TEST_F(LookParserTest, EveryFailingLookIsLoggedAndFallsBackToDefaults)
{
    struct Case {
        std::string json;
        std::string message;
        std::string label;
    };
    const std::string view = "vexa::LookParser::ReadViewareaLooks";
    const std::vector<Case> cases{
        {R"({"look": {"version": "1.0"}})", "Key vexa is not defined", "vexa::LookParser"},
        {R"([1, 2])", "Key vexa is not defined", "vexa::LookParser"},
        {R"({"vexa": {"version": "2.0", "caption": "x"}})", "Version 2.0 not supported", "vexa::LookParser"},
        {Look(R"("caption": "x", "views": [{"size": "1,0;1,0"}])"), "Key position is required", view},
        {Look(R"("caption": "x", "views": [{"position": "0,0;0,0"}])"), "Key size is required", view},
        {Look(R"("caption": "x", "views": [{"position": "0,0;0,0", "size": 5}])"), "Key size is required", view},
        {Look(R"("views": [{"position": "0,0;0,0", "size": "1,0;1,0", "units": [{"permanent": true}]}])"),
         "Key id is required", view},
    };
    for (const auto& c : cases) {
        LogCapture log;
        const auto parser = Parse(c.json);
        EXPECT_FALSE(parser.Succeeded()) << c.json;
        EXPECT_TRUE(log.Contains(c.message, c.label)) << c.json;
        ExpectDefaultLook(parser);
    }

    // Every faulty view is reported, not only the first.
    LogCapture log;
    EXPECT_FALSE(Parse(Look(R"("views": [{"size": "1,0;1,0"}, {"position": "0,0;0,0"}])")).Succeeded());
    EXPECT_TRUE(log.Contains("Key position is required", view));
    EXPECT_TRUE(log.Contains("Key size is required", view));
}

TEST_F(LookParserTest, MissingVersionThrowsAfterLogging)
{
    for (const char* json : {R"({"vexa": {}})", R"({"vexa": {"version": 1.0}})", R"({"vexa": "1.0"})"}) {
        LogCapture log;
        EXPECT_THROW(Parse(json), std::exception) << json;
        EXPECT_TRUE(log.Contains("Look file version is not defined", "vexa::LookParser")) << json;
    }
}

TEST_F(LookParserTest, UnreadableFilesThrowAfterLogging)
{
    {
        LogCapture log;
        EXPECT_THROW(LookParser((dir_ / "missing.json").string()), std::exception);
        ASSERT_EQ(log.messages.size(), 1u);
        EXPECT_EQ(log.messages[0].label, "vexa::LookParser");
        EXPECT_NE(log.messages[0].message.find("missing.json"), std::string::npos);
    }
    {
        LogCapture log;
        EXPECT_THROW(Parse("{\"vexa\": {\n  \"version\": \"1.0\",\n}"), std::exception);
        ASSERT_EQ(log.messages.size(), 1u);
        EXPECT_EQ(log.messages[0].label, "vexa::LookParser");
        EXPECT_NE(log.messages[0].message.find("line 3"), std::string::npos) << log.messages[0].message;
    }
    {
        LogCapture log;
        EXPECT_THROW(LookParser::FromString("not json"), std::exception);
        EXPECT_EQ(log.messages.size(), 1u);
    }
}

TEST_F(LookParserTest, MalformedCompositeInViewThrows)
{
    {
        LogCapture log;
        EXPECT_THROW(Parse(Look(R"("views": [{"position": "0.5;0,0", "size": "1,0;1,0"}])")), std::exception);
        EXPECT_TRUE(log.Contains("Composite must have two parameters (percents and pixels) separated by a \",\"",
                                 "vexa::StringToCompositeFloat"));
    }
    {
        LogCapture log;
        EXPECT_THROW(Parse(Look(R"("views": [{"position": "0,0;0,0", "size": "1,0;1,0;1,0"}])")), std::exception);
        EXPECT_TRUE(log.Contains("Size must contain two composites (width and height) separated by a \";\"",
                                 "vexa::StringToCompositeSize"));
    }
    {
        // The float conversion's own error comes through, with the key named in the log.
        LogCapture log;
        EXPECT_THROW(Parse(Look(R"("views": [{"position": "0,0;0,0", "size": "a,0;1,0"}])")), std::invalid_argument);
        EXPECT_TRUE(log.Contains("Key size holds \"a,0;1,0\", which has a part that is not a number",
                                 "vexa::LookParser::ReadViewareaLooks"));
    }
}

TEST_F(LookParserTest, ParsesFromText)
{
    const auto parser = LookParser::FromString(Look(R"("width": 800, "views": [{"position": "0,0;0,0",
        "size": "0.5,0;1,0"}, {"position": "0.5,0;0,0", "size": "0.5,0;1,0"}])"));
    EXPECT_TRUE(parser.Succeeded());
    EXPECT_EQ(parser.GetWindowLook().width, 800);
    EXPECT_EQ(parser.GetViewareaLooks().size(), 2u);
    EXPECT_EQ(&parser.GetViewareaLooks(), &parser.GetWindowLook().views);
}
