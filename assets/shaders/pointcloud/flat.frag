#version 330 core
// Cuts a point sprite to a round disc.
flat in vec3 vColor;

out vec4 outColor;

void main()
{
    vec2 d = gl_PointCoord * 2.0 - 1.0;
    if (dot(d, d) > 1.0)
        discard;
    outColor = vec4(vColor, 1.0);
}
