#pragma once
// Plots a graph resource in one view area with a renderer of its own (made from a copy of
// the points when the gadget is built) and offers line width and marker size.
//
// State record after the base one: u32 0, the graph style's block.

#include <vexa/Export.h>
#include <vexa/Gadget.h>

#include <memory>

namespace vexa::draw {
class GraphRenderer;
class GraphStyle;
} // namespace vexa::draw

namespace vexa::modules {

class GraphResource;

class VEXA_API GraphGadget : public Gadget {
public:
    explicit GraphGadget(const GraphResource* resource);
    ~GraphGadget() override;

    void Initialize() override;
    void GenerateGui(GuiGenerator& generator) override;

    const std::shared_ptr<draw::GraphStyle>& GetStyle() const { return style_; }
    /// Null until Initialize.
    const std::shared_ptr<draw::GraphRenderer>& GetRenderer() const { return renderer_; }

protected:
    bool ReadFromStream(std::istream& stream) override;
    void WriteToStream(std::ostream& stream) const override;

private:
    const GraphResource* graph_;
    std::shared_ptr<draw::GraphStyle> style_;
    std::shared_ptr<draw::GraphRenderer> renderer_;
};

} // namespace vexa::modules
