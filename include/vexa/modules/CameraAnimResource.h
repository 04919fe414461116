#pragma once
// Camera flights: the resource itself holds nothing; its gadget records the poses of its view
// area's camera as key frames, plays them back, spins the camera about its target and keeps
// the key frames in a JSON file. The engine makes one of these at start-up, and each sidebar's
// camera button shows or hides its panel in that view area.

#include <vexa/Export.h>
#include <vexa/Resource.h>

#include <memory>
#include <string>

namespace vexa::modules {

// Resources are destroyed through shared pointers of their concrete type (see Resource.h),
// so the public non-virtual destructor is safe; keep hosts' -Wnon-virtual-dtor quiet about it.
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
#endif
class VEXA_API CameraAnimResource : public Resource {
public:
    /// Resource type "CameraAnimResource".
    explicit CameraAnimResource(const std::string& name);

    std::shared_ptr<Gadget> CreateGadget() override;
};
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif

} // namespace vexa::modules
