#include <vexa/modules/CameraAnimGadget.h>
#include <vexa/modules/CameraAnimResource.h>

#include "core/Viewarea.h"
#include "scene/GadgetManager.h"

#include <vexa/Camera.h>
#include <vexa/GuiGenerator.h>

#include "FakeEngine.h"
#include "GlmNear.h"
#include "GuiTestSupport.h"

#include <CEGUI/CEGUI.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace {

using testing_support::ExpectNear;
using vexa::Camera;
using vexa::modules::CameraAnimGadget;
using vexa::modules::CameraAnimResource;

std::string ReadAll(const std::string& path)
{
    std::stringstream all;
    all << std::ifstream(path, std::ios::binary).rdbuf();
    return all.str();
}

class CameraAnimTest : public gui_test::PanelTest {
protected:
    void SetUp() override
    {
        PanelTest::SetUp();
        engine_.Register(resource_);
        gadget_ = Reopen();
        ASSERT_NE(gadget_, nullptr);
        camera_ = area_.GetCamera();
    }

    void TearDown() override
    {
        generator_.reset();
        area_.GetGadgetManager().Remove(resource_->GetId());
        PanelTest::TearDown();
    }

    /// A new gadget, as closing and reopening the panel makes.
    std::shared_ptr<CameraAnimGadget> Reopen()
    {
        EXPECT_TRUE(area_.GetGadgetManager().Create(resource_->GetId()));
        return std::dynamic_pointer_cast<CameraAnimGadget>(
            area_.GetGadgetManager().GetGadget(resource_->GetId()));
    }

    void BuildPanel()
    {
        generator_ = std::make_unique<vexa::GuiGenerator>(resource_->GetId(), panel_);
        gadget_->GenerateGui(*generator_);
    }

    void Click(const std::string& caption) { gui_test::Click(gui_test::Control(panel_, caption)); }

    std::string CountText() const { return gui_test::Texts(panel_).back(); }
    std::string AnimationFile() const
    {
        return engine_.GetIntermediateDirectory() + "/AnimationSequence01.json";
    }

    void Pose(const glm::vec3& position, const glm::vec3& target)
    {
        camera_->SetTarget(target);
        camera_->SetPosition(position);
    }

    testing_support::FakeEngine engine_;
    std::shared_ptr<CameraAnimResource> resource_ = std::make_shared<CameraAnimResource>("animation");
    vexa::Viewarea area_{0};
    std::shared_ptr<CameraAnimGadget> gadget_;
    Camera* camera_ = nullptr;
    std::unique_ptr<vexa::GuiGenerator> generator_;
};

TEST_F(CameraAnimTest, PanelButtonsRecordAndRemoveKeyframesAndTheCountFollows)
{
    // Saving, forgetting, loading and playing through the panel: e2e CameraFlight.
    BuildPanel();
    EXPECT_EQ(CountText(), "Key-frame count: 0");
    Pose({2, 2, 2}, {0, 0, 0});
    Click("Add new keyframe");
    Pose({0, 3, 4}, {1, 0, 0});
    Click("Add new keyframe");
    ASSERT_EQ(gadget_->GetKeyframes().Size(), 2u);
    // The first at time 0, the next one delta time (1 s unless changed) later.
    EXPECT_EQ(glm::vec2(gadget_->GetKeyframes().GetTime(0), gadget_->GetKeyframes().GetTime(1)),
              glm::vec2(0, 1));
    ExpectNear(gadget_->GetKeyframes().GetValue(1).position, glm::vec3(0, 3, 4));
    ExpectNear(gadget_->GetKeyframes().GetValue(1).target, glm::vec3(1, 0, 0));
    EXPECT_EQ(CountText(), "Key-frame count: 2");

    gadget_->SetKeyframeDeltaTime(2.5f);
    Click("Add new keyframe");
    EXPECT_EQ(gadget_->GetKeyframes().GetTime(2), 3.5f);
    Click("Remove last keyframe");
    EXPECT_EQ(gadget_->GetKeyframes().LastTime(), 1.0f);

    // Loading replaces what is held rather than adding to it.
    ASSERT_TRUE(gadget_->SaveAnimation());
    gadget_->AddKeyframe();
    EXPECT_TRUE(gadget_->LoadAnimation());
    EXPECT_EQ(gadget_->GetKeyframes().Size(), 2u);

    // The panel goes before the gadget (a sidebar rebuild): changes after it touch no window.
    generator_.reset();
    Renew();
    EXPECT_TRUE(gadget_->AddKeyframe());
    EXPECT_EQ(gadget_->GetKeyframes().Size(), 3u);
}

