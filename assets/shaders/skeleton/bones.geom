#version 330 core
// Expands each bone (parent joint to child joint, in world space) into one of three shapes:
// OCTAHEDRON the classic bone solid, WIRED its twelve edges, STICKMAN one line. Lines are
// screen-facing quads uLineWidth pixels wide, since core contexts draw GL lines one pixel wide.
layout(lines) in;
#if defined(OCTAHEDRON)
layout(triangle_strip, max_vertices = 24) out;
#elif defined(WIRED)
layout(triangle_strip, max_vertices = 48) out;
#else
layout(triangle_strip, max_vertices = 4) out;
#endif

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
uniform vec3 uColor;
uniform vec2 uViewportSize;
uniform float uLineWidth = 1.0;

// The cross-section is widest this far along the bone, with this half-width per unit length.
const float kWidestAt = 0.2;
const float kHalfWidth = 0.1;

void EmitTriangle(vec3 a, vec3 b, vec3 c)
{
    gOut.normal = cross(b - a, c - a);
    gOut.color = uColor;
    gOut.world = a;
    gl_Position = uViewProjection * vec4(a, 1.0);
    EmitVertex();
    gOut.world = b;
    gl_Position = uViewProjection * vec4(b, 1.0);
    EmitVertex();
    gOut.world = c;
    gl_Position = uViewProjection * vec4(c, 1.0);
    EmitVertex();
    EndPrimitive();
}

void EmitLine(vec3 a, vec3 b)
{
    vec4 p0 = uViewProjection * vec4(a, 1.0);
    vec4 p1 = uViewProjection * vec4(b, 1.0);
    // Cut at the near plane first: an end behind the eye has no usable screen position.
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
    // Square caps (half a width past each end) so edges meeting at a corner leave no notch.
    vec2 along = direction * (0.5 * uLineWidth) / halfViewport;
    vec2 side = vec2(-direction.y, direction.x) * (0.5 * uLineWidth) / halfViewport;

    gOut.normal = vec3(0.0);
    gOut.color = uColor;
    gOut.world = a;
    gl_Position = vec4(p0.xy + (-along - side) * p0.w, p0.zw);
    EmitVertex();
    gl_Position = vec4(p0.xy + (-along + side) * p0.w, p0.zw);
    EmitVertex();
    gOut.world = b;
    gl_Position = vec4(p1.xy + (along - side) * p1.w, p1.zw);
    EmitVertex();
    gl_Position = vec4(p1.xy + (along + side) * p1.w, p1.zw);
    EmitVertex();
    EndPrimitive();
}

void main()
{
    vec3 tail = gIn[0].world;
    vec3 head = gIn[1].world;
#if defined(STICKMAN)
    EmitLine(tail, head);
#else
    vec3 bone = head - tail;
    float len = length(bone);
    if (!(len > 1e-12))
        return;
    vec3 direction = bone / len;
    // The square cross-section follows the parent joint's X axis, or its Z axis when X runs
    // along the bone, so a bone's roll is visible.
    vec3 reference = gIn[0].axisX;
    float referenceLength = length(reference);
    if (!(referenceLength > 1e-12) || abs(dot(reference / referenceLength, direction)) > 0.99)
        reference = gIn[0].axisZ;
    vec3 u = reference - dot(reference, direction) * direction;
    float uLength = length(u);
    if (!(uLength > 1e-12)) {
        // No usable joint axes: any perpendicular will do.
        u = abs(direction.x) < 0.9 ? cross(direction, vec3(1.0, 0.0, 0.0)) : cross(direction, vec3(0.0, 1.0, 0.0));
        uLength = length(u);
    }
    u /= uLength;
    vec3 v = cross(direction, u);
    float width = kHalfWidth * len;
    vec3 middle = tail + kWidestAt * bone;
    vec3 ring[4] = vec3[4](middle + width * u, middle + width * v, middle - width * u, middle - width * v);
#if defined(OCTAHEDRON)
    // Counter-clockwise seen from outside.
    for (int i = 0; i < 4; ++i) {
        EmitTriangle(tail, ring[(i + 1) % 4], ring[i]);
        EmitTriangle(head, ring[i], ring[(i + 1) % 4]);
    }
#else
    for (int i = 0; i < 4; ++i) {
        EmitLine(tail, ring[i]);
        EmitLine(ring[i], ring[(i + 1) % 4]);
        EmitLine(ring[i], head);
    }
#endif
#endif
}
