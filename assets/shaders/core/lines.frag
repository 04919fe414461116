#version 330 core
// Location 0 of the colour is fixed so that callers may set it without asking the program
// for its location. GLSL 3.30 needs the extension for that (core since 4.3; every 3.3 driver
// we target offers it).
#extension GL_ARB_explicit_uniform_location : require

in LineVertex
{
    vec4 color;
    vec3 local;
} fragmentIn;

layout(location = 0) uniform vec3 uColor = vec3(1.0);
/// Use the per-vertex colours instead of uColor.
uniform bool uVertexColors = false;
uniform float uOpacity = 1.0;
/// Above 0: alpha falls to 0 towards this distance from the origin (untransformed units).
uniform float uFadeRadius = 0.0;

out vec4 outColor;

void main()
{
    vec4 color = uVertexColors ? fragmentIn.color : vec4(uColor, 1.0);
    if (uFadeRadius > 0.0)
        color.a *= 1.0 - smoothstep(0.35 * uFadeRadius, uFadeRadius, length(fragmentIn.local));
    outColor = vec4(color.rgb, color.a * uOpacity);
}
