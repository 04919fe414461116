#pragma once
// A series of 2D points plotted as a line graph. Every SetData rebuilds the gadgets, which
// take a copy of the points for their own renderer.

#include <vexa/Export.h>
#include <vexa/Resource.h>

#include <glm/vec2.hpp>

#include <memory>
#include <string>
#include <vector>

namespace vexa::modules {

class VEXA_API GraphResource : public Resource {
public:
    /// An empty graph under `name`; resource type "GraphResource".
    explicit GraphResource(const std::string& name);

    std::shared_ptr<Gadget> CreateGadget() override;

    /// Plots `values` over x = 0, 1, 2, ... and rebuilds the gadgets.
    void SetData(const std::vector<float>& values);
    /// Plots `points` in their order and rebuilds the gadgets.
    void SetData(const std::vector<glm::vec2>& points);

    const std::vector<glm::vec2>& GetPoints() const { return points_; }

private:
    std::vector<glm::vec2> points_;
};

} // namespace vexa::modules
