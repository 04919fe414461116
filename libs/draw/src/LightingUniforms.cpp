#include "LightingUniforms.h"

#include <vexa/draw/Light.h>
#include <vexa/draw/Material.h>
#include <vexa/draw/RenderContext.h>

#include <plor/Program.h>

#include <glbinding/gl/gl.h>

#include <glm/glm.hpp>

#include <algorithm>
#include <cstring>

using namespace gl;

namespace vexa::draw {

void LightingUniforms::Refresh(plor::Program& program)
{
    if (program.GetId() == program_)
        return;
    program_ = program.GetId();
    baseColor_ = program.GetUniformLocation("uBaseColor");
    specular_ = program.GetUniformLocation("uSpecular");
    shininess_ = program.GetUniformLocation("uShininess");
    metallic_ = program.GetUniformLocation("uMetallic");
    useLighting_ = program.GetUniformLocation("uUseLighting");
    lightCount_ = program.GetUniformLocation("uLightCount");
    lightDirection_ = program.GetUniformLocation("uLightDirection");
    lightColor_ = program.GetUniformLocation("uLightColor");
}

void LightingUniforms::Upload(const RenderContext& context, const Material& material) const
{
    glUniform3f(baseColor_, material.color.r, material.color.g, material.color.b);
    glUniform1f(specular_, material.specular);
    glUniform1f(shininess_, std::clamp(material.shininess, 1.0f, 512.0f));
    glUniform1i(metallic_, material.metallic ? 1 : 0);
    UploadLights(context, material.useLighting);
}

void LightingUniforms::UploadLights(const RenderContext& context, bool useLighting) const
{
    int count = 0;
    float directions[3 * kMaxLights] = {};
    float colors[3 * kMaxLights] = {};
    const auto add = [&](const glm::vec3& direction, const Light& light) {
        const glm::vec3 color = glm::vec3(light.color.r, light.color.g, light.color.b) * light.intensity;
        std::memcpy(&directions[3 * count], &direction, sizeof(glm::vec3));
        std::memcpy(&colors[3 * count], &color, sizeof(glm::vec3));
        ++count;
    };
    for (const Light& light : context.lights) {
        if (count == kMaxLights)
            break;
        add(light.direction, light);
    }
    if (count == 0)
        add(-glm::vec3(glm::inverse(context.view)[2]), Light());

    glUniform1i(useLighting_, useLighting ? 1 : 0);
    glUniform1i(lightCount_, count);
    glUniform3fv(lightDirection_, count, directions);
    glUniform3fv(lightColor_, count, colors);
}

} // namespace vexa::draw
