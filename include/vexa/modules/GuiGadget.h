#pragma once
// Shows a GUI resource's window tree in the view area's sidebar panel. It draws nothing and
// keeps no state: the host's widgets are the host's.

#include <vexa/Export.h>
#include <vexa/Gadget.h>
#include <vexa/modules/GuiResource.h>

#include <memory>

namespace vexa::modules {

class VEXA_API GuiGadget : public Gadget {
public:
    explicit GuiGadget(const GuiResource* resource);
    ~GuiGadget() override;

    void Initialize() override;
    /// Lets go of the window tree, so that another view area's panel may hold it.
    void Terminate() override;
    /// A row holding the resource's window, when no other view area holds it.
    void GenerateGui(GuiGenerator& generator) override;
    /// Whether this gadget's panel holds the window tree.
    bool IsHolding() const;

private:
    void Release();

    std::shared_ptr<GuiResource::Holder> holder_;
};

} // namespace vexa::modules
