#include <vexa/Resource.h>

#include "core/EngineServices.h"
#include "core/Notifications.h"

namespace vexa {

Resource::Resource(const std::string& name, const std::string& type) : id(name, type) {}

Resource::Resource(const ResourceId& resourceId) : id(resourceId) {}

void Resource::Update(float) {}

void Resource::ResetGadgets()
{
    if (GetEngineServices().FindResource(id) == nullptr)
        return;
    // The registry may replace this resource from a callback; notify with a copy of the id.
    const ResourceId notified = id;
    GetNotifications().Notify(kResourceGadgetsReset, &notified);
}

void Resource::DrawOnNextUpdate() const
{
    GetEngineServices().RequestRedraw();
}

} // namespace vexa
