#include "core/Notifications.h"

#include <algorithm>

namespace vexa {

void Notifications::Subscribe(const void* owner, unsigned int number, Callback callback)
{
    subscriptions_[number].push_back({owner, std::move(callback), false});
}

void Notifications::Unsubscribe(const void* owner)
{
    for (auto& [number, list] : subscriptions_) {
        for (auto& subscription : list) {
            if (subscription.owner == owner) {
                subscription.dropped = true;
                pendingErase_ = true;
            }
        }
    }
    if (notifying_ == 0 && pendingErase_) {
        for (auto& [number, list] : subscriptions_)
            std::erase_if(list, [](const Subscription& s) { return s.dropped; });
        pendingErase_ = false;
    }
}

void Notifications::Notify(unsigned int number, const void* data)
{
    auto found = subscriptions_.find(number);
    if (found == subscriptions_.end())
        return;
    ++notifying_;
    struct Done {
        Notifications& self;
        ~Done()
        {
            if (--self.notifying_ == 0 && self.pendingErase_) {
                for (auto& [n, list] : self.subscriptions_)
                    std::erase_if(list, [](const Subscription& s) { return s.dropped; });
                self.pendingErase_ = false;
            }
        }
    } done{*this};
    // Index-based: callbacks may subscribe more, which can reallocate the vector.
    const std::size_t count = found->second.size();
    for (std::size_t i = 0; i < count; ++i) {
        auto& list = subscriptions_[number];
        if (list[i].dropped)
            continue;
        Callback callback = list[i].callback; // copy: the list may move while it runs
        callback(data);
    }
}

std::size_t Notifications::GetSubscriptionCount(unsigned int number) const
{
    auto found = subscriptions_.find(number);
    if (found == subscriptions_.end())
        return 0;
    return static_cast<std::size_t>(std::count_if(found->second.begin(), found->second.end(),
                                                  [](const Subscription& s) { return !s.dropped; }));
}

Notifications& GetNotifications()
{
    static Notifications notifications;
    return notifications;
}

} // namespace vexa
