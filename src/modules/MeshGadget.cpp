#include <vexa/modules/MeshGadget.h>

#include <vexa/GuiGenerator.h>
#include <vexa/gui/Elements.h>
#include <vexa/modules/MeshResource.h>

#include <vexa/draw/GeometryStyle.h>
#include <vexa/draw/MeshRenderer.h>

#include <string>

namespace vexa::modules {

MeshGadget::MeshGadget(const MeshResource* resource)
    : GeometryGadget(resource, resource != nullptr ? resource->GetRenderer() : nullptr), mesh_(resource)
{
}

MeshGadget::~MeshGadget() = default;

void MeshGadget::Initialize()
{
    GeometryGadget::Initialize();
    if (mesh_ == nullptr)
        return;
    draw::GeometryStyle& style = *GetStyle();
    // A material that came with the mesh is part of its content, like its colours: it wins
    // over the material this view area last used for meshes.
    if (mesh_->GetMaterial())
        style.material = mesh_->GetRenderer()->GetSuggestedMaterial();
    if (mesh_->GetRenderer()->HasAlbedoTexturePath())
        style.albedoTexture = mesh_->GetRenderer()->GetAlbedoTexture();
    colorSource_ = choice_.TakePreference(mesh_->GetColoringPreference(), VertexColors, FloatDataMapping);
    if (!IsColorSourceOffered(colorSource_))
        colorSource_ = Material;
    choice_.Validate(mesh_->GetColoringData());
    OnColorSourceChange();
}

bool MeshGadget::IsColorSourceOffered(int source) const
{
    if (mesh_ == nullptr)
        return source == Material || source == Normals;
    switch (source) {
    case Material:
    case Normals:
        return true;
    case VertexColors:
        return mesh_->IsColoringAvailable();
    case FloatDataMapping:
        return mesh_->IsFDataAvailable();
    case Checker:
        return mesh_->IsUvMappingAvailable();
    case AlbedoTexture:
        return mesh_->GetMaterial() && mesh_->GetMaterial()->HasAlbedoTexture();
    default:
        return false;
    }
}

void MeshGadget::OnColorSourceChange()
{
    draw::GeometryStyle& style = *GetStyle();
    switch (colorSource_) {
    case Normals:
        style.colorMode = draw::ColorMode::Normals;
        break;
    case VertexColors:
        style.colorMode = draw::ColorMode::PerPoint;
        UpdateColors();
        break;
    case FloatDataMapping:
        style.colorMode = draw::ColorMode::PerPoint;
        UpdateDataMapping();
        break;
    case Checker:
        style.colorMode = draw::ColorMode::Checker;
        break;
    case AlbedoTexture:
        style.colorMode = draw::ColorMode::Texture;
        break;
    default:
        style.colorMode = draw::ColorMode::Material;
        break;
    }
    DrawOnNextUpdate();
}

void MeshGadget::UpdateColors()
{
    if (mesh_ == nullptr)
        return;
    if (const ColoringData::ColorSet* colors = choice_.SelectedColors(mesh_->GetColoringData())) {
        if (const auto* floats = std::get_if<std::vector<tesk::Color3f>>(colors))
            mesh_->GetRenderer()->SetCustomColors(*floats);
        else
            mesh_->GetRenderer()->SetCustomColors(ColoringData::ToFloatColors(*colors));
        DrawOnNextUpdate();
    }
}

void MeshGadget::UpdateDataMapping()
{
    if (mesh_ == nullptr)
        return;
    if (std::optional<std::vector<tesk::Color3f>> colors =
            choice_.MapSelectedData(mesh_->GetColoringData())) {
        mesh_->GetRenderer()->SetCustomColors(std::move(*colors));
        DrawOnNextUpdate();
    }
}

bool MeshGadget::FocusCamera(glm::vec3& target, glm::vec3& position) const
{
    if (mesh_ == nullptr)
        return false;
    target = mesh_->GetCenterOfMass();
    position = mesh_->GetCameraPos();
    return true;
}

void MeshGadget::GenerateGui(GuiGenerator& generator)
{
    Gadget::GenerateGui(generator);
    if (!IsInitialized() || mesh_ == nullptr)
        return;
    generator.AddLabel("Points: " + std::to_string(mesh_->GetPointCount()));
    generator.AddLabel("Faces: " + std::to_string(mesh_->GetFaceCount()));
    generator.AddLabel("Space: " + mesh_->GetSpaceId());
    if (mesh_->GetOriginOffset() != glm::dvec3(0.0)) {
        const glm::dvec3& offset = mesh_->GetOriginOffset();
        generator.AddLabel("Offset: " + ColoringData::FormatValue(offset.x) + ", " +
                           ColoringData::FormatValue(offset.y) + ", " + ColoringData::FormatValue(offset.z));
    }
    generator.AddSeparator();
    AddGuiRenderMode(generator);
    AddGuiMaterialOptions(generator);
    generator.AddSeparator();
    AddGuiCullBackFacning(generator);
    AddGuiMeshSolorSource(generator);
    generator.AddSeparator();
    AddGuiDisplayNormals(generator);
}

void MeshGadget::AddGuiMeshSolorSource(GuiGenerator& generator)
{
    gui::Droplist* source = generator.AddDroplist("Color source");
    if (source == nullptr)
        return;
    source->AddItems({{"Material", Material}, {"Normals", Normals}});
    // Each colouring's own rows follow its item, so that they read as its options.
    if (IsColorSourceOffered(VertexColors)) {
        source->AddItem("Vertex colors", VertexColors);
        AddGuiPanelColoring(generator);
    }
    if (IsColorSourceOffered(FloatDataMapping)) {
        source->AddItem("Float data mapping", FloatDataMapping);
        AddGuiPanelFloatMapping(generator);
    }
    if (IsColorSourceOffered(Checker))
        source->AddItem("Checker", Checker);
    if (IsColorSourceOffered(AlbedoTexture))
        source->AddItem("Albedo texture", AlbedoTexture);
    source->SetLink(&colorSource_)->Subscribe([this](const gui::Droplist*) { OnColorSourceChange(); });
}

void MeshGadget::AddGuiPanelColoring(GuiGenerator& generator)
{
    choice_.AddGuiPanelColoring(
        generator, mesh_->GetColoringData(), [this] { return colorSource_ == VertexColors; },
        [this] { UpdateColors(); });
}

void MeshGadget::AddGuiPanelFloatMapping(GuiGenerator& generator)
{
    choice_.AddGuiPanelFloatMapping(
        generator, mesh_->GetColoringData(), "Range Correction",
        [this] { return colorSource_ == FloatDataMapping; }, [this] { UpdateDataMapping(); });
}

} // namespace vexa::modules
