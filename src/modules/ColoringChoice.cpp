#include <vexa/modules/ColoringChoice.h>

#include <vexa/GuiGenerator.h>
#include <vexa/gui/Elements.h>
#include <vexa/gui/StylingRows.h>
#include <vexa/modules/ColoringData.h>

#include <runa/BinaryStream.h>

#include <algorithm>
#include <cstdint>

namespace vexa::modules {

int ColoringChoice::TakePreference(const ColoringPreference& preference, int colorsSource, int dataSource)
{
    if (preference.source == colorsSource)
        coloringOption = preference.option;
    else if (preference.source == dataSource)
        dataOption = preference.option;
    colorMap = preference.colorMap;
    return preference.source;
}

void ColoringChoice::Validate(const ColoringData& data)
{
    if (coloringOption < 0 || coloringOption >= static_cast<int>(data.GetColoringNames().size()))
        coloringOption = 0;
    if (dataOption < 0 || dataOption >= static_cast<int>(data.GetFDataNames().size()))
        dataOption = 0;
}

const ColoringData::ColorSet* ColoringChoice::SelectedColors(const ColoringData& data) const
{
    const auto index = static_cast<std::size_t>(std::max(coloringOption, 0));
    if (index >= data.GetColoringNames().size())
        return nullptr;
    return &data.GetColoringOption(index);
}

float ColoringChoice::MapParameter(float value, float minimum, float maximum, float correction)
{
    const float scale = (maximum - minimum) / correction;
    // A range of one value (all zeros) or a zero correction has no scale: the low end.
    if (!(scale > 0.0f))
        return 0.0f;
    return std::min((value - minimum) / scale, 1.0f);
}

std::optional<std::vector<tesk::Color3f>> ColoringChoice::MapSelectedData(const ColoringData& data) const
{
    const auto index = static_cast<std::size_t>(std::max(dataOption, 0));
    if (index >= data.GetFDataNames().size())
        return std::nullopt;
    const ColoringData::DataRecord& record = data.GetFDataOption(index);
    std::vector<float> mapping(record.values.size());
    const float minimum = record.minimum;
    const float maximum = record.maximum;
    const float factor = correction;
    std::transform(record.values.begin(), record.values.end(), mapping.begin(),
                   [=](float v) { return MapParameter(v, minimum, maximum, factor); });
    int map = colorMap;
    if (map < 0 || map >= tesk::kColorMapCount)
        map = static_cast<int>(tesk::ColorMap::GrayScale);
    return tesk::MapValuesToColors(mapping, static_cast<tesk::ColorMap>(map));
}

void ColoringChoice::AddGuiPanelColoring(GuiGenerator& generator, const ColoringData& data,
                                         std::function<bool()> shown, std::function<void()> changed)
{
    gui::Panel* panel = generator.PanelBegin();
    if (panel == nullptr)
        return;
    panel->SetConditionFunc(std::move(shown));
    if (gui::Droplist* option = generator.AddDroplist("Coloring Option"))
        option->AddItemsIndexed(data.GetColoringNames())
            ->SetLink(&coloringOption)
            ->Subscribe([changed = std::move(changed)](const gui::Droplist*) { changed(); });
    generator.PanelEnd();
}

void ColoringChoice::AddGuiPanelFloatMapping(GuiGenerator& generator, const ColoringData& data,
                                             const char* correctionCaption, std::function<bool()> shown,
                                             std::function<void()> changed)
{
    gui::Panel* panel = generator.PanelBegin();
    if (panel == nullptr)
        return;
    panel->SetConditionFunc(std::move(shown));
    auto remap = [changed = std::move(changed)](const auto*) { changed(); };
    if (gui::Droplist* option = generator.AddDroplist("Data"))
        option->AddItemsIndexed(data.GetFDataNames())->SetLink(&dataOption)->Subscribe(remap);
    if (gui::Droplist* map = gui::AddGuiColorMap(generator))
        map->SetLink(&colorMap)->Subscribe(remap);
    // The maximum first: a fresh slider's range ends at 1, which would cap the minimum.
    if (gui::SlidingFloat* slider = generator.AddSlidingFloat(correctionCaption))
        slider->SetMax(10.0f)->SetMin(1.0f)->SetStep(1.0f)->SetLink(&correction)->Subscribe(remap);
    generator.PanelEnd();
}

void ColoringChoice::Write(runa::BinaryWriter& writer) const
{
    writer.Write(static_cast<std::uint32_t>(coloringOption));
    writer.Write(static_cast<std::uint32_t>(dataOption));
    writer.Write(correction);
    writer.Write(static_cast<std::uint32_t>(colorMap));
}

bool ColoringChoice::Read(runa::BinaryReader& reader)
{
    std::uint32_t coloring = 0, data = 0, map = 0;
    float factor = 1.0f;
    if (!reader.Read(coloring) || !reader.Read(data) || !reader.Read(factor) || !reader.Read(map))
        return false;
    coloringOption = static_cast<int>(coloring);
    dataOption = static_cast<int>(data);
    correction = factor;
    colorMap = static_cast<int>(map);
    return true;
}

} // namespace vexa::modules
