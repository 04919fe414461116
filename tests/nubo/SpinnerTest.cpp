// Typing into a spinner's field as a person does: clear it, type a number, press Enter.

#include "GuiTestEnvironment.h"

#include <nubo/Spinner.h>

#include <CEGUI/widgets/Editbox.h>
#include <gtest/gtest.h>

namespace {

using nubo_test::ScopedWindow;

std::string Text(const CEGUI::Window* window)
{
    return window->getText().c_str();
}

void Key(nubo::GuiSystem& gui, CEGUI::Key::Scan key)
{
    gui.InjectKeyDown(key);
    gui.InjectKeyUp(key);
}

void Click(nubo::GuiSystem& gui, float x, float y)
{
    gui.InjectMouseMove(x, y);
    gui.InjectMouseDown(CEGUI::LeftButton);
    gui.InjectMouseUp(CEGUI::LeftButton);
}

} // namespace

TEST(Spinner, TheFieldKeepsWhatIsTypedAndShowsTheClampedValueWhenEditingEnds)
{
    nubo::GuiSystem& gui = nubo_test::SharedGui();
    ScopedWindow window("DarkVexa/Spinner");
    auto* spinner = dynamic_cast<nubo::Spinner*>(window.get());
    ASSERT_NE(spinner, nullptr) << "the look's spinner is ours";
    nubo_test::Place(spinner, 300, 300, 120, 24);
    spinner->setTextInputMode(CEGUI::Spinner::Integer);
    spinner->setMinimumValue(1);
    spinner->setMaximumValue(20);
    spinner->setCurrentValue(3);
    CEGUI::Editbox* field = static_cast<CEGUI::Editbox*>(spinner->getChild("__auto_editbox__"));
    EXPECT_EQ(Text(field), "3");
    int changes = 0;
    spinner->subscribeEvent(CEGUI::Spinner::EventValueChanged, [&changes](const CEGUI::EventArgs&) {
        ++changes;
        return true;
    });

    Click(gui, 310.0f, 312.0f);
    ASSERT_TRUE(field->hasInputFocus());
    Key(gui, CEGUI::Key::End);

    // Emptied, the field stays empty while the value already holds the minimum.
    Key(gui, CEGUI::Key::Backspace);
    EXPECT_EQ(Text(field), "");
    EXPECT_EQ(spinner->getCurrentValue(), 1.0);
    for (unsigned int c : {'9', 'x', '.'})
        gui.InjectChar(c);
    EXPECT_EQ(Text(field), "9") << "letters and a decimal point are refused";
    EXPECT_EQ(spinner->getCurrentValue(), 9.0);
    EXPECT_EQ(changes, 2);

    // Out of range while typing: the value is clamped at once, the text when editing ends.
    gui.InjectChar('1');
    EXPECT_EQ(Text(field), "91");
    EXPECT_EQ(spinner->getCurrentValue(), 20.0);
    Key(gui, CEGUI::Key::Return);
    EXPECT_EQ(Text(field), "20");
    EXPECT_EQ(spinner->getCurrentValue(), 20.0);

    // Ctrl + A selects the whole field, so typing replaces it; leaving the field shows the value.
    gui.InjectKeyDown(CEGUI::Key::LeftControl);
    Key(gui, CEGUI::Key::A);
    gui.InjectKeyUp(CEGUI::Key::LeftControl);
    EXPECT_EQ(field->getSelectionLength(), 2u);
    gui.InjectChar('5');
    EXPECT_EQ(Text(field), "5");
    Key(gui, CEGUI::Key::Backspace);
    Click(gui, 900.0f, 700.0f);
    EXPECT_FALSE(field->hasInputFocus());
    EXPECT_EQ(Text(field), "1") << "an emptied field shows the value it stands for once left";

    // The arrows still write their value straight into the field.
    spinner->setCurrentValue(7);
    EXPECT_EQ(Text(field), "7");

    // In floating-point mode the field takes a decimal point.
    spinner->setTextInputMode(CEGUI::Spinner::FloatingPoint);
    Click(gui, 310.0f, 312.0f);
    Key(gui, CEGUI::Key::End);
    for (unsigned int c : {'.', '2', '5'})
        gui.InjectChar(c);
    EXPECT_DOUBLE_EQ(spinner->getCurrentValue(), 7.25);
}
