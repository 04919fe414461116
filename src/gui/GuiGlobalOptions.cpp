#include "gui/GuiGlobalOptions.h"

#include "core/EngineServices.h"
#include "core/GeneralOptions.h"

#include <vexa/GuiGenerator.h>
#include <vexa/gui/Elements.h>

#include <vexa/draw/RenderSystem.h>

#include <CEGUI/widgets/ToggleButton.h>

#include <iterator>

namespace vexa {

GuiGlobalOptions::GuiGlobalOptions(GeneralOptions& options) : options_(options)
{
    SetTitle("Global Options");
    SetClientLayout("");
    // No resource id: a change here is not a resource's GUI value and raises no notification.
    // The generator keeps its layout paused until all rows are in.
    generator_ = std::make_unique<GuiGenerator>(GetClientWindow());
    GuiGenerator& gen = *generator_;

    // The checkboxes span the whole row: nothing stands beside them, and "Optimized
    // rendering" does not fit into the half row a checkbox gets by default.
    const auto wide = [](gui::Checkbox* box) {
        box->GetWidget()->setWidth(CEGUI::UDim(1, 0));
        return box;
    };
    wide(gen.AddCheckbox("White background"))
        ->Set(options_.IsWhiteBackground())
        // Stores, recolours through the render system's hook and marks the options only when
        // the flag really changes.
        ->Subscribe([this](const gui::Checkbox* box) { options_.SetWhiteBackground(box->Get()); });

    gen.AddSlidingFloat("Mouse sensitivity")
        ->Set(GeneralOptions::ToStoredSensitivity(options_.GetSensitivity()))
        ->Subscribe([this](const gui::SlidingFloat* slider) {
            options_.SetStoredSensitivity(slider->Get());
            // Counts as a change even when the slider came back to the stored value.
            options_.SetDirty();
        });

    wide(gen.AddCheckbox("Optimized rendering"))
        ->Set(options_.IsOptimizedRendering())
        ->Subscribe([this](const gui::Checkbox* box) { options_.SetOptimizedRendering(box->Get()); });

    wide(gen.AddCheckbox("Enable Shortcuts"))
        ->Set(options_.IsShortcutsEnabled())
        ->Subscribe([this](const gui::Checkbox* box) { options_.SetShortcutsEnabled(box->Get()); });

    gui::Droplist* antiAliasing = gen.AddDroplist("Anti-aliasing");
    for (int method = 0; method < static_cast<int>(std::size(kAntiAliasingNames)); ++method)
        antiAliasing->AddItem(kAntiAliasingNames[method], method);
    // The render system is what is drawn with; the options only follow it.
    const draw::RenderSystem* renderSystem = GetEngineServices().GetRenderSystem();
    antiAliasing->Set(renderSystem != nullptr ? static_cast<int>(renderSystem->GetAntiAliasingMethod())
                                              : options_.GetAntiAliasing());
    antiAliasing->Subscribe([this](const gui::Droplist* list) {
        const int method = list->Get();
        if (method < 0)
            return;
        // Through the options' hook, which sets the render system's method.
        options_.SetAntiAliasing(method);
        options_.SetDirty();
    });

    // A single backslash before the bracket is CEGUI's escape that prints the bracket.
    gen.AddButton("Select layout \\[Tab]")->Subscribe([](const gui::Button*) {
        GetEngineServices().ShowLayoutChooser();
    });
    gen.AddButton("Reload shaders \\[R]")->Subscribe([](const gui::Button*) {
        GetEngineServices().RequestShaderReload();
    });

    gen.SetAutoTestConditionsEnabled(true);
    gen.TestElementConditions();
}

GuiGlobalOptions::~GuiGlobalOptions()
{
    // The rows' elements go before the windows they watch.
    generator_.reset();
}

} // namespace vexa
