#version 330 core
// Coloured line segments. Two users share this stage: the engine's window separators (clip
// space positions, one colour from uniform location 0, every other uniform at its default)
// and the scene helpers (world positions, per-vertex colours, a model transform).
layout(location = 0) in vec3 inPosition;
layout(location = 1) in vec4 inColor;

uniform mat4 uViewProjection = mat4(1.0);
uniform mat4 uModel = mat4(1.0);

out LineVertex
{
    vec4 color;
    vec3 local; // position before uModel, for fading by distance from the origin
} vertexOut;

void main()
{
    vertexOut.color = inColor;
    vertexOut.local = inPosition;
    gl_Position = uViewProjection * uModel * vec4(inPosition, 1.0);
}
