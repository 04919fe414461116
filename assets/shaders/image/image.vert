#version 330 core
// A screen-aligned quad made from the vertex index alone (draw 4 vertices as a strip), so
// the image needs no vertex buffer.

/// The image's corners in normalised device coordinates: left, top, right, bottom.
uniform vec4 uRect;
/// 1 flips the texture horizontally (x) / vertically (y).
uniform vec2 uMirror;

out vec2 vTexCoord;

void main()
{
    // (0, 0) is the image's top-left corner; texture row 0 is the image's top row.
    vec2 corner = vec2(float(gl_VertexID & 1), float(gl_VertexID >> 1));
    vTexCoord = mix(corner, 1.0 - corner, uMirror);
    gl_Position = vec4(mix(uRect.xy, uRect.zw, corner), 0.0, 1.0);
}
