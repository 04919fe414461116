#pragma once
// The 1-pixel lines between view areas, drawn over everything else in one dark colour. Only
// inner edges get a line: the window border needs none.

#include <plor/ArrayObject.h>

#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <vector>

namespace plor {
class Program;
}

namespace vexa {

class SeparatorLines {
public:
    /// Line vertices (pairs, clip space) for the inner right and bottom edges of `areas`, each
    /// (x, y, width, height) in pixels of a `width` x `height` window.
    static std::vector<glm::vec3> ComputeVertices(const std::vector<glm::vec4>& areas, float width,
                                                  float height);

    /// Keeps the lines for the next Draw; no GL call (uploaded by Draw).
    void Build(const std::vector<glm::vec4>& areas, glm::ivec2 framebufferSize);
    /// Draws into the default framebuffer over the whole window with `program` (the line
    /// shader: uniform 0 is the colour).
    void Draw(plor::Program& program, glm::ivec2 framebufferSize);
    void Release();
    std::size_t GetVertexCount() const { return lines_.GetVertexCount(); }

private:
    plor::ArrayObject lines_;
};

} // namespace vexa
