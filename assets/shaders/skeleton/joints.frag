#version 330 core
// A sphere drawn on a point sprite: the disc's pixels get the sphere's normal and depth.
in vec3 vViewCenter;
in float vRadius;

uniform mat4 uView;
uniform mat4 uProjection;
uniform vec3 uColor;
uniform bool uUseLighting;

const int kMaxLights = 4;
uniform int uLightCount;
uniform vec3 uLightDirection[kMaxLights]; // world-space direction the light travels
uniform vec3 uLightColor[kMaxLights];     // colour times intensity

out vec4 outColor;

const float kAmbient = 0.25;
const float kSpecular = 0.25;
const float kShininess = 32.0;

void main()
{
    vec2 disc = gl_PointCoord * 2.0 - 1.0;
    float r2 = dot(disc, disc);
    if (r2 > 1.0)
        discard;
    // Sprite rows run down the screen; view space's y runs up.
    vec3 normal = vec3(disc.x, -disc.y, sqrt(1.0 - r2));
    vec3 surface = vViewCenter + normal * vRadius;
    vec4 clip = uProjection * vec4(surface, 1.0);
    float ndcDepth = clip.w > 0.0 ? clip.z / clip.w : -1.0;
    gl_FragDepth = clamp(0.5 * (gl_DepthRange.diff * ndcDepth + gl_DepthRange.near + gl_DepthRange.far), 0.0, 1.0);

    if (!uUseLighting) {
        outColor = vec4(uColor, 1.0);
        return;
    }
    vec3 toEye = normalize(-surface);
    if (!(dot(toEye, toEye) > 0.5))
        toEye = vec3(0.0, 0.0, 1.0);
    vec3 result = kAmbient * uColor;
    mat3 toView = mat3(uView);
    for (int i = 0; i < uLightCount && i < kMaxLights; ++i) {
        vec3 toLight = -(toView * uLightDirection[i]);
        float len = length(toLight);
        toLight = len > 1e-12 ? toLight / len : toEye;
        float diffuse = max(dot(normal, toLight), 0.0);
        float highlight = 0.0;
        if (diffuse > 0.0)
            highlight = pow(max(dot(normal, normalize(toLight + toEye)), 0.0), kShininess);
        result += uLightColor[i] * (uColor * diffuse + kSpecular * highlight);
    }
    outColor = vec4(result, 1.0);
}
