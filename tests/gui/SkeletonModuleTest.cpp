#include <vexa/GuiGenerator.h>
#include <vexa/modules/SkeletonGadget.h>
#include <vexa/modules/SkeletonResource.h>

#include <vexa/draw/SkeletonRenderer.h>
#include <vexa/draw/SkeletonStyle.h>

#include <runa/BinaryStream.h>

#include "FakeEngine.h"
#include "GuiTestSupport.h"

#include <CEGUI/CEGUI.h>

#include <fstream>

namespace {

using vexa::modules::SkeletonGadget;
using vexa::modules::SkeletonResource;
using Skeletons = std::shared_ptr<SkeletonResource>;

// A root, a joint 1 up and one (0.5, 0, 0.5) beside that: a 0.5 x 1 x 0.5 box. With `flat`
// the last joint stays in the plane z = 0.
tesk::Skeleton Bent(bool flat = false)
{
    tesk::Skeleton skeleton;
    skeleton.AddJoint("root", -1);
    skeleton.AddJoint("spine", 0, {0.0f, 1.0f, 0.0f});
    skeleton.AddJoint("arm", 1, {0.5f, 0.0f, flat ? 0.0f : 0.5f});
    return skeleton;
}

// The root slides from x = 0 at t = 1 to x = 2 at t = `end` (standing still when end is 1).
tesk::SkeletonAction Slide(float end = 3.0f)
{
    tesk::SkeletonAction action("slide");
    tesk::SkeletonPose from = Bent().GetRestPose(), to = from;
    to.SetJoint(0, {end > 1.0f ? 2.0f : 0.0f, 0.0f, 0.0f}, glm::quat(1.0f, 0.0f, 0.0f, 0.0f));
    action.AddKeyframe(1.0f, from);
    action.AddKeyframe(end, to);
    return action;
}

float RootX(const SkeletonGadget& gadget)
{
    return gadget.GetRenderer()->GetGlobalMatrices()[0][3].x;
}

class SkeletonModuleTest : public gui_test::PanelTest {
protected:
    std::shared_ptr<SkeletonGadget> Make(const Skeletons& resource)
    {
        return gui_test::InitializedGadget<SkeletonGadget>(*resource);
    }
    bool Shown(const std::string& row) const { return gui_test::Shown(panel_, row); }

