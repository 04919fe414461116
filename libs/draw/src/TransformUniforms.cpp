#include "TransformUniforms.h"

#include <vexa/draw/RenderContext.h>

#include <plor/Program.h>

#include <glbinding/gl/gl.h>

#include <glm/glm.hpp>
#include <glm/gtc/type_ptr.hpp>

using namespace gl;

namespace vexa::draw {

void TransformUniforms::Refresh(plor::Program& program)
{
    if (program.GetId() == program_)
        return;
    program_ = program.GetId();
    model_ = program.GetUniformLocation("uModel");
    normalMatrix_ = program.GetUniformLocation("uNormalMatrix");
    view_ = program.GetUniformLocation("uView");
    projection_ = program.GetUniformLocation("uProjection");
    viewProjection_ = program.GetUniformLocation("uViewProjection");
    cameraPosition_ = program.GetUniformLocation("uCameraPosition");
}

void TransformUniforms::Upload(const RenderContext& context, const glm::mat4& model,
                               const glm::mat3& normalMatrix) const
{
    // Location -1 (a uniform the program does not have) is ignored by GL.
    glUniformMatrix4fv(model_, 1, GL_FALSE, glm::value_ptr(model));
    glUniformMatrix3fv(normalMatrix_, 1, GL_FALSE, glm::value_ptr(normalMatrix));
    glUniformMatrix4fv(view_, 1, GL_FALSE, glm::value_ptr(context.view));
    glUniformMatrix4fv(projection_, 1, GL_FALSE, glm::value_ptr(context.projection));
    glUniformMatrix4fv(viewProjection_, 1, GL_FALSE, glm::value_ptr(context.viewProjection));
    glUniform3f(cameraPosition_, context.cameraPosition.x, context.cameraPosition.y,
                context.cameraPosition.z);
}

} // namespace vexa::draw