TEST_F(CameraAnimTest, PlaybackStartsAtTimeZeroAndStopsAfterTheLastKeyframe)
{
    BuildPanel();
    Pose({2, 0, 0}, {0, 0, 0});
    gadget_->AddKeyframe();
    Pose({0, 0, 2}, {0, 1, 0});
    gadget_->AddKeyframe();
    Pose({5, 5, 5}, {0, 0, 0});

    // Where the flight passes is e2e CameraFlight's; here where it starts and ends.
    Click("Play animation");
    EXPECT_TRUE(gadget_->IsPlaying());
    gadget_->Update(0.3f);
    EXPECT_EQ(gadget_->GetCurrentTime(), 0.0f) << "the first frame shows time 0";
    gadget_->Update(1.0f);
    ExpectNear(camera_->GetPosition(), glm::vec3(0, 0, 2));
    EXPECT_TRUE(gadget_->IsPlaying()) << "time 1.0 is the last key frame, not past it";
    gadget_->Update(0.01f);
    EXPECT_FALSE(gadget_->IsPlaying());
    Pose({7, 7, 7}, {0, 0, 0});
    gadget_->Update(0.1f);
    ExpectNear(camera_->GetPosition(), glm::vec3(7, 7, 7));

    // "Playback speed" scales time; 0 freezes playback and rotation alike.
    gadget_->Play();
    gadget_->Update(0.1f);
    gadget_->SetPlaybackSpeed(0.0f);
    for (int i = 0; i < 5; ++i)
        gadget_->Update(0.5f);
    EXPECT_EQ(gadget_->GetCurrentTime(), 0.0f);
    EXPECT_TRUE(gadget_->IsPlaying());
    gadget_->SetRotateAround(true);
    const glm::vec3 before = camera_->GetPosition();
    gadget_->Update(1.0f);
    ExpectNear(camera_->GetPosition(), before, 1e-6f);
    // Rotation turns about the target at its distance, and holds playback.
    gadget_->SetPlaybackSpeed(2.0f);
    const float distance = glm::distance(camera_->GetPosition(), camera_->GetTarget());
    gadget_->Update(0.5f);
    EXPECT_GT(glm::distance(camera_->GetPosition(), before), 0.1f);
    EXPECT_NEAR(glm::distance(camera_->GetPosition(), camera_->GetTarget()), distance, 1e-4f);
    EXPECT_EQ(gadget_->GetCurrentTime(), 0.0f);

    Click("Stop animation");
    EXPECT_FALSE(gadget_->IsPlaying());
}

TEST_F(CameraAnimTest, OneKeyframeShowsItThenStopsOrStartsOver)
{
    Pose({3, 1, 0}, {0, 1, 0});
    gadget_->AddKeyframe();
    Pose({9, 9, 9}, {0, 0, 0});
    gadget_->Play();
    for (const bool playing : {true, false}) {
        gadget_->Update(0.2f);
        ExpectNear(camera_->GetPosition(), glm::vec3(3, 1, 0));
        EXPECT_EQ(gadget_->IsPlaying(), playing);
    }

    gadget_->SetLooping(true);
    gadget_->Play();
    for (int i = 0; i < 4; ++i) {
        gadget_->Update(0.2f);
        EXPECT_TRUE(gadget_->IsPlaying());
        EXPECT_EQ(gadget_->GetCurrentTime(), 0.0f) << "a loop starts over once past the key frame";
    }

    // Without key frames (each frame says so: e2e CameraFlight) the camera is not thrown onto
    // its target.
    gadget_->RemoveAllKeyframes();
    Pose({4, 4, 4}, {0, 0, 0});
    testing_support::LogCapture quiet;
    gadget_->Play();
    gadget_->Update(0.25f);
    gadget_->Update(0.25f);
    ExpectNear(camera_->GetPosition(), glm::vec3(4, 4, 4));
}

