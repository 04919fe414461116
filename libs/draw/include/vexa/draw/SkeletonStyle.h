#pragma once
// How a skeleton is drawn. GUI rows link straight to these fields: the render mode is the
// index of the "Render Mode" droplist's item, the flags are check boxes.

#include <vexa/draw/Style.h>

#include <tesk/Color.h>

namespace vexa::draw {

/// Values are the droplist's item indices and are stored in state files: never renumber.
struct SkeletonRenderMode {
    enum : int { Octahedron = 0, WiredOctahedron = 1, Stickman = 2 };
};

/// Bones and joints take their own colours; the inherited colour is only carried along in
/// the stored block.
class SkeletonStyle : public Style {
public:
    int renderMode = SkeletonRenderMode::Octahedron;
    bool showJoints = true;
    bool enableLighting = true;
    bool showBasis = false;
    tesk::Color3f boneColor{0.82f, 0.80f, 0.74f};
    tesk::Color3f jointColor{0.95f, 0.55f, 0.15f};
    /// Width in pixels of wire edges, stick lines and joint axes.
    float lineWidth = 2.0f;

    /// Version 1: render mode, the three flags, bone and joint colours, line width, then
    /// the visibility and colour every style carries.
    void WriteToStream(std::ostream& out) const override;
    /// Changes nothing unless a whole version 1 block with a known render mode and a
    /// positive line width was read.
    bool ReadFromStream(std::istream& in) override;
};

} // namespace vexa::draw
