#version 330 core
// Each joint's axes as short red, green and blue lines (screen-facing quads).
layout(points) in;
layout(triangle_strip, max_vertices = 12) out;

in JointData
{
    vec3 world;
    vec3 axisX;
    vec3 axisY;
    vec3 axisZ;
    float radius;
} gIn[];

out BoneData
{
    vec3 world;
    vec3 normal;
    vec3 color;
} gOut;

uniform mat4 uViewProjection;
uniform vec2 uViewportSize;
uniform float uLineWidth = 1.0;
/// Axis length per unit of joint radius.
uniform float uBasisScale = 3.5;

void EmitAxis(vec3 a, vec3 axis, vec3 color)
{
    float axisLength = length(axis);
    if (!(axisLength > 1e-12))
        return;
    vec3 b = a + axis / axisLength * gIn[0].radius * uBasisScale;
    vec4 p0 = uViewProjection * vec4(a, 1.0);
    vec4 p1 = uViewProjection * vec4(b, 1.0);
    float d0 = p0.z + p0.w;
    float d1 = p1.z + p1.w;
    if (d0 < 0.0 && d1 < 0.0)
        return;
    if (d0 < 0.0)
        p0 = mix(p0, p1, d0 / (d0 - d1));
    else if (d1 < 0.0)
        p1 = mix(p1, p0, d1 / (d1 - d0));

    vec2 halfViewport = 0.5 * uViewportSize;
    vec2 direction = (p1.xy / p1.w - p0.xy / p0.w) * halfViewport;
    float pixels = length(direction);
    direction = pixels > 1e-6 ? direction / pixels : vec2(1.0, 0.0);
    vec2 side = vec2(-direction.y, direction.x) * (0.5 * uLineWidth) / halfViewport;

    gOut.normal = vec3(0.0);
    gOut.color = color;
    gOut.world = a;
    gl_Position = vec4(p0.xy - side * p0.w, p0.zw);
    EmitVertex();
    gl_Position = vec4(p0.xy + side * p0.w, p0.zw);
    EmitVertex();
    gOut.world = b;
    gl_Position = vec4(p1.xy - side * p1.w, p1.zw);
    EmitVertex();
    gl_Position = vec4(p1.xy + side * p1.w, p1.zw);
    EmitVertex();
    EndPrimitive();
}

void main()
{
    vec3 origin = gIn[0].world;
    EmitAxis(origin, gIn[0].axisX, vec3(0.9, 0.15, 0.15));
    EmitAxis(origin, gIn[0].axisY, vec3(0.15, 0.85, 0.15));
    EmitAxis(origin, gIn[0].axisZ, vec3(0.2, 0.35, 1.0));
}
