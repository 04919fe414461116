#pragma once
// Draws a point cloud resource in one view area and turns the user's colour choice (material,
// normals, one of the cloud's colour sets, or one of its float properties through a colour
// map) into what the renderer shows.
//
// State record after the base one: u32 0, the style's block, u32 0, then u32 colour source,
// u32 colouring option, u32 data option, f32 correction, u32 colour map. Choices the cloud
// cannot honour (colours or data it does not have) fall back to the material colour.

#include <vexa/Export.h>
#include <vexa/Gadget.h>
#include <vexa/modules/ColoringChoice.h>

#include <vexa/draw/PointCloudStyle.h>

#include <tesk/ColorMap.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace vexa::modules {

class PointCloudResource;

class VEXA_API PointCloudGadget : public Gadget {
public:
    enum ColorSource : int { Material = 0, Normals = 1, Colors = 2, DataMapping = 3 };

    explicit PointCloudGadget(const PointCloudResource* resource);
    ~PointCloudGadget() override;

    void Initialize() override;
    void GenerateGui(GuiGenerator& generator) override;
    /// Frames the cloud: looks at its centre of mass from 2 radii away along (1, 1, 1) and
    /// sets near and far planes to its size.
    bool FocusCamera(glm::vec3& target, glm::vec3& position) const override;
    /// The point drawn under the pointer, while the cloud is shown in the view area.
    std::optional<PickHit> Pick(const PickRequest& request) const override;
    /// What a pick reports about point `index` at `position`: "<name> point <index> at
    /// (x, y, z)", then "; <set> (r, g, b)" for every colour set and "; <property> <value>"
    /// for every float property of the cloud.
    std::string DescribePoint(std::size_t index, const glm::vec3& position) const;

    /// Applies the colour source to the style (and the renderer's colours).
    void OnColorSourceChange();
    /// Hands the selected colour set to the renderer.
    void UpdateColors();
    /// Maps the selected float data through the colour map and hands the colours over.
    void UpdateDataMapping();

    const std::shared_ptr<draw::PointCloudStyle>& GetStyle() const { return style_; }
    int GetColorSource() const { return colorSource_; }
    int GetColoringOption() const { return choice_.coloringOption; }
    int GetDataOption() const { return choice_.dataOption; }
    float GetCorrection() const { return choice_.correction; }
    int GetColorMap() const { return choice_.colorMap; }
    void SetColorSource(int source) { colorSource_ = source; }
    void SetColoringOption(int option) { choice_.coloringOption = option; }
    void SetDataOption(int option) { choice_.dataOption = option; }
    void SetCorrection(float correction) { choice_.correction = correction; }
    void SetColorMap(int map) { choice_.colorMap = map; }

protected:
    bool ReadFromStream(std::istream& stream) override;
    void WriteToStream(std::ostream& stream) const override;

private:
    void AddGuiHeader(GuiGenerator& generator);
    void AddGuiColorSource(GuiGenerator& generator);
    void AddGuiDisplayNormals(GuiGenerator& generator);
    /// Shading of per-point colours and oriented discs, for clouds with normals.
    void AddGuiNormalUse(GuiGenerator& generator);
    /// Replaces choices the resource cannot honour by the material colour.
    void ValidateChoices();
    /// Whether the cloud's instance is in the view area's scene and not hidden.
    bool IsShown() const;

    const PointCloudResource* cloud_;
    std::shared_ptr<draw::PointCloudStyle> style_;
    int colorSource_ = Material;
    ColoringChoice choice_;
    bool stateRestored_ = false;
    int instance_ = 0;
    /// The normals flags (use, show) as the user left them, written to the state file even
    /// while this cloud, lacking normals, draws without them.
    std::pair<bool, bool> userNormals_{true, false};
};

} // namespace vexa::modules
