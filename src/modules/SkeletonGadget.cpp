#include <vexa/modules/SkeletonGadget.h>

#include <vexa/GuiGenerator.h>
#include <vexa/gui/Elements.h>
#include <vexa/modules/SkeletonResource.h>

#include <vexa/draw/SkeletonRenderer.h>
#include <vexa/draw/SkeletonStyle.h>

#include <runa/BinaryStream.h>
#include <runa/rlog.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace vexa::modules {

namespace {

constexpr std::uint32_t kFieldsVersion = 1;
constexpr const char* kLabel = "vexa::modules::SkeletonGadget";

const tesk::SkeletonAction* ActionOf(const SkeletonResource* resource)
{
    return resource != nullptr ? resource->GetAction() : nullptr;
}

/// `time` brought back into [start, start + duration) by whole loops.
float Wrap(float time, float start, float duration)
{
    float offset = std::fmod(time - start, duration);
    if (offset < 0.0f)
        offset += duration;
    return start + offset;
}

} // namespace

SkeletonGadget::SkeletonGadget(const SkeletonResource* resource)
    : Gadget(resource), skeleton_(resource),
      renderer_(std::make_shared<draw::SkeletonRenderer>(resource != nullptr ? resource->GetSkeleton()
                                                                             : tesk::Skeleton())),
      style_(std::make_shared<draw::SkeletonStyle>()), actionPose_(renderer_->GetJointCount())
{
    if (const tesk::SkeletonAction* action = ActionOf(resource)) {
        posingOption_ = ActionAuto;
        animationTime_ = action->GetStartTime();
    }
}

SkeletonGadget::~SkeletonGadget() = default;

void SkeletonGadget::Initialize()
{
    LoadState();
    FitSettingsToResource();
    Gadget::Initialize();
    AddRenderer(renderer_, style_, 0);
    ApplyPose();
}

void SkeletonGadget::FitSettingsToResource()
{
    // The state file is shared by every skeleton of the view area: the last one may have had
    // an action, or a longer one.
    if (!IsPosingOptionOffered(posingOption_))
        posingOption_ = Realtime;
    const tesk::SkeletonAction* action = ActionOf(skeleton_);
    if (action == nullptr)
        animationTime_ = 0.0f;
    else if (!std::isfinite(animationTime_))
        animationTime_ = action->GetStartTime();
    else
        animationTime_ = std::clamp(animationTime_, action->GetStartTime(), action->GetEndTime());
}

bool SkeletonGadget::IsPosingOptionOffered(int option) const
{
    switch (option) {
    case RestPose:
    case Realtime:
        return true;
    case ActionManual:
    case ActionAuto:
        return ActionOf(skeleton_) != nullptr;
    default:
        return false;
    }
}

bool SkeletonGadget::SetPosingOption(int option)
{
    if (!IsPosingOptionOffered(option)) {
        rlog::Warn(GetId().ToString() + " - posing option " + std::to_string(option) +
                       " is not offered for this skeleton; keeping the current one",
                   std::string(kLabel) + "::SetPosingOption");
        return false;
    }
    posingOption_ = option;
    ApplyPose();
    return true;
}

void SkeletonGadget::SetAnimationTime(float time)
{
    animationTime_ = time;
    FitSettingsToResource();
    if (posingOption_ == ActionManual || posingOption_ == ActionAuto)
        ApplyPose();
}

void SkeletonGadget::ApplyPose()
{
    if (skeleton_ == nullptr)
        return;
    const tesk::SkeletonAction* action = ActionOf(skeleton_);
    switch (posingOption_) {
    case ActionManual:
    case ActionAuto:
        if (action != nullptr) {
            action->PoseAt(animationTime_, skeleton_->GetSkeleton(), actionPose_);
            renderer_->SetPose(actionPose_);
        }
        break;
    case Realtime:
        renderer_->SetPose(skeleton_->GetPose());
        shownPoseChange_ = skeleton_->GetPoseChangeCount();
        break;
    default:
        renderer_->SetPose(skeleton_->GetRestPose());
        break;
    }
    DrawOnNextUpdate();
}

void SkeletonGadget::Update(float timeStep)
{
    if (skeleton_ == nullptr)
        return;
    if (posingOption_ == Realtime) {
        if (skeleton_->GetPoseChangeCount() != shownPoseChange_)
            ApplyPose();
        return;
    }
    const tesk::SkeletonAction* action = ActionOf(skeleton_);
    if (posingOption_ != ActionAuto || action == nullptr)
        return;
    // A single keyframe (or several at one time) is a still pose, shown once already.
    const float duration = action->GetDuration();
    if (!(duration > 0.0f) || !(timeStep > 0.0f) || !std::isfinite(timeStep))
        return;
    animationTime_ = Wrap(animationTime_ + timeStep, action->GetStartTime(), duration);
    ApplyPose();
}

