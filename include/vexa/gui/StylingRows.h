#pragma once
// The styling rows that recur in many gadgets' panels: an RGB colour, a lighting material and
// a colour-map choice. The rows are linked to the caller's fields, which must outlive the
// generator.

#include <vexa/Export.h>

namespace tesk {
struct Color3f;
}

namespace vexa {

class GuiGenerator;
namespace draw {
struct Material;
}

namespace gui {

class Droplist;

/// Sliders "Red", "Green" and "Blue" (0 to 1) on the colour's channels.
VEXA_API void AddGuiColorRgb(GuiGenerator& generator, tesk::Color3f* color);
/// Optionally the colour rows, then "Use lighting" and the rows "Metallic", "Specular" and
/// "Shininess" (1 to 512), which show only while lighting is on.
VEXA_API void AddGuiMaterial(GuiGenerator& generator, draw::Material* material, bool withColor);
/// The "Color map" list, valued by tesk::ColorMap; the caller links or subscribes it.
VEXA_API Droplist* AddGuiColorMap(GuiGenerator& generator);

} // namespace gui
} // namespace vexa