    testing_support::FakeEngine engine_;
};

TEST_F(SkeletonModuleTest, FocusNeedsASolidBoxAndUnfitInputIsRefusedWithAWarning)
{
    glm::vec3 target(7.0f), eye(8.0f);
    const Skeletons flat = std::make_shared<SkeletonResource>("flat", Bent(true));
    EXPECT_FALSE(Make(flat)->FocusCamera(target, eye));
    EXPECT_EQ(target + eye, glm::vec3(15.0f)) << "left as they were";
    const Skeletons bent = std::make_shared<SkeletonResource>("bent", Bent());
    ASSERT_TRUE(Make(bent)->FocusCamera(target, eye));
    EXPECT_EQ(target, glm::vec3(0.25f, 0.5f, 0.25f));
    EXPECT_EQ(eye, glm::vec3(0.75f, 1.5f, 0.75f)) << "minimum + 1.5 x size";

    testing_support::LogCapture log;
    EXPECT_FALSE(bent->SetPose(tesk::SkeletonPose(2)));
    EXPECT_EQ(bent->GetPose(), bent->GetRestPose());
    EXPECT_EQ(bent->GetPoseChangeCount(), 0u);
    // Actions without keyframes or of another skeleton are left out.
    tesk::SkeletonAction other("other");
    other.AddKeyframe(0.0f, tesk::SkeletonPose(5));
    EXPECT_EQ(SkeletonResource("a", Bent(), tesk::SkeletonAction("empty")).GetAction(), nullptr);
    EXPECT_EQ(SkeletonResource("b", Bent(), other).GetAction(), nullptr);
    ASSERT_EQ(log.messages.size(), 3u);
    EXPECT_NE(log.messages[0].message.find("2 joints but the skeleton has 3"), std::string::npos);
}

TEST_F(SkeletonModuleTest, PanelOffersTheActionChoicesOnlyWithAnAction)
{
    const Skeletons plain = std::make_shared<SkeletonResource>("plain", Bent());
    auto still = Make(plain);
    EXPECT_EQ(still->GetPosingOption(), SkeletonGadget::Realtime);
    {
        vexa::GuiGenerator generator(plain->GetId(), panel_);
        still->GenerateGui(generator);
        EXPECT_EQ(gui_test::Joined(panel_),
                  "Render Mode|Octahedron|Wired Octahedron|Stickman\nShow Joints\n"
                  "Enable Lighting\nShow Basis\n\nPosing Options|Rest Pose|Realtime\n");
    }
    Renew();
    const Skeletons animated = std::make_shared<SkeletonResource>("animated", Bent(), Slide());
    auto gadget = Make(animated);
    EXPECT_EQ(gadget->GetPosingOption(), SkeletonGadget::ActionAuto);
    vexa::GuiGenerator generator(animated->GetId(), panel_);
    gadget->GenerateGui(generator);
    generator.SetAutoTestConditionsEnabled(true);
    generator.TestElementConditions();
    EXPECT_NE(gui_test::Joined(panel_).find("Posing Options|Rest Pose|Action Manual|Action Auto|Realtime\n"
                                            "Animation Time\n"),
              std::string::npos);
    EXPECT_FALSE(Shown("Animation Time"));

    // "Action Manual" shows the slider at the time playing reached, and that pose; "Rest
    // Pose" applies at once.
    gadget->Update(0.5f);
    auto* posing = gui_test::Control<CEGUI::Combobox>(panel_, "Posing Options", "combo_element");
    gui_test::Choose(posing, 1);
    EXPECT_EQ(gadget->GetPosingOption(), SkeletonGadget::ActionManual);
    EXPECT_TRUE(Shown("Animation Time"));
    EXPECT_FLOAT_EQ(gadget->GetAnimationTime(), 1.5f);
    EXPECT_NEAR(RootX(*gadget), 0.5f, 1e-5f);
    gui_test::Choose(posing, 0);
    EXPECT_FALSE(Shown("Animation Time"));
    EXPECT_NEAR(RootX(*gadget), 0.0f, 1e-5f);
}

TEST_F(SkeletonModuleTest, AutoLoopsTheActionAndRealtimeFollowsOnlyNewPoses)
{
    const Skeletons resource = std::make_shared<SkeletonResource>("animated", Bent(), Slide());
    auto gadget = Make(resource);
    // Time steps and where the root is after each: the action loops over [1, 3).
    for (const auto& [step, x] : {std::pair{0.5f, 0.5f}, {1.0f, 1.5f}, {1.0f, 0.5f}, {4.25f, 0.75f}}) {
        const int before = engine_.redrawRequests;
        gadget->Update(step);
        EXPECT_NEAR(RootX(*gadget), x, 1e-4f) << "after a step of " << step;
        EXPECT_EQ(engine_.redrawRequests, before + 1);
    }

    // Another view area's gadget poses its own renderer.
    auto other = Make(resource);
    ASSERT_TRUE(other->SetPosingOption(SkeletonGadget::Realtime));
    EXPECT_NEAR(RootX(*other), 0.0f, 1e-5f) << "the rest pose until the host sets one";
    EXPECT_NEAR(RootX(*gadget), 0.75f, 1e-4f);
    tesk::SkeletonPose pose = resource->GetRestPose();
    pose.SetJoint(0, {-1.0f, 0.0f, 0.0f}, glm::quat(1.0f, 0.0f, 0.0f, 0.0f));
    const Skeletons held = std::make_shared<SkeletonResource>("held", Bent(), Slide(1.0f));
    auto holding = Make(held);
    // Idle steps ask for no redraw: Realtime without a new pose, a zero-length action.
    for (int round = 0; round < 2; ++round) {
        const int before = engine_.redrawRequests;
        other->Update(0.1f);
        holding->Update(0.1f);
        EXPECT_EQ(engine_.redrawRequests, before) << round;
        ASSERT_TRUE(resource->SetPose(pose));
        other->Update(0.1f);
        EXPECT_NEAR(RootX(*other), -1.0f, 1e-5f);
    }
    testing_support::LogCapture log;
    EXPECT_FALSE(Make(held)->SetPosingOption(5));
    EXPECT_EQ(log.messages.size(), 1u);
}

TEST_F(SkeletonModuleTest, StateRoundTripsAndDamagedRecordsKeepTheDefaults)
{
    const Skeletons resource = std::make_shared<SkeletonResource>("animated", Bent(), Slide());
    auto gadget = Make(resource);
    gadget->GetStyle()->renderMode = vexa::draw::SkeletonRenderMode::Stickman;
    ASSERT_TRUE(gadget->SetPosingOption(SkeletonGadget::ActionManual));
    gadget->SetAnimationTime(2.5f);
    ASSERT_TRUE(gadget->SaveState());
    auto again = Make(resource);
    EXPECT_EQ(again->GetStyle()->renderMode, vexa::draw::SkeletonRenderMode::Stickman);
    EXPECT_EQ(again->GetPosingOption(), SkeletonGadget::ActionManual);
    EXPECT_FLOAT_EQ(again->GetAnimationTime(), 2.5f);
    EXPECT_NEAR(RootX(*again), 1.5f, 1e-5f) << "the loaded option is shown";
    // A skeleton without an action cannot take the option over.
    const Skeletons plain = std::make_shared<SkeletonResource>("plain", Bent());
    EXPECT_EQ(Make(plain)->GetPosingOption(), SkeletonGadget::Realtime);

    // Hand-written records: first word, fields version, posing option, accepted.
    for (const auto& [first, version, option, accepted] : {std::tuple{0u, 0u, 0u, true},
                                                           {0u, 1u, 0u, true},
                                                           {1u, 1u, 0u, false},
                                                           {0u, 2u, 0u, false},
                                                           {0u, 1u, 4u, false}}) {
        {
            std::ofstream file(engine_.GetIntermediateDirectory() + "SkeletonResourceState0.bin",
                               std::ios::binary);
            runa::BinaryWriter(file).Write(0u).Write(first);
            vexa::draw::SkeletonStyle().WriteToStream(file);
            runa::BinaryWriter(file).Write(version).Write(1.25f).Write(option);
        }
        testing_support::LogCapture quiet;
        auto loaded = Make(resource);
        EXPECT_EQ(loaded->GetPosingOption(), accepted ? SkeletonGadget::RestPose : SkeletonGadget::ActionAuto)
            << first << " " << version << " " << option;
        EXPECT_FLOAT_EQ(loaded->GetAnimationTime(), accepted ? 1.25f : 1.0f);
        EXPECT_EQ(loaded->GetStyle()->renderMode, vexa::draw::SkeletonRenderMode::Octahedron);
    }
}

} // namespace
