#include <vexa/modules/GraphGadget.h>

#include <vexa/GuiGenerator.h>
#include <vexa/gui/Elements.h>
#include <vexa/modules/GraphResource.h>

#include <vexa/draw/GraphRenderer.h>
#include <vexa/draw/GraphStyle.h>

namespace vexa::modules {

GraphGadget::GraphGadget(const GraphResource* resource)
    : Gadget(resource), graph_(resource), style_(std::make_shared<draw::GraphStyle>())
{
}

GraphGadget::~GraphGadget() = default;

void GraphGadget::Initialize()
{
    LoadState();
    Gadget::Initialize();
    // The renderer copies the points (into the unit square of their ranges), so the
    // resource may replace its own at any time.
    renderer_ = graph_ != nullptr ? std::make_shared<draw::GraphRenderer>(graph_->GetPoints())
                                  : std::make_shared<draw::GraphRenderer>();
    AddRenderer(renderer_, style_, 0);
}

void GraphGadget::GenerateGui(GuiGenerator& generator)
{
    Gadget::GenerateGui(generator);
    if (!IsInitialized())
        return;
    if (gui::SlidingInt* width = generator.AddSlidingInt("Line width"))
        width->SetMinMax(1, 8)->SetLink(&style_->lineWidth);
    if (gui::NumericInt* size = generator.AddNumericInt("Point size"))
        size->SetMinMax(0, draw::GraphStyle::kMaxPointSize)->SetLink(&style_->pointSize);
}

bool GraphGadget::ReadFromStream(std::istream& stream)
{
    if (!Gadget::ReadFromStream(stream))
        return false;
    draw::GraphStyle style = *style_;
    if (!ReadStyleRecord(stream, style))
        return false;
    *style_ = style;
    return true;
}

void GraphGadget::WriteToStream(std::ostream& stream) const
{
    Gadget::WriteToStream(stream);
    WriteStyleRecord(stream, *style_);
}

} // namespace vexa::modules
