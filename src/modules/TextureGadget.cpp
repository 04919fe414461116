#include <vexa/modules/TextureGadget.h>

#include <vexa/GuiGenerator.h>
#include <vexa/gui/BoolFunc.h>
#include <vexa/gui/Elements.h>
#include <vexa/modules/ImageResource.h>

#include <vexa/draw/ImageRenderer.h>
#include <vexa/draw/ImageStyle.h>

#include <runa/BinaryStream.h>

#include <cstdint>
#include <utility>

namespace vexa::modules {

namespace {

constexpr unsigned int kFieldsVersion = 0;
constexpr float kFactorLimit = 1000.0f;

} // namespace

TextureGadget::TextureGadget(const ImageResource* resource)
    : Gadget(resource), image_(resource), style_(std::make_shared<draw::ImageStyle>())
{
}

// Terminate and the destructor leave the renderer alone on purpose: it is the resource's and
// still draws in the other view areas; releasing it here would also drop its only copy of the
// pixels (the CPU copy is gone once the texture is up).
TextureGadget::~TextureGadget() = default;

void TextureGadget::Initialize()
{
    LoadState();
    Gadget::Initialize();
    if (image_ != nullptr && image_->GetObjectPtr())
        AddRenderer(image_->GetObjectPtr(), style_, 0);
}

bool TextureGadget::IsColorTransformEnabled() const
{
    return style_->colorTransformEnabled;
}

void TextureGadget::SetColorTransformEnabled(bool enabled)
{
    style_->colorTransformEnabled = enabled;
    DrawOnNextUpdate();
}

void TextureGadget::GenerateGui(GuiGenerator& generator)
{
    Gadget::GenerateGui(generator);
    if (!IsInitialized())
        return;
    draw::ImageStyle& style = *style_;
    const std::pair<const char*, bool*> flags[] = {{"Nearest filtering", &style.nearestFiltering},
                                                   {"Fit to viewport", &style.fitToViewport},
                                                   {"Keep aspect ratio", &style.keepAspectRatio},
                                                   {"Mirror X", &style.mirrorX},
                                                   {"Mirror Y", &style.mirrorY}};
    for (const auto& [caption, field] : flags)
        if (gui::Checkbox* checkbox = generator.AddCheckbox(caption))
            checkbox->SetLink(field);
    AddGuiChannels(generator);
    generator.AddSeparator();
    AddGuiColorTransformation(generator);
}

void TextureGadget::AddGuiChannels(GuiGenerator& generator)
{
    gui::CheckboxList* channels = generator.AddCheckboxList();
    if (channels == nullptr)
        return;
    const char* const names[] = {"Red", "Green", "Blue", "Alpha"};
    for (std::size_t channel = 0; channel < 4; ++channel)
        channels->AddItem(names[channel], *style_->GetChannelShown(channel), channel);
    draw::ImageStyle* style = style_.get();
    // Item callbacks run before the change callbacks, so the state file saved on the change
    // already holds the new mask.
    channels->SubscribeItems([style](unsigned int id, bool checked) {
        if (bool* shown = style->GetChannelShown(id))
            *shown = checked;
    });
}

void TextureGadget::AddGuiColorTransformation(GuiGenerator& generator)
{
    if (gui::Checkbox* enabled = generator.AddCheckbox("Color Transformation"))
        enabled->SetLink(&style_->colorTransformEnabled);
    gui::Panel* panel = generator.PanelBegin();
    if (panel != nullptr)
        panel->SetConditionBool(&style_->colorTransformEnabled, BoolFunc::IfTrue);
    draw::ImageStyle& style = *style_;
    const std::pair<const char*, float*> factors[] = {
        {"Red Multiplier", &style.redMultiplier},     {"Red Offset", &style.redOffset},
        {"Green Multiplier", &style.greenMultiplier}, {"Green Offset", &style.greenOffset},
        {"Blue Multiplier", &style.blueMultiplier},   {"Blue Offset", &style.blueOffset},
        {"Alpha Multiplier", &style.alphaMultiplier}, {"Alpha Offset", &style.alphaOffset}};
    for (const auto& [label, field] : factors)
        if (gui::NumericFloat* number = generator.AddNumericFloat(label))
            number->SetMinMax(-kFactorLimit, kFactorLimit)->SetStep(0.1f)->SetLink(field);
    if (panel != nullptr)
        generator.PanelEnd();
}

bool TextureGadget::ReadFromStream(std::istream& stream)
{
    if (!Gadget::ReadFromStream(stream))
        return false;
    // Read into a copy so that a record that fails half-way leaves every default in place.
    draw::ImageStyle style = *style_;
    if (!ReadStyleRecord(stream, style) || !ReadStateVersion(stream, kFieldsVersion))
        return false;
    std::uint8_t flag = 0;
    if (!runa::BinaryReader(stream, "vexa::modules::TextureGadget::ReadFromStream").Read(flag))
        return false;
    *style_ = style;
    style_->colorTransformEnabled = flag != 0;
    return true;
}

void TextureGadget::WriteToStream(std::ostream& stream) const
{
    Gadget::WriteToStream(stream);
    WriteStyleRecord(stream, *style_);
    WriteStateVersion(stream, kFieldsVersion);
    runa::BinaryWriter(stream).Write(static_cast<std::uint8_t>(style_->colorTransformEnabled ? 1 : 0));
}

} // namespace vexa::modules
