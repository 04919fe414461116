#version 330 core
// One line per point along its normal, `uLength` world units long. Points with non-finite
// data or a zero normal draw nothing, and with culling neither do those facing away.
layout(points) in;
layout(line_strip, max_vertices = 2) out;

in vec3 vWorldPosition[];
in vec3 vWorldNormal[];

uniform mat4 uViewProjection;
uniform vec3 uCameraPosition;
uniform bool uCullBackFacing;
uniform float uLength;

bool IsFinite(vec3 v)
{
    return !any(isnan(v)) && !any(isinf(v));
}

void main()
{
    vec3 origin = vWorldPosition[0];
    vec3 normal = vWorldNormal[0];
    if (!IsFinite(origin) || !IsFinite(normal))
        return;
    float len = length(normal);
    if (len < 1e-20)
        return;
    if (uCullBackFacing && dot(normal, uCameraPosition - origin) < 0.0)
        return;
    gl_Position = uViewProjection * vec4(origin, 1.0);
    EmitVertex();
    gl_Position = uViewProjection * vec4(origin + normal / len * uLength, 1.0);
    EmitVertex();
    EndPrimitive();
}
