#pragma once
// The sidebar's "Global Options" panel: background, mouse sensitivity, optimised rendering,
// shortcuts and anti-aliasing, plus the layout chooser and a shader reload. It holds no
// values of its own: every row starts from the engine's general options (or the render
// system) and writes straight back, marking options.bin for saving.

#include "gui/GuiPanel.h"

#include <memory>

namespace vexa {

class GeneralOptions;
class GuiGenerator;

namespace gui {
class Checkbox;
class Droplist;
class SlidingFloat;
} // namespace gui

class GuiGlobalOptions : public GuiPanel {
public:
    /// `options` must outlive the panel.
    explicit GuiGlobalOptions(GeneralOptions& options);
    ~GuiGlobalOptions() override;

    GuiGenerator& GetGenerator() { return *generator_; }

    /// The drop list's items, in the render system's order of anti-aliasing methods.
    static constexpr const char* kAntiAliasingNames[] = {"Off",     "MSAA 2x",  "MSAA 4x",
                                                         "MSAA 8x", "MSAA 16x", "FXAA"};

private:
    GeneralOptions& options_;
    std::unique_ptr<GuiGenerator> generator_;
};

} // namespace vexa
