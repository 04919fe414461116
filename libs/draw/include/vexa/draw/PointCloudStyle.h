#pragma once
// How a point cloud is drawn. GUI rows link straight to these fields (ints for choices,
// bools for check boxes, floats for numbers), so they stay plain members.

#include <vexa/draw/GeometryStyle.h>
#include <vexa/draw/Material.h>
#include <vexa/draw/Style.h>

namespace vexa::draw {

class PointCloudStyle : public Style {
public:
    static constexpr float kDefaultNormalLength = 0.005f;
    static constexpr float kMinPointSize = 1.0f;
    static constexpr float kMaxPointSize = 20.0f;

    /// The inherited `color` colours the normal lines (see showNormals).
    PointCloudStyle();

    /// Diameter of a point in window pixels (1..20; drawn clamped to that range).
    float pointSize = 3.0f;
    /// Hides points whose normal faces away from the camera (needs normals in use).
    bool cullBackFacing = false;
    /// ColorMode::Material (material colour), ColorMode::PerPoint (the renderer's SetColors
    /// colours; the material colour until some are set) or ColorMode::Normals (the normal
    /// mapped to RGB; the material colour when no normals are in use). Other values draw the
    /// material colour.
    int colorMode = ColorMode::Material;
    /// Colour of the points in material mode, and how every mode is lit: points are lit only
    /// when normals are in use and `material.useLighting` is set.
    Material material;
    /// Whether the renderer's normals are used at all (lighting, oriented discs, culling,
    /// normal colours, normal display). Owners switch it off for clouds without normals.
    bool useNormals = true;
    /// Draws a line from every point along its normal, `normalLength` long in model units,
    /// in the inherited `color`.
    bool showNormals = false;
    float normalLength = kDefaultNormalLength;
    /// Whether lighting also shades per-point colours. Off by default: those colours are the
    /// data (a scanner's colours, a data mapping), and shading would darken every point that
    /// faces away from the lights until the values cannot be read.
    bool shadeColors = false;
    /// Draws points that have normals as discs turned with their normal. Off by default,
    /// because discs seen edge-on thin out to a line; every point is then round.
    bool orientedDiscs = false;

    /// Version 2: point size, culling, colour mode, normals flag, normal display and length,
    /// the material's own block, visibility, colour, then colour shading and oriented discs.
    void WriteToStream(std::ostream& out) const override;
    /// Reads a whole block or nothing (version 1, which ends at the colour, keeps the last
    /// two fields as they are): a truncated block, an unknown version or colour mode,
    /// or a size that is not a positive number leaves the style unchanged (logged).
    bool ReadFromStream(std::istream& in) override;
};

} // namespace vexa::draw
