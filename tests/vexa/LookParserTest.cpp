#include "core/LookParser.h"

#include "FakeEngine.h"
#include "LogCapture.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <tuple>
#include <vector>

using namespace vexa;
using testing_support::LogCapture;

namespace {

class LookParserTest : public testing::Test {
protected:
    /// Parses `json` from a file in the fake engine's private directory.
    LookParser Parse(const std::string& json)
    {
        const std::string path = dir_ + "look.json";
        std::ofstream(path) << json;
        return LookParser(path);
    }

    /// A look whose "vexa" object holds version 1.0 and `keys`.
    static std::string Look(const std::string& keys)
    {
        return R"({"vexa": {"version": "1.0")" + (keys.empty() ? "" : ", " + keys) + "}}";
    }

    testing_support::FakeEngine engine_;
    const std::string dir_ = engine_.GetIntermediateDirectory();
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

    ExpectDefaultLook(parser);
    // An empty view list is the same as none.
    EXPECT_EQ(Parse(Look(R"("views": [])")).GetViewareaLooks().size(), 1u);
}

TEST_F(LookParserTest, ReadsWindowKeysAndViews)
{
    LogCapture log;
    const auto parser = Parse(Look(R"(
        "caption": "Scans", "maximized": true, "fullscreen": true, "width": 1024, "height": 768,
        "options-enabled": false, "background": "102030", "key-shortcuts-enabled": false,
        "views": [
            {"position": "0,0;0,0", "size": "0.5,-5;1,0", "grid-mode": "XY", "grid-units": 2,
             "axes": false, "sidebar-enabled": false, "sidebar-visible": false,
             "enable-camera-animator": false, "enable-settings": false},
            {"position": "0.5,5;0,0", "size": "0.5,-5;1,0", "grid-mode": "zx", "grid-units": 0.25},
            {"position": "0,0;0,0", "size": "1,0;1,0", "grid-mode": "yz"}
        ])"));
    EXPECT_TRUE(parser.Succeeded());
    EXPECT_TRUE(log.messages.empty());

    const auto& window = parser.GetWindowLook();
    EXPECT_EQ(std::tie(window.caption, window.maximized, window.fullscreen, window.width, window.height,
                       window.optionsEnabled, window.keyShortcutsEnabled, window.background),
              std::make_tuple("Scans", true, true, 1024, 768, false, false, tesk::Color3b(0x10, 0x20, 0x30)));

    const auto& views = parser.GetViewareaLooks();
    ASSERT_EQ(views.size(), 3u);
    // Grid planes are matched case-sensitively: "XY" is no plane.
    EXPECT_EQ(std::vector<std::uint32_t>({views[0].gridMode, views[1].gridMode, views[2].gridMode}),
              std::vector<std::uint32_t>({0u, 3u, 2u}));
    EXPECT_EQ(glm::vec2(views[0].gridUnits, views[1].gridUnits), glm::vec2(2.0f, 0.25f));
    EXPECT_FLOAT_EQ(views[0].size.width.Resolve(800.0f), 395.0f);
    EXPECT_FLOAT_EQ(views[1].position.x.Resolve(800.0f), 405.0f);
    const auto flags = [](const ViewareaLook& v) {
        return std::vector<bool>{v.axes, v.sidebarEnabled, v.sidebarVisible, v.cameraAnimatorEnabled,
                                 v.settingsEnabled};
    };
    EXPECT_EQ(flags(views[0]), std::vector<bool>(5, false));
    EXPECT_EQ(flags(views[1]), std::vector<bool>(5, true));
    // The units' rules, read and obeyed: EngineGui.ResourceRulesOfTheLookShapeTheSidebar.
}

TEST_F(LookParserTest, MistypedKeysKeepTheirDefaultsSilentlyAndOutOfRangeOnesWithAWarning)
{
    // {keys, warnings}
    const std::pair<std::string, std::size_t> cases[] = {
        {R"("caption": 7, "maximized": "yes", "width": "800", "height": 600.5, "options-enabled": 0,
            "background": 3947580, "key-shortcuts-enabled": null,
            "views": [{"position": "0,0;0,0", "size": "1,0;1,0", "axes": "false", "grid-mode": 1,
                       "grid-units": "2", "units": {"id": "MeshResource:m"}}])",
         0},
        {R"("width": -3, "height": 0, "background": "3D3D3G", "views": [{"position": "0,0;0,0",
            "size": "1,0;1,0", "grid-units": 0, "units": [{"id": ""}]}])",
         5},
    };
    for (const auto& [keys, warnings] : cases) {
        LogCapture log;
        const auto parser = Parse(Look(keys));
        EXPECT_TRUE(parser.Succeeded());
        ExpectDefaultLook(parser);
        EXPECT_EQ(log.messages.size(), warnings);
        for (const auto& message : log.messages)
            EXPECT_EQ(message.level, rlog::Level::Warning) << message.message;
    }
    // A "views" that is no array is ignored as well.
    EXPECT_EQ(Parse(Look(R"("views": {"position": "0.5,0;0,0"})")).GetViewareaLooks()[0], ViewareaLook{});
}

