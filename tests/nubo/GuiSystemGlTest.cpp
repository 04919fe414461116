// Drawing through CEGUI's OpenGL 3 renderer on a hidden window. Needs a display: run under
// xvfb-run -a -s "-noreset -screen 0 1280x1024x24".

#include "GuiTestEnvironment.h"

#include <plor/Window.h>

#include <LogCapture.h>

#include <GL/gl.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 240;

class GuiSystemGl : public ::testing::Test {
protected:
    void SetUp() override
    {
        // CEGUI runs once per process: the shared headless system makes way.
        nubo_test::SharedGui().Terminate();
        plor::WindowParams params;
        params.width = kWidth;
        params.height = kHeight;
        params.visible = false;
        params.caption = "nubo test";
        window_ = plor::Window::Create(params);
        ASSERT_NE(window_, nullptr)
            << "No window with an OpenGL 3.3 core context could be created. The GL tests "
               "need a display: run them under xvfb-run -a -s \"-noreset -screen 0 1280x1024x24\".";
        window_->MakeContextCurrent();
    }

    void TearDown() override
    {
        gui_.Terminate();
        if (window_)
            window_->ReleaseContext();
        window_.reset();
        EXPECT_TRUE(nubo_test::RestartSharedGui());
    }

    /// RGBA rows of the back buffer, bottom row first.
    static std::vector<std::uint8_t> ReadFrame()
    {
        std::vector<std::uint8_t> pixels(static_cast<std::size_t>(kWidth * kHeight * 4));
        glFinish();
        glPixelStorei(GL_PACK_ALIGNMENT, 1);
        glReadPixels(0, 0, kWidth, kHeight, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
        return pixels;
    }

    static const std::uint8_t* PixelAt(const std::vector<std::uint8_t>& frame, int x, int yFromTop)
    {
        return &frame[static_cast<std::size_t>(((kHeight - 1 - yFromTop) * kWidth + x) * 4)];
    }

    std::shared_ptr<plor::Window> window_;
    nubo::GuiSystem gui_;
};

TEST_F(GuiSystemGl, DrawsAButtonOverTheFramebuffer)
{
    testing_support::LogCapture log;
    ASSERT_TRUE(gui_.Initialize(window_, nubo_test::kResourceDirectory));
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR)) << "start-up leaves no GL error behind";

    CEGUI::Window* button = CEGUI::WindowManager::getSingleton().createWindow("DarkVexa/PushButton");
    nubo_test::Place(button, 20, 20, 160, 40);
    button->setText("Hello");
    gui_.GetRoot()->addChild(button);

    glViewport(0, 0, kWidth, kHeight);
    glClearColor(0.0f, 0.0f, 0.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    EXPECT_TRUE(gui_.IsDirty());
    gui_.Draw();
    EXPECT_FALSE(gui_.IsDirty());
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
    const std::vector<std::uint8_t> frame = ReadFrame();

    // The button's face has the look's normal colour FF4A4D50 ...
    const std::uint8_t* face = PixelAt(frame, 30, 26);
    EXPECT_NEAR(face[0], 0x4A, 2);
    EXPECT_NEAR(face[1], 0x4D, 2);
    EXPECT_NEAR(face[2], 0x50, 2);
    // ... its caption has bright pixels ...
    int bright = 0;
    for (int y = 20; y < 60; ++y)
        for (int x = 20; x < 180; ++x)
            bright += PixelAt(frame, x, y)[0] > 0xB0 ? 1 : 0;
    EXPECT_GT(bright, 10) << "the caption is drawn";
    // ... and the rest of the framebuffer is untouched.
    int touched = 0;
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            if ((x < 20 || x >= 180 || y < 20 || y >= 60) && PixelAt(frame, x, y)[0] != 0)
                ++touched;
    EXPECT_EQ(touched, 0);
    for (const auto& message : log.messages)
        EXPECT_NE(message.level, rlog::Level::Failure) << message.label << ": " << message.message;
}

} // namespace
