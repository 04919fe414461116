#version 330 core
// Fast approximate anti-aliasing over a finished frame, in the manner of FXAA 3.11 "quality":
// find pixels on a luma edge, decide whether the edge runs horizontally or vertically, walk
// along it to both ends, and sample across the edge by how far the pixel is from the nearer
// end. A sub-pixel term softens single-pixel features the walk cannot see.
in vec2 vUv;

uniform sampler2D uSource;
/// 1 / size of the source in pixels.
uniform vec2 uTexelSize;

out vec4 outColor;

const float kEdgeThreshold = 0.125;     // relative contrast that counts as an edge
const float kEdgeThresholdMin = 0.0312; // ignores contrast in very dark areas
const float kSubpixelQuality = 0.75;
const int kSearchSteps = 10;
const float kStepSizes[kSearchSteps] = float[](1.0, 1.0, 1.0, 1.0, 1.5, 2.0, 2.0, 2.0, 4.0, 8.0);

// Perceived brightness, roughly gamma corrected so dark edges are found too.
float Luma(vec3 color)
{
    return sqrt(dot(color, vec3(0.299, 0.587, 0.114)));
}

float LumaAt(vec2 uv)
{
    return Luma(textureLod(uSource, uv, 0.0).rgb);
}

// Texel offsets must be constant expressions, so this cannot be a function.
#define LUMA_OFFSET(x, y) Luma(textureLodOffset(uSource, vUv, 0.0, ivec2(x, y)).rgb)

void main()
{
    vec3 colorM = textureLod(uSource, vUv, 0.0).rgb;
    float lumaM = Luma(colorM);
    float lumaN = LUMA_OFFSET(0, 1);
    float lumaS = LUMA_OFFSET(0, -1);
    float lumaE = LUMA_OFFSET(1, 0);
    float lumaW = LUMA_OFFSET(-1, 0);

    float lumaMax = max(lumaM, max(max(lumaN, lumaS), max(lumaE, lumaW)));
    float lumaMin = min(lumaM, min(min(lumaN, lumaS), min(lumaE, lumaW)));
    float range = lumaMax - lumaMin;
    if (range < max(kEdgeThresholdMin, lumaMax * kEdgeThreshold)) {
        outColor = vec4(colorM, 1.0);
        return;
    }

    float lumaNE = LUMA_OFFSET(1, 1);
    float lumaNW = LUMA_OFFSET(-1, 1);
    float lumaSE = LUMA_OFFSET(1, -1);
    float lumaSW = LUMA_OFFSET(-1, -1);

    float lumaNS = lumaN + lumaS;
    float lumaWE = lumaW + lumaE;
    float lumaWest = lumaNW + lumaSW;
    float lumaEast = lumaNE + lumaSE;
    float lumaNorth = lumaNW + lumaNE;
    float lumaSouth = lumaSW + lumaSE;

    // Second differences across rows and columns: a horizontal edge changes along y.
    float edgeHorizontal = abs(lumaWest - 2.0 * lumaW) + 2.0 * abs(lumaNS - 2.0 * lumaM) + abs(lumaEast - 2.0 * lumaE);
    float edgeVertical = abs(lumaSouth - 2.0 * lumaS) + 2.0 * abs(lumaWE - 2.0 * lumaM) + abs(lumaNorth - 2.0 * lumaN);
    bool horizontal = edgeHorizontal >= edgeVertical;

    // Which neighbour across the edge differs most: the edge lies between it and this pixel.
    float luma1 = horizontal ? lumaS : lumaW;
    float luma2 = horizontal ? lumaN : lumaE;
    float gradient1 = luma1 - lumaM;
    float gradient2 = luma2 - lumaM;
    bool negative = abs(gradient1) >= abs(gradient2);
    float gradientScaled = 0.25 * max(abs(gradient1), abs(gradient2));

    float stepLength = horizontal ? uTexelSize.y : uTexelSize.x;
    float lumaLocalAverage;
    if (negative) {
        stepLength = -stepLength;
        lumaLocalAverage = 0.5 * (luma1 + lumaM);
    } else {
        lumaLocalAverage = 0.5 * (luma2 + lumaM);
    }

    // Walk along the edge (between the two rows or columns) in both directions until the
    // luma no longer matches the edge's average.
    vec2 uvEdge = vUv;
    if (horizontal)
        uvEdge.y += 0.5 * stepLength;
    else
        uvEdge.x += 0.5 * stepLength;
    vec2 along = horizontal ? vec2(uTexelSize.x, 0.0) : vec2(0.0, uTexelSize.y);

    vec2 uv1 = uvEdge - along * kStepSizes[0];
    vec2 uv2 = uvEdge + along * kStepSizes[0];
    float lumaEnd1 = LumaAt(uv1) - lumaLocalAverage;
    float lumaEnd2 = LumaAt(uv2) - lumaLocalAverage;
    bool reached1 = abs(lumaEnd1) >= gradientScaled;
    bool reached2 = abs(lumaEnd2) >= gradientScaled;
    for (int i = 1; i < kSearchSteps && !(reached1 && reached2); ++i) {
        if (!reached1) {
            uv1 -= along * kStepSizes[i];
            lumaEnd1 = LumaAt(uv1) - lumaLocalAverage;
            reached1 = abs(lumaEnd1) >= gradientScaled;
        }
        if (!reached2) {
            uv2 += along * kStepSizes[i];
            lumaEnd2 = LumaAt(uv2) - lumaLocalAverage;
            reached2 = abs(lumaEnd2) >= gradientScaled;
        }
    }

    float distance1 = horizontal ? (vUv.x - uv1.x) : (vUv.y - uv1.y);
    float distance2 = horizontal ? (uv2.x - vUv.x) : (uv2.y - vUv.y);
    bool nearer1 = distance1 < distance2;
    float distanceNearest = min(distance1, distance2);
    float edgeLength = distance1 + distance2;
    float pixelOffset = 0.5 - distanceNearest / edgeLength;

    // Only blend when the nearer end bends away from this pixel's side of the edge;
    // otherwise this pixel lies outside the staircase step.
    bool centreDarker = lumaM < lumaLocalAverage;
    bool endDarker = (nearer1 ? lumaEnd1 : lumaEnd2) < 0.0;
    float edgeOffset = (endDarker != centreDarker) ? pixelOffset : 0.0;

    // Sub-pixel aliasing: contrast of the pixel against its 3x3 neighbourhood's average.
    float average = (2.0 * (lumaNS + lumaWE) + lumaWest + lumaEast) / 12.0;
    float subpixel = clamp(abs(average - lumaM) / range, 0.0, 1.0);
    subpixel = (-2.0 * subpixel + 3.0) * subpixel * subpixel;
    float subpixelOffset = subpixel * subpixel * kSubpixelQuality;

    float offset = max(edgeOffset, subpixelOffset);
    vec2 uvFinal = vUv;
    if (horizontal)
        uvFinal.y += offset * stepLength;
    else
        uvFinal.x += offset * stepLength;
    outColor = vec4(textureLod(uSource, uvFinal, 0.0).rgb, 1.0);
}
