#include "GuiTestSupport.h"

#include <cmath>
#include <vexa/GuiGenerator.h>

#include <nubo/ArrayPanel.h>
#include <nubo/Combobox.h>

#include <CEGUI/widgets/ComboDropList.h>
#include <CEGUI/widgets/PushButton.h>
#include <CEGUI/widgets/Slider.h>
#include <CEGUI/widgets/Spinner.h>
#include <CEGUI/widgets/Thumb.h>
#include <CEGUI/widgets/ToggleButton.h>

#include <glm/glm.hpp>

#include <tuple>
#include <utility>

using namespace vexa;
using gui_test::Choose;
using gui_test::Click;
using gui_test::Fire;
using ElementsTest = gui_test::PanelTest;

TEST_F(ElementsTest, CheckboxWritesItsLinkBeforeCallingTheCallbacksInOrder)
{
    GuiGenerator gen(panel_);
    bool axes = true;
    gui::Checkbox* box = gen.AddCheckbox("Axes");
    EXPECT_EQ(box->SetLink(&axes), box);
    EXPECT_TRUE(box->GetWidget()->isSelected()) << "linking shows the variable's value";

    std::vector<std::string> calls;
    box->Subscribe([&](const gui::Checkbox* b) { calls.push_back("first:" + std::to_string(axes) + std::to_string(b->Get())); })
        ->Subscribe([&](const gui::Checkbox* b) { calls.push_back(b == box ? "second" : "second:wrong element"); });
    box->GetWidget()->setSelected(false);
    EXPECT_FALSE(axes);
    EXPECT_EQ(calls, (std::vector<std::string>{"first:00", "second"}));

    // Unlinking leaves the widget as it is and the old variable alone from then on.
    box->SetLink(nullptr);
    EXPECT_FALSE(box->Get());
    box->GetWidget()->setSelected(true);
    EXPECT_FALSE(axes);
    EXPECT_TRUE(box->Get());
    EXPECT_EQ(calls.size(), 4u);
}

TEST_F(ElementsTest, ConditionsReadTheFlagAtEveryTestAndButtonsAndLabelsForwardToTheirWidgets)
{
    GuiGenerator gen(panel_);
    gui::Button* button = gen.AddButton("Run");
    EXPECT_EQ(button->GetCaption(), "Run");
    EXPECT_TRUE(button->TestCondition()) << "no condition: shown";

    bool flag = true;
    EXPECT_EQ(button->SetConditionBool(&flag, BoolFunc::IfTrue), button);
    EXPECT_TRUE(button->TestCondition());
    flag = false;
    EXPECT_FALSE(button->TestCondition());

    button->SetConditionBool(&flag, BoolFunc::IfFalse);
    EXPECT_TRUE(button->TestCondition());
    flag = true;
    EXPECT_FALSE(button->TestCondition());
    button->SetConditionBool(&flag, static_cast<BoolFunc>(7));
    EXPECT_FALSE(button->TestCondition()) << "any non-zero choice reads the flag as IfFalse";

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

    gui::Label* label = gen.AddLabel("Points: 0");
    EXPECT_EQ(label->Set("Points: 1 024 – done")->Get(), "Points: 1 024 – done");
    EXPECT_EQ(std::string(label->GetWidget()->getText().c_str()), "Points: 1 024 – done");

    button->SetCaption("Go");
    EXPECT_EQ(button->GetWidget()->getText(), "Go");
    // A click reaching the button's callbacks: every panel's buttons (GlobalOptionsPanelTest).
}

TEST_F(ElementsTest, SpinnersForwardRangesAndTruncateWholeNumbersAndSlidingFloatAddsItsOwnMinimum)
{
    GuiGenerator gen(panel_);
    int count = 3;
    gui::NumericInt* numeric = gen.AddNumericInt("Count");
    ASSERT_NE(numeric, nullptr);
    EXPECT_EQ(numeric->GetWidget()->getTextInputMode(), CEGUI::Spinner::Integer);
    numeric->SetMinMax(-5, 10)->SetStep(2)->SetLink(&count);
    EXPECT_EQ(std::make_tuple(numeric->GetMin(), numeric->GetMax(), numeric->GetStep()), std::make_tuple(-5, 10, 2));
    EXPECT_DOUBLE_EQ(numeric->GetWidget()->getCurrentValue(), 3.0);

    int seen = 0;
    numeric->Subscribe([&](const gui::NumericInt* n) { seen = n->Get(); });
    numeric->GetWidget()->setCurrentValue(7.9);
    EXPECT_EQ(std::make_tuple(numeric->Get(), count, seen), std::make_tuple(7, 7, 7));
    numeric->GetWidget()->setCurrentValue(-2.5);
    EXPECT_EQ(count, -2) << "truncated towards zero";

    float scale = 1.0f;
    gui::NumericFloat* real = gen.AddNumericFloat("Scale");
    ASSERT_NE(real, nullptr);
    real->SetMinMax(0.5f, 4.0f)->SetStep(0.25f)->SetLink(&scale);
    EXPECT_EQ(glm::vec3(real->GetMin(), real->GetMax(), real->GetStep()), glm::vec3(0.5f, 4.0f, 0.25f));
    real->GetWidget()->setCurrentValue(2.75);
    EXPECT_EQ(glm::vec2(scale, real->Get()), glm::vec2(2.75f));

    // A sliding float adds its own minimum to the slider, which runs from 0.
    gui::SlidingFloat* slider = gen.AddSlidingFloat("Opacity");
    ASSERT_NE(slider, nullptr);
    float value = 0.0f;
    int changes = 0;
    slider->SetMax(5.0f)->SetMin(2.0f)->SetLink(&value)->Subscribe([&](const gui::SlidingFloat*) { ++changes; });
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
    slider->SetMinMax(1.0f, 3.0f);
    EXPECT_EQ(range(), glm::vec2(1.0f, 3.0f));
    slider->SetMax(-1.0f);
    EXPECT_EQ(range(), glm::vec2(1.0f, 1.0f));

    slider->SetMax(3.0f)->SetStep(0.2f);
    EXPECT_FLOAT_EQ(slider->GetWidget()->getClickStep(), 0.2f);
    slider->GetWidget()->setCurrentValue(0.5f); // the user drags
    EXPECT_FLOAT_EQ(value, 1.5f);
}

