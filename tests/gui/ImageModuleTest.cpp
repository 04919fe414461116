#include <vexa/GuiGenerator.h>
#include <vexa/modules/ImageResource.h>
#include <vexa/modules/TextureGadget.h>

#include <vexa/draw/ImageRenderer.h>
#include <vexa/draw/ImageStyle.h>

#include <runa/BinaryStream.h>

#include "FakeEngine.h"
#include "GuiTestSupport.h"

#include <CEGUI/CEGUI.h>

#include <fstream>

namespace {

using vexa::modules::ImageResource;
using vexa::modules::TextureGadget;

const char* const kFactorRows[] = {"Red Multiplier",   "Red Offset",  "Green Multiplier", "Green Offset",
                                   "Blue Multiplier",  "Blue Offset", "Alpha Multiplier", "Alpha Offset"};

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
    /// How many of the eight factor rows are shown (at a height).
    int ShownFactors() const
    {
        int shown = 0;
        for (const char* caption : kFactorRows)
        {
            bool visible = true;
            for (CEGUI::Window* w = gui_test::FindRow(panel_, caption); w != panel_; w = w->getParent())
                visible = visible && w->isVisible() && gui_test::Height(w) > 0.0f;
            shown += visible ? 1 : 0;
        }
        return shown;
    }
    /// The checkbox of row `caption`, or of item `item` of the channel list.
    CEGUI::ToggleButton* Box(const std::string& caption)
    {
        return static_cast<CEGUI::ToggleButton*>(
            gui_test::FindRow(panel_, caption)->getChildRecursive("dynamic_control"));
    }
    CEGUI::ToggleButton* Channel(int item)
    {
        return static_cast<CEGUI::ToggleButton*>(
            gui_test::Row(panel_, 5)->getChildRecursive("item-" + std::to_string(item))->getChild("checkbox"));
    }
    std::string StateFile() const { return engine_.GetIntermediateDirectory() + "ImageResourceState0.bin"; }

    testing_support::FakeEngine engine_;
    std::unique_ptr<vexa::GuiGenerator> generator_;
    std::shared_ptr<ImageResource> resource_ = std::make_shared<ImageResource>(
        "pic", tesk::Image(2, 1, 4, std::vector<std::uint8_t>{255, 0, 0, 255, 0, 0, 255, 255}));
};

TEST_F(ImageModuleTest, TheResourceSharesOneRendererAndTakesPixelsOver)
{
    EXPECT_EQ(resource_->GetId().ToString(), "ImageResource:pic");
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

TEST_F(ImageModuleTest, RowsComeInOrderAndTheChannelListDrivesTheStyle)
{
    auto gadget = Make();
    Panel(*gadget);
    std::vector<std::string> expected = {"Nearest filtering", "Fit to viewport", "Keep aspect ratio", "Mirror X",
                                         "Mirror Y", "", "", "Color Transformation",
                                         "Red Multiplier"}; // the group's own row, read by its first field
    expected.insert(expected.end(), std::begin(kFactorRows), std::end(kFactorRows));
    EXPECT_EQ(gui_test::Texts(panel_), expected);

    vexa::draw::ImageStyle& style = *gadget->GetStyle();
    Box("Mirror X")->setSelected(true);
    EXPECT_TRUE(style.mirrorX);
    EXPECT_TRUE(Channel(3)->isSelected());
    Channel(1)->setSelected(false);
    Channel(3)->setSelected(false);
    EXPECT_EQ((std::vector<bool>{style.showRed, style.showGreen, style.showBlue, style.showAlpha}),
              (std::vector<bool>{true, false, true, false}));
    // The change was saved: the next panel of this view area starts from it.
    auto next = Make();
    Panel(*next);
    EXPECT_FALSE(Channel(1)->isSelected());
    EXPECT_TRUE(Channel(2)->isSelected());
}

TEST_F(ImageModuleTest, ColorTransformationShowsItsFieldsAndSurvivesTheStateStream)
{
    auto gadget = Make();
    Panel(*gadget);
    EXPECT_EQ(ShownFactors(), 0);
    Box("Color Transformation")->setSelected(true);
    EXPECT_TRUE(gadget->GetStyle()->colorTransformEnabled);
    EXPECT_EQ(ShownFactors(), 8);
    auto* offset = static_cast<CEGUI::Spinner*>(
        gui_test::FindRow(panel_, "Blue Offset")->getChildRecursive("dynamic_control"));
    EXPECT_FLOAT_EQ(static_cast<float>(offset->getMinimumValue()), -1000.0f);
    EXPECT_FLOAT_EQ(static_cast<float>(offset->getMaximumValue()), 1000.0f);
    offset->setCurrentValue(0.5);
    EXPECT_FLOAT_EQ(gadget->GetStyle()->blueOffset, 0.5f);

    // Written on the change, read by a new gadget of the same view area.
    auto restarted = Make();
    EXPECT_TRUE(restarted->IsColorTransformEnabled());
    EXPECT_TRUE(restarted->GetStyle()->colorTransformEnabled);
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
                          Case{0, 0, false, false}})
    {
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

} // namespace
