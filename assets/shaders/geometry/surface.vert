#version 330 core
// Vertices of a surface, shared by its solid, point and wire programs.
layout(location = 0) in vec3 inPosition;
layout(location = 1) in vec3 inNormal;
layout(location = 2) in vec2 inUv;
layout(location = 3) in vec3 inColor;

uniform mat4 uModel;
uniform mat3 uNormalMatrix;
uniform mat4 uViewProjection;
uniform float uPointSize = 1.0;

out VertexData
{
    vec3 worldPosition;
    vec3 worldNormal;
    vec2 uv;
    vec3 color;
} vOut;

void main()
{
    vec4 world = uModel * vec4(inPosition, 1.0);
    vOut.worldPosition = world.xyz;
    vOut.worldNormal = uNormalMatrix * inNormal;
    vOut.uv = inUv;
    vOut.color = inColor;
    gl_Position = uViewProjection * world;
    gl_PointSize = uPointSize;
}
