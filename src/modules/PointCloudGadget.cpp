#include <vexa/modules/PointCloudGadget.h>

#include "core/Viewarea.h"

#include <vexa/GuiGenerator.h>
#include <vexa/gui/BoolFunc.h>
#include <vexa/gui/Elements.h>
#include <vexa/gui/StylingRows.h>
#include <vexa/modules/PointCloudResource.h>

#include <vexa/draw/Palette.h>
#include <vexa/draw/PointCloudRenderer.h>
#include <vexa/draw/PointCloudStyle.h>
#include <vexa/draw/Scene.h>

#include <runa/BinaryStream.h>

#include <glm/geometric.hpp>
#include <glm/mat4x4.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <sstream>
#include <stdexcept>

namespace vexa::modules {

namespace {

constexpr unsigned int kFieldsVersion = 0;

} // namespace

PointCloudGadget::PointCloudGadget(const PointCloudResource* resource)
    : Gadget(resource), cloud_(resource), style_(std::make_shared<draw::PointCloudStyle>())
{
    style_->normalLength = draw::PointCloudStyle::kDefaultNormalLength;
    style_->color = draw::palette::kNormals;
}

PointCloudGadget::~PointCloudGadget() = default;

void PointCloudGadget::Initialize()
{
    LoadState();
    Gadget::Initialize();
    if (cloud_ == nullptr)
        return;
    if (!stateRestored_) {
        colorSource_ = choice_.TakePreference(cloud_->GetColoringPreference(), Colors, DataMapping);
    }
    ValidateChoices();
    OnColorSourceChange();
    // A cloud without normals is drawn without them, but that is not the user's choice: the
    // state file, which every point cloud of this view area shares, keeps the flags as they
    // were (see WriteToStream), so the next cloud with normals is lit again.
    userNormals_ = {style_->useNormals, style_->showNormals};
    if (!cloud_->HasNormals()) {
        style_->showNormals = false;
        style_->useNormals = false;
    }
    instance_ = AddRenderer(cloud_->GetRenderer(), style_, 0);
}

bool PointCloudGadget::IsShown() const
{
    if (instance_ == 0 || !style_->visible || GetViewarea() == nullptr)
        return false;
    for (const draw::Scene::Instance& instance : GetViewarea()->GetScene()->GetInstances())
        if (instance.handle == instance_)
            return (instance.flags & draw::InstanceFlags::Hidden) == 0;
    return false;
}

std::optional<PickHit> PointCloudGadget::Pick(const PickRequest& request) const
{
    if (cloud_ == nullptr || !IsShown())
        return std::nullopt;
    const glm::mat4 model = style_->transform.GetMatrix();
    const glm::mat4 clipFromPoints = request.viewProjection * model;
    glm::vec3 position(0.0f);
    // First what is drawn at the pointer (a point covers half its size around its centre);
    // only when that misses, the nearest point within the click tolerance, so that a small
    // point can be hit at all.
    const float drawnRadius = std::max(style_->pointSize * 0.5f, 1.0f);
    const auto& renderer = *cloud_->GetRenderer();
    std::optional<std::size_t> index = renderer.Pick(clipFromPoints, request.viewport, request.cursor,
                                                     std::min(drawnRadius, request.radius), &position);
    if (!index && request.radius > drawnRadius)
        index = renderer.Pick(clipFromPoints, request.viewport, request.cursor, request.radius, &position);
    if (!index)
        return std::nullopt;
    PickHit hit;
    hit.distance = glm::distance(glm::vec3(model * glm::vec4(position, 1.0f)), request.cameraPosition);
    hit.report = DescribePoint(*index, position);
    return hit;
}

std::string PointCloudGadget::DescribePoint(std::size_t index, const glm::vec3& position) const
{
    if (cloud_ == nullptr)
        return {};
    // The file's own coordinates: what the user will look up in the data.
    const glm::dvec3 p = glm::dvec3(position) + cloud_->GetOriginOffset();
    return cloud_->GetId().name + " point " + std::to_string(index) + " at (" +
           ColoringData::FormatValue(p.x) + ", " + ColoringData::FormatValue(p.y) + ", " +
           ColoringData::FormatValue(p.z) + ")" + cloud_->GetColoringData().DescribeValues(index);
}

void PointCloudGadget::OnColorSourceChange()
{
    switch (colorSource_) {
    case Normals:
        style_->colorMode = draw::ColorMode::Normals;
        break;
    case Colors:
        style_->colorMode = draw::ColorMode::PerPoint;
        UpdateColors();
        break;
    case DataMapping:
        style_->colorMode = draw::ColorMode::PerPoint;
        UpdateDataMapping();
        break;
    default:
        style_->colorMode = draw::ColorMode::Material;
        break;
    }
    DrawOnNextUpdate();
}

void PointCloudGadget::UpdateColors()
{
    if (cloud_ == nullptr)
        return;
    if (const ColoringData::ColorSet* colors = choice_.SelectedColors(cloud_->GetColoringData())) {
        std::visit([this](const auto& set) { cloud_->GetRenderer()->SetColors(std::span(set)); }, *colors);
        DrawOnNextUpdate();
    }
}

void PointCloudGadget::UpdateDataMapping()
{
    if (cloud_ == nullptr)
        return;
    if (std::optional<std::vector<tesk::Color3f>> colors =
            choice_.MapSelectedData(cloud_->GetColoringData())) {
        cloud_->GetRenderer()->SetColors(std::move(*colors));
        DrawOnNextUpdate();
    }
}

bool PointCloudGadget::FocusCamera(glm::vec3& target, glm::vec3& position) const
{
    if (cloud_ == nullptr)
        return false;
    // A cloud of one repeated point has no size: the eye would sit on the target, which the
    // camera refuses (it keeps its orientation), and the scene keeps the far plane beyond the
    // near one by itself.
    const float r = cloud_->GetApproxRadius();
    target = cloud_->GetCenterOfMass();
    position = target + glm::vec3(2.0f * r);
    SetNearFar(r * 0.01f, r * 100.0f);
    return true;
}

void PointCloudGadget::GenerateGui(GuiGenerator& generator)
{
    Gadget::GenerateGui(generator);
    if (!IsInitialized() || cloud_ == nullptr)
        return;
    AddGuiHeader(generator);

    draw::PointCloudStyle* style = style_.get();
    generator.AddSeparator();
    if (gui::NumericFloat* size = generator.AddNumericFloat("Point size"))
        size->SetMinMax(1.0f, 20.0f)->SetStep(1.0f)->SetLink(&style->pointSize);
    if (gui::Checkbox* cull = generator.AddCheckbox("Back-face culling"))
        cull->SetLink(&style->cullBackFacing);

    generator.AddSeparator();
    AddGuiColorSource(generator);

    const ColoringData& data = cloud_->GetColoringData();
    choice_.AddGuiPanelColoring(
        generator, data, [this] { return colorSource_ == Colors; }, [this] { UpdateColors(); });
    choice_.AddGuiPanelFloatMapping(
        generator, data, "Correction", [this] { return colorSource_ == DataMapping; },
        [this] { UpdateDataMapping(); });
    if (cloud_->HasNormals()) {
        AddGuiDisplayNormals(generator);
        AddGuiNormalUse(generator);
    }
}

void PointCloudGadget::AddGuiHeader(GuiGenerator& generator)
{
    generator.AddLabel("Point count: " + std::to_string(cloud_->GetPointCount()));
    generator.AddLabel("Point space: " + cloud_->GetSpaceId());
    std::ostringstream size;
    size.precision(2);
    size << 2.0f * cloud_->GetApproxRadius();
    std::string unit;
    if (cloud_->GetSpace()) {
        try {
            unit = cloud_->GetSpace()->GetUnitAbbreviation();
        } catch (const std::out_of_range&) {
            // A space with a unit index from a newer writer: show the number alone.
        }
    }
    generator.AddLabel("Approx size: " + size.str() + " " + unit);
    // Only for data that came shifted (far from the origin): positions shown and picked are
    // relative to it.
    if (cloud_->GetOriginOffset() != glm::dvec3(0.0)) {
        const glm::dvec3& offset = cloud_->GetOriginOffset();
        generator.AddLabel("Offset: " + ColoringData::FormatValue(offset.x) + ", " +
                           ColoringData::FormatValue(offset.y) + ", " + ColoringData::FormatValue(offset.z));
    }
}

void PointCloudGadget::AddGuiColorSource(GuiGenerator& generator)
{
    gui::Droplist* source = generator.AddDroplist("Color source");
    if (source == nullptr)
        return;
    source->AddItems({{"Material", Material}, {"Normals", Normals}});
    if (cloud_->IsColoringAvailable())
        source->AddItem("Colors", Colors);
    if (cloud_->HasFloatData())
        source->AddItem("Data Mapping", DataMapping);
    source->SetLink(&colorSource_)->Subscribe([this](const gui::Droplist*) { OnColorSourceChange(); });
}

void PointCloudGadget::AddGuiDisplayNormals(GuiGenerator& generator)
{
    draw::PointCloudStyle* style = style_.get();
    generator.AddSeparator();
    if (gui::Checkbox* show = generator.AddCheckbox("Display normals"))
        show->SetLink(&style->showNormals);
    if (gui::Panel* panel = generator.PanelBegin()) {
        panel->SetConditionBool(&style->showNormals, BoolFunc::IfTrue);
        if (gui::NumericFloat* length = generator.AddNumericFloat("Length"))
            length->SetMinMax(0.00001f, 1000000.0f)->SetStep(1.0f)->SetLink(&style->normalLength);
        generator.PanelEnd();
    }
}

void PointCloudGadget::AddGuiNormalUse(GuiGenerator& generator)
{
    draw::PointCloudStyle* style = style_.get();
    if (gui::Checkbox* shade = generator.AddCheckbox("Shade colors"))
        shade->SetLink(&style->shadeColors)
            ->SetConditionFunc([this] { return colorSource_ == Colors || colorSource_ == DataMapping; })
            ->Subscribe([this](const gui::Checkbox*) { DrawOnNextUpdate(); });
    if (gui::Checkbox* discs = generator.AddCheckbox("Oriented discs"))
        discs->SetLink(&style->orientedDiscs)->Subscribe([this](const gui::Checkbox*) {
            DrawOnNextUpdate();
        });
}

void PointCloudGadget::ValidateChoices()
{
    if (cloud_ == nullptr)
        return;
    if (colorSource_ == Colors && !cloud_->IsColoringAvailable()) {
        colorSource_ = Material;
        choice_.coloringOption = 0;
    }
    if (colorSource_ == DataMapping && !cloud_->HasFloatData()) {
        colorSource_ = Material;
        choice_.dataOption = 0;
    }
    // Nothing else needs guarding: an unknown colour source draws the material, the mapping
    // takes any correction (its values are clamped, NaN included) and checks its colour map.
    choice_.Validate(cloud_->GetColoringData());
}

bool PointCloudGadget::ReadFromStream(std::istream& stream)
{
    if (!Gadget::ReadFromStream(stream))
        return false;
    draw::PointCloudStyle style = *style_;
    runa::BinaryReader reader(stream);
    if (!ReadStyleRecord(stream, style) || !reader.ReadVersion(kFieldsVersion))
        return false;
    std::uint32_t source = 0;
    ColoringChoice choice = choice_;
    if (!reader.Read(source) || !choice.Read(reader))
        return false;
    *style_ = style;
    colorSource_ = static_cast<int>(source);
    choice_ = choice;
    stateRestored_ = true;
    ValidateChoices();
    return true;
}

void PointCloudGadget::WriteToStream(std::ostream& stream) const
{
    Gadget::WriteToStream(stream);
    if (cloud_ != nullptr && !cloud_->HasNormals()) {
        draw::PointCloudStyle stored = *style_;
        stored.useNormals = userNormals_.first;
        stored.showNormals = userNormals_.second;
        WriteStyleRecord(stream, stored);
    } else
        WriteStyleRecord(stream, *style_);
    runa::BinaryWriter writer(stream);
    writer.WriteVersion(kFieldsVersion);
    writer.Write(static_cast<std::uint32_t>(colorSource_));
    choice_.Write(writer);
}

} // namespace vexa::modules
