#include "vexa/draw/LineFieldRenderer.h"

#include "vexa/draw/RenderContext.h"

#include <plor/ArrayObject.h>
#include <plor/Program.h>

#include <runa/rlog.h>

#include <glbinding/gl/gl.h>
#include <glm/gtc/type_ptr.hpp>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <string_view>

using namespace gl;

namespace vexa::draw {

namespace {

constexpr std::string_view kProgramName = "LINE_FIELD";
constexpr plor::ProgramFiles kProgramFiles{"lines/lineField.vert", "lines/lineField.frag",
                                           "lines/lineField.geom"};

constexpr std::size_t kPositionSlot = 0;
constexpr std::size_t kColorSlot = 1;

bool IsFinite(const glm::vec3& v)
{
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

} // namespace

struct LineFieldRenderer::Gpu {
    plor::ArrayObject array;
    unsigned int programId = 0;
    GLint locModelViewProjection = -1;
    GLint locColor = -1;
    GLint locUseVertexColor = -1;
    GLint locLineWidth = -1;
    GLint locViewportSize = -1;
};

LineFieldRenderer::LineFieldRenderer() : gpu_(std::make_unique<Gpu>()) {}

LineFieldRenderer::LineFieldRenderer(std::span<const geom::LineSegment3> lines)
    : gpu_(std::make_unique<Gpu>())
{
    SetLines(lines);
}

LineFieldRenderer::~LineFieldRenderer()
{
    ReleaseGpuResources();
}

void LineFieldRenderer::SetLines(std::span<const geom::LineSegment3> lines)
{
    std::size_t kept = 0;
    for (const geom::LineSegment3& s : lines)
        if (IsFinite(s.a) && IsFinite(s.b))
            ++kept;

    keptIndices_.clear();
    sourceCount_ = lines.size();
    lineCount_ = kept;
    hasColors_ = false;
    bounds_.Reset();

    if (kept == 0) {
        gpu_->array.Release();
        std::vector<std::uint32_t>().swap(keptIndices_);
    } else {
        // The segments are already packed vertex pairs, so the kept ones are copied straight
        // into the byte array the vertex buffer is made of.
        std::vector<std::byte> bytes(kept * sizeof(geom::LineSegment3));
        std::byte* out = bytes.data();
        const bool dropsSome = kept != lines.size();
        if (dropsSome)
            keptIndices_.reserve(kept);
        for (std::size_t i = 0; i < lines.size(); ++i) {
            const geom::LineSegment3& s = lines[i];
            if (!IsFinite(s.a) || !IsFinite(s.b))
                continue;
            std::memcpy(out, &s, sizeof(geom::LineSegment3));
            out += sizeof(geom::LineSegment3);
            bounds_.Extend(s.a);
            bounds_.Extend(s.b);
            if (dropsSome)
                keptIndices_.push_back(static_cast<std::uint32_t>(i));
        }
        plor::ArrayObject& array = gpu_->array;
        array.SetBuffer(kPositionSlot, std::move(bytes), {plor::Attribute{0, 3, plor::DataType::Float}});
        array.ClearBuffer(kColorSlot);
        array.SetVertexCount(kept * 2);
    }

    if (kept != lines.size())
        rlog::Warn("Dropped " + std::to_string(lines.size() - kept) + " of " + std::to_string(lines.size()) +
                       " line segments with non-finite endpoints",
                   "vexa::draw::LineFieldRenderer::SetLines");
}

bool LineFieldRenderer::SetLineColors(std::span<const tesk::Color3f> colors)
{
    const bool matchesKept = colors.size() == lineCount_;
    const bool matchesSource = !keptIndices_.empty() && colors.size() == sourceCount_;
    if (lineCount_ == 0 || (!matchesKept && !matchesSource)) {
        rlog::Warn("Got " + std::to_string(colors.size()) + " colours for " + std::to_string(lineCount_) +
                       " line segments",
                   "vexa::draw::LineFieldRenderer::SetLineColors");
        return false;
    }

    // Both ends of a segment get its colour, so one vertex layout serves both attributes.
    std::vector<std::byte> bytes(lineCount_ * 2 * sizeof(tesk::Color3f));
    std::byte* out = bytes.data();
    for (std::size_t i = 0; i < lineCount_; ++i) {
        const tesk::Color3f& c = colors[matchesKept ? i : keptIndices_[i]];
        std::memcpy(out, &c, sizeof(tesk::Color3f));
        std::memcpy(out + sizeof(tesk::Color3f), &c, sizeof(tesk::Color3f));
        out += 2 * sizeof(tesk::Color3f);
    }
    gpu_->array.SetBuffer(kColorSlot, std::move(bytes), {plor::Attribute{1, 3, plor::DataType::Float}});
    hasColors_ = true;
    return true;
}

bool LineFieldRenderer::IsCompatibileWithStyle(const Style& style) const
{
    return dynamic_cast<const LineFieldStyle*>(&style) != nullptr;
}

void LineFieldRenderer::Render(const RenderContext& context, const Style& style)
{
    const auto* lineStyle = dynamic_cast<const LineFieldStyle*>(&style);
    if (!lineStyle || !lineStyle->visible || lineCount_ == 0 || !context.programs)
        return;
    if (context.glViewport.z <= 0 || context.glViewport.w <= 0)
        return;

    plor::Program* program = &context.programs->GetOrAdd(kProgramName, kProgramFiles);
    if (!program->Use())
        return;

    Gpu& gpu = *gpu_;
    if (gpu.programId != program->GetId()) {
        const GLuint id = program->GetId();
        gpu.locModelViewProjection = glGetUniformLocation(id, "uModelViewProjection");
        gpu.locColor = glGetUniformLocation(id, "uColor");
        gpu.locUseVertexColor = glGetUniformLocation(id, "uUseVertexColor");
        gpu.locLineWidth = glGetUniformLocation(id, "uLineWidth");
        gpu.locViewportSize = glGetUniformLocation(id, "uViewportSize");
        gpu.programId = id;
    }

    const glm::mat4 modelViewProjection = context.viewProjection * lineStyle->transform.GetMatrix();
    const float width = std::max(1.0f, lineStyle->lineWidth * context.pixelScale);
    glUniformMatrix4fv(gpu.locModelViewProjection, 1, GL_FALSE, glm::value_ptr(modelViewProjection));
    glUniform3f(gpu.locColor, lineStyle->color.r, lineStyle->color.g, lineStyle->color.b);
    glUniform1i(gpu.locUseVertexColor, hasColors_ && lineStyle->useSegmentColors ? 1 : 0);
    glUniform1f(gpu.locLineWidth, std::isfinite(width) ? width : 1.0f);
    glUniform2f(gpu.locViewportSize, static_cast<float>(context.glViewport.z),
                static_cast<float>(context.glViewport.w));

    const bool depthWasOn = glIsEnabled(GL_DEPTH_TEST) == GL_TRUE;
    if (lineStyle->onTop)
        glDisable(GL_DEPTH_TEST);
    else
        glEnable(GL_DEPTH_TEST);

    gpu.array.Draw(plor::PrimitiveType::Lines);

    if (depthWasOn)
        glEnable(GL_DEPTH_TEST);
    else
        glDisable(GL_DEPTH_TEST);
}

void LineFieldRenderer::ReleaseGpuResources()
{
    if (!gpu_)
        return;
    gpu_->array.Release();
    gpu_->programId = 0;
}

} // namespace vexa::draw
