#version 330 core
// Core contexts cap glLineWidth at 1, so each segment becomes a quad of the requested width
// in framebuffer pixels, with square caps so that chained segments meet without gaps.
layout(lines) in;
layout(triangle_strip, max_vertices = 4) out;

in vec3 vColor[];
out vec3 gColor;

uniform vec2 uViewportSize; // framebuffer pixels
uniform float uLineWidth;   // framebuffer pixels

void main()
{
    vec4 p0 = gl_in[0].gl_Position;
    vec4 p1 = gl_in[1].gl_Position;
    vec3 c0 = vColor[0];
    vec3 c1 = vColor[1];

    // Cut the segment at the near plane first: an end behind the camera has w <= 0 and its
    // screen position would be mirrored.
    float d0 = p0.z + p0.w;
    float d1 = p1.z + p1.w;
    if (d0 < 0.0 && d1 < 0.0)
        return;
    if (d0 < 0.0) {
        float t = d0 / (d0 - d1);
        p0 = mix(p0, p1, t);
        c0 = mix(c0, c1, t);
    } else if (d1 < 0.0) {
        float t = d1 / (d1 - d0);
        p1 = mix(p1, p0, t);
        c1 = mix(c1, c0, t);
    }

    vec2 halfViewport = 0.5 * uViewportSize;
    vec2 s0 = p0.xy / p0.w * halfViewport;
    vec2 s1 = p1.xy / p1.w * halfViewport;
    vec2 direction = s1 - s0;
    float len = length(direction);
    direction = len > 1e-4 ? direction / len : vec2(1.0, 0.0);
    vec2 normal = vec2(-direction.y, direction.x);

    float halfWidth = 0.5 * uLineWidth;
    vec2 side = normal * halfWidth / halfViewport;
    vec2 along = direction * halfWidth / halfViewport;

    vec2 e0 = -along * p0.w;
    vec2 e1 = along * p1.w;
    vec2 n0 = side * p0.w;
    vec2 n1 = side * p1.w;

    gColor = c0;
    gl_Position = vec4(p0.xy + e0 - n0, p0.zw);
    EmitVertex();
    gColor = c0;
    gl_Position = vec4(p0.xy + e0 + n0, p0.zw);
    EmitVertex();
    gColor = c1;
    gl_Position = vec4(p1.xy + e1 - n1, p1.zw);
    EmitVertex();
    gColor = c1;
    gl_Position = vec4(p1.xy + e1 + n1, p1.zw);
    EmitVertex();
    EndPrimitive();
}
