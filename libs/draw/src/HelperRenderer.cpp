#include "HelperRenderer.h"

#include "vexa/draw/RenderContext.h"
#include "vexa/draw/Scene.h"

#include <plor/Program.h>

#include <glbinding/gl/gl.h>
#include <glm/ext/matrix_clip_space.hpp>
#include <glm/glm.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

using namespace gl;

namespace vexa::draw {

namespace {

constexpr std::string_view kLineProgram = "LINE_SHADER";
constexpr plor::ProgramFiles kLineFiles{"core/lines.vert", "core/lines.frag"};
/// Adds the stage that turns lines into quads of uLineWidth pixels.
constexpr std::string_view kWideLineProgram = "core.wide_lines";
constexpr plor::ProgramFiles kWideLineFiles{"core/lines.vert", "core/lines.frag", "core/wide_lines.geom"};

const std::string kViewProjection = "uViewProjection";
const std::string kModel = "uModel";
const std::string kVertexColors = "uVertexColors";
const std::string kOpacity = "uOpacity";
const std::string kFadeRadius = "uFadeRadius";
const std::string kViewportSize = "uViewportSize";
const std::string kLineWidth = "uLineWidth";

constexpr float kAxisWidth = 2.0f;
constexpr float kGizmoWidth = 2.0f;
/// The gizmo's square takes a fifth of the view's smaller side, within these bounds (window
/// pixels); smaller views get none.
constexpr int kGizmoMinSize = 24;
constexpr int kGizmoMaxSize = 80;

struct LineVertex {
    glm::vec3 position;
    glm::vec4 color;
};

const glm::vec4 kAxisX{0.92f, 0.16f, 0.16f, 1.0f};
const glm::vec4 kAxisY{0.20f, 0.80f, 0.20f, 1.0f};
const glm::vec4 kAxisZ{0.22f, 0.40f, 1.00f, 1.0f};

std::vector<LineVertex> MakeGridLines()
{
    constexpr int n = HelperRenderer::kGridHalfCells;
    const auto extent = static_cast<float>(n);
    std::vector<LineVertex> vertices;
    vertices.reserve(static_cast<std::size_t>(4 * (2 * n + 1)));
    for (int i = -n; i <= n; ++i) {
        // Every fifth line and the two through the origin stand out so distances can be read.
        const float grey = i == 0 ? 0.72f : (i % 5 == 0 ? 0.58f : 0.48f);
        const float alpha = i == 0 ? 0.95f : (i % 5 == 0 ? 0.85f : 0.65f);
        const glm::vec4 color(grey, grey, grey, alpha);
        const auto at = static_cast<float>(i);
        vertices.push_back({{at, -extent, 0.0f}, color});
        vertices.push_back({{at, extent, 0.0f}, color});
        vertices.push_back({{-extent, at, 0.0f}, color});
        vertices.push_back({{extent, at, 0.0f}, color});
    }
    return vertices;
}

std::vector<LineVertex> MakeAxisLines()
{
    return {
        {{0.0f, 0.0f, 0.0f}, kAxisX}, {{1.0f, 0.0f, 0.0f}, kAxisX}, //
        {{0.0f, 0.0f, 0.0f}, kAxisY}, {{0.0f, 1.0f, 0.0f}, kAxisY}, //
        {{0.0f, 0.0f, 0.0f}, kAxisZ}, {{0.0f, 0.0f, 1.0f}, kAxisZ},
    };
}

void SetLineBuffer(plor::ArrayObject& array, std::vector<LineVertex> vertices)
{
    const std::size_t count = vertices.size();
    std::vector<std::byte> bytes(count * sizeof(LineVertex));
    std::memcpy(bytes.data(), vertices.data(), bytes.size());
    array.SetBuffer(0, std::move(bytes),
                    {plor::Attribute{0, 3, plor::DataType::Float, false, sizeof(LineVertex),
                                     offsetof(LineVertex, position)},
                     plor::Attribute{1, 4, plor::DataType::Float, false, sizeof(LineVertex),
                                     offsetof(LineVertex, color)}});
    array.SetVertexCount(count);
}

plor::Program* UseProgram(const RenderContext& context, std::string_view name,
                          const plor::ProgramFiles& files)
{
    if (!context.programs)
        return nullptr;
    plor::Program& program = context.programs->GetOrAdd(name, files);
    return program.Use() ? &program : nullptr;
}

} // namespace

HelperRenderer::HelperRenderer()
{
    SetLineBuffer(grid_, MakeGridLines());
    SetLineBuffer(axes_, MakeAxisLines());
}

HelperRenderer::~HelperRenderer() = default;

glm::mat4 HelperRenderer::GridModelMatrix(int gridMode, float units)
{
    // The grid is built in z = 0; the other planes are cyclic turns of the axes, so the
    // grid's first direction becomes the plane's first axis (YZ: y then z, ZX: z then x).
    glm::mat4 turn(1.0f);
    if (gridMode == GridMode::YZ)
        turn = glm::mat4(glm::vec4(0, 1, 0, 0), glm::vec4(0, 0, 1, 0), glm::vec4(1, 0, 0, 0),
                         glm::vec4(0, 0, 0, 1));
    else if (gridMode == GridMode::ZX)
        turn = glm::mat4(glm::vec4(0, 0, 1, 0), glm::vec4(1, 0, 0, 0), glm::vec4(0, 1, 0, 0),
                         glm::vec4(0, 0, 0, 1));
    return turn * glm::mat4(glm::mat3(units));
}

void HelperRenderer::Render(const RenderContext& context)
{
    if (!context.scene)
        return;
    const Scene& scene = *context.scene;
    const int gridMode = scene.GetGridMode();
    if (gridMode != GridMode::None)
        RenderGrid(context, gridMode, scene.GetGridUnits());
    if (scene.IsAxesVisible()) {
        RenderAxes(context);
        RenderGizmo(context);
    }
    glUseProgram(0);
}

void HelperRenderer::RenderGrid(const RenderContext& context, int gridMode, float units)
{
    plor::Program* program = UseProgram(context, kLineProgram, kLineFiles);
    if (!program)
        return;
    program->SetUniform(kViewProjection, context.viewProjection);
    program->SetUniform(kModel, GridModelMatrix(gridMode, units));
    program->SetUniform(kVertexColors, 1);
    program->SetUniform(kOpacity, 1.0f);
    program->SetUniform(kFadeRadius, static_cast<float>(kGridHalfCells));

    // The grid sits behind content but must not hide what is drawn after it.
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glDepthMask(GL_FALSE);
    grid_.Draw(plor::PrimitiveType::Lines);
    glDepthMask(GL_TRUE);
    glDisable(GL_BLEND);
}

void HelperRenderer::RenderAxes(const RenderContext& context)
{
    plor::Program* program = UseProgram(context, kWideLineProgram, kWideLineFiles);
    if (!program)
        return;
    program->SetUniform(kViewProjection, context.viewProjection);
    program->SetUniform(kModel, glm::mat4(1.0f));
    program->SetUniform(kVertexColors, 1);
    program->SetUniform(kOpacity, 1.0f);
    program->SetUniform(kFadeRadius, 0.0f);
    program->SetUniform(kViewportSize, glm::vec2(context.glViewport.z, context.glViewport.w));
    program->SetUniform(kLineWidth, kAxisWidth * context.pixelScale);
    axes_.Draw(plor::PrimitiveType::Lines);
}

void HelperRenderer::RenderGizmo(const RenderContext& context)
{
    const int viewWidth = context.viewport.z - context.viewport.x;
    const int viewHeight = context.viewport.w - context.viewport.y;
    const int windowSize = std::min(std::min(viewWidth, viewHeight) / 5, kGizmoMaxSize);
    if (windowSize < kGizmoMinSize)
        return;
    plor::Program* program = UseProgram(context, kWideLineProgram, kWideLineFiles);
    if (!program)
        return;

    // Only the camera's turn matters: the gizmo shows where the world axes point from here.
    const glm::mat4 rotation(glm::mat3(context.view));
    const glm::mat4 projection = glm::ortho(-1.0f, 1.0f, -1.0f, 1.0f, -2.0f, 2.0f);
    const int size = static_cast<int>(std::lround(static_cast<float>(windowSize) * context.pixelScale));
    const int margin = static_cast<int>(std::lround(4.0f * context.pixelScale));

    program->SetUniform(kViewProjection, projection * rotation);
    program->SetUniform(kModel, glm::mat4(glm::mat3(0.8f)));
    program->SetUniform(kVertexColors, 1);
    program->SetUniform(kOpacity, 1.0f);
    program->SetUniform(kFadeRadius, 0.0f);
    program->SetUniform(kViewportSize, glm::vec2(static_cast<float>(size)));
    program->SetUniform(kLineWidth, kGizmoWidth * context.pixelScale);

    glViewport(context.glViewport.x + margin, context.glViewport.y + margin, size, size);
    glDisable(GL_DEPTH_TEST);
    axes_.Draw(plor::PrimitiveType::Lines);
    glEnable(GL_DEPTH_TEST);
    glViewport(context.glViewport.x, context.glViewport.y, context.glViewport.z, context.glViewport.w);
}

void HelperRenderer::ReleaseGpuResources()
{
    // Release also drops the CPU copies, so the lines are set again for a later upload.
    grid_.Release();
    axes_.Release();
    SetLineBuffer(grid_, MakeGridLines());
    SetLineBuffer(axes_, MakeAxisLines());
}

} // namespace vexa::draw
