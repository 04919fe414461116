#version 330 core
// Round markers cut out of the square point sprites.
uniform vec3 uColor;

out vec4 outColor;

void main()
{
    vec2 fromCentre = gl_PointCoord * 2.0 - 1.0;
    if (dot(fromCentre, fromCentre) > 1.0)
        discard;
    outColor = vec4(uColor, 1.0);
}
