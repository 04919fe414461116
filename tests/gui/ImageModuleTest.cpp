#include <vexa/GuiGenerator.h>
#include <vexa/modules/GraphGadget.h>
#include <vexa/modules/GraphResource.h>
#include <vexa/modules/ImageResource.h>
#include <vexa/modules/TextureGadget.h>

#include <vexa/draw/GraphRenderer.h>
#include <vexa/draw/GraphStyle.h>
#include <vexa/draw/ImageRenderer.h>
#include <vexa/draw/ImageStyle.h>

#include <runa/BinaryStream.h>

#include "core/Notifications.h"

#include "FakeEngine.h"
#include "GuiTestSupport.h"

#include <CEGUI/CEGUI.h>

#include <algorithm>
#include <fstream>

namespace {

using vexa::modules::ImageResource;
using vexa::modules::TextureGadget;

const char* const kFactorRows[] = {"Red Multiplier",  "Red Offset",  "Green Multiplier", "Green Offset",
                                   "Blue Multiplier", "Blue Offset", "Alpha Multiplier", "Alpha Offset"};

class ImageModuleTest : public gui_test::PanelTest {
protected:
    std::shared_ptr<TextureGadget> Make() { return gui_test::InitializedGadget<TextureGadget>(*resource_); }
    void TearDown() override
    {
        generator_.reset();
        PanelTest::TearDown();
    }
    /// A fresh panel of `gadget` as the sidebar builds it.
    void Panel(TextureGadget& gadget)
    {
        generator_.reset();
        Renew();
        generator_ = std::make_unique<vexa::GuiGenerator>(resource_->GetId(), panel_);
        gadget.GenerateGui(*generator_);
        generator_->SetAutoTestConditionsEnabled(true);
        generator_->TestElementConditions();
    }
    int ShownFactors() const
    {
        return static_cast<int>(std::count_if(std::begin(kFactorRows), std::end(kFactorRows),
                                              [&](const char* row) { return gui_test::Shown(panel_, row); }));
    }
    CEGUI::ToggleButton* Box(const std::string& caption)
    {
        return gui_test::Control<CEGUI::ToggleButton>(panel_, caption);
    }
    std::string StateFile() const { return engine_.GetIntermediateDirectory() + "ImageResourceState0.bin"; }

    testing_support::FakeEngine engine_;
    std::unique_ptr<vexa::GuiGenerator> generator_;
    std::shared_ptr<ImageResource> resource_ = std::make_shared<ImageResource>(
        "pic", tesk::Image(2, 1, 4, std::vector<std::uint8_t>{255, 0, 0, 255, 0, 0, 255, 255}));
};

TEST_F(ImageModuleTest, TheResourceSharesOneRendererAndTakesPixelsOver)
{
    auto first = Make();
    EXPECT_NE(first->GetStyle(), Make()->GetStyle()) << "a style per view area";
    // Ending one view area's gadget must leave the image for the others.
    first->Terminate();
    first.reset();
    EXPECT_TRUE(resource_->GetObjectPtr()->HasImage());

    tesk::Image big(64, 32, 3, std::vector<std::uint8_t>(64 * 32 * 3, 7));
    ImageResource moved("moved", std::move(big));
    EXPECT_EQ(moved.GetObjectPtr()->GetImageHeight(), 32u);
    EXPECT_TRUE(big.GetUInt8Data().empty()) << "the pixels were moved, not copied";
}

TEST_F(ImageModuleTest, ColorTransformationShowsItsFieldsAndSurvivesTheStateStream)
{
    auto gadget = Make();
    Panel(*gadget);
    EXPECT_EQ(ShownFactors(), 0);
    Box("Color Transformation")->setSelected(true);
    EXPECT_TRUE(gadget->GetStyle()->colorTransformEnabled);
    EXPECT_EQ(ShownFactors(), 8);
    gui_test::Control<CEGUI::Spinner>(panel_, "Blue Offset")->setCurrentValue(0.5);
    EXPECT_FLOAT_EQ(gadget->GetStyle()->blueOffset, 0.5f);

    // Written on the change, read by a new gadget of the same view area.
    auto restarted = Make();
    EXPECT_TRUE(restarted->IsColorTransformEnabled());
    EXPECT_FLOAT_EQ(restarted->GetStyle()->blueOffset, 0.5f);

    Panel(*restarted);
    Box("Color Transformation")->setSelected(false);
    EXPECT_FALSE(restarted->GetStyle()->colorTransformEnabled);
    EXPECT_EQ(ShownFactors(), 0);
    EXPECT_FALSE(Make()->IsColorTransformEnabled());
    EXPECT_FLOAT_EQ(Make()->GetStyle()->blueOffset, 0.5f) << "hidden values are kept";

    // Hand-written records: either word other than 0, or a cut-off flag, leaves the defaults.
    struct Case {
        std::uint32_t styleWord, fieldsWord;
        bool withFlag, accepted;
    };
    for (const Case& c : {Case{0, 0, true, true}, Case{1, 0, true, false}, Case{0, 1, true, false},
                          Case{0, 0, false, false}}) {
        {
            std::ofstream file(StateFile(), std::ios::binary | std::ios::trunc);
            runa::BinaryWriter writer(file);
            writer.Write(std::uint32_t{0}).Write(c.styleWord);
            vexa::draw::ImageStyle mirrored;
            mirrored.mirrorY = true;
            mirrored.WriteToStream(file);
            writer.Write(c.fieldsWord);
            if (c.withFlag)
                writer.Write(std::uint8_t{1});
        }
        testing_support::LogCapture quiet;
        auto loaded = Make();
        EXPECT_EQ(loaded->IsColorTransformEnabled(), c.accepted) << c.styleWord << " " << c.fieldsWord;
        EXPECT_EQ(loaded->GetStyle()->mirrorY, c.accepted) << c.styleWord << " " << c.fieldsWord;
    }
}

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
    ResetCounter resets(graph->GetId());
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
    EXPECT_EQ(gui_test::InitializedGadget<GraphGadget>(*graph)->GetRenderer()->GetDataMin(),
              glm::vec2(-1.0f, -8.0f));
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
        // A user change writes the state file at once.
        gui_test::Control<CEGUI::Spinner>(panel_, "Point size")->setCurrentValue(6.0);
        EXPECT_EQ(gadget->GetStyle()->pointSize, 6);
    }
    auto again = gui_test::InitializedGadget<GraphGadget>(*graph);
    EXPECT_EQ(again->GetStyle()->pointSize, 6);
    EXPECT_EQ(again->GetStyle()->lineWidth, vexa::draw::GraphStyle().lineWidth);
}

} // namespace
