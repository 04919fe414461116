#include <vexa/modules/GeometryGadget.h>

#include "core/EngineServices.h"

#include <vexa/GuiGenerator.h>
#include <vexa/gui/BoolFunc.h>
#include <vexa/gui/Elements.h>
#include <vexa/gui/StylingRows.h>

#include <vexa/draw/GeometryStyle.h>
#include <vexa/draw/Renderer.h>

#include <plor/Texture.h>

#include <runa/BinaryStream.h>
#include <runa/rlog.h>

#include <algorithm>
#include <filesystem>
#include <glm/geometric.hpp>
#include <glm/mat4x4.hpp>
#include <system_error>

namespace vexa::modules {

namespace {

constexpr unsigned int kFieldsVersion = 1;

bool IsSolid(int mode)
{
    return mode == draw::RenderMode::Solid || mode == draw::RenderMode::SolidAndWires;
}

bool HasWires(int mode)
{
    return mode == draw::RenderMode::Wires || mode == draw::RenderMode::PointsAndWires ||
           mode == draw::RenderMode::SolidAndWires;
}

bool HasPoints(int mode)
{
    return mode == draw::RenderMode::Points || mode == draw::RenderMode::PointsAndWires;
}

std::string MatcapFolder()
{
    return GetEngineServices().GetAssetDirectory() + "matcaps/";
}

} // namespace

GeometryGadget::GeometryGadget(const Resource* resource, std::shared_ptr<draw::Renderer> renderer)
    : Gadget(resource), renderer_(std::move(renderer)), style_(std::make_shared<draw::GeometryStyle>())
{
}

GeometryGadget::~GeometryGadget() = default;

void GeometryGadget::Initialize()
{
    LoadState();
    Gadget::Initialize();
    AddRenderer(renderer_, style_, 0);
}

void GeometryGadget::GenerateGui(GuiGenerator& generator)
{
    Gadget::GenerateGui(generator);
    if (!IsInitialized())
        return;
    AddGuiRenderMode(generator);
    AddGuiMaterialOptions(generator);
    generator.AddSeparator();
    AddGuiCullBackFacning(generator);
    AddGuiColorSource(generator);
    generator.AddSeparator();
    AddGuiDisplayNormals(generator);
}

bool GeometryGadget::FocusCamera(glm::vec3& target, glm::vec3& position) const
{
    if (!renderer_)
        return false;
    const auto box = renderer_->GetBoundingBox();
    if (box.IsEmpty())
        return false;
    const glm::mat4 model = style_->transform.GetMatrix();
    target = glm::vec3(model * glm::vec4(box.Center(), 1.0f));
    // Half the diagonal, scaled as the transform scales: the radius of a sphere around it.
    const glm::vec3 corner = glm::vec3(model * glm::vec4(box.max, 1.0f));
    const float r = std::max(glm::length(corner - target), 1e-3f);
    position = target + glm::vec3(r);
    SetNearFar(r * 0.01f, r * 100.0f);
    return true;
}

void GeometryGadget::AddGuiRenderMode(GuiGenerator& generator)
{
    draw::GeometryStyle* style = style_.get();
    if (gui::Droplist* mode = generator.AddDroplist("Render mode")) {
        mode->AddItems({{"Points", draw::RenderMode::Points},
                        {"Wires", draw::RenderMode::Wires},
                        {"Points & Wires", draw::RenderMode::PointsAndWires},
                        {"Solid", draw::RenderMode::Solid},
                        {"Solid & Wires", draw::RenderMode::SolidAndWires}});
        mode->SetLink(&style->renderMode);
    }
    if (gui::Droplist* normals = generator.AddDroplist("Normals")) {
        normals->AddItems(
            {{"Flat normals", draw::NormalsSource::Flat}, {"Point normals", draw::NormalsSource::Point}});
        if (style->HasNormalMap())
            normals->AddItem("Normal map", draw::NormalsSource::NormalMap);
        normals->SetLink(&style->normalsSource)->SetConditionFunc([style] {
            return IsSolid(style->renderMode);
        });
    }
    // Only for pure points: with wires the wire thickness is the size that matters.
    if (gui::NumericFloat* size = generator.AddNumericFloat("Point size"))
        size->SetMinMax(1.0f, 100.0f)->SetStep(1.0f)->SetLink(&style->pointSize)->SetConditionFunc([style] {
            return style->renderMode == draw::RenderMode::Points;
        });
    AddGuiWireParameters(generator);
}

void GeometryGadget::AddGuiCullBackFacning(GuiGenerator& generator)
{
    if (gui::Checkbox* cull = generator.AddCheckbox("Cull back-facing"))
        cull->SetLink(&style_->cullBackFacing);
}

void GeometryGadget::AddGuiWireParameters(GuiGenerator& generator)
{
    draw::GeometryStyle* style = style_.get();
    gui::Panel* panel = generator.PanelBegin();
    if (panel != nullptr)
        panel->SetConditionFunc([style] { return HasWires(style->renderMode); });
    generator.AddLabel("Wire parameters");
    if (gui::NumericFloat* thickness = generator.AddNumericFloat("Thickness"))
        thickness->SetMinMax(0.001f, 10.0f)->SetLink(&style->wireThickness);
    if (panel != nullptr)
        generator.PanelEnd();
}

void GeometryGadget::AddGuiDisplayNormals(GuiGenerator& generator)
{
    draw::GeometryStyle* style = style_.get();
    if (gui::Checkbox* show = generator.AddCheckbox("Show normals"))
        show->SetLink(&style->showNormals);
    gui::Panel* panel = generator.PanelBegin();
    if (panel != nullptr)
        panel->SetConditionBool(&style->showNormals, BoolFunc::IfTrue);
    generator.AddLabel("Normal parameters");
    if (gui::NumericFloat* length = generator.AddNumericFloat("Length"))
        length->SetStep(0.1f)->SetLink(&style->normalLength);
    if (panel != nullptr)
        generator.PanelEnd();
}

void GeometryGadget::AddGuiColorSource(GuiGenerator& generator)
{
    if (gui::Droplist* source = generator.AddDroplist("Color source"))
        source
            ->AddItems({{"Material", draw::ColorMode::Material},
                        {"Normals", draw::ColorMode::Normals},
                        {"Checker", draw::ColorMode::Checker},
                        {"Texture", draw::ColorMode::Texture}})
            ->SetLink(&style_->colorMode);
}

void GeometryGadget::AddGuiMaterialOptions(GuiGenerator& generator)
{
    draw::GeometryStyle* style = style_.get();
    if (gui::Checkbox* useMatcap = generator.AddCheckbox("Use matcap"))
        useMatcap->SetLink(&style->useMatcap)->SetConditionFunc([style] {
            return IsSolid(style->renderMode);
        });

    if (gui::Panel* matcaps = generator.PanelBegin()) {
        matcaps->SetConditionFunc([style] { return style->useMatcap && IsSolid(style->renderMode); });
        AddGuiMatcapSelector(generator);
        generator.PanelEnd();
    }
    // One material serves points and faces; the two captions only say which one the user is
    // looking at in the current render mode.
    if (gui::Panel* points = generator.PanelBegin()) {
        points->SetConditionFunc([style] { return HasPoints(style->renderMode); });
        generator.AddLabel("Point Material");
        gui::AddGuiMaterial(generator, &style->material, true);
        generator.PanelEnd();
    }
    generator.AddLabel("Face Material");
    gui::AddGuiMaterial(generator, &style->material, true);
}

void GeometryGadget::AddGuiMatcapSelector(GuiGenerator& generator)
{
    gui::Droplist* list = generator.AddDroplist("Matcap sampler");
    if (list == nullptr)
        return;
    const std::vector<std::string> names = ListMatcaps();
    list->AddItemsIndexed(names);
    // Linked, not copied in a callback: the link is written before any subscriber runs, the
    // one that saves the state file included, so the file holds the choice just made. An
    // index past the list (a folder with fewer files than before) selects nothing.
    list->SetLink(&matcapIndex_);
    list->Subscribe([this](const gui::Droplist* changed) { LoadMatcapSampler(changed->GetText()); });
    LoadMatcapSampler(list->GetText());
}

void GeometryGadget::LoadMatcapSampler(const std::string& name)
{
    if (name.empty()) {
        style_->matcap.reset();
        DrawOnNextUpdate();
        return;
    }
    auto texture = std::make_shared<plor::Texture>();
    if (texture->LoadPng(MatcapFolder() + name + ".png"))
        style_->matcap = std::move(texture);
    else
        style_->matcap.reset();
    DrawOnNextUpdate();
}

std::vector<std::string> GeometryGadget::ListMatcaps()
{
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(MatcapFolder(), error)) {
        const std::filesystem::path& path = entry.path();
        if (entry.is_regular_file(error) && path.extension() == ".png")
            names.push_back(path.stem().string());
    }
    // Directory order differs between file systems; the stored index must mean the same file.
    std::sort(names.begin(), names.end());
    return names;
}

bool GeometryGadget::ReadFromStream(std::istream& stream)
{
    if (!Gadget::ReadFromStream(stream))
        return false;
    // Read into copies so that a record that fails half-way leaves every default in place.
    draw::GeometryStyle style = *style_;
    if (!ReadStyleRecord(stream, style))
        return false;
    runa::BinaryReader reader(stream);
    std::uint32_t matcap = 0;
    if (!reader.ReadVersion(kFieldsVersion) || !reader.Read(matcap))
        return false;
    *style_ = style;
    matcapIndex_ = static_cast<int>(matcap);
    return true;
}

void GeometryGadget::WriteToStream(std::ostream& stream) const
{
    Gadget::WriteToStream(stream);
    WriteStyleRecord(stream, *style_);
    runa::BinaryWriter writer(stream);
    writer.WriteVersion(kFieldsVersion);
    writer.Write(static_cast<std::uint32_t>(matcapIndex_));
}

} // namespace vexa::modules
