#version 330 core
// Points of a cloud with normals in use, as sprites (without them, flat.vert draws). A point is
// too small for its light to change across it, so colour and lighting are worked out here once
// per point; the fragment stage only cuts the sprite to the point's disc. Points with a non-finite coordinate, and with culling those
// whose normal faces away from the eye, are moved outside the clip volume and flagged, so
// nothing of them reaches the screen.
layout(location = 0) in vec3 inPosition;
layout(location = 1) in vec3 inNormal;
layout(location = 2) in vec3 inColor;

uniform mat4 uModel;
uniform mat3 uNormalMatrix;
uniform mat4 uViewProjection;
uniform mat4 uView;
uniform vec3 uCameraPosition;
uniform float uPointSize;
uniform bool uCullBackFacing;
uniform bool uHasColors;
// 0 material, 3 per-point colour, 4 normals.
uniform int uColorMode;
// Per-point colours are data: they stay as they are unless the user asks for shading.
uniform bool uShadeColors;
uniform bool uOrientedDiscs;

uniform vec3 uBaseColor;
uniform float uSpecular;
uniform float uShininess;
uniform bool uMetallic;
uniform bool uUseLighting;

const int kMaxLights = 4;
uniform int uLightCount;
uniform vec3 uLightDirection[kMaxLights]; // world-space direction the light travels
uniform vec3 uLightColor[kMaxLights];     // colour times intensity

out PointData
{
    vec3 color;
    // The disc's tilt: a sprite offset d lies on the disc when |d|^2 + dot(tilt, d)^2 <= 1.
    vec2 tilt;
    flat int hidden;
}
vOut;

const float kAmbient = 0.25;
// Discs seen edge-on keep this fraction of their width, so no point vanishes entirely.
const float kMinDiscAspect = 0.3;

bool IsFinite(vec3 v)
{
    return !any(isnan(v)) && !any(isinf(v));
}

vec3 SafeNormalize(vec3 v, vec3 fallback)
{
    float len = length(v);
    return len > 1e-12 ? v / len : fallback;
}

// Blinn-Phong with a floor of ambient light so sides facing away are never black.
vec3 Shade(vec3 base, vec3 normal, vec3 toEye)
{
    vec3 tint = uMetallic ? base : vec3(1.0);
    vec3 result = kAmbient * base;
    for (int i = 0; i < uLightCount && i < kMaxLights; ++i) {
        vec3 toLight = SafeNormalize(-uLightDirection[i], toEye);
        float diffuse = max(dot(normal, toLight), 0.0);
        float highlight = 0.0;
        if (diffuse > 0.0)
            highlight = pow(max(dot(normal, normalize(toLight + toEye)), 0.0), uShininess);
        result += uLightColor[i] * (base * diffuse + uSpecular * highlight * tint);
    }
    return result;
}

void main()
{
    vOut.hidden = 0;
    vOut.tilt = vec2(0.0);
    vec4 world = uModel * vec4(inPosition, 1.0);
    vec3 toEye = SafeNormalize(uCameraPosition - world.xyz, vec3(0.0, 0.0, 1.0));
    vec3 normal = uNormalMatrix * inNormal;
    // A broken normal only costs the point its orientation, not its place.
    if (!IsFinite(normal))
        normal = vec3(0.0);
    bool oriented = dot(normal, normal) > 1e-24;

    if (!IsFinite(inPosition))
        vOut.hidden = 1;
    else if (uCullBackFacing && oriented && dot(normal, toEye) < 0.0)
        vOut.hidden = 1;

    vec3 outward = SafeNormalize(normal, toEye);
    vec3 color = uBaseColor;
    bool shade = uUseLighting;
    if (uColorMode == 4) {
        color = 0.5 + 0.5 * outward;
        shade = false;
    } else if (uColorMode == 3 && uHasColors) {
        color = inColor;
        shade = shade && uShadeColors;
    }
    if (shade) {
        // Two-sided: a point seen from behind is lit like its front.
        color = Shade(color, dot(outward, toEye) < 0.0 ? -outward : outward, toEye);
    }
    vOut.color = color;

    if (oriented && uOrientedDiscs) {
        vec3 n = normalize(mat3(uView) * normal);
        vOut.tilt = n.xy / max(abs(n.z), kMinDiscAspect);
    }
    gl_PointSize = uPointSize;
    gl_Position = vOut.hidden != 0 ? vec4(10.0, 10.0, 10.0, 1.0) : uViewProjection * world;
}
