#version 330 core
// Glyph quads in framebuffer pixels from the viewport's top-left corner.
layout(location = 0) in vec2 inPosition;
layout(location = 1) in vec2 inAtlasTexel;
layout(location = 2) in vec4 inColor;

uniform vec2 uViewportSize;
uniform sampler2D uAtlas;

out vec2 vUv;
out vec4 vColor;

void main()
{
    // Texel coordinates are normalised here because the atlas may have grown since the
    // quads were laid out.
    vUv = inAtlasTexel / vec2(textureSize(uAtlas, 0));
    vColor = inColor;
    vec2 ndc = inPosition / uViewportSize * 2.0 - 1.0;
    gl_Position = vec4(ndc.x, -ndc.y, 0.0, 1.0);
}
