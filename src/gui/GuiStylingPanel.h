#pragma once
// The sidebar panel of one resource in one view area. The resource's gadget fills it through
// the panel's own generator, which reports every change under the resource's id.

#include "gui/GuiPanel.h"

#include <vexa/ResourceId.h>

#include <memory>

namespace vexa {

class GuiGenerator;

class GuiStylingPanel : public GuiPanel {
public:
    explicit GuiStylingPanel(const ResourceId& id);
    ~GuiStylingPanel() override;

    const ResourceId& GetResourceId() const { return id_; }
    GuiGenerator& GetGenerator() { return *generator_; }
    /// The selected resource's panel: blue header and the pin that deselects it.
    void SetHighlighted(bool highlighted);
    bool IsHighlighted() const { return highlighted_; }

private:
    ResourceId id_;
    std::unique_ptr<GuiGenerator> generator_;
    bool highlighted_ = false;
};

} // namespace vexa