bool SkeletonGadget::FocusCamera(glm::vec3& target, glm::vec3& position) const
{
    const auto box = renderer_->GetBoundingBox();
    if (!box.IsValid())
        return false;
    target = box.Center();
    position = box.Center() + box.Size();
    return true;
}

void SkeletonGadget::GenerateGui(GuiGenerator& generator)
{
    Gadget::GenerateGui(generator);
    if (!IsInitialized())
        return;
    draw::SkeletonStyle* style = style_.get();
    if (gui::Droplist* mode = generator.AddDroplist("Render Mode"))
        mode->AddItems({{"Octahedron", draw::SkeletonRenderMode::Octahedron},
                        {"Wired Octahedron", draw::SkeletonRenderMode::WiredOctahedron},
                        {"Stickman", draw::SkeletonRenderMode::Stickman}})
            ->SetLink(&style->renderMode);
    if (gui::Checkbox* joints = generator.AddCheckbox("Show Joints"))
        joints->SetLink(&style->showJoints);
    if (gui::Checkbox* lighting = generator.AddCheckbox("Enable Lighting"))
        lighting->SetLink(&style->enableLighting);
    if (gui::Checkbox* basis = generator.AddCheckbox("Show Basis"))
        basis->SetLink(&style->showBasis);
    generator.AddSeparator();

    const tesk::SkeletonAction* action = ActionOf(skeleton_);
    gui::Droplist* posing = generator.AddDroplist("Posing Options");
    if (posing != nullptr) {
        posing->AddItem("Rest Pose", RestPose);
        if (action != nullptr)
            posing->AddItems({{"Action Manual", ActionManual}, {"Action Auto", ActionAuto}});
        posing->AddItem("Realtime", Realtime)->SetLink(&posingOption_);
    }
    gui::SlidingFloat* time = nullptr;
    if (action != nullptr && (time = generator.AddSlidingFloat("Animation Time")) != nullptr) {
        const float duration = action->GetDuration();
        time->SetMinMax(action->GetStartTime(), action->GetEndTime())
            ->SetStep(duration > 0.0f ? duration / 100.0f : 0.01f)
            ->SetLink(&animationTime_)
            ->SetConditionFunc([this] { return posingOption_ == ActionManual; })
            ->Subscribe([this](const gui::SlidingFloat*) { ApplyPose(); });
    }
    if (posing != nullptr)
        posing->Subscribe([this, time](const gui::Droplist*) {
            // Playing moved the time on since the panel was built: the slider picks up
            // where the action is, so that "Action Manual" starts from the pose on screen.
            if (time != nullptr && posingOption_ == ActionManual)
                time->Set(animationTime_);
            ApplyPose();
        });
}

bool SkeletonGadget::ReadFromStream(std::istream& stream)
{
    if (!Gadget::ReadFromStream(stream))
        return false;
    // Read into copies so that a record that fails half-way leaves every default in place.
    draw::SkeletonStyle style = *style_;
    if (!ReadStyleRecord(stream, style))
        return false;
    const std::string label = std::string(kLabel) + "::ReadFromStream";
    runa::BinaryReader reader(stream, label);
    std::uint32_t version = 0;
    if (!reader.Read(version))
        return false;
    if (version > kFieldsVersion) {
        rlog::Warn(GetId().ToString() + " - state fields of version " + std::to_string(version) +
                       " are unknown; keeping the defaults",
                   label);
        return false;
    }
    float time = 0.0f;
    std::uint32_t option = 0;
    if (!reader.Read(time) || !reader.Read(option))
        return false;
    if (option > Realtime) {
        rlog::Warn(GetId().ToString() + " - unknown posing option " + std::to_string(option) +
                       " in the state file; keeping the defaults",
                   label);
        return false;
    }
    *style_ = style;
    animationTime_ = time;
    posingOption_ = static_cast<int>(option);
    return true;
}

void SkeletonGadget::WriteToStream(std::ostream& stream) const
{
    Gadget::WriteToStream(stream);
    WriteStyleRecord(stream, *style_);
    runa::BinaryWriter writer(stream);
    writer.WriteVersion(kFieldsVersion);
    writer.Write(animationTime_);
    writer.Write(static_cast<std::uint32_t>(posingOption_));
}

} // namespace vexa::modules
