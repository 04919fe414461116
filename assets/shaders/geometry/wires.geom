#version 330 core
// Turns each edge into a screen-facing quad uLineWidth pixels wide: core contexts draw
// GL lines only one pixel wide. Edges crossing the near plane are cut there first, since
// a vertex behind the eye has no meaningful screen position.
layout(lines) in;
layout(triangle_strip, max_vertices = 4) out;

uniform vec2 uViewportSize;
uniform float uLineWidth = 1.0;

in VertexData
{
    vec3 worldPosition;
    vec3 worldNormal;
    vec2 uv;
    vec3 color;
} gIn[];

out VertexData
{
    vec3 worldPosition;
    vec3 worldNormal;
    vec2 uv;
    vec3 color;
} gOut;

void EmitCorner(vec4 clip, vec2 pixelOffset, float t)
{
    gl_Position = clip + vec4(pixelOffset / (0.5 * uViewportSize) * clip.w, 0.0, 0.0);
    gOut.worldPosition = mix(gIn[0].worldPosition, gIn[1].worldPosition, t);
    gOut.worldNormal = mix(gIn[0].worldNormal, gIn[1].worldNormal, t);
    gOut.uv = mix(gIn[0].uv, gIn[1].uv, t);
    gOut.color = mix(gIn[0].color, gIn[1].color, t);
    EmitVertex();
}

void main()
{
    vec4 p0 = gl_in[0].gl_Position;
    vec4 p1 = gl_in[1].gl_Position;
    // Signed distances to the near plane (z = -w), positive in front of it.
    float d0 = p0.z + p0.w;
    float d1 = p1.z + p1.w;
    if (d0 < 0.0 && d1 < 0.0)
        return;
    float t0 = d0 < 0.0 ? d0 / (d0 - d1) : 0.0;
    float t1 = d1 < 0.0 ? d0 / (d0 - d1) : 1.0;
    vec4 c0 = mix(p0, p1, t0);
    vec4 c1 = mix(p0, p1, t1);

    vec2 halfViewport = 0.5 * uViewportSize;
    vec2 s0 = c0.xy / c0.w * halfViewport;
    vec2 s1 = c1.xy / c1.w * halfViewport;
    vec2 direction = s1 - s0;
    float pixels = length(direction);
    direction = pixels > 1e-6 ? direction / pixels : vec2(1.0, 0.0);
    // Half a width along the edge too, so the quads of edges meeting at a corner overlap.
    vec2 along = direction * (0.5 * uLineWidth);
    vec2 side = vec2(-direction.y, direction.x) * (0.5 * uLineWidth);

    EmitCorner(c0, -along - side, t0);
    EmitCorner(c0, -along + side, t0);
    EmitCorner(c1, along - side, t1);
    EmitCorner(c1, along + side, t1);
    EndPrimitive();
}
