#pragma once
// The engine's subscription registry: a subscriber gives itself as owner, a notification
// number and a callback; an owner's subscriptions are dropped together. The data of every
// notification the library raises is a pointer to a resource's ResourceId.

#include <functional>
#include <map>
#include <vector>

namespace vexa {

/// Notification numbers.
enum Notification : unsigned int {
    kResourceAdded = 0,
    kResourceGadgetsReset = 1, ///< resource replaced or its gadgets must be rebuilt
    kResourceRemoved = 2,
    kGadgetCreated = 3,
    kResourceGuiChanged = 4, ///< a GUI value of a resource changed
};

class Notifications {
public:
    using Callback = std::function<void(const void*)>;

    void Subscribe(const void* owner, unsigned int number, Callback callback);
    /// Drops every subscription of `owner`, also from inside a callback.
    void Unsubscribe(const void* owner);
    /// Calls every callback of `number` in subscription order. Subscriptions added during
    /// the call are not called this time; ones dropped during it are not called any more.
    /// An empty callback is a programming error and throws std::bad_function_call.
    void Notify(unsigned int number, const void* data);
    std::size_t GetSubscriptionCount(unsigned int number) const;

private:
    struct Subscription {
        const void* owner;
        Callback callback;
        bool dropped = false;
    };
    std::map<unsigned int, std::vector<Subscription>> subscriptions_;
    int notifying_ = 0;
    bool pendingErase_ = false;
};

/// The registry of the running engine. Exists for the whole process so that objects made
/// before the engine (or in tests, without one) can subscribe and notify.
Notifications& GetNotifications();

} // namespace vexa
