#include "GuiTestEnvironment.h"

#include <LogCapture.h>

#include <CEGUI/GUIContext.h>
#include <CEGUI/widgets/PushButton.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

using nubo_test::Place;
using nubo_test::ScopedWindow;
using testing_support::LogCapture;

std::string Text(const CEGUI::Window* window)
{
    return window->getText().c_str(); // UTF-8
}

TEST(GuiSystem, StartsWithTheSchemeFontAndARootThatFollowsTheFramebuffer)
{
    nubo::GuiSystem& gui = nubo_test::SharedGui();
    ASSERT_TRUE(gui.IsInitialized());
    ASSERT_NE(gui.GetRoot(), nullptr);
    ASSERT_NE(gui.GetContext()->getDefaultFont(), nullptr);
    EXPECT_EQ(nubo::GetResourceDirectory(), nubo_test::kResourceDirectory);

    // An iconified window reports a zero framebuffer, which the root does not take.
    gui.NotifyDisplaySizeChanged(800, 600);
    EXPECT_EQ(gui.GetRoot()->getPixelSize(), CEGUI::Sizef(800.0f, 600.0f));
    gui.NotifyDisplaySizeChanged(0, 0);
    EXPECT_EQ(gui.GetRoot()->getPixelSize(), CEGUI::Sizef(800.0f, 600.0f));
    gui.NotifyDisplaySizeChanged(1280, 800);
}

TEST(GuiSystem, ClickOnAButtonIsUsedAndClicksIt)
{
    nubo::GuiSystem& gui = nubo_test::SharedGui();
    ScopedWindow button("DarkVexa/PushButton");
    Place(button.get(), 100, 100, 120, 26);
    int clicks = 0;
    button->subscribeEvent(CEGUI::PushButton::EventClicked, [&clicks](const CEGUI::EventArgs&) {
        ++clicks;
        return true;
    });

    // Quick series of clicks are in ButtonsTest; here, which presses the GUI takes.
    EXPECT_TRUE(gui.InjectMouseMove(150.0f, 110.0f));
    EXPECT_TRUE(gui.IsMouseOverGui());
    EXPECT_TRUE(gui.InjectMouseDown(CEGUI::LeftButton));
    EXPECT_TRUE(gui.InjectMouseUp(CEGUI::LeftButton));

    // Over the empty background the 3D views get everything.
    EXPECT_FALSE(gui.InjectMouseMove(600.0f, 500.0f));
    EXPECT_FALSE(gui.IsMouseOverGui());
    EXPECT_FALSE(gui.InjectMouseDown(CEGUI::LeftButton));

    // A press that starts on the button and ends outside is no click.
    gui.InjectMouseMove(150.0f, 110.0f);
    gui.InjectMouseDown(CEGUI::LeftButton);
    gui.InjectMouseMove(600.0f, 500.0f);
    gui.InjectMouseUp(CEGUI::LeftButton);
    EXPECT_EQ(clicks, 1);
}

TEST(GuiSystem, TypedCharactersAndKeysEditTheFocusedEditbox)
{
    nubo::GuiSystem& gui = nubo_test::SharedGui();
    ScopedWindow edit("DarkVexa/Editbox");
    Place(edit.get(), 300, 300, 200, 24);
    gui.InjectMouseMove(310.0f, 310.0f);
    gui.InjectMouseDown(CEGUI::LeftButton);
    gui.InjectMouseUp(CEGUI::LeftButton);
    ASSERT_TRUE(edit->isActive());

    for (unsigned int c : {'a', 'b', 'c'})
        EXPECT_TRUE(gui.InjectChar(c));
    EXPECT_EQ(edit->getText(), "abc");
    EXPECT_TRUE(gui.InjectKeyDown(CEGUI::Key::Backspace));
    gui.InjectKeyUp(CEGUI::Key::Backspace);
    gui.InjectChar(0x00E9); // é
    EXPECT_EQ(Text(edit.get()), "ab"
                                "\xC3\xA9");
    EXPECT_FALSE(gui.InjectKeyDown(CEGUI::Key::Unknown));
    EXPECT_TRUE(gui.IsTypingText());

    // With the focus on the background, keys (Tab for the layout chooser) are the host's; the
    // end-to-end tier checks which keys then reach it.
    gui.InjectMouseMove(900.0f, 700.0f);
    gui.InjectMouseDown(CEGUI::LeftButton);
    gui.InjectMouseUp(CEGUI::LeftButton);
    EXPECT_FALSE(gui.IsTypingText()) << "letters are shortcuts again";
    EXPECT_FALSE(gui.InjectKeyDown(CEGUI::Key::Tab));
    EXPECT_FALSE(gui.InjectChar('q'));
}

TEST(GuiSystem, MissingSchemeOrSecondSystemFailsWithoutDisturbingTheRunningOne)
{
    LogCapture log;
    nubo::GuiSystem other;
    EXPECT_FALSE(other.InitializeHeadless("/nonexistent/resources"));
    EXPECT_TRUE(log.Contains("GUI scheme file not found: /nonexistent/resources/DarkVexa.scheme",
                             "nubo::GuiSystem::InitializeHeadless"));
    EXPECT_FALSE(other.IsInitialized());

    EXPECT_FALSE(other.InitializeHeadless(nubo_test::kResourceDirectory));
    EXPECT_TRUE(log.Contains("Another GUI system is running; CEGUI allows only one per process",
                             "nubo::GuiSystem::InitializeHeadless"));
    EXPECT_FALSE(other.Initialize(nullptr, nubo_test::kResourceDirectory));
    EXPECT_EQ(other.GetRoot(), nullptr);
    EXPECT_FALSE(other.InjectMouseDown(CEGUI::LeftButton));
    other.Draw();

    nubo::GuiSystem& gui = nubo_test::SharedGui();
    EXPECT_FALSE(gui.InitializeHeadless(nubo_test::kResourceDirectory));
    EXPECT_TRUE(gui.IsInitialized());
    EXPECT_NE(gui.GetRoot(), nullptr);
}

TEST(GuiSystem, BrokenSchemeFailsCleanlyAndAllowsANewStart)
{
    namespace fs = std::filesystem;
    const fs::path directory = fs::temp_directory_path() / "nubo_broken_scheme";
    fs::create_directories(directory);
    std::ofstream(directory / "DarkVexa.scheme") << R"(<?xml version="1.0" ?>
<GUIScheme version="5" name="DarkVexa">
    <LookNFeel filename="Missing.looknfeel" />
</GUIScheme>
)";
    nubo::GuiSystem& gui = nubo_test::SharedGui();
    gui.Terminate();
    EXPECT_EQ(nubo::GetResourceDirectory(), "");
    {
        LogCapture log;
        EXPECT_FALSE(gui.InitializeHeadless(directory.string()));
        bool named = false;
        for (const auto& message : log.messages)
            named |= message.level == rlog::Level::Failure &&
                     message.label == "nubo::GuiSystem::InitializeHeadless" &&
                     message.message.find("Missing.looknfeel") != std::string::npos;
        EXPECT_TRUE(named) << "the failure names the file CEGUI could not read";
        EXPECT_FALSE(gui.IsInitialized());
    }
    fs::remove_all(directory);
    ASSERT_TRUE(nubo_test::RestartSharedGui()) << "a failed start leaves nothing of CEGUI behind";
    EXPECT_NE(gui.GetRoot(), nullptr);
}

} // namespace
