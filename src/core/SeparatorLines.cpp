#include "core/SeparatorLines.h"

#include <plor/Program.h>

#include <glbinding/gl/gl.h>

#include <algorithm>

namespace vexa {

namespace {
// RGB 26, 26, 26: darker than any background the options offer, lighter than black windows.
constexpr float kLineGrey = 26.0f / 255.0f;
} // namespace

std::vector<glm::vec3> SeparatorLines::ComputeVertices(const std::vector<glm::vec4>& areas, float width,
                                                       float height)
{
    width = std::max(width, 1.0f);
    height = std::max(height, 1.0f);
    const auto toClipX = [&](float x) { return 2.0f * x / width - 1.0f; };
    const auto toClipY = [&](float y) { return 1.0f - 2.0f * y / height; };
    std::vector<glm::vec3> vertices;
    for (const glm::vec4& r : areas) {
        const float right = r.x + r.z;
        const float bottom = r.y + r.w;
        if (right < width - 0.5f) {
            vertices.emplace_back(toClipX(right), toClipY(r.y), 0.0f);
            vertices.emplace_back(toClipX(right), toClipY(bottom), 0.0f);
        }
        if (bottom < height - 0.5f) {
            vertices.emplace_back(toClipX(r.x), toClipY(bottom), 0.0f);
            vertices.emplace_back(toClipX(right), toClipY(bottom), 0.0f);
        }
    }
    return vertices;
}

void SeparatorLines::Build(const std::vector<glm::vec4>& areas, glm::ivec2 framebufferSize)
{
    std::vector<glm::vec3> vertices =
        ComputeVertices(areas, static_cast<float>(framebufferSize.x), static_cast<float>(framebufferSize.y));
    const std::size_t count = vertices.size();
    lines_.SetBuffer(0, std::move(vertices), {plor::Attribute{0, 3}});
    lines_.SetVertexCount(count);
}

void SeparatorLines::Draw(plor::Program& program, glm::ivec2 framebufferSize)
{
    if (lines_.GetVertexCount() == 0)
        return;
    gl::glBindFramebuffer(gl::GL_FRAMEBUFFER, 0);
    gl::glViewport(0, 0, framebufferSize.x, framebufferSize.y);
    gl::glDisable(gl::GL_DEPTH_TEST);
    if (!program.Use())
        return;
    gl::glUniform3f(0, kLineGrey, kLineGrey, kLineGrey);
    gl::glLineWidth(1.0f);
    lines_.Draw(plor::PrimitiveType::Lines);
}

void SeparatorLines::Release()
{
    lines_.Release();
}

} // namespace vexa