TEST_F(CameraAnimTest, BadFilesLeaveTheKeyframesAsTheyWere)
{
    BuildPanel();
    gadget_->AddKeyframe();
    gadget_->AddKeyframe();
    const auto write = [&](const std::string& content) {
        std::ofstream(AnimationFile(), std::ios::trunc) << content;
    };
    testing_support::LogCapture log;

    // Missing file, damaged JSON, JSON of another kind, and elements of the wrong shape.
    EXPECT_FALSE(gadget_->LoadAnimation());
    for (const char* content :
         {"[[\"0.0\", {\"position\": \"1, 2, 3\",", "{\"vexa\": {\"version\": \"1.0\"}}",
          "[[\"0.0\", {\"position\": \"1, 2, 3\", \"target\": \"0, 0, 0\"}]]"}) {
        write(content);
        EXPECT_FALSE(gadget_->LoadAnimation()) << content;
    }
    EXPECT_EQ(std::count_if(log.messages.begin(), log.messages.end(),
                            [](const auto& m) {
                                return m.label == "vexa::modules::CameraAnimGadget::LoadAnimation" &&
                                       m.message.rfind("Camera animation load failed: ", 0) == 0;
                            }),
              4);
    // The parser's own words: where it stopped and why.
    EXPECT_NE(log.messages[1].message.find(" - "), std::string::npos) << log.messages[1].message;
    EXPECT_EQ(gadget_->GetKeyframes().Size(), 2u);

    // Text that is not a number throws from the conversion; the key frames stay.
    const std::string pose = R"({"position": "1, 2, 3", "target": "0, 0, 0", "up": "0, 1, 0"})";
    write("[[\"0.0\", " + pose + "], [\"soon\", " + pose + "]]");
    EXPECT_THROW(gadget_->LoadAnimation(), std::invalid_argument);
    EXPECT_EQ(gadget_->GetKeyframes().Size(), 2u);
    // Through the button it is logged, not thrown into the GUI.
    log.messages.clear();
    Click("Load keyframes");
    EXPECT_EQ(log.messages.size(), 1u);
    EXPECT_EQ(gadget_->GetKeyframes().Size(), 2u);
    EXPECT_EQ(CountText(), "Key-frame count: 2");

    // A file that cannot be written.
    std::filesystem::remove(AnimationFile());
    std::filesystem::create_directory(AnimationFile());
    log.messages.clear();
    EXPECT_FALSE(gadget_->SaveAnimation());
    EXPECT_TRUE(
        log.Contains("Camera animation save failed!", "vexa::modules::CameraAnimGadget::SaveAnimation"));
    std::filesystem::remove(AnimationFile());
}

TEST_F(CameraAnimTest, PanelSettingsOutliveTheGadgetButNotADamagedStateFile)
{
    BuildPanel();
    gadget_->SetKeyframeDeltaTime(2.5f);
    gadget_->SetPlaybackSpeed(0.5f);
    gadget_->SetLooping(true);
    gadget_->AddKeyframe();
    ASSERT_TRUE(gadget_->SaveState());
    generator_.reset();
    auto reopened = Reopen();
    ASSERT_NE(reopened, nullptr);
    EXPECT_EQ(reopened->GetKeyframeDeltaTime(), 2.5f);
    EXPECT_EQ(reopened->GetPlaybackSpeed(), 0.5f);
    EXPECT_TRUE(reopened->IsLooping());
    EXPECT_TRUE(reopened->GetKeyframes().Empty()) << "key frames are kept in the JSON file only";

    // A speed no panel can set: the file is damaged, the defaults stand.
    const std::string stateFile = engine_.GetIntermediateDirectory() + "CameraAnimResourceState0.bin";
    std::string bytes = ReadAll(stateFile);
    ASSERT_GE(bytes.size(), 9u);
    const float huge = 1e9f;
    std::memcpy(bytes.data() + bytes.size() - 5, &huge, sizeof(huge));
    std::ofstream(stateFile, std::ios::binary | std::ios::trunc) << bytes;
    gadget_ = Reopen();
    EXPECT_EQ(gadget_->GetPlaybackSpeed(), 1.0f);
    EXPECT_EQ(gadget_->GetKeyframeDeltaTime(), 1.0f);
    EXPECT_FALSE(gadget_->IsLooping());
}

} // namespace
