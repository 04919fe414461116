#version 330 core
in vec2 vUv;
in vec4 vColor;

uniform sampler2D uAtlas;

out vec4 outColor;

void main()
{
    float coverage = texture(uAtlas, vUv).r;
    if (coverage <= 0.0)
        discard;
    outColor = vec4(vColor.rgb, vColor.a * coverage);
}
