#include <vexa/gui/StylingRows.h>

#include <vexa/GuiGenerator.h>
#include <vexa/draw/Material.h>

#include <tesk/Color.h>
#include <tesk/ColorMap.h>

#include <runa/rlog.h>

namespace vexa::gui {

namespace {

void AddChannel(GuiGenerator& generator, const char* label, float* channel)
{
    if (SlidingFloat* slider = generator.AddSlidingFloat(label))
        slider->SetMinMax(0.0f, 1.0f)->SetStep(0.2f)->SetLink(channel);
}

} // namespace

void AddGuiColorRgb(GuiGenerator& generator, tesk::Color3f* color)
{
    if (color == nullptr) {
        rlog::Warn("No colour given, no rows added", "vexa::gui::AddGuiColorRgb");
        return;
    }
    AddChannel(generator, "Red", &color->r);
    AddChannel(generator, "Green", &color->g);
    AddChannel(generator, "Blue", &color->b);
}

void AddGuiMaterial(GuiGenerator& generator, draw::Material* material, bool withColor)
{
    if (material == nullptr) {
        rlog::Warn("No material given, no rows added", "vexa::gui::AddGuiMaterial");
        return;
    }
    if (withColor)
        AddGuiColorRgb(generator, &material->color);
    bool* lighting = &material->useLighting;
    if (Checkbox* use = generator.AddCheckbox("Use lighting"))
        use->SetLink(lighting);
    if (Checkbox* metallic = generator.AddCheckbox("Metallic"))
        metallic->SetLink(&material->metallic)->SetConditionBool(lighting, BoolFunc::IfTrue);
    if (SlidingFloat* specular = generator.AddSlidingFloat("Specular"))
        specular->SetLink(&material->specular)->SetConditionBool(lighting, BoolFunc::IfTrue);
    if (NumericFloat* shininess = generator.AddNumericFloat("Shininess"))
        shininess->SetMinMax(1.0f, 512.0f)
            ->SetLink(&material->shininess)
            ->SetConditionBool(lighting, BoolFunc::IfTrue);
}

Droplist* AddGuiColorMap(GuiGenerator& generator)
{
    Droplist* list = generator.AddDroplist("Color map");
    if (list == nullptr)
        return nullptr;
    // Grey first: it is the map most people expect for a plain scalar.
    list->AddItems({{"Gray scale", static_cast<int>(tesk::ColorMap::GrayScale)},
                    {"Rainbow", static_cast<int>(tesk::ColorMap::Rainbow)},
                    {"Blue To Red", static_cast<int>(tesk::ColorMap::BlueToRed)},
                    {"Red To Green", static_cast<int>(tesk::ColorMap::RedToGreen)},
                    {"Thermal", static_cast<int>(tesk::ColorMap::Thermal)},
                    {"Colorful", static_cast<int>(tesk::ColorMap::Colorful)},
                    {"Scattered", static_cast<int>(tesk::ColorMap::Scattered)}});
    return list;
}

} // namespace vexa::gui
