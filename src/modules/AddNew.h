#pragma once
// What every module's Add<Kind> function does: make the resource and show it.

#include <vexa/Lifecycle.h>

#include <memory>
#include <utility>

namespace vexa::modules {

/// A new R of `args`, shown at once when the library is running (replacing the listed one of
/// that id).
template <class R, class... Args>
std::shared_ptr<R> AddNew(Args&&... args)
{
    auto resource = std::make_shared<R>(std::forward<Args>(args)...);
    AddResource(resource);
    return resource;
}

} // namespace vexa::modules
