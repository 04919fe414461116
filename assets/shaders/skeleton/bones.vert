#version 330 core
// One vertex per joint of the current pose; bones are drawn as index pairs (parent, child)
// and expanded by the geometry stage, joints and their axes straight from these vertices.
layout(location = 0) in vec3 inPosition;
layout(location = 1) in float inRadius;
layout(location = 2) in vec3 inAxisX;
layout(location = 3) in vec3 inAxisY;
layout(location = 4) in vec3 inAxisZ;

uniform mat4 uModel;

out JointData
{
    vec3 world;
    vec3 axisX;
    vec3 axisY;
    vec3 axisZ;
    float radius;
} vOut;

void main()
{
    vec4 world = uModel * vec4(inPosition, 1.0);
    mat3 linear = mat3(uModel);
    vOut.world = world.xyz;
    vOut.axisX = linear * inAxisX;
    vOut.axisY = linear * inAxisY;
    vOut.axisZ = linear * inAxisZ;
    vOut.radius = inRadius;
    gl_Position = world;
}
