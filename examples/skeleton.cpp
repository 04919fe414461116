// A host that shows an animated figure: a humanoid skeleton 1.7 units tall standing on the
// ground, with a walk cycle that its panel plays in a loop ("Action Auto"). Pick "Stickman" in
// the panel's "Render Mode", or "Action Manual" to scrub the walk with the slider.
// `skeleton --frames N` stops after N steps.

#include <vexa/vexa.h>

#include <glm/gtc/constants.hpp>
#include <glm/gtc/quaternion.hpp>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>

namespace {

tesk::Skeleton MakeFigure()
{
    tesk::Skeleton figure;
    // Offsets from the parent joint; the feet end on y = 0, the top of the head at 1.7.
    const int pelvis = figure.AddJoint("pelvis", -1, {0.0f, 0.95f, 0.0f});
    const int spine = figure.AddJoint("spine", pelvis, {0.0f, 0.25f, 0.0f});
    const int neck = figure.AddJoint("neck", spine, {0.0f, 0.28f, 0.0f});
    figure.AddJoint("head", neck, {0.0f, 0.22f, 0.0f});
    for (const auto& [side, x] : {std::pair{std::string(".L"), 1.0f}, std::pair{std::string(".R"), -1.0f}}) {
        const int shoulder = figure.AddJoint("shoulder" + side, neck, {0.19f * x, -0.04f, 0.0f});
        const int elbow = figure.AddJoint("elbow" + side, shoulder, {0.0f, -0.28f, 0.0f});
        figure.AddJoint("hand" + side, elbow, {0.0f, -0.25f, 0.0f});
        const int hip = figure.AddJoint("hip" + side, pelvis, {0.1f * x, -0.02f, 0.0f});
        const int knee = figure.AddJoint("knee" + side, hip, {0.0f, -0.46f, 0.0f});
        figure.AddJoint("foot" + side, knee, {0.0f, -0.47f, 0.0f});
    }
    return figure;
}

// One stride at phase `phase` (radians): the left leg is forward at 0 and passes under the
// body at 3/2 pi with its knee bent; arms swing against the legs.
tesk::SkeletonPose WalkPose(const tesk::Skeleton& figure, float phase)
{
    tesk::SkeletonPose pose = figure.GetRestPose();
    // Turning about X by a negative angle swings a limb hanging down forwards (towards +Z).
    const auto turn = [&](const std::string& name, float degrees, float lift = 0.0f) {
        const int joint = figure.FindJoint(name);
        pose.SetJoint(joint, figure.GetJoint(joint)->restTranslation + glm::vec3(0.0f, lift, 0.0f),
                      glm::angleAxis(glm::radians(degrees), glm::vec3(1.0f, 0.0f, 0.0f)));
    };
    const float swing = std::cos(phase), step = std::sin(phase);
    turn("pelvis", 0.0f, 0.03f * std::abs(step));
    turn("hip.L", -25.0f * swing);
    turn("hip.R", 25.0f * swing);
    turn("knee.L", 45.0f * std::max(0.0f, -step));
    turn("knee.R", 45.0f * std::max(0.0f, step));
    turn("shoulder.L", 20.0f * swing);
    turn("shoulder.R", -20.0f * swing);
    turn("elbow.L", -15.0f);
    turn("elbow.R", -15.0f);
    return pose;
}

} // namespace

int main(int argc, char** argv)
{
    const long frames =
        argc == 3 && std::string(argv[1]) == "--frames" ? std::strtol(argv[2], nullptr, 10) : -1;
    vexa::SetAssetDirectory(VEXA_DEFAULT_ASSET_DIR);
    if (!vexa::Initialize())
        return 1;

    const tesk::Skeleton figure = MakeFigure();
    // Four keyframes a quarter stride apart over 1.2 s; the fifth repeats the first, so the
    // loop joins without a jump.
    tesk::SkeletonAction walk("walk");
    for (int k = 0; k <= 4; ++k) {
        const float phase = glm::half_pi<float>() * static_cast<float>(k % 4);
        walk.AddKeyframe(0.3f * static_cast<float>(k), WalkPose(figure, phase));
    }
    const auto resource = vexa::modules::AddSkeleton("Figures/Walker", figure, walk);
    vexa::FocusCamera(resource->GetId());

    for (long frame = 0; vexa::IsOpen() && (frames < 0 || frame < frames); ++frame)
        vexa::Update();
    vexa::Terminate();
}
