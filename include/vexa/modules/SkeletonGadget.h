#pragma once
// Draws a skeleton resource in one view area and offers how it is posed.
//
// Each gadget owns its own renderer, built from the resource's skeleton: one view area may
// play the action while another follows the host's poses. The posing options:
//   "Rest Pose"     the skeleton's rest pose;
//   "Action Manual" the action at the "Animation Time" slider's time;
//   "Action Auto"   the action looped at real time: every Update moves the time on by the
//                   time step, wrapping within the action's [start, end], and redraws; an
//                   action of zero length holds its pose and asks for no redraws;
//   "Realtime"      the pose the host set last (SkeletonResource::SetPose), applied when the
//                   resource's pose change counter has moved since the gadget looked.
// A gadget starts with "Action Auto" when the resource has an action, else with "Realtime".
// Changing the option or the slider applies at once. Apart from "Action Auto" playing, Update
// does no GL work and allocates nothing; playing reuses one kept pose.
//
// State record after the base one: u32 0, the style's block, u32 fields version (1; 0 is
// read alike), float animation time, u32 posing option. A record with another first word, a
// bad style block, another fields version or an unknown posing option is refused whole.

#include <vexa/Export.h>
#include <vexa/Gadget.h>

#include <tesk/SkeletonPose.h>

#include <cstdint>
#include <memory>

namespace vexa::draw {
class SkeletonRenderer;
class SkeletonStyle;
} // namespace vexa::draw

namespace vexa::modules {

class SkeletonResource;

class VEXA_API SkeletonGadget : public Gadget {
public:
    /// Values are the "Posing Options" items' and are stored in state files: never renumber.
    enum PosingOption : int {
        RestPose = 0,
        ActionManual = 1,
        ActionAuto = 2,
        Realtime = 3,
    };

    explicit SkeletonGadget(const SkeletonResource* resource);
    ~SkeletonGadget() override;

    void Initialize() override;
    void GenerateGui(GuiGenerator& generator) override;
    /// Plays the action under "Action Auto"; follows the host's pose under "Realtime".
    void Update(float timeStep) override;
    /// Looks at the centre of the posed skeleton's box from centre + box size. False, and
    /// nothing changed, when the box is flat along some axis.
    bool FocusCamera(glm::vec3& target, glm::vec3& position) const override;

    /// Selects `option` and shows its pose; an option the resource cannot offer is refused
    /// with a warning.
    bool SetPosingOption(int option);
    int GetPosingOption() const { return posingOption_; }
    /// Moves the animation time (clamped to the action's range) and shows it under "Action
    /// Manual" and "Action Auto".
    void SetAnimationTime(float time);
    float GetAnimationTime() const { return animationTime_; }
    /// Whether the posing droplist lists `option` (the action ones only with an action).
    bool IsPosingOptionOffered(int option) const;

    const std::shared_ptr<draw::SkeletonStyle>& GetStyle() const { return style_; }
    const std::shared_ptr<draw::SkeletonRenderer>& GetRenderer() const { return renderer_; }

protected:
    bool ReadFromStream(std::istream& stream) override;
    void WriteToStream(std::ostream& stream) const override;

private:
    /// Hands the pose of the current option to the renderer and asks for a redraw.
    void ApplyPose();
    /// An option of another skeleton's state (or a time outside this action) made to fit.
    void FitSettingsToResource();

    const SkeletonResource* skeleton_;
    std::shared_ptr<draw::SkeletonRenderer> renderer_;
    std::shared_ptr<draw::SkeletonStyle> style_;
    int posingOption_ = Realtime;
    float animationTime_ = 0.0f;
    /// Where the action's pose is computed: sized once, so playing allocates nothing.
    tesk::SkeletonPose actionPose_;
    /// The resource's pose change count last shown under "Realtime".
    std::uint64_t shownPoseChange_ = 0;
};

} // namespace vexa::modules
