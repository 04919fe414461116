// Camera animation files (AnimationSequence01.json): an array of [time, pose] pairs.

#include "FuzzSupport.h"

#include <vexa/modules/CameraAnimGadget.h>

#include <stdexcept>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace vexa::fuzz;
    QuietLog();
    tesk::Interpolator<vexa::Camera::Pose> keyframes;
    keyframes.Insert(5.0f, vexa::Camera::Pose());
    bool ok = false;
    try {
        ok = vexa::modules::CameraAnimGadget::ParseAnimation(std::string(AsText(data, size)), "input",
                                                             keyframes);
    } catch (const std::invalid_argument&) {
        // Numbers that are not ones throw by design; the panel's button logs them.
    } catch (const std::out_of_range&) {
    }
    if (!ok)
        Check(keyframes.Size() == 1, "a refused animation changed the key frames");
    return 0;
}
