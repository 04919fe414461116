#version 330 core
// Cuts a point sprite to the disc the point stands for, seen from the eye: round when it
// faces the camera (or has no normal), an ellipse as it turns away.
in PointData
{
    vec3 color;
    vec2 tilt;
    flat int hidden;
}
fIn;

out vec4 outColor;

void main()
{
    if (fIn.hidden != 0)
        discard;
    // Sprite coordinates with x right and y up, -1..1 across the point.
    vec2 d = vec2(gl_PointCoord.x * 2.0 - 1.0, 1.0 - gl_PointCoord.y * 2.0);
    // Lifted onto the plane of the disc, the pixel must lie within radius 1.
    float depth = dot(fIn.tilt, d);
    if (dot(d, d) + depth * depth > 1.0)
        discard;
    outColor = vec4(fIn.color, 1.0);
}
