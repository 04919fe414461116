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
#include <stdexcept>
#include <sstream>

namespace vexa::modules {

namespace {

constexpr unsigned int kFieldsVersion = 0;

/// A value as a person reads it: at most four decimals and no trailing zeros, so that a
/// float's 0.30000001 shows as 0.3. Values that four decimals would round to zero, and huge
/// ones, keep four significant digits with an exponent instead.
std::string FormatValue(float value)
{
    if (std::isnan(value))
        return "nan";
    if (std::isinf(value))
        return value > 0.0f ? "inf" : "-inf";
    if (value == 0.0f)
        return "0";
    const double v = value;
    const bool fixed = std::abs(v) >= 0.00005 && std::abs(v) < 1e15;
    std::array<char, 64> buffer{};
    char* const first = buffer.data();
    char* const last = first + buffer.size();
    const std::to_chars_result result = fixed ? std::to_chars(first, last, v, std::chars_format::fixed, 4)
                                              : std::to_chars(first, last, v, std::chars_format::general, 4);
    std::string text(first, result.ptr);
    if (fixed)
    {
        text.erase(text.find_last_not_of('0') + 1);
        if (text.back() == '.')
            text.pop_back();
    }
    return text;
}

} // namespace

PointCloudGadget::PointCloudGadget(const PointCloudResource* resource)
    : Gadget(resource)
    , cloud_(resource)
    , style_(std::make_shared<draw::PointCloudStyle>())
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
    if (!stateRestored_)
    {
        colorSource_ = cloud_->GetPreferredColorSource();
        if (colorSource_ == Colors)
            coloringOption_ = cloud_->GetPreferredColorOption();
        else if (colorSource_ == DataMapping)
            dataOption_ = cloud_->GetPreferredColorOption();
        colorMap_ = cloud_->GetPreferredColorMap();
    }
    ValidateChoices();
    OnColorSourceChange();
    // A cloud without normals is drawn without them, but that is not the user's choice: the
    // state file, which every point cloud of this view area shares, keeps the flags as they
    // were (see WriteToStream), so the next cloud with normals is lit again.
    userNormals_ = {style_->useNormals, style_->showNormals};
    if (!cloud_->HasNormals())
    {
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
    std::optional<std::size_t> index =
        renderer.Pick(clipFromPoints, request.viewport, request.cursor, std::min(drawnRadius, request.radius), &position);
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
    std::string text = cloud_->GetId().name + " point " + std::to_string(index) + " at (" +
                       FormatValue(position.x) + ", " + FormatValue(position.y) + ", " +
                       FormatValue(position.z) + ")";
    const std::vector<std::string>& colorings = cloud_->GetColoringNames();
    for (std::size_t set = 0; set < colorings.size(); ++set)
    {
        const std::vector<tesk::Color3f>& colors = cloud_->GetColoringOption(set);
        if (index >= colors.size())
            continue;
        const tesk::Color3f& c = colors[index];
        text += "; " + colorings[set] + " (" + FormatValue(c.r) + ", " + FormatValue(c.g) + ", " +
                FormatValue(c.b) + ")";
    }
    const std::vector<std::string>& datas = cloud_->GetFDataNames();
    for (std::size_t data = 0; data < datas.size(); ++data)
    {
        const std::vector<float>& values = cloud_->GetFDataOption(data).values;
        if (index < values.size())
            text += "; " + datas[data] + " " + FormatValue(values[index]);
    }
    return text;
}

float PointCloudGadget::MapParameter(float value, float minimum, float maximum, float correction)
{
    const float scale = (maximum - minimum) / correction;
    // A range of one value (all zeros) or a zero correction has no scale: the low end.
    if (!(scale > 0.0f))
        return 0.0f;
    return std::min((value - minimum) / scale, 1.0f);
}

void PointCloudGadget::OnColorSourceChange()
{
    switch (colorSource_)
    {
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
    if (cloud_ == nullptr || !cloud_->IsColoringAvailable())
        return;
    const auto index = static_cast<std::size_t>(std::max(coloringOption_, 0));
    if (index >= cloud_->GetColoringNames().size())
        return;
    cloud_->GetRenderer()->SetColors(cloud_->GetColoringOption(index));
    DrawOnNextUpdate();
}

void PointCloudGadget::UpdateDataMapping()
{
    if (cloud_ == nullptr || !cloud_->HasFloatData())
        return;
    const auto index = static_cast<std::size_t>(std::max(dataOption_, 0));
    if (index >= cloud_->GetFDataNames().size())
        return;
    const PointCloudResource::DataRecord& record = cloud_->GetFDataOption(index);
    std::vector<float> mapping(record.values.size());
    const float minimum = record.minimum;
    const float maximum = record.maximum;
    const float correction = correction_;
    std::transform(record.values.begin(), record.values.end(), mapping.begin(),
                   [=](float v) { return MapParameter(v, minimum, maximum, correction); });
    int map = colorMap_;
    if (map < 0 || map >= tesk::kColorMapCount)
        map = static_cast<int>(tesk::ColorMap::GrayScale);
    cloud_->GetRenderer()->SetColors(tesk::MapValuesToColors(mapping, static_cast<tesk::ColorMap>(map)));
    DrawOnNextUpdate();
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

    if (gui::Panel* colors = generator.PanelBegin())
    {
        colors->SetConditionFunc([this] { return colorSource_ == Colors; });
        if (gui::Droplist* option = generator.AddDroplist("Coloring Option"))
            option->AddItemsIndexed(cloud_->GetColoringNames())->SetLink(&coloringOption_)->Subscribe([this](const gui::Droplist*) {
                UpdateColors();
            });
        generator.PanelEnd();
    }
    if (gui::Panel* data = generator.PanelBegin())
    {
        data->SetConditionFunc([this] { return colorSource_ == DataMapping; });
        auto remap = [this](const auto*) { UpdateDataMapping(); };
        if (gui::Droplist* option = generator.AddDroplist("Data"))
            option->AddItemsIndexed(cloud_->GetFDataNames())->SetLink(&dataOption_)->Subscribe(remap);
        if (gui::Droplist* map = gui::AddGuiColorMap(generator))
            map->SetLink(&colorMap_)->Subscribe(remap);
        // The maximum first: a fresh slider's range ends at 1, which would cap the minimum.
        if (gui::SlidingFloat* correction = generator.AddSlidingFloat("Correction"))
            correction->SetMax(10.0f)->SetMin(1.0f)->SetStep(1.0f)->SetLink(&correction_)->Subscribe(remap);
        generator.PanelEnd();
    }
    if (cloud_->HasNormals())
        AddGuiDisplayNormals(generator);
}

void PointCloudGadget::AddGuiHeader(GuiGenerator& generator)
{
    generator.AddLabel("Point count: " + std::to_string(cloud_->GetPointCount()));
    generator.AddLabel("Point space: " + cloud_->GetSpaceId());
    std::ostringstream size;
    size.precision(2);
    size << 2.0f * cloud_->GetApproxRadius();
    std::string unit;
    if (cloud_->GetSpace())
    {
        try
        {
            unit = cloud_->GetSpace()->GetUnitAbbreviation();
        }
        catch (const std::out_of_range&)
        {
            // A space with a unit index from a newer writer: show the number alone.
        }
    }
    generator.AddLabel("Approx size: " + size.str() + " " + unit);
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
    if (gui::Panel* panel = generator.PanelBegin())
    {
        panel->SetConditionBool(&style->showNormals, BoolFunc::IfTrue);
        if (gui::NumericFloat* length = generator.AddNumericFloat("Length"))
            length->SetMinMax(0.00001f, 1000000.0f)->SetStep(1.0f)->SetLink(&style->normalLength);
        generator.PanelEnd();
    }
}

void PointCloudGadget::ValidateChoices()
{
    if (cloud_ == nullptr)
        return;
    const auto colorings = static_cast<int>(cloud_->GetColoringNames().size());
    const auto datas = static_cast<int>(cloud_->GetFDataNames().size());
    if (colorSource_ == Colors && colorings == 0)
    {
        colorSource_ = Material;
        coloringOption_ = 0;
    }
    if (coloringOption_ < 0 || coloringOption_ >= colorings)
        coloringOption_ = 0;
    if (colorSource_ == DataMapping && datas == 0)
    {
        colorSource_ = Material;
        dataOption_ = 0;
    }
    if (dataOption_ < 0 || dataOption_ >= datas)
        dataOption_ = 0;
    // Nothing else needs guarding: an unknown colour source draws the material, the mapping
    // takes any correction (its values are clamped, NaN included) and checks its colour map.
}

bool PointCloudGadget::ReadFromStream(std::istream& stream)
{
    if (!Gadget::ReadFromStream(stream))
        return false;
    draw::PointCloudStyle style = *style_;
    runa::BinaryReader reader(stream);
    if (!ReadStyleRecord(stream, style) || !reader.ReadVersion(kFieldsVersion))
        return false;
    std::uint32_t source = 0, coloring = 0, data = 0, map = 0;
    float correction = 1.0f;
    if (!reader.Read(source) || !reader.Read(coloring) || !reader.Read(data) || !reader.Read(correction) ||
        !reader.Read(map))
        return false;
    *style_ = style;
    colorSource_ = static_cast<int>(source);
    coloringOption_ = static_cast<int>(coloring);
    dataOption_ = static_cast<int>(data);
    correction_ = correction;
    colorMap_ = static_cast<int>(map);
    stateRestored_ = true;
    ValidateChoices();
    return true;
}

void PointCloudGadget::WriteToStream(std::ostream& stream) const
{
    Gadget::WriteToStream(stream);
    if (cloud_ != nullptr && !cloud_->HasNormals())
    {
        draw::PointCloudStyle stored = *style_;
        stored.useNormals = userNormals_.first;
        stored.showNormals = userNormals_.second;
        WriteStyleRecord(stream, stored);
    }
    else
        WriteStyleRecord(stream, *style_);
    runa::BinaryWriter writer(stream);
    writer.WriteVersion(kFieldsVersion);
    writer.Write(static_cast<std::uint32_t>(colorSource_));
    writer.Write(static_cast<std::uint32_t>(coloringOption_));
    writer.Write(static_cast<std::uint32_t>(dataOption_));
    writer.Write(correction_);
    writer.Write(static_cast<std::uint32_t>(colorMap_));
}

} // namespace vexa::modules