TEST_F(ElementsTest, SlidingIntSnapsTheThumbToWholeNumbers)
{
    GuiGenerator gen(panel_);
    gui::SlidingInt* slider = gen.AddSlidingInt("Level");
    ASSERT_NE(slider, nullptr);
    slider->SetMax(8)->SetMin(-2);
    EXPECT_EQ(std::make_pair(slider->GetMin(), slider->GetMax()), std::make_pair(-2, 8));
    int level = 3;
    slider->SetLink(&level);
    EXPECT_FLOAT_EQ(slider->GetWidget()->getCurrentValue(), 5.0f);

    // While dragging, the slider lands between whole numbers; the thumb event snaps it.
    slider->GetWidget()->setCurrentValue(4.4f);
    EXPECT_EQ(std::make_pair(slider->Get(), level), std::make_pair(2, 2));
    Fire(slider->GetWidget()->getThumb(), CEGUI::Thumb::EventThumbPositionChanged, CEGUI::Thumb::EventNamespace);
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

TEST_F(ElementsTest, DroplistReportsTheValueOfTheChosenItem)
{
    GuiGenerator gen(panel_);
    gui::Droplist* list = gen.AddDroplist("Color map");
    ASSERT_NE(list, nullptr);
    list->AddItems({{"Gray scale", 5}, {"Rainbow", 0}})->AddItem("Thermal", 1);
    int colorMap = 0;
    list->SetLink(&colorMap);
    EXPECT_EQ(list->GetText(), "Rainbow") << "linking selects the item carrying the value";
    EXPECT_EQ(list->Get(), 0);

    std::vector<int> seen;
    list->Subscribe([&](const gui::Droplist* d) { seen.push_back(d->Get()); });
    Choose(list->GetWidget(), 0);
    EXPECT_EQ(std::make_pair(colorMap, list->GetText()), std::make_pair(5, std::string("Gray scale")));
    Choose(list->GetWidget(), 2);
    EXPECT_EQ(seen, (std::vector<int>{5, 1}));
    EXPECT_EQ(colorMap, 1);

    list->Set(5);
    EXPECT_EQ(list->GetText(), "Gray scale");

    gui::Droplist* indexed = gen.AddDroplist("Mode");
    indexed->AddItemsIndexed({"Points", "Surface"})->AddItemIndexed("Both");
    indexed->Set(2);
    EXPECT_EQ(indexed->GetText(), "Both");
}

TEST_F(ElementsTest, CheckboxListRowsIdsAndSelectButtons)
{
    GuiGenerator gen(panel_);
    gui::CheckboxList* list = gen.AddCheckboxList();
    ASSERT_NE(list, nullptr);
    // Without an id, an item takes the number of items before it.
    EXPECT_EQ((std::vector<std::size_t>{list->AddItem("Ground"), list->AddItem("Wall", false), list->AddItem("Roof", false),
                                        list->AddItem("Tree"), list->AddItem("Car", true, 17)}),
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
    CEGUI::Window* stripe = row->getChild("colorstripe");
    EXPECT_EQ(stripe->getType(), "DarkVexa/ColorRect");
    list->SetItemColor(17, tesk::Color3f(1.0f, 0.0f, 0.0f));
    EXPECT_NE(stripe->getProperty("Colour").find("FF0000"), CEGUI::String::npos);
    EXPECT_EQ(panel->getChild("sel-all")->getText(), "Select all");
    EXPECT_EQ(panel->getChild("unsel-all")->getText(), "Unselect all");

    std::vector<std::string> calls;
    list->SubscribeItems([&](unsigned int id, bool checked) { calls.push_back(std::to_string(id) + (checked ? "+" : "-")); });
    list->Subscribe([&](const gui::CheckboxList*) { calls.push_back("changed"); });

    Click(panel->getChild("sel-all"));
    EXPECT_EQ(calls, (std::vector<std::string>{"0+", "changed", "1+", "changed", "2+", "changed", "3+", "changed"}))
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
