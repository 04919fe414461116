#include <vexa/Debugger.h>

#include <vexa/draw/GeometryStyle.h>
#include <vexa/draw/LineFieldRenderer.h>
#include <vexa/draw/Scene.h>

#include "FakeEngine.h"
#include "LogCapture.h"

#include <gtest/gtest.h>

namespace {

using vexa::Debugger;

// The debugger's update and gadget factory are the resource interface's, called as the
// engine calls them.
void Step(Debugger& debugger, float seconds)
{
    static_cast<vexa::Resource&>(debugger).Update(seconds);
}

bool Visible(const Debugger& debugger, Debugger::SlotIndex slot)
{
    return debugger.GetSlot(slot).style->visible;
}

const vexa::draw::GeometryStyle& Geometry(const Debugger& debugger, Debugger::SlotIndex slot)
{
    return static_cast<const vexa::draw::GeometryStyle&>(*debugger.GetSlot(slot).style);
}

class DebuggerTest : public ::testing::Test {
protected:
    testing_support::FakeEngine engine;
    Debugger debugger{"debug"};
};

TEST_F(DebuggerTest, ShapesArePlacedAndColouredAndASecondCallReplacesTheFirst)
{
    for (auto slot : {Debugger::BoxSlot, Debugger::SphereSlot, Debugger::LinesSlot})
        EXPECT_FALSE(Visible(debugger, slot)) << "slot " << slot << " shows before anything was drawn";

    debugger.DrawBox({{0, 0, 0}, {1, 1, 1}}, {0, 1, 0}, 5.0f);
    debugger.DrawBox({{-1, 2, 4}, {3, 3, 4.5f}}, {1, 0, 0}, 2.0f);
    const auto& box = Geometry(debugger, Debugger::BoxSlot);
    EXPECT_TRUE(box.visible);
    // The unit cube stretched over the second box only.
    EXPECT_EQ(box.transform.GetScale(), glm::vec3(4, 1, 0.5f));
    EXPECT_EQ(box.transform.GetPosition(), glm::vec3(1, 2.5f, 4.25f));
    EXPECT_EQ(box.material.color, tesk::Color3f(1, 0, 0));
    EXPECT_EQ(box.color, tesk::Color3f(1, 0, 0));
    EXPECT_EQ(debugger.GetSlot(Debugger::BoxSlot).lifetime, 2.0f);
    EXPECT_GT(engine.redrawRequests, 0);

    debugger.DrawSphere({{1, 2, 3}, 0.5f}, {0, 0, 1}, 1.0f);
    const auto& sphere = Geometry(debugger, Debugger::SphereSlot);
    EXPECT_EQ(sphere.transform.GetScale(), glm::vec3(0.5f));
    EXPECT_EQ(sphere.transform.GetPosition(), glm::vec3(1, 2, 3));
    EXPECT_EQ(sphere.material.color, tesk::Color3f(0, 0, 1));

    debugger.DrawLines({{{0, 0, 0}, {1, 0, 0}}, {{0, 0, 0}, {0, 1, 0}}, {{0, 0, 0}, {0, 0, 1}}}, {1, 1, 0},
                       1.0f);
    debugger.DrawLines({{{0, 0, 0}, {2, 0, 0}}}, {0, 1, 1}, 1.0f);
    const auto& lines =
        static_cast<const vexa::draw::LineFieldRenderer&>(*debugger.GetSlot(Debugger::LinesSlot).renderer);
    EXPECT_EQ(lines.GetLineCount(), 1u);
    EXPECT_TRUE(Visible(debugger, Debugger::LinesSlot));
    EXPECT_EQ(debugger.GetSlot(Debugger::LinesSlot).style->color, tesk::Color3f(0, 1, 1));
}

TEST_F(DebuggerTest, BadShapesAreRefusedAndKeepWhatWasShown)
{
    debugger.DrawBox({{0, 0, 0}, {2, 2, 2}}, {1, 0, 0}, 3.0f);
    testing_support::LogCapture log;
    debugger.DrawBox(geom::TAabb<3, float>(), {0, 1, 0}, 1.0f);
    debugger.DrawBox({{0, 0, 0}, {std::numeric_limits<float>::infinity(), 1, 1}}, {0, 1, 0}, 1.0f);
    debugger.DrawSphere({{0, 0, 0}, -1.0f}, {0, 1, 0}, 1.0f);
    EXPECT_TRUE(log.Contains("The box is empty or not finite; it is not drawn.", "vexa::Debugger::DrawBox"));
    EXPECT_TRUE(log.Contains("The sphere has a negative or non-finite radius or centre; it is not drawn.",
                             "vexa::Debugger::DrawSphere"));
    EXPECT_EQ(Geometry(debugger, Debugger::BoxSlot).transform.GetScale(), glm::vec3(2));
    EXPECT_EQ(Geometry(debugger, Debugger::BoxSlot).material.color, tesk::Color3f(1, 0, 0));
    EXPECT_EQ(debugger.GetSlot(Debugger::BoxSlot).lifetime, 3.0f);
    EXPECT_FALSE(Visible(debugger, Debugger::SphereSlot));
}

TEST_F(DebuggerTest, LifetimesAreTestedBeforeTheyAreCountedDown)
{
    // 1.0 s in steps of 0.4 s: 0.6, 0.2, -0.2 still show; the fourth update hides it.
    debugger.DrawSphere({{0, 0, 0}, 1.0f}, {1, 1, 1}, 1.0f);
    for (int update = 1; update <= 3; ++update) {
        Step(debugger, 0.4f);
        EXPECT_TRUE(Visible(debugger, Debugger::SphereSlot)) << "after update " << update;
    }
    EXPECT_NEAR(debugger.GetSlot(Debugger::SphereSlot).lifetime, -0.2f, 1e-5f);
    const int before = engine.redrawRequests;
    Step(debugger, 0.4f);
    EXPECT_FALSE(Visible(debugger, Debugger::SphereSlot));
    EXPECT_GT(engine.redrawRequests, before) << "hiding a shape must redraw";

    // Zero shows for one more update; negative is gone at the next.
    debugger.DrawBox({{0, 0, 0}, {1, 1, 1}}, {1, 0, 0}, 0.0f);
    debugger.DrawLines({{{0, 0, 0}, {1, 1, 1}}}, {1, 0, 0}, -1.0f);
    Step(debugger, 0.1f);
    EXPECT_TRUE(Visible(debugger, Debugger::BoxSlot));
    EXPECT_FALSE(Visible(debugger, Debugger::LinesSlot));
    Step(debugger, 0.1f);
    EXPECT_FALSE(Visible(debugger, Debugger::BoxSlot));

    // The message follows the same order.
    debugger.LogMessage("gone soon", -1.0f);
    EXPECT_EQ(debugger.GetMessage(), "gone soon");
    Step(debugger, 0.0f);
    EXPECT_TRUE(debugger.GetMessage().empty());
    debugger.LogMessage("stays", 0.5f);
    Step(debugger, 0.3f);
    Step(debugger, 0.3f);
    EXPECT_EQ(debugger.GetMessage(), "stays");
    Step(debugger, 0.3f);
    EXPECT_TRUE(debugger.GetMessage().empty());
}

} // namespace
