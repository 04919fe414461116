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

class VEXA_API CameraAnimResource : public Resource {
public:
    /// Resource type "CameraAnimResource".
    explicit CameraAnimResource(const std::string& name);

    std::shared_ptr<Gadget> CreateGadget() override;
};

} // namespace vexa::modules
