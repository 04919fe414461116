#pragma once
#include <vexa/draw/Style.h>

#include <cstddef>

namespace vexa::draw {

/// How an image is shown in its view. GUI check boxes and numeric fields link straight to
/// these fields.
///
/// Colour pipeline, per pixel: the sampled value (8-bit channels read as 0..1, float channels
/// as stored; gray images give the same value in red, green and blue) is transformed as
/// value * multiplier + offset for each channel when `colorTransformEnabled` is set, then the
/// channel mask applies, then everything is clamped to 0..1 (NaN shows as 0):
/// - a hidden red, green or blue channel shows as 0;
/// - a hidden alpha channel shows the image opaque;
/// - with only alpha shown, alpha is shown as an opaque gray image.
/// Where alpha is below 1 the image is drawn over a gray checkerboard.
class ImageStyle : public Style {
public:
    /// Nearest-neighbour sampling (sharp pixels when zoomed in) instead of linear.
    bool nearestFiltering = false;
    /// Scale the image to fill the view; otherwise one image pixel covers one window pixel.
    bool fitToViewport = true;
    /// With fitToViewport: scale uniformly and centre the image (letterbox) instead of
    /// stretching it over the whole view.
    bool keepAspectRatio = true;
    /// Swap left and right / top and bottom.
    bool mirrorX = false;
    bool mirrorY = false;

    /// Which channels are shown (a checkbox list "Red", "Green", "Blue", "Alpha" uses item
    /// ids 0..3, see GetChannelShown).
    bool showRed = true;
    bool showGreen = true;
    bool showBlue = true;
    bool showAlpha = true;

    /// Whether the multipliers and offsets below are applied. The image gadget's
    /// "Color Transformation" check box links to it, so hiding the fields also stops their
    /// effect; their values are kept for when it is set again.
    bool colorTransformEnabled = false;
    /// Per channel: shown = value * multiplier + offset, in units where 1 is full intensity
    /// (8-bit 255).
    float redMultiplier = 1.0f;
    float redOffset = 0.0f;
    float greenMultiplier = 1.0f;
    float greenOffset = 0.0f;
    float blueMultiplier = 1.0f;
    float blueOffset = 0.0f;
    float alphaMultiplier = 1.0f;
    float alphaOffset = 0.0f;

    /// The show flag of channel 0 (red) .. 3 (alpha); null for other indices.
    bool* GetChannelShown(std::size_t channel);
    const bool* GetChannelShown(std::size_t channel) const;

    /// Version 1: the display flags, the channel flags, colorTransformEnabled, the eight
    /// factors (red multiplier, red offset, green multiplier, ...), then the base style's
    /// block (visible and colour). Non-finite factors are refused.
    void WriteToStream(std::ostream& out) const override;
    bool ReadFromStream(std::istream& in) override;
};

} // namespace vexa::draw
