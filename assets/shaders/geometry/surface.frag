#version 330 core
// Colours surfaces (default), their vertices (POINTS) and their edges (WIRES).
in VertexData
{
    vec3 worldPosition;
    vec3 worldNormal;
    vec2 uv;
    vec3 color;
} fIn;

uniform vec3 uCameraPosition;
uniform mat4 uView;

// Material.
uniform vec3 uBaseColor;
uniform float uSpecular;
uniform float uShininess;
uniform bool uMetallic;
uniform bool uUseLighting;

// Colour source: 0 material, 3 per-vertex colour, 4 normals, 5 checker, 6 texture.
uniform int uColorMode;
uniform bool uHasColors;
uniform bool uUseTexture;
uniform sampler2D uColorTexture;

uniform bool uFlatNormals;
uniform bool uUseNormalMap;
uniform sampler2D uNormalMap;
uniform bool uUseMatcap;
uniform sampler2D uMatcap;

// Replaces every colour source (wires over faces).
uniform bool uUseFixedColor;
uniform vec3 uFixedColor;

const int kMaxLights = 4;
uniform int uLightCount;
uniform vec3 uLightDirection[kMaxLights]; // world-space direction the light travels
uniform vec3 uLightColor[kMaxLights];     // colour times intensity

out vec4 outColor;

const float kAmbient = 0.25;

vec3 SafeNormalize(vec3 v, vec3 fallback)
{
    float len = length(v);
    return len > 1e-12 ? v / len : fallback;
}

vec3 SourceColor(vec3 outwardNormal)
{
    if (uColorMode == 4)
        return 0.5 + 0.5 * outwardNormal;
    if (uColorMode == 3 && uHasColors)
        return fIn.color;
    if (uUseTexture)
        return texture(uColorTexture, fIn.uv).rgb;
    return uBaseColor;
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

#if !defined(POINTS) && !defined(WIRES)
// Perturbs `normal` by the tangent-space normal map, with a tangent frame taken from the
// screen derivatives of position and UV (no tangents needed in the vertex data).
vec3 ApplyNormalMap(vec3 normal)
{
    vec3 dp1 = dFdx(fIn.worldPosition);
    vec3 dp2 = dFdy(fIn.worldPosition);
    vec2 duv1 = dFdx(fIn.uv);
    vec2 duv2 = dFdy(fIn.uv);
    vec3 dp2perp = cross(dp2, normal);
    vec3 dp1perp = cross(normal, dp1);
    vec3 tangent = dp2perp * duv1.x + dp1perp * duv2.x;
    vec3 bitangent = dp2perp * duv1.y + dp1perp * duv2.y;
    float scale = max(dot(tangent, tangent), dot(bitangent, bitangent));
    if (scale < 1e-20)
        return normal;
    scale = inversesqrt(scale);
    vec3 mapped = texture(uNormalMap, fIn.uv).xyz * 2.0 - 1.0;
    return SafeNormalize(mat3(tangent * scale, bitangent * scale, normal) * mapped, normal);
}
#endif

void main()
{
    vec3 toEye = SafeNormalize(uCameraPosition - fIn.worldPosition, vec3(0.0, 0.0, 1.0));

#ifdef POINTS
    // Round points: the square sprite keeps only its inscribed disc.
    vec2 fromCentre = gl_PointCoord * 2.0 - 1.0;
    if (dot(fromCentre, fromCentre) > 1.0)
        discard;
#endif

#if defined(POINTS) || defined(WIRES)
    vec3 outward = SafeNormalize(fIn.worldNormal, toEye);
    vec3 facing = dot(outward, toEye) < 0.0 ? -outward : outward;
#else
    vec3 outward;
    if (uFlatNormals) {
        // The derivatives' cross product always faces the eye; front faces face it outward.
        vec3 towardEye = SafeNormalize(cross(dFdx(fIn.worldPosition), dFdy(fIn.worldPosition)), toEye);
        outward = gl_FrontFacing ? towardEye : -towardEye;
    } else {
        outward = SafeNormalize(fIn.worldNormal, toEye);
        if (uUseNormalMap)
            outward = ApplyNormalMap(outward);
    }
    // Two-sided lighting: the inside of an open surface is lit like its outside.
    vec3 facing = gl_FrontFacing ? outward : -outward;
#endif

    if (uUseFixedColor) {
        outColor = vec4(uFixedColor, 1.0);
        return;
    }

    vec3 base = SourceColor(outward);
    vec3 color = base;
#if defined(WIRES)
    // Edges are lines, not surfaces: they carry the plain colour.
#else
    if (uColorMode == 4) {
        color = base;
    } else if (uUseMatcap) {
        vec3 viewNormal = SafeNormalize(mat3(uView) * facing, vec3(0.0, 0.0, 1.0));
        // Images are uploaded top row first, so v runs downwards: a normal pointing up must
        // read the top of the matcap, where its light comes from.
        vec3 matcap = texture(uMatcap, vec2(viewNormal.x, -viewNormal.y) * 0.5 + 0.5).rgb;
        // The matcap is the lighting: alone for the material, tinting other colour sources.
        color = uColorMode == 0 ? matcap : base * matcap;
    } else if (uUseLighting) {
        color = Shade(base, facing, toEye);
    }
#endif
    outColor = vec4(color, 1.0);
}
