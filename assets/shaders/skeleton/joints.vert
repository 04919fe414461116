#version 330 core
// Joints as round point sprites the size of a sphere of the joint's radius (at least
// uMinPointSize pixels, so that distant joints stay visible).
layout(location = 0) in vec3 inPosition;
layout(location = 1) in float inRadius;

uniform mat4 uModel;
uniform mat4 uView;
uniform mat4 uProjection;
uniform float uModelScale = 1.0;
uniform float uViewportHeight = 1.0;
uniform float uMinPointSize = 6.0;
uniform float uMaxPointSize = 64.0;

out vec3 vViewCenter;
out float vRadius;

void main()
{
    vec4 view = uView * uModel * vec4(inPosition, 1.0);
    float radius = inRadius * uModelScale;
    vec4 centre = uProjection * view;
    vec4 top = uProjection * (view + vec4(0.0, radius, 0.0, 0.0));
    // Diameter in pixels: twice the radius in device units times half the viewport height.
    float size = centre.w > 0.0 && top.w > 0.0 ? abs(top.y / top.w - centre.y / centre.w) * uViewportHeight : 0.0;
    float pointSize = clamp(size, uMinPointSize, uMaxPointSize);
    gl_PointSize = pointSize;
    // A sprite clamped to another size stands for a sphere of that size.
    vRadius = size > 1e-6 ? radius * pointSize / size : 0.0;
    vViewCenter = view.xyz;
    gl_Position = centre;
}
