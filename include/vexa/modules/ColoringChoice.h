#pragma once
// One view area's choice of how to colour content by its ColoringData: which colour set,
// which float property, and how that property maps to colours (colour map and range
// correction). Gadgets of every content kind keep one, together with their own numbering of
// colour sources, and build its rows into their panels.

#include <vexa/Export.h>

#include <tesk/Color.h>
#include <tesk/ColorMap.h>

#include <functional>
#include <optional>
#include <variant>
#include <vector>

namespace runa {
class BinaryReader;
class BinaryWriter;
} // namespace runa

namespace vexa {
class GuiGenerator;
}

namespace vexa::modules {

class ColoringData;

/// How a gadget that has no choice of its own yet starts colouring a resource: a colour
/// source in the gadget's own numbering, the colour set or float property it uses (`option`),
/// and the colour map of a data mapping.
struct ColoringPreference {
    int source = 0;
    int option = 0;
    int colorMap = static_cast<int>(tesk::ColorMap::GrayScale);
};

class VEXA_API ColoringChoice {
public:
    /// Plain members: the panel's rows link straight to them.
    int coloringOption = 0;
    int dataOption = 0;
    float correction = 1.0f;
    int colorMap = static_cast<int>(tesk::ColorMap::GrayScale);

    /// Takes the preference's option (as the colour set when its source is `colorsSource`, as
    /// the float property when it is `dataSource`) and colour map; returns its source.
    int TakePreference(const ColoringPreference& preference, int colorsSource, int dataSource);

    /// Options past the end of `data`'s lists become 0.
    void Validate(const ColoringData& data);

    /// The chosen colour set; null when `data` has none.
    const std::variant<std::vector<tesk::Color3f>, std::vector<tesk::Color3b>>*
    SelectedColors(const ColoringData& data) const;
    /// The chosen float property mapped to colours (see MapParameter); none when `data` has
    /// no float data.
    std::optional<std::vector<tesk::Color3f>> MapSelectedData(const ColoringData& data) const;

    /// The data mapping's parameter of one value: (value - minimum) / ((maximum - minimum) /
    /// correction), capped at 1. A correction above 1 spreads the low values over the whole
    /// map and saturates the rest.
    static float MapParameter(float value, float minimum, float maximum, float correction);

    /// A panel, shown while `shown` holds, with the droplist "Coloring Option" over the colour
    /// sets; `changed` runs after each choice.
    void AddGuiPanelColoring(GuiGenerator& generator, const ColoringData& data, std::function<bool()> shown,
                             std::function<void()> changed);
    /// A panel, shown while `shown` holds, with the droplist "Data" over the float
    /// properties, the colour-map chooser and the slider `correctionCaption` (1 to 10);
    /// `changed` runs after each of the three changes.
    void AddGuiPanelFloatMapping(GuiGenerator& generator, const ColoringData& data,
                                 const char* correctionCaption, std::function<bool()> shown,
                                 std::function<void()> changed);

    /// u32 colouring option, u32 data option, f32 correction, u32 colour map.
    void Write(runa::BinaryWriter& writer) const;
    /// All four fields or none: on a short read the choice keeps its values.
    bool Read(runa::BinaryReader& reader);
};

} // namespace vexa::modules
