#pragma once
// Draws a built-in shape in one view area and builds the controls every surface-like gadget
// shares (render mode, normals, point size, culling, wires, normal display, colour source,
// material and matcap), so that the mesh and scan gadgets can reuse them piece by piece.
//
// State record after the base one: u32 0, the style's block, u32 1, u32 matcap index.

#include <vexa/Export.h>
#include <vexa/Gadget.h>

#include <vexa/draw/GeometryStyle.h>

#include <memory>
#include <string>
#include <vector>

namespace vexa::draw {
class GeometryRenderer;
class Renderer;
} // namespace vexa::draw

namespace vexa::modules {

class VEXA_API GeometryGadget : public Gadget {
public:
    /// The matcap chosen until the user picks another one.
    static constexpr int kDefaultMatcapIndex = 5;

    GeometryGadget(const Resource* resource, std::shared_ptr<draw::Renderer> renderer);
    ~GeometryGadget() override;

    void Initialize() override;
    void GenerateGui(GuiGenerator& generator) override;
    /// Frames the shape as it is placed by the style's transform, like a point cloud of the
    /// same size would be framed.
    bool FocusCamera(glm::vec3& target, glm::vec3& position) const override;

    const std::shared_ptr<draw::GeometryStyle>& GetStyle() const { return style_; }
    const std::shared_ptr<draw::Renderer>& GetRenderer() const { return renderer_; }
    /// The matcap index that the next panel selects (and the state file keeps).
    int GetMatcapIndex() const { return matcapIndex_; }

    /// The ".png" files of the asset directory's "matcaps/" folder, by name without the
    /// extension, sorted; empty when the folder is missing.
    static std::vector<std::string> ListMatcaps();

protected:
    bool ReadFromStream(std::istream& stream) override;
    void WriteToStream(std::ostream& stream) const override;

    void AddGuiRenderMode(GuiGenerator& generator);
    // The spelling is kept: derived gadgets of hosts call it by this name.
    void AddGuiCullBackFacning(GuiGenerator& generator);
    void AddGuiWireParameters(GuiGenerator& generator);
    void AddGuiDisplayNormals(GuiGenerator& generator);
    void AddGuiColorSource(GuiGenerator& generator);
    void AddGuiMaterialOptions(GuiGenerator& generator);
    void AddGuiMatcapSelector(GuiGenerator& generator);
    /// Gives the style the matcap named `name` (file "matcaps/<name>.png" of the asset
    /// directory); an empty name or a missing file leaves the style without one.
    void LoadMatcapSampler(const std::string& name);

private:
    std::shared_ptr<draw::Renderer> renderer_;
    std::shared_ptr<draw::GeometryStyle> style_;
    // The droplist itself belongs to the panel's generator, which a sidebar rebuild destroys;
    // the gadget keeps only the choice.
    int matcapIndex_ = kDefaultMatcapIndex;
};

} // namespace vexa::modules
