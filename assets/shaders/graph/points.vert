#version 330 core
// Graph markers: points given in the unit square of the plotted ranges.
layout(location = 0) in vec2 inPosition;

/// Unit square of the ranges to the plot area in clip space.
uniform mat4 uPlotToClip;
/// Marker diameter in framebuffer pixels.
uniform float uPointSize;

void main()
{
    gl_Position = uPlotToClip * vec4(inPosition, 0.0, 1.0);
    gl_PointSize = uPointSize;
}