TEST_F(LookParserTest, EveryFailingLookIsLoggedAndFallsBackToDefaults)
{
    // {json, message, label}
    const std::string view = "vexa::LookParser::ReadViewareaLooks";
    const std::vector<std::tuple<std::string, std::string, std::string>> cases{
        {R"({"look": {"version": "1.0"}})", "Key vexa is not defined", "vexa::LookParser"},
        {R"({"vexa": {"version": "2.0", "caption": "x"}})", "Version 2.0 not supported", "vexa::LookParser"},
        {Look(R"("caption": "x", "views": [{"position": "0,0;0,0", "size": 5}])"), "Key size is required",
         view},
        {Look(R"("views": [{"position": "0,0;0,0", "size": "1,0;1,0", "units": [{"permanent": true}]}])"),
         "Key id is required", view},
    };
    for (const auto& [json, message, label] : cases) {
        LogCapture log;
        const auto parser = Parse(json);
        EXPECT_FALSE(parser.Succeeded()) << json;
        EXPECT_TRUE(log.Contains(message, label)) << json;
        ExpectDefaultLook(parser);
    }

    // Every faulty view is reported, not only the first: a missing position and a missing size.
    LogCapture log;
    EXPECT_FALSE(Parse(Look(R"("views": [{"size": "1,0;1,0"}, {"position": "0,0;0,0"}])")).Succeeded());
    EXPECT_TRUE(log.Contains("Key position is required", view));
    EXPECT_TRUE(log.Contains("Key size is required", view));
}

TEST_F(LookParserTest, UnusableLooksThrowAfterLoggingWhereTheyFailed)
{
    // Unreadable files get exactly one message naming the place (the file, or the line); a
    // part that is no number is reported with the key (malformed composites: CompositeCoordinates).
    const auto views = [this](const std::string& list) {
        return [this, list] { Parse(Look(R"("views": [)" + list + "]")); };
    };
    const std::string look = "vexa::LookParser";
    const struct {
        std::function<void()> parse;
        std::string text;
        std::string label;
        bool place;
    } cases[] = {
        {[&] { LookParser(dir_ + "missing.json"); }, "missing.json", look, true},
        {[&] { Parse("{\"vexa\": {\n  \"version\": \"1.0\",\n}"); }, "line 3", look, true},
        {[] { LookParser::FromString("not json"); }, "", look, true},
        {[&] { Parse(R"({"vexa": {"version": 1.0}})"); }, "Look file version is not defined", look, false},
        {views(R"({"position": "0,0;0,0", "size": "a,0;1,0"})"),
         "Key size holds \"a,0;1,0\", which has a part that is not a number",
         "vexa::LookParser::ReadViewareaLooks", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        LogCapture log;
        EXPECT_THROW(c.parse(), std::exception);
        if (!c.place) {
            EXPECT_TRUE(log.Contains(c.text, c.label));
            continue;
        }
        ASSERT_EQ(log.messages.size(), 1u);
        EXPECT_EQ(log.messages[0].label, c.label);
        EXPECT_NE(log.messages[0].message.find(c.text), std::string::npos) << log.messages[0].message;
    }
    EXPECT_THROW(views(R"({"position": "0,0;0,0", "size": "a,0;1,0"})")(), std::invalid_argument);
}

TEST_F(LookParserTest, LooksWithMoreViewAreasThanTheLimitFailAtOnce)
{
    // Narrow columns side by side, as a generated look would place them.
    const auto views = [](std::size_t count) {
        std::string list;
        for (std::size_t i = 0; i < count; ++i)
            list += std::string(i == 0 ? "" : ", ") + R"({"position": ")" + std::to_string(i) +
                    R"(,0;0,0", "size": "0,1;1,0"})";
        return Look(R"("caption": "many", "views": [)" + list + "]");
    };
    {
        LogCapture log;
        const auto parser = Parse(views(LookParser::kMaxViewareas));
        EXPECT_TRUE(parser.Succeeded());
        EXPECT_EQ(parser.GetViewareaLooks().size(), LookParser::kMaxViewareas);
        EXPECT_TRUE(log.messages.empty());
    }
    for (const std::size_t count : {LookParser::kMaxViewareas + 1, std::size_t{300}}) {
        LogCapture log;
        const auto start = std::chrono::steady_clock::now();
        const auto parser = Parse(views(count));
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
        EXPECT_FALSE(parser.Succeeded());
        EXPECT_TRUE(
            log.Contains("The look has " + std::to_string(count) + " view areas; at most 64 are supported",
                         "vexa::LookParser::ReadViewareaLooks"));
        ExpectDefaultLook(parser);
    }
}
