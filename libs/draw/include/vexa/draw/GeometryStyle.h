#pragma once
// The style of surface-like content: built-in shapes and meshes. GUI rows link directly to
// these fields, so mode fields are plain ints carrying the values below.

#include <vexa/draw/Material.h>
#include <vexa/draw/Palette.h>
#include <vexa/draw/Style.h>

#include <memory>

namespace plor {
class Texture;
}

namespace vexa::draw {

struct RenderMode {
    enum : int { Points = 0, Wires = 1, PointsAndWires = 2, Solid = 3, SolidAndWires = 4 };
};

struct NormalsSource {
    enum : int { Flat = 0, Point = 1, NormalMap = 2 };
};

/// Where the surface colour comes from. 3 is the per-point colour set by the renderer's
/// owner (point clouds, mesh vertex colours); the gaps are intended.
struct ColorMode {
    enum : int { Material = 0, PerPoint = 3, Normals = 4, Checker = 5, Texture = 6 };
};

class GeometryStyle : public Style {
public:
    int renderMode = RenderMode::Solid;
    int normalsSource = NormalsSource::Point;
    float pointSize = 4.0f;
    bool cullBackFacing = false;
    float wireThickness = 1.0f;
    tesk::Color3f wireColor{0.1f, 0.1f, 0.1f};
    bool showNormals = false;
    float normalLength = 0.1f;
    tesk::Color3f normalColor = palette::kNormals;
    int colorMode = ColorMode::Material;
    Material material;

    bool useMatcap = false;
    std::shared_ptr<plor::Texture> matcap;
    std::shared_ptr<plor::Texture> albedoTexture;
    std::shared_ptr<plor::Texture> normalMap;
    bool HasNormalMap() const { return normalMap != nullptr; }

    /// Version 1: the mode fields, sizes, flags, colours and the material. Textures are
    /// not part of the block: their owners restore them.
    void WriteToStream(std::ostream& out) const override;
    bool ReadFromStream(std::istream& in) override;
};

} // namespace vexa::draw
