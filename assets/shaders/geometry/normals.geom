#version 330 core
// One line per vertex along its normal, or with FACE_NORMALS one per triangle from its
// centre along the face's normal (counter-clockwise front). Lengths are in world units.
#ifdef FACE_NORMALS
layout(triangles) in;
#else
layout(points) in;
#endif
layout(line_strip, max_vertices = 2) out;

in vec3 vWorldPosition[];
in vec3 vWorldNormal[];

uniform mat4 uViewProjection;
uniform float uLength;

void main()
{
#ifdef FACE_NORMALS
    vec3 origin = (vWorldPosition[0] + vWorldPosition[1] + vWorldPosition[2]) / 3.0;
    vec3 normal = cross(vWorldPosition[1] - vWorldPosition[0], vWorldPosition[2] - vWorldPosition[0]);
#else
    vec3 origin = vWorldPosition[0];
    vec3 normal = vWorldNormal[0];
#endif
    float len = length(normal);
    if (len < 1e-20)
        return;
    gl_Position = uViewProjection * vec4(origin, 1.0);
    EmitVertex();
    gl_Position = uViewProjection * vec4(origin + normal / len * uLength, 1.0);
    EmitVertex();
    EndPrimitive();
}
