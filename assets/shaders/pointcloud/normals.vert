#version 330 core
// Points with their normals, handed to the normal-line geometry shader in world space.
layout(location = 0) in vec3 inPosition;
layout(location = 1) in vec3 inNormal;

uniform mat4 uModel;
uniform mat3 uNormalMatrix;

out vec3 vWorldPosition;
out vec3 vWorldNormal;

void main()
{
    vec4 world = uModel * vec4(inPosition, 1.0);
    vWorldPosition = world.xyz;
    vWorldNormal = uNormalMatrix * inNormal;
    gl_Position = world;
}
