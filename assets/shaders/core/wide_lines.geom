#version 330 core
// Core profiles only promise one-pixel lines; wider ones become screen-aligned quads here.
layout(lines) in;
layout(triangle_strip, max_vertices = 4) out;

in LineVertex
{
    vec4 color;
    vec3 local;
} geometryIn[];

out LineVertex
{
    vec4 color;
    vec3 local;
} geometryOut;

/// Size of the viewport in framebuffer pixels.
uniform vec2 uViewportSize = vec2(1.0);
/// Full width of the line in framebuffer pixels.
uniform float uLineWidth = 1.0;

void Emit(vec4 position, vec2 offset, int source)
{
    geometryOut.color = geometryIn[source].color;
    geometryOut.local = geometryIn[source].local;
    gl_Position = position + vec4(offset * position.w, 0.0, 0.0);
    EmitVertex();
}

void main()
{
    vec4 p0 = gl_in[0].gl_Position;
    vec4 p1 = gl_in[1].gl_Position;

    // Cut the segment at the near plane first: a vertex behind the eye has no screen position
    // and would send the quad across the whole view.
    float d0 = p0.z + p0.w;
    float d1 = p1.z + p1.w;
    if (d0 < 0.0 && d1 < 0.0)
        return;
    if (d0 < 0.0)
        p0 = mix(p0, p1, d0 / (d0 - d1));
    else if (d1 < 0.0)
        p1 = mix(p1, p0, d1 / (d1 - d0));

    vec2 a = p0.xy / p0.w;
    vec2 b = p1.xy / p1.w;
    vec2 direction = (b - a) * uViewportSize;
    float len = length(direction);
    direction = len > 1e-6 ? direction / len : vec2(1.0, 0.0);
    // Half the width in pixels is the full width in normalised device units per viewport size.
    vec2 offset = vec2(-direction.y, direction.x) * uLineWidth / uViewportSize;

    Emit(p0, offset, 0);
    Emit(p0, -offset, 0);
    Emit(p1, offset, 1);
    Emit(p1, -offset, 1);
    EndPrimitive();
}
