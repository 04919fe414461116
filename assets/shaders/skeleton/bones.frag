#version 330 core
// Bone solids (lit with per-face normals), bone wires, stick lines and joint axes.
in BoneData
{
    vec3 world;
    vec3 normal;
    vec3 color;
} fIn;

uniform vec3 uCameraPosition;
uniform bool uUseLighting;

const int kMaxLights = 4;
uniform int uLightCount;
uniform vec3 uLightDirection[kMaxLights]; // world-space direction the light travels
uniform vec3 uLightColor[kMaxLights];     // colour times intensity

out vec4 outColor;

const float kAmbient = 0.25;
const float kSpecular = 0.25;
const float kShininess = 32.0;

vec3 SafeNormalize(vec3 v, vec3 fallback)
{
    float len = length(v);
    return len > 1e-12 ? v / len : fallback;
}

void main()
{
    vec3 base = fIn.color;
    if (!uUseLighting) {
        outColor = vec4(base, 1.0);
        return;
    }
    vec3 toEye = SafeNormalize(uCameraPosition - fIn.world, vec3(0.0, 0.0, 1.0));
    vec3 normal = SafeNormalize(fIn.normal, toEye);
    // Two-sided, so a camera inside a bone still sees it lit.
    if (!gl_FrontFacing)
        normal = -normal;
    vec3 result = kAmbient * base;
    for (int i = 0; i < uLightCount && i < kMaxLights; ++i) {
        vec3 toLight = SafeNormalize(-uLightDirection[i], toEye);
        float diffuse = max(dot(normal, toLight), 0.0);
        float highlight = 0.0;
        if (diffuse > 0.0)
            highlight = pow(max(dot(normal, normalize(toLight + toEye)), 0.0), kShininess);
        result += uLightColor[i] * (base * diffuse + kSpecular * highlight);
    }
    outColor = vec4(result, 1.0);
}
