#pragma once
// Draws a mesh resource in one view area with the geometry controls (render mode, material,
// matcap, culling, normals) and the mesh's own colour sources: vertex colour sets, float data
// through a colour map, a checker over the UVs and the material's albedo texture.
//
// The state record is the geometry gadget's; the colour choice starts anew with every gadget.

#include <vexa/Export.h>
#include <vexa/modules/ColoringChoice.h>
#include <vexa/modules/GeometryGadget.h>

#include <memory>

namespace vexa::modules {

class MeshResource;

class VEXA_API MeshGadget : public GeometryGadget {
public:
    enum ColorSource : int {
        Material = 0,
        Normals = 1,
        VertexColors = 2,
        FloatDataMapping = 3,
        Checker = 4,
        AlbedoTexture = 5,
    };

    explicit MeshGadget(const MeshResource* resource);
    ~MeshGadget() override;

    void Initialize() override;
    void GenerateGui(GuiGenerator& generator) override;
    /// Looks at the mesh's centre from its camera position; the clipping planes stay.
    bool FocusCamera(glm::vec3& target, glm::vec3& position) const override;

    /// Applies the colour source to the style (and the renderer's colours).
    void OnColorSourceChange();
    /// Hands the selected vertex colour set to the renderer.
    void UpdateColors();
    /// Maps the selected float data through the colour map and hands the colours over.
    void UpdateDataMapping();

    /// Whether the mesh offers `source` (the droplist lists only those).
    bool IsColorSourceOffered(int source) const;

    int GetColorSource() const { return colorSource_; }
    void SetColorSource(int source) { colorSource_ = source; }
    const ColoringChoice& GetColoringChoice() const { return choice_; }
    ColoringChoice& GetColoringChoice() { return choice_; }

protected:
    // The spelling is kept: derived gadgets of hosts call it by this name.
    void AddGuiMeshSolorSource(GuiGenerator& generator);
    void AddGuiPanelColoring(GuiGenerator& generator);
    void AddGuiPanelFloatMapping(GuiGenerator& generator);

private:
    const MeshResource* mesh_;
    int colorSource_ = Material;
    ColoringChoice choice_;
};

} // namespace vexa::modules
