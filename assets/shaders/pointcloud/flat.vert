#version 330 core
// Points of a cloud without normals in use, the usual case for big scans: nothing to light or
// orient, so a point is only its place and its colour. The vertex stage runs once per point,
// so it holds no branch on settings; the per-point colour is a variant of its own.
layout(location = 0) in vec3 inPosition;
#ifdef PER_POINT_COLOR
layout(location = 2) in vec3 inColor;
#endif

uniform mat4 uClipFromModel;
uniform float uPointSize;
uniform vec3 uBaseColor;

flat out vec3 vColor;

void main()
{
#ifdef PER_POINT_COLOR
    vColor = inColor;
#else
    vColor = uBaseColor;
#endif
    gl_PointSize = uPointSize;
    // A point with a non-finite coordinate goes outside the clip volume.
    bool finite = !any(isnan(inPosition)) && !any(isinf(inPosition));
    gl_Position = finite ? uClipFromModel * vec4(inPosition, 1.0) : vec4(2.0, 2.0, 2.0, 1.0);
}
