#version 330 core
in vec4 vColor;

uniform float uOpacity = 1.0;

out vec4 outColor;

void main()
{
    outColor = vec4(vColor.rgb, vColor.a * uOpacity);
}
