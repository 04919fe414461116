#include <vexa/GuiGenerator.h>
#include <vexa/modules/GraphGadget.h>
#include <vexa/modules/GraphResource.h>

#include <vexa/draw/GraphRenderer.h>
#include <vexa/draw/GraphStyle.h>

#include "core/Notifications.h"

#include "FakeEngine.h"
#include "GuiTestSupport.h"

#include <CEGUI/CEGUI.h>

namespace {

using vexa::modules::GraphGadget;
using vexa::modules::GraphResource;

// Counts the view areas' rebuild requests for one resource.
struct ResetCounter {
    explicit ResetCounter(vexa::ResourceId id)
    {
        vexa::GetNotifications().Subscribe(this, vexa::kResourceGadgetsReset, [this, id](const void* data) {
            count += *static_cast<const vexa::ResourceId*>(data) == id ? 1 : 0;
        });
    }
    ~ResetCounter() { vexa::GetNotifications().Unsubscribe(this); }
    int count = 0;
};

TEST(GraphResource, SetDataCountsXInFloatsReplacesThePointsAndRebuildsTheGadgets)
{
    testing_support::FakeEngine engine;
    auto graph = std::make_shared<GraphResource>("series");
    EXPECT_EQ(graph->GetId().ToString(), "GraphResource:series");
    EXPECT_TRUE(graph->GetPoints().empty());
    ResetCounter resets(graph->GetId());
    graph->SetData(std::vector<float>{3.0f, 5.0f});
    EXPECT_EQ(resets.count, 0) << "an unlisted resource has no gadgets to rebuild";

    engine.Register(graph);
    graph->SetData(std::vector<float>{3.0f, 5.0f});
    EXPECT_EQ(graph->GetPoints(), (std::vector<glm::vec2>{{0.0f, 3.0f}, {1.0f, 5.0f}}));
    EXPECT_EQ(resets.count, 1);

    // A gadget keeps the points it was built from; the rebuild brings the new ones.
    auto gadget = gui_test::InitializedGadget<GraphGadget>(*graph);
    ASSERT_TRUE(gadget->GetRenderer());
    EXPECT_EQ(gadget->GetRenderer()->GetPointCount(), 2u);
    const std::vector<glm::vec2> given = {{-1.0f, 2.0f}, {4.0f, -8.0f}, {9.0f, 0.5f}};
    graph->SetData(given);
    EXPECT_EQ(graph->GetPoints(), given);
    EXPECT_EQ(gadget->GetRenderer()->GetPointCount(), 2u);
    EXPECT_EQ(gui_test::InitializedGadget<GraphGadget>(*graph)->GetRenderer()->GetDataMin(), glm::vec2(-1.0f, -8.0f));
    EXPECT_EQ(resets.count, 2);

    graph->SetData(std::vector<float>{});
    EXPECT_TRUE(graph->GetPoints().empty());
    EXPECT_EQ(resets.count, 3);
    EXPECT_EQ(gui_test::InitializedGadget<GraphGadget>(*graph)->GetRenderer()->GetPointCount(), 0u);

    // Past 2^24 a float counter stands still; the converted index 16777218 would not.
    std::vector<float> many(16777219, 1.0f);
    graph->SetData(many);
    EXPECT_EQ(graph->GetPoints().back().x, 16777216.0f);
}

using GraphPanelTest = gui_test::PanelTest;

TEST_F(GraphPanelTest, OffersLineWidthAndPointSizeAndKeepsThemInTheStateFile)
{
    testing_support::FakeEngine engine;
    auto graph = std::make_shared<GraphResource>("series");
    auto gadget = gui_test::InitializedGadget<GraphGadget>(*graph);
    {
        vexa::GuiGenerator generator(graph->GetId(), panel_);
        gadget->GenerateGui(generator);
        generator.SetAutoTestConditionsEnabled(true);
        EXPECT_EQ(gui_test::Texts(panel_), (std::vector<std::string>{"Line width", "Point size"}));
        auto* width = static_cast<CEGUI::Slider*>(
            gui_test::FindRow(panel_, "Line width")->getChildRecursive("dynamic_control"));
        auto* size = static_cast<CEGUI::Spinner*>(
            gui_test::FindRow(panel_, "Point size")->getChildRecursive("dynamic_control"));
        EXPECT_FLOAT_EQ(width->getMaxValue(), 7.0f) << "a span of 7 from 1";
        EXPECT_DOUBLE_EQ(size->getMinimumValue(), 0.0);
        EXPECT_DOUBLE_EQ(size->getMaximumValue(), vexa::draw::GraphStyle::kMaxPointSize);
        // A user change writes the state file at once.
        size->setCurrentValue(6.0);
        EXPECT_EQ(gadget->GetStyle()->pointSize, 6);
    }
    auto again = gui_test::InitializedGadget<GraphGadget>(*graph);
    EXPECT_EQ(again->GetStyle()->pointSize, 6);
    EXPECT_EQ(again->GetStyle()->lineWidth, vexa::draw::GraphStyle().lineWidth);
}

} // namespace
