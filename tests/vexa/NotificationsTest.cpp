#include "core/Notifications.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

using namespace vexa;

namespace {

int ownerA = 0;
int ownerB = 0;
int ownerC = 0;

} // namespace

TEST(NotificationsTest, UnsubscribeDropsEveryNumberOfTheOwnerAlsoFromInsideACallback)
{
    Notifications registry;
    std::vector<std::string> calls;
    registry.Subscribe(&ownerA, kResourceAdded, [&](const void*) { calls.push_back("A"); });
    registry.Subscribe(&ownerB, kResourceRemoved, [&](const void*) { calls.push_back("B-removed"); });
    registry.Subscribe(&ownerB, kResourceAdded, [&](const void*) {
        calls.push_back("B");
        // Drop itself, a later subscriber of this very notification, and add one more.
        registry.Unsubscribe(&ownerB);
        registry.Unsubscribe(&ownerC);
        registry.Subscribe(&ownerA, kResourceAdded, [&](const void*) { calls.push_back("A-late"); });
    });
    registry.Subscribe(&ownerC, kResourceAdded, [&](const void*) { calls.push_back("C"); });

    registry.Notify(kResourceAdded, nullptr);
    EXPECT_EQ(calls, (std::vector<std::string>{"A", "B"})) << "dropped or newly added subscribers ran";
    EXPECT_EQ(registry.GetSubscriptionCount(kResourceAdded), 2u);
    EXPECT_EQ(registry.GetSubscriptionCount(kResourceRemoved), 0u);

    calls.clear();
    registry.Notify(kResourceAdded, nullptr);
    registry.Notify(kResourceRemoved, nullptr);
    EXPECT_EQ(calls, (std::vector<std::string>{"A", "A-late"}));

    registry.Unsubscribe(&ownerA);
    calls.clear();
    registry.Notify(kResourceAdded, nullptr);
    EXPECT_TRUE(calls.empty());
}

TEST(NotificationsTest, EmptyCallbackThrowsAndLeavesTheRegistryUsable)
{
    Notifications registry;
    int calls = 0;
    registry.Subscribe(&ownerA, kGadgetCreated, Notifications::Callback());
    registry.Subscribe(&ownerB, kGadgetCreated, [&](const void*) { ++calls; });
    EXPECT_THROW(registry.Notify(kGadgetCreated, nullptr), std::bad_function_call);

    // The throw must not leave the registry thinking it is still notifying.
    registry.Unsubscribe(&ownerA);
    EXPECT_EQ(registry.GetSubscriptionCount(kGadgetCreated), 1u);
    registry.Notify(kGadgetCreated, nullptr);
    EXPECT_EQ(calls, 1);
}
