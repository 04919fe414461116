#version 330 core
// Line segments: two vertices per segment, an optional colour per vertex.
layout(location = 0) in vec3 inPosition;
layout(location = 1) in vec3 inColor;

uniform mat4 uModelViewProjection;
uniform vec3 uColor;
uniform int uUseVertexColor;

out vec3 vColor;

void main()
{
    vColor = uUseVertexColor != 0 ? inColor : uColor;
    gl_Position = uModelViewProjection * vec4(inPosition, 1.0);
}
