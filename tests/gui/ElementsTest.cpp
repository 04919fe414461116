#include "GuiTestSupport.h"

#include <cmath>
#include <vexa/GuiGenerator.h>
#include <vexa/draw/Material.h>
#include <vexa/gui/StylingRows.h>

#include <tesk/Color.h>

#include <nubo/ArrayPanel.h>

#include <CEGUI/CEGUI.h>

#include <glm/glm.hpp>

#include <tuple>
#include <utility>

using namespace vexa;
using gui_test::Click;
using gui_test::Fire;
using ElementsTest = gui_test::PanelTest;

TEST_F(ElementsTest, ConditionsReadTheFlagAtEveryTest)
{
    GuiGenerator gen(panel_);
    gui::Button* button = gen.AddButton("Run");
    EXPECT_TRUE(button->TestCondition()) << "no condition: shown";

    // Any non-zero choice reads the flag as IfFalse; the flag is read at every test.
    bool flag = true;
    for (const auto& [func, shownWhenTrue] :
         {std::pair{BoolFunc::IfTrue, true}, {BoolFunc::IfFalse, false}, {static_cast<BoolFunc>(7), false}}) {
        button->SetConditionBool(&flag, func);
        for (const bool value : {false, true}) {
            flag = value;
            EXPECT_EQ(button->TestCondition(), value == shownWhenTrue) << static_cast<int>(func) << value;
        }
    }

    {
        testing_support::LogCapture log;
        button->SetConditionBool(nullptr, BoolFunc::IfTrue);
        EXPECT_FALSE(log.messages.empty());
        EXPECT_FALSE(button->TestCondition()) << "a missing flag keeps the previous condition";
    }
    int asked = 0;
    button->SetConditionFunc([&] { return ++asked > 1; });
    EXPECT_FALSE(button->TestCondition());
    EXPECT_TRUE(button->TestCondition());
    button->SetConditionFunc({});
    EXPECT_TRUE(button->TestCondition());
}

TEST_F(ElementsTest, NumericIntTruncatesTowardsZeroAndSlidingFloatAddsItsOwnMinimum)
{
    GuiGenerator gen(panel_);
    int count = 3;
    gui::NumericInt* numeric = gen.AddNumericInt("Count");
    numeric->SetMinMax(-5, 10)->SetLink(&count);
    EXPECT_DOUBLE_EQ(numeric->GetWidget()->getCurrentValue(), 3.0);

    int seen = 0;
    numeric->Subscribe([&](const gui::NumericInt* n) { seen = n->Get(); });
    numeric->GetWidget()->setCurrentValue(7.9);
    EXPECT_EQ(std::make_tuple(numeric->Get(), count, seen), std::make_tuple(7, 7, 7));
    numeric->GetWidget()->setCurrentValue(-2.5);
    EXPECT_EQ(count, -2) << "truncated towards zero";

    // A sliding float adds its own minimum to the slider, which runs from 0.
    gui::SlidingFloat* slider = gen.AddSlidingFloat("Opacity");
    float value = 0.0f;
    int changes = 0;
    slider->SetMax(5.0f)->SetMin(2.0f)->SetLink(&value)->Subscribe(
        [&](const gui::SlidingFloat*) { ++changes; });
    const auto range = [&] { return glm::vec2(slider->GetMin(), slider->GetMax()); };
    EXPECT_EQ(range(), glm::vec2(2.0f, 5.0f));
    EXPECT_FLOAT_EQ(slider->GetWidget()->getMaxValue(), 3.0f) << "the slider itself runs from 0";

    slider->Set(7.0f);
    EXPECT_EQ(glm::vec2(slider->Get(), value), glm::vec2(5.0f));
    changes = 0;

    slider->SetMin(4.0f);
    EXPECT_FLOAT_EQ(slider->Get(), 5.0f) << "the shown value stays";
    EXPECT_EQ(range(), glm::vec2(4.0f, 5.0f));
    EXPECT_FLOAT_EQ(slider->GetWidget()->getCurrentValue(), 1.0f);
    EXPECT_EQ(changes, 0) << "nothing the user sees changed";
    slider->Set(0.0f);
    EXPECT_FLOAT_EQ(slider->Get(), 4.0f);

    // A minimum past the value moves the value up with it, reported once.
    changes = 0;
    slider->SetMin(4.5f);
    EXPECT_EQ(glm::vec2(slider->Get(), value), glm::vec2(4.5f));
    EXPECT_EQ(changes, 1);

    // A minimum above the maximum is capped at it; a maximum below the minimum collapses.
    slider->SetMin(9.0f);
    EXPECT_EQ(range(), glm::vec2(5.0f, 5.0f));
    slider->SetMinMax(1.0f, 3.0f)->SetMax(-1.0f);
    EXPECT_EQ(range(), glm::vec2(1.0f, 1.0f));

    slider->SetMax(3.0f);
    slider->GetWidget()->setCurrentValue(0.5f); // the user drags
    EXPECT_FLOAT_EQ(value, 1.5f);
}

