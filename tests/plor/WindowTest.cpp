#include "GlFixture.h"
#include "LogCapture.h"

// The callbacks are what GLFW would call; GLFW itself cannot inject events.
#include "../../libs/plor/src/WindowCallbacks.h"

#include <plor/Texture.h>

#define GLFW_INCLUDE_NONE
#include <GLFW/glfw3.h>

#include <cstdlib>
#include <string>

namespace {

using plor_test::GlTest;

TEST(ModifiersTest, BitsRoundTripAndMatchTheWindowSystemLayout)
{
    for (int bits = 0; bits < 16; ++bits)
        EXPECT_EQ(plor::Modifiers::FromBits(bits).ToBits(), bits);

    const plor::Modifiers mods = plor::Modifiers::FromBits(GLFW_MOD_ALT | GLFW_MOD_SUPER);
    EXPECT_TRUE(mods.alt && mods.super && !mods.shift && !mods.control);
    // Caps lock and num lock bits are not modifiers of ours.
    EXPECT_EQ(plor::Modifiers::FromBits(GLFW_MOD_CONTROL | GLFW_MOD_CAPS_LOCK | GLFW_MOD_NUM_LOCK).ToBits(),
              GLFW_MOD_CONTROL);
}

TEST(WindowWithoutDisplayTest, CreateReturnsNullWithAReason)
{
    // A fresh process, so the window system is initialised without a display.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            unsetenv("DISPLAY");
            unsetenv("WAYLAND_DISPLAY");
            testing_support::LogCapture log;
            const auto window = plor::Window::Create(plor::WindowParams{});
            bool explained = false;
            for (const auto& m : log.messages)
                explained = explained || (m.label == "plor::Window::Create" &&
                                          m.message.find("No display") != std::string::npos);
            std::exit(window == nullptr && explained ? 0 : 1);
        },
        ::testing::ExitedWithCode(0), "");
}

struct Recorder : plor::WindowEventObserver {
    std::vector<std::string> events;
    plor::Window* window = nullptr;
    WindowEventObserver* removeOnKey = nullptr;

    void OnMouseMove(float x, float y) override
    {
        events.push_back("move " + std::to_string(x) + " " + std::to_string(y));
    }
    void OnMouseDown(plor::MouseButton button, const plor::Modifiers& mods) override
    {
        events.push_back("down " + std::to_string(static_cast<int>(button)) + " " +
                         std::to_string(mods.ToBits()));
    }
    void OnMouseWheel(float, float dy) override { events.push_back("wheel " + std::to_string(dy)); }
    void OnKeyDown(int key, const plor::Modifiers& mods, bool repeat) override
    {
        events.push_back("keydown " + std::to_string(key) + " " + std::to_string(mods.ToBits()) +
                         (repeat ? " repeat" : ""));
        if (removeOnKey)
            window->RemoveObserver(removeOnKey);
    }
    void OnFilesDropped(const std::vector<std::string>& paths) override
    {
        events.push_back("drop " + std::to_string(paths.size()) + " " + paths.back());
    }
    void OnFramebufferResized(int width, int height) override
    {
        events.push_back("fb " + std::to_string(width) + "x" + std::to_string(height));
    }
    void OnWindowIconified(bool iconified) override
    {
        events.push_back(iconified ? "iconified" : "restored");
    }
};

