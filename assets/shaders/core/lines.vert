#version 330 core
// Coloured line segments in world space: two vertices per segment.
layout(location = 0) in vec3 inPosition;
layout(location = 1) in vec4 inColor;

uniform mat4 uViewProjection;
uniform mat4 uModel;

out vec4 vColor;

void main()
{
    vColor = inColor;
    gl_Position = uViewProjection * uModel * vec4(inPosition, 1.0);
}