TEST_F(ElementsTest, SlidingIntSnapsTheThumbToWholeNumbers)
{
    GuiGenerator gen(panel_);
    gui::SlidingInt* slider = gen.AddSlidingInt("Level");
    slider->SetMax(8)->SetMin(-2);
    int level = 3;
    slider->SetLink(&level);
    EXPECT_FLOAT_EQ(slider->GetWidget()->getCurrentValue(), 5.0f);

    // While dragging, the slider lands between whole numbers; the thumb event snaps it.
    slider->GetWidget()->setCurrentValue(4.4f);
    EXPECT_EQ(std::make_pair(slider->Get(), level), std::make_pair(2, 2));
    Fire(slider->GetWidget()->getThumb(), CEGUI::Thumb::EventThumbPositionChanged,
         CEGUI::Thumb::EventNamespace);
    EXPECT_FLOAT_EQ(slider->GetWidget()->getCurrentValue(), 4.0f);

    slider->GetWidget()->setCurrentValue(6.6f);
    Fire(slider->GetWidget(), CEGUI::Slider::EventThumbTrackEnded, CEGUI::Slider::EventNamespace);
    EXPECT_FLOAT_EQ(slider->GetWidget()->getCurrentValue(), 7.0f);
    EXPECT_EQ(level, 5);

    for (const auto& [asked, kept] : {std::pair{100, 8}, std::pair{-100, -2}})
        EXPECT_EQ(slider->Set(asked)->Get(), kept) << asked;

    // SetMinMax on a fresh slider briefly leaves it with no span (minimum = upper end): the
    // thumb must land where the value is once the range opens again.
    gui::SlidingInt* fresh = gen.AddSlidingInt("Quality");
    int quality = 3;
    fresh->SetMinMax(1, 8)->SetLink(&quality);
    EXPECT_EQ(fresh->Get(), 3);
    EXPECT_FLOAT_EQ(fresh->GetWidget()->getMaxValue(), 7.0f);
    const CEGUI::UVector2 position = fresh->GetWidget()->getThumb()->getPosition();
    EXPECT_TRUE(std::isfinite(position.d_x.d_offset)) << position.d_x.d_offset;
    EXPECT_TRUE(std::isfinite(position.d_x.d_scale)) << position.d_x.d_scale;
}

TEST_F(ElementsTest, CheckboxListRowsIdsAndSelectButtons)
{
    GuiGenerator gen(panel_);
    gui::CheckboxList* list = gen.AddCheckboxList();
    // Without an id, an item takes the number of items before it.
    EXPECT_EQ((std::vector<std::size_t>{list->AddItem("Ground"), list->AddItem("Wall", false),
                                        list->AddItem("Roof", false), list->AddItem("Tree"),
                                        list->AddItem("Car", true, 17)}),
              (std::vector<std::size_t>{0, 1, 2, 3, 17}));
    {
        testing_support::LogCapture log;
        EXPECT_EQ(list->AddItem("Bus", false, 17), 17u);
        EXPECT_FALSE(log.messages.empty());
    }
    EXPECT_EQ(list->GetItemCount(), 5u);

    nubo::ArrayPanel* panel = list->GetWidget();
    CEGUI::Window* row = panel->getChild("item-17");
    auto* car = dynamic_cast<CEGUI::ToggleButton*>(row->getChildRecursive(17));
    ASSERT_NE(car, nullptr);
    EXPECT_EQ(car->getText(), "Car");
    EXPECT_TRUE(car->isSelected() && list->IsItemChecked(17));
    list->SetItemColor(17, tesk::Color3f(1.0f, 0.0f, 0.0f));
    EXPECT_NE(row->getChild("colorstripe")->getProperty("Colour").find("FF0000"), CEGUI::String::npos);

    std::vector<std::string> calls;
    list->SubscribeItems(
        [&](unsigned int id, bool checked) { calls.push_back(std::to_string(id) + (checked ? "+" : "-")); });
    list->Subscribe([&](const gui::CheckboxList*) { calls.push_back("changed"); });

    Click(panel->getChild("sel-all"));
    EXPECT_EQ(calls,
              (std::vector<std::string>{"0+", "changed", "1+", "changed", "2+", "changed", "3+", "changed"}))
        << "only the four unchecked items toggle";
    for (std::size_t id : {0u, 1u, 2u, 3u, 17u})
        EXPECT_TRUE(list->IsItemChecked(id));

    calls.clear();
    Click(panel->getChild("unsel-all"));
    EXPECT_EQ(calls.size(), 10u);
    EXPECT_EQ(calls.back(), "changed");
    EXPECT_EQ(calls[8], "17-");

    calls.clear();
    auto* roof = dynamic_cast<CEGUI::ToggleButton*>(panel->getChild("item-2")->getChildRecursive(2));
    roof->setSelected(true);
    EXPECT_EQ(calls, (std::vector<std::string>{"2+", "changed"}));
}

TEST_F(ElementsTest, CopiesDriveTheSameWidgetAndDeadElementsIgnoreIt)
{
    auto gen = std::make_unique<GuiGenerator>(panel_);
    gui::Checkbox* box = gen->AddCheckbox("Grid");
    CEGUI::ToggleButton* widget = box->GetWidget();
    int calls = 0;
    box->Subscribe([&](const gui::Checkbox*) { ++calls; });
    {
        gui::Checkbox copy(*box);
        EXPECT_EQ(copy.GetId(), box->GetId());
        copy.Set(true);
        EXPECT_TRUE(box->Get());
        gui::Checkbox moved(std::move(copy));
        EXPECT_EQ(moved.GetWidget(), widget);
    }
    const int before = calls;
    gen.reset(); // the elements go, the panel keeps its widgets
    widget->setSelected(false);
    EXPECT_EQ(calls, before);
}

namespace {

class StylingRowsTest : public gui_test::PanelTest {
protected:
    CEGUI::Window* Control(int n) const { return gui_test::Row(panel_, n)->getChild("dynamic_control"); }
    bool Shown(int n) const
    {
        return gui_test::Row(panel_, n)->isVisible() && gui_test::Height(gui_test::Row(panel_, n)) > 0.0f;
    }
};

TEST_F(StylingRowsTest, ColourSlidersEditTheChannels)
{
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

} // namespace
