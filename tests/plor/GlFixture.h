#pragma once
// A hidden 64x64 window whose context is current for the duration of a test. The GL tests
// need a display: run them under `xvfb-run -a -s "-noreset -screen 0 1280x1024x24" ctest ...`.
// Without -noreset the server resets whenever its last client leaves, and a test that
// connects during the reset (with -j2, one often starts as another ends) cannot open it.

#include <plor/Framebuffer.h>
#include <plor/Gl.h>
#include <plor/Program.h>
#include <plor/Window.h>

#include <glbinding/gl/gl.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace plor_test {

constexpr int kSize = 64;

/// Covers the whole viewport with one triangle, without vertex buffers.
inline const char* kFullScreenVertex = R"(#version 330 core
void main()
{
    vec2 corner = vec2(gl_VertexID == 1 ? 3.0 : -1.0, gl_VertexID == 2 ? 3.0 : -1.0);
    gl_Position = vec4(corner, 0.0, 1.0);
}
)";

inline const char* kUniformColorFragment = R"(#version 330 core
uniform vec4 color;
out vec4 fragColor;
void main()
{
    fragColor = color;
}
)";

/// Vertices at location 0 (vec2) in the colour at location 1 (vec4): attributes with fewer
/// components take GL's defaults for the rest (0, 0, 1).
inline plor::Program& AddColoredStages(plor::Program& program)
{
    return program
        .AddStageSource(plor::ShaderStage::Vertex, R"(#version 330 core
layout(location = 0) in vec2 position;
layout(location = 1) in vec4 color;
out vec4 vertexColor;
void main()
{
    vertexColor = color;
    gl_Position = vec4(position, 0.0, 1.0);
}
)")
        .AddStageSource(plor::ShaderStage::Fragment, R"(#version 330 core
in vec4 vertexColor;
out vec4 fragColor;
void main()
{
    fragColor = vertexColor;
}
)");
}

class GlTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        window_ =
            plor::Window::Create({.width = kSize, .height = kSize, .caption = "plor test", .visible = false});
        ASSERT_NE(window_, nullptr)
            << "No window with an OpenGL 3.3 core context could be created. The GL tests "
               "need a display: run them under xvfb-run -a -s \"-noreset -screen 0 1280x1024x24\".";
        window_->MakeContextCurrent();
        ASSERT_TRUE(window_->IsContextCurrent());
    }

    void TearDown() override
    {
        if (window_)
            window_->ReleaseContext();
        window_.reset();
    }

    /// Sizes `target` to the test size (with `samples`), binds it and clears it to `r, g, b`.
    static void PrepareTarget(plor::Framebuffer& target, float r, float g, float b, int samples = 0)
    {
        ASSERT_TRUE(target.Resize(kSize, kSize, samples));
        target.Bind();
        gl::glViewport(0, 0, kSize, kSize);
        gl::glClearColor(r, g, b, 1.0f);
        gl::glClear(gl::GL_COLOR_BUFFER_BIT | gl::GL_DEPTH_BUFFER_BIT);
    }

    /// The RGBA of pixel (x, y), y counted from the top, in the bound read framebuffer.
    static std::vector<std::uint8_t> PixelAt(int x, int yFromTop)
    {
        return plor::ReadPixelsRgba(x, kSize - 1 - yFromTop, 1, 1);
    }

    std::shared_ptr<plor::Window> window_;
};

} // namespace plor_test