TEST_F(GlTest, EventsReachObserversByMask)
{
    GLFWwindow* handle = window_->GetGlfwHandle();
    Recorder all;
    Recorder mouseOnly;
    Recorder windowOnly;
    window_->AddObserver(&all);
    window_->AddObserver(&mouseOnly, plor::kMouseEvents);
    window_->AddObserver(&windowOnly, plor::kWindowEvents);

    plor::WindowCallbacks::CursorPosition(handle, 10.5, 20.25);
    plor::WindowCallbacks::MouseButton(handle, GLFW_MOUSE_BUTTON_RIGHT, GLFW_PRESS, GLFW_MOD_CONTROL);
    plor::WindowCallbacks::Scroll(handle, 0.0, -2.0);
    plor::WindowCallbacks::Key(handle, GLFW_KEY_TAB, 0, GLFW_PRESS, GLFW_MOD_SHIFT);
    plor::WindowCallbacks::Key(handle, GLFW_KEY_TAB, 0, GLFW_REPEAT, GLFW_MOD_SHIFT);
    const char* paths[] = {"/tmp/a.ply", "/tmp/b.ply"};
    plor::WindowCallbacks::Drop(handle, 2, paths);
    plor::WindowCallbacks::FramebufferSize(handle, 128, 96);
    plor::WindowCallbacks::Iconify(handle, GLFW_TRUE);

    const std::vector<std::string> mouse = {"move 10.500000 20.250000", "down 1 2", "wheel -2.000000"};
    EXPECT_EQ(mouseOnly.events, mouse);
    EXPECT_EQ(windowOnly.events, (std::vector<std::string>{"fb 128x96", "iconified"}));
    std::vector<std::string> expected = mouse;
    expected.insert(expected.end(),
                    {"keydown 258 1", "keydown 258 1 repeat", "drop 2 /tmp/b.ply", "fb 128x96", "iconified"});
    EXPECT_EQ(all.events, expected);

    // Re-adding changes the mask; removed observers hear nothing more.
    window_->AddObserver(&mouseOnly, plor::kKeyEvents);
    window_->RemoveObserver(&all);
    mouseOnly.events.clear();
    all.events.clear();
    plor::WindowCallbacks::CursorPosition(handle, 1.0, 2.0);
    plor::WindowCallbacks::Key(handle, GLFW_KEY_A, 0, GLFW_PRESS, 0);
    EXPECT_EQ(mouseOnly.events, (std::vector<std::string>{"keydown 65 0"}));
    EXPECT_TRUE(all.events.empty());
    window_->RemoveObserver(&mouseOnly);
    window_->RemoveObserver(&windowOnly);
}

TEST_F(GlTest, ObserversMayRemoveThemselvesAndOthersDuringDispatch)
{
    GLFWwindow* handle = window_->GetGlfwHandle();
    Recorder first;
    Recorder second;
    Recorder third;
    first.window = window_.get();
    first.removeOnKey = &second; // removes the next observer before it is reached
    second.window = window_.get();
    third.window = window_.get();
    third.removeOnKey = &third;
    window_->AddObserver(&first);
    window_->AddObserver(&second);
    window_->AddObserver(&third);

    plor::WindowCallbacks::Key(handle, GLFW_KEY_B, 0, GLFW_PRESS, 0);
    EXPECT_EQ(first.events.size(), 1u);
    EXPECT_TRUE(second.events.empty());
    EXPECT_EQ(third.events.size(), 1u);

    plor::WindowCallbacks::Key(handle, GLFW_KEY_B, 0, GLFW_PRESS, 0);
    EXPECT_EQ(first.events.size(), 2u);
    EXPECT_TRUE(second.events.empty());
    EXPECT_EQ(third.events.size(), 1u);
    window_->RemoveObserver(&first);
}

TEST_F(GlTest, ConditionalContextsRestoreWhatWasCurrent)
{
    // Already current: the conditional pair leaves it current.
    EXPECT_TRUE(window_->SetContextConditional());
    window_->UnsetContextConditional();
    EXPECT_TRUE(window_->IsContextCurrent());

    // Not current: the pair makes it current and then releases it again.
    window_->ReleaseContext();
    EXPECT_TRUE(window_->SetContextConditional());
    EXPECT_TRUE(window_->IsContextCurrent());
    window_->UnsetContextConditional();
    EXPECT_FALSE(window_->IsContextCurrent());
    window_->MakeContextCurrent();
}

TEST_F(GlTest, SharedContextsSeeTheSameObjects)
{
    tesk::Image image;
    ASSERT_TRUE(image.Create(2, 2, 4, tesk::PixelFormat::UInt8));
    plor::Texture texture(image);
    ASSERT_TRUE(texture.Bind());
    const unsigned int id = texture.GetId();

    const auto second = plor::Window::Create({.width = 32, .height = 32, .visible = false}, window_);
    ASSERT_NE(second, nullptr);
    EXPECT_TRUE(second->IsSharingContext());
    EXPECT_FALSE(window_->IsSharingContext());

    second->MakeContextCurrent();
    EXPECT_EQ(gl::glIsTexture(id), gl::GL_TRUE);
    window_->MakeContextCurrent();
    EXPECT_EQ(gl::glIsTexture(id), gl::GL_TRUE);
}

} // namespace
