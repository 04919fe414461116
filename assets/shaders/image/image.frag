#version 330 core
in vec2 vTexCoord;

uniform sampler2D uImage;
/// value * multiplier + offset per channel (identity when the transform is off).
uniform vec4 uMultiplier;
uniform vec4 uOffset;
/// 1 for shown channels, 0 for hidden ones.
uniform vec4 uChannelMask;
/// Only alpha is shown: present it as a gray image.
uniform int uAlphaAsGray;
/// Checkerboard cell size in framebuffer pixels.
uniform float uCheckerCell;

out vec4 outColor;

float Finite(float v)
{
    return isnan(v) ? 0.0 : v;
}

void main()
{
    vec4 value = texture(uImage, vTexCoord) * uMultiplier + uOffset;
    value = clamp(vec4(Finite(value.r), Finite(value.g), Finite(value.b), Finite(value.a)), 0.0, 1.0);

    if (uAlphaAsGray != 0) {
        outColor = vec4(vec3(value.a), 1.0);
        return;
    }
    vec3 rgb = value.rgb * uChannelMask.rgb;
    float alpha = uChannelMask.a > 0.5 ? value.a : 1.0;

    // Transparent parts show a checkerboard rather than whatever was drawn before.
    vec2 cell = floor(gl_FragCoord.xy / uCheckerCell);
    float checker = mod(cell.x + cell.y, 2.0) < 0.5 ? 0.62 : 0.38;
    outColor = vec4(mix(vec3(checker), rgb, alpha), 1.0);
}
