#include "GlFixture.h"
#include "LogCapture.h"

#include <plor/ArrayObject.h>
#include <plor/Program.h>

#include <glm/glm.hpp>

#include <filesystem>
#include <fstream>

namespace {

using plor_test::GlTest;
using plor_test::kSize;
using Rgba = std::vector<std::uint8_t>;

void WriteFile(const std::filesystem::path& path, const std::string& text)
{
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

/// Draws the full-screen triangle with whatever program is in use.
void DrawFullScreen()
{
    plor::ArrayObject empty;
    empty.SetVertexCount(3);
    empty.Draw(plor::PrimitiveType::Triangles);
}

TEST_F(GlTest, InlineProgramFillsTheTargetAndReadBackIsTopRowFirst)
{
    plor::Program program("fill");
    program.AddStageSource(plor::ShaderStage::Vertex, plor_test::kFullScreenVertex)
        .AddStageSource(plor::ShaderStage::Fragment, plor_test::kUniformColorFragment);
    EXPECT_FALSE(program.IsBuilt());
    ASSERT_TRUE(program.Use()); // builds on first use
    EXPECT_TRUE(program.IsBuilt());
    EXPECT_GE(program.GetUniformLocation("color"), 0);
    EXPECT_EQ(program.GetUniformLocation("notThere"), -1);
    program.SetUniform("notThere", 1.0f); // ignored

    plor::Framebuffer target;
    PrepareTarget(target, 0.0f, 0.0f, 1.0f);
    // Only the top half of the target is drawn.
    gl::glEnable(gl::GL_SCISSOR_TEST);
    gl::glScissor(0, kSize / 2, kSize, kSize / 2);
    program.SetUniform("color", glm::vec4(1.0f, 0.0f, 0.0f, 1.0f));
    DrawFullScreen();
    gl::glDisable(gl::GL_SCISSOR_TEST);

    const Rgba pixels = plor::ReadPixelsRgba(0, 0, kSize, kSize);
    ASSERT_EQ(pixels.size(), static_cast<std::size_t>(kSize * kSize * 4));
    EXPECT_EQ(Rgba(pixels.begin(), pixels.begin() + 4), (Rgba{255, 0, 0, 255})); // top-left
    EXPECT_EQ(Rgba(pixels.end() - 4, pixels.end()), (Rgba{0, 0, 255, 255}));     // bottom-right
    EXPECT_EQ(PixelAt(kSize / 2, kSize / 4), (Rgba{255, 0, 0, 255}));
    EXPECT_EQ(plor::GetLastGlError(), "");
}

TEST_F(GlTest, ProgramsFromFilesGetDefinesAndSurviveABrokenRebuild)
{
    const std::filesystem::path directory = std::filesystem::path(testing::TempDir()) / "plor_program_test";
    WriteFile(directory / "test/fill.vert", plor_test::kFullScreenVertex);
    const std::string fragment =
        "#version 330 core\nout vec4 fragColor;\nvoid main()\n{\n    fragColor = FILL_COLOR;\n}\n";
    WriteFile(directory / "test/fill.frag", fragment);
    plor::SetShaderBuildDirectory(directory.string());
    EXPECT_EQ(plor::GetShaderBuildDirectory(), directory.string() + "/");

    plor::ProgramList programs;
    programs.Add("FILL", "test/fill.vert", "test/fill.frag")
        .AddDefine("FILL_COLOR", "vec4(0.0, 1.0, 0.0, 1.0)");
    EXPECT_EQ(programs.Get("unknown"), nullptr);
    plor::Program* program = programs.Get("FILL");
    ASSERT_NE(program, nullptr);
    ASSERT_TRUE(program->IsBuilt());
    const unsigned int firstId = program->GetId();

    // A syntax error on line 5 of the file: reported with the file and the driver's log.
    WriteFile(directory / "test/fill.frag",
              "#version 330 core\nout vec4 fragColor;\nvoid main()\n{\n    fragColor = ;\n}\n");
    testing_support::LogCapture log;
    EXPECT_FALSE(programs.ReloadAll());
    ASSERT_EQ(log.messages.size(), 1u);
    EXPECT_EQ(log.messages[0].level, rlog::Level::Failure);
    EXPECT_EQ(log.messages[0].label, "plor::Program::Build");
    const std::string& message = log.messages[0].message;
    EXPECT_NE(message.find("FILL"), std::string::npos) << message;
    EXPECT_NE(message.find("test/fill.frag"), std::string::npos) << message;
    EXPECT_NE(message.find("5"), std::string::npos) << "the driver's log names the line: " << message;
    EXPECT_TRUE(program->HasFailed());
    EXPECT_EQ(program->GetId(), firstId);

    // The previous build keeps drawing.
    plor::Framebuffer target;
    PrepareTarget(target, 0.0f, 0.0f, 0.0f);
    ASSERT_TRUE(program->Use());
    DrawFullScreen();
    EXPECT_EQ(PixelAt(kSize / 2, kSize / 2), (Rgba{0, 255, 0, 255}));

    // A missing stage file is reported with its path, and also keeps the previous build.
    programs.Add("MISSING", "test/fill.vert", "test/none.frag");
    log.messages.clear();
    EXPECT_NE(programs.Get("MISSING"), nullptr);
    ASSERT_EQ(log.messages.size(), 1u);
    EXPECT_NE(log.messages[0].message.find((directory / "test/none.frag").string()), std::string::npos);

    // Fixed file, new build, fresh uniform cache.
    WriteFile(directory / "test/fill.frag", fragment);
    EXPECT_TRUE(program->Build());
    EXPECT_FALSE(program->HasFailed());
    EXPECT_NE(program->GetId(), 0u);
    EXPECT_EQ(program->GetUniformLocation("color"), -1);

    // Declared and built on first use with its define; later calls find the same build and
    // never declare it again, whatever files they name.
    WriteFile(directory / "test/variant.frag",
              "#version 330 core\nout vec4 fragColor;\nvoid main()\n{\n"
              "#ifdef RED\n    fragColor = vec4(1.0, 0.0, 0.0, 1.0);\n#else\n"
              "    fragColor = vec4(0.0, 0.0, 1.0, 1.0);\n#endif\n}\n");
    const std::size_t declared = programs.Size();
    plor::Program& red = programs.GetOrAdd("RED", {"test/fill.vert", "test/variant.frag", {}, "RED"});
    ASSERT_TRUE(red.IsBuilt());
    EXPECT_EQ(&programs.GetOrAdd(std::string("RED"), {"test/none.vert", "test/none.frag"}), &red);
    EXPECT_EQ(programs.Size(), declared + 1);
    PrepareTarget(target, 0.0f, 0.0f, 0.0f);
    ASSERT_TRUE(red.Use());
    DrawFullScreen();
    EXPECT_EQ(PixelAt(kSize / 2, kSize / 2), (Rgba{255, 0, 0, 255}));
    std::filesystem::remove_all(directory);
}

} // namespace
