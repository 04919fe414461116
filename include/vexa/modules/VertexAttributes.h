#pragma once
// What point clouds and meshes keep of their vertices besides the positions: the space the
// coordinates are given in, what was subtracted from far coordinates, copies of the colour
// sets and float data that gadgets turn into colours on demand, and how a view area's gadget
// starts colouring them.

#include <vexa/Export.h>
#include <vexa/modules/ColoringChoice.h>
#include <vexa/modules/ColoringData.h>

#include <tesk/Color.h>
#include <tesk/PointCloud.h>

#include <runa/SpaceDefinition.h>

#include <glm/ext/vector_double3.hpp>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace vexa::modules {

class VEXA_API VertexAttributes {
public:
    /// One float property of the vertices with its range (see ColoringData).
    using DataRecord = ColoringData::DataRecord;

    bool IsColoringAvailable() const { return coloring_.IsColoringAvailable(); }
    bool HasFloatData() const { return coloring_.HasFloatData(); }
    bool IsFDataAvailable() const { return coloring_.HasFloatData(); }
    const std::vector<std::string>& GetColoringNames() const { return coloring_.GetColoringNames(); }
    const std::vector<std::string>& GetFDataNames() const { return coloring_.GetFDataNames(); }
    /// Throws std::out_of_range past the end.
    const ColoringData::ColorSet& GetColoringOption(std::size_t index) const
    {
        return coloring_.GetColoringOption(index);
    }
    /// Throws std::out_of_range past the end.
    const DataRecord& GetFDataOption(std::size_t index) const { return coloring_.GetFDataOption(index); }
    const ColoringData& GetColoringData() const { return coloring_; }

    const std::optional<runa::SpaceDefinition>& GetSpace() const { return space_; }
    /// The space's name, "N/A" without one.
    std::string GetSpaceId() const { return space_ ? space_->name : std::string("N/A"); }
    /// What was subtracted from the file's coordinates (tesk::PointCloud::GetOriginOffset).
    const glm::dvec3& GetOriginOffset() const { return originOffset_; }

    /// How a view area that has no saved settings of this kind yet starts colouring these
    /// vertices: a colour source of the resource's gadget, the colour set or data index it
    /// uses, and the tesk::ColorMap a data mapping starts with. Without a preference, and as
    /// soon as the user has chosen in that view area, the saved choice rules.
    void SetPreferredColorSource(int source, int option = 0, int colorMap = 5)
    {
        preference_ = {source, option, colorMap};
    }
    const ColoringPreference& GetColoringPreference() const { return preference_; }

protected:
    VertexAttributes() = default;
    ~VertexAttributes() = default;
    VertexAttributes(const VertexAttributes&) = default;
    VertexAttributes& operator=(const VertexAttributes&) = default;

    /// Takes everything above from `vertices` anew (the preference stays).
    void StoreAttributes(const tesk::PointCloud& vertices)
    {
        space_ = vertices.GetSpace();
        originOffset_ = vertices.GetOriginOffset();
        coloring_.Store(vertices, vertices.Size());
    }

private:
    std::optional<runa::SpaceDefinition> space_;
    glm::dvec3 originOffset_{0.0};
    ColoringData coloring_;
    ColoringPreference preference_;
};

} // namespace vexa::modules
