#include <vexa/modules/GraphResource.h>

#include <vexa/modules/GraphGadget.h>

namespace vexa::modules {

GraphResource::GraphResource(const std::string& name) : Resource(name, "GraphResource") {}

std::shared_ptr<Gadget> GraphResource::CreateGadget()
{
    return std::make_shared<GraphGadget>(this);
}

void GraphResource::SetData(const std::vector<float>& values)
{
    // Reuses the capacity: hosts call this every few frames with a series that only grows.
    points_.clear();
    points_.reserve(values.size());
    // A float counter, not a converted index: x is a float in the plot anyway, and counting
    // in it keeps the positions the renderer sees identical to what the host would compute.
    float x = 0.0f;
    for (float value : values) {
        points_.emplace_back(x, value);
        x += 1.0f;
    }
    ResetGadgets();
}

void GraphResource::SetData(const std::vector<glm::vec2>& points)
{
    points_.assign(points.begin(), points.end());
    ResetGadgets();
}

} // namespace vexa::modules
