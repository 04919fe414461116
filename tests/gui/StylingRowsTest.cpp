#include <vexa/GuiGenerator.h>
#include <vexa/draw/Material.h>
#include <vexa/gui/StylingRows.h>

#include <tesk/Color.h>
#include <tesk/ColorMap.h>

#include <nubo/Combobox.h>

#include "GuiTestSupport.h"

#include <CEGUI/CEGUI.h>

namespace {

using vexa::GuiGenerator;

class StylingRowsTest : public gui_test::PanelTest {
protected:
    CEGUI::Window* Control(int n) const { return gui_test::Row(panel_, n)->getChild("dynamic_control"); }
    bool Shown(int n) const { return gui_test::Row(panel_, n)->isVisible() && gui_test::Height(gui_test::Row(panel_, n)) > 0.0f; }
};

TEST_F(StylingRowsTest, ColourSlidersEditTheChannels)
{
    // A resource generator re-tests conditions and reports changes like a real panel.
    GuiGenerator gen(vexa::ResourceId("cloud", "PointCloudResource"), panel_);
    tesk::Color3f color{0.2f, 0.4f, 0.6f};
    vexa::gui::AddGuiColorRgb(gen, &color);
    auto* red = static_cast<CEGUI::Slider*>(Control(0));
    auto* blue = static_cast<CEGUI::Slider*>(Control(2));
    EXPECT_NEAR(blue->getCurrentValue(), 0.6f, 1e-4f) << "the link shows the current value";
    blue->setCurrentValue(0.9f);
    EXPECT_NEAR(color.b, 0.9f, 1e-4f);
    red->setCurrentValue(5.0f);
    EXPECT_LE(color.r, 1.0f);
    EXPECT_FALSE(panel_->isChild("generated_element_3"));
}

TEST_F(StylingRowsTest, MaterialRowsFollowUseLightingAndShininessStaysInRange)
{
    GuiGenerator gen(vexa::ResourceId("mesh", "MeshResource"), panel_);
    vexa::draw::Material material;
    material.useLighting = false;
    material.shininess = 40.0f;
    vexa::gui::AddGuiMaterial(gen, &material, true);
    gen.TestElementConditions();
    gen.SetAutoTestConditionsEnabled(true);

    // Rows 0..2 are the colour, 3 "Use lighting", then metallic, specular, shininess.
    for (int n : {0, 1, 2, 3})
        EXPECT_TRUE(Shown(n)) << n;
    for (int n : {4, 5, 6})
        EXPECT_FALSE(Shown(n)) << n;

    static_cast<CEGUI::ToggleButton*>(Control(3))->setSelected(true);
    EXPECT_TRUE(material.useLighting);
    for (int n : {4, 5, 6})
        EXPECT_TRUE(Shown(n)) << "ticking shows row " << n << " without a rebuild";
    EXPECT_FALSE(panel_->isChild("generated_element_7"));

    auto* shininess = static_cast<CEGUI::Spinner*>(Control(6));
    EXPECT_DOUBLE_EQ(shininess->getCurrentValue(), 40.0);
    shininess->setCurrentValue(0.5);
    EXPECT_FLOAT_EQ(material.shininess, 1.0f);
    shininess->setCurrentValue(600.0);
    EXPECT_FLOAT_EQ(material.shininess, 512.0f);

    static_cast<CEGUI::ToggleButton*>(Control(4))->setSelected(true);
    EXPECT_TRUE(material.metallic);
    static_cast<CEGUI::ToggleButton*>(Control(3))->setSelected(false);
    EXPECT_FALSE(Shown(4));
}

TEST_F(StylingRowsTest, ColorMapItemsCarryTheEnumValueNotTheirPosition)
{
    GuiGenerator gen(panel_);
    vexa::gui::Droplist* list = vexa::gui::AddGuiColorMap(gen);
    ASSERT_NE(list, nullptr);
    int chosen = 0;
    list->SetLink(&chosen);
    ASSERT_EQ(list->GetWidget()->getItemCount(), 7u);
    EXPECT_EQ(list->GetWidget()->getListboxItemFromIndex(4)->getText(), "Thermal");
    gui_test::Choose(list->GetWidget(), 4);
    EXPECT_EQ(chosen, static_cast<int>(tesk::ColorMap::Thermal));
    EXPECT_EQ(chosen, 1);
    list->Set(static_cast<int>(tesk::ColorMap::GrayScale));
    EXPECT_EQ(list->GetText(), "Gray scale");
}

} // namespace
