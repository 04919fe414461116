#pragma once
// The placement uniforms every 3D program shares: the instance's model and normal matrices and
// the camera's matrices and position. The camera's part comes straight from the render
// context, which computes it once per scene and frame.

#include <glm/mat3x3.hpp>
#include <glm/mat4x4.hpp>

namespace plor {
class Program;
}

namespace vexa::draw {

struct RenderContext;

class TransformUniforms {
public:
    /// Looks the locations up when `program` is not the build they were taken from.
    void Refresh(plor::Program& program);

    /// Sets whichever of uModel, uNormalMatrix, uView, uProjection, uViewProjection and
    /// uCameraPosition the program has.
    void Upload(const RenderContext& context, const glm::mat4& model,
                const glm::mat3& normalMatrix = glm::mat3(1.0f)) const;

private:
    unsigned int program_ = 0;
    int model_ = -1, normalMatrix_ = -1, view_ = -1, projection_ = -1, viewProjection_ = -1,
        cameraPosition_ = -1;
};

} // namespace vexa::draw
