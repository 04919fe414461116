#include <vexa/draw/VisualCamera.h>

#include <runa/BinaryStream.h>

#include "LogCapture.h"

#include "GlmNear.h"

#include <gtest/gtest.h>

#include <glm/ext/matrix_transform.hpp>
#include <glm/glm.hpp>
#include <glm/gtc/matrix_access.hpp>

#include <cmath>
#include <functional>
#include <limits>
#include <numbers>
#include <sstream>
#include <string>
#include <vector>

using vexa::draw::VisualCamera;

namespace {

constexpr float kQuarter = std::numbers::pi_v<float> / 2.0f;
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

using testing_support::Near;

// Whatever was done to it, the frame must stay orthonormal and right-handed.
void ExpectOrthonormalFrame(const VisualCamera& camera)
{
    const glm::vec3 f = camera.GetForward(), u = camera.GetUp();
    EXPECT_NEAR(glm::length(f), 1.0f, 1e-5f);
    EXPECT_NEAR(glm::length(u), 1.0f, 1e-5f);
    EXPECT_NEAR(glm::dot(f, u), 0.0f, 1e-5f);
    EXPECT_TRUE(Near(glm::cross(f, u), camera.GetRight()));
}

int CountChanges(VisualCamera& camera, int& calls)
{
    return camera.SubscribeChange([&calls] { ++calls; });
}

} // namespace

TEST(VisualCamera, LookAtFacesTheTargetMatchesGlmLookAtAndKeepsAUsableOrientationWhenDegenerate)
{
    struct Case {
        glm::vec3 eye, target, up;
    };
    const Case cases[] = {
        {{-3, 1, 5}, {1, -2, 0.5f}, {0, 0, 1}},
        {{0.5f, -4, 1}, {0.5f, 3, 1.2f}, {1, 0, 5}}, // almost along +Y, unnormalised up
    };
    for (const Case& c : cases) {
        VisualCamera camera;
        camera.SetPosition(c.eye);
        camera.LookAt(c.target, c.up);
        ExpectOrthonormalFrame(camera);
        EXPECT_EQ(camera.GetPosition(), c.eye);
        EXPECT_TRUE(Near(camera.GetForward(), glm::normalize(c.target - c.eye)));
        const glm::mat4 expected = glm::lookAt(c.eye, c.target, c.up);
        const glm::mat4 actual = camera.GetViewMatrix();
        for (int col = 0; col < 4; ++col)
            EXPECT_TRUE(Near(glm::vec3(actual[col]), glm::vec3(expected[col]), 2e-5f)) << "column " << col;
        EXPECT_EQ(glm::row(actual, 3), glm::vec4(0, 0, 0, 1));
    }

    testing_support::LogCapture log;
    // Up along the view: the smallest turn from -Z to -Y is a tilt down.
    VisualCamera down;
    down.SetPosition({0, 5, 0});
    down.LookAt({0, 0, 0}, {0, 1, 0});
    ExpectOrthonormalFrame(down);
    EXPECT_TRUE(Near(down.GetForward(), {0, -1, 0}));
    EXPECT_TRUE(Near(down.GetUp(), {0, 0, -1}));
    // Straight behind with a parallel up, or a zero up: half a turn about the current up.
    VisualCamera behind;
    behind.LookAt({0, 0, 7}, {0, 0, 0});
    ExpectOrthonormalFrame(behind);
    EXPECT_TRUE(Near(behind.GetForward(), {0, 0, 1}));
    EXPECT_TRUE(Near(behind.GetUp(), {0, 1, 0}));
    EXPECT_TRUE(log.messages.empty());

    // Target at the eye, or not finite: the view stays, and the caller hears of it.
    int calls = 0;
    CountChanges(down, calls);
    const glm::quat before = down.GetOrientation();
    down.LookAt({0, 5, 0}, {0, 1, 0});
    down.LookAt({kNan, 0, 0}, {0, 1, 0});
    EXPECT_EQ(down.GetOrientation(), before);
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(log.messages.size(), 2u);
}

// Which way Pan, Tilt and Rotate turn is checked through the viewer camera's orbit (vexa tier)
// and the end-to-end drag gestures.
TEST(VisualCamera, UnnormalisedRotationsAndManySmallTurnsKeepAUnitOrientation)
{
    VisualCamera camera;
    camera.LookAt({-2, 0.5f, 1}, {0.2f, 1, 0.1f});
    const glm::vec3 f = camera.GetForward();
    const glm::quat turn = glm::angleAxis(kQuarter, glm::vec3(0, 1, 0));
    camera.Rotate(glm::quat(3.0f * turn.w, 3.0f * turn.x, 3.0f * turn.y, 3.0f * turn.z));
    EXPECT_TRUE(Near(camera.GetForward(), turn * f));
    for (int i = 0; i < 10000; ++i) {
        camera.Pan(0.013f);
        camera.Tilt(-0.007f);
        camera.Roll(0.003f);
    }
    ExpectOrthonormalFrame(camera);
    EXPECT_NEAR(glm::length(camera.GetOrientation()), 1.0f, 1e-6f);
}

TEST(VisualCamera, NotifiesOncePerChangeAndNeverForNoOps)
{
    VisualCamera camera;
    VisualCamera other;
    other.SetPosition({1, 0, 0});
    other.Tilt(0.2f);
    int calls = 0;
    CountChanges(camera, calls);

    const glm::vec3 y(0, 1, 0);
    const std::vector<std::function<void()>> changes = {
        [&] { camera.SetPosition(glm::vec3(0, 0, 1)); },
        [&] { camera.SetOrientation(glm::angleAxis(0.3f, glm::vec3(1, 0, 0))); },
        [&] { camera.LookAt(glm::vec3(0), y); },
        [&] { camera.Pan(0.1f); },
        [&] { camera.Tilt(0.1f); },
        [&] { camera.Roll(0.1f); },
        [&] { camera.Rotate(glm::angleAxis(0.1f, glm::vec3(0, 0, 1))); },
        [&] { camera.Move(y); },
        [&] { camera.Dolly(0.5f); },
        [&] { camera.AlignUpVector(y); },
        [&] { camera.CopyView(other); },
        [&] { camera.Reset(); },
    };
    for (std::size_t i = 0; i < changes.size(); ++i) {
        const std::uint64_t revision = camera.GetRevision();
        calls = 0;
        changes[i]();
        EXPECT_EQ(calls, 1) << "change " << i;
        EXPECT_EQ(camera.GetRevision(), revision + 1) << "change " << i;
    }

    // The last change was a reset.
    calls = 0;
    camera.Reset();
    EXPECT_EQ(calls, 0);
    camera.CopyView(other);
    camera.Roll(0.4f);
    camera.AlignUpVector({0, 1, 0});
    calls = 0;
    const std::uint64_t revision = camera.GetRevision();
    camera.SetPosition(camera.GetPosition());
    camera.SetOrientation(camera.GetOrientation());
    camera.Pan(0.0f);
    camera.Rotate(glm::quat(1, 0, 0, 0));
    camera.Move({0, 0, 0});
    camera.Dolly(0.0f);
    camera.CopyView(camera);
    camera.AlignUpVector({0, 1, 0}); // already upright
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(camera.GetRevision(), revision);

    // Refused input changes nothing either, and says so.
    testing_support::LogCapture log;
    camera.SetPosition({kNan, 0, 0});
    camera.Move({0, std::numeric_limits<float>::infinity(), 0});
    camera.Tilt(kNan);
    camera.Rotate(glm::quat(0, 0, 0, 0));
    camera.AlignUpVector({0, 0, 0});
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(log.messages.size(), 5u);
}

TEST(VisualCamera, CamerasChangingEachOtherStopAfterOneRoundEachAndSubscriptionsMayChangeDuringARound)
{
    // Copies that never agree (each adds an offset) must still end: the camera whose round is in
    // progress takes the change without starting another round.
    VisualCamera c, d;
    int callsC = 0, callsD = 0;
    c.SubscribeChange([&] {
        ++callsC;
        d.SetPosition(c.GetPosition() + glm::vec3(1, 0, 0));
    });
    d.SubscribeChange([&] {
        ++callsD;
        c.SetPosition(d.GetPosition() + glm::vec3(1, 0, 0));
    });
    const std::uint64_t revision = c.GetRevision();
    c.SetPosition({0, 0, 5});
    EXPECT_EQ(callsC, 1);
    EXPECT_EQ(callsD, 1);
    EXPECT_EQ(c.GetPosition(), glm::vec3(2, 0, 5));
    EXPECT_EQ(c.GetRevision(), revision + 2);

    // Subscriptions may change during a round.
    testing_support::LogCapture log;
    VisualCamera camera;
    int first = 0, second = 0, third = 0, late = 0;
    int firstId = 0, thirdId = 0;
    firstId = camera.SubscribeChange([&] {
        ++first;
        camera.UnsubscribeChange(firstId); // removes itself while running
    });
    camera.SubscribeChange([&] {
        if (++second == 1) {
            camera.UnsubscribeChange(thirdId); // due later in this very round
            CountChanges(camera, late);        // first called on the next change
        }
    });
    thirdId = CountChanges(camera, third);
    camera.Move({1, 0, 0});
    camera.Move({1, 0, 0});
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 2);
    EXPECT_EQ(third, 0);
    EXPECT_EQ(late, 1);
    EXPECT_TRUE(log.messages.empty());

    camera.UnsubscribeChange(thirdId);
    EXPECT_EQ(camera.SubscribeChange(nullptr), 0);
    EXPECT_EQ(log.messages.size(), 2u);
}

// The round trip itself is checked with the viewer camera's record, which embeds this one.
TEST(VisualCamera, RejectedRecordsChangeNothingAndAScaledQuaternionStillNamesARotation)
{
    auto record = [](std::uint32_t version, std::vector<float> values) {
        std::ostringstream bytes;
        runa::BinaryWriter writer(bytes);
        writer.WriteVersion(version);
        for (float value : values)
            writer.Write(value);
        return bytes.str();
    };
    const std::string good = record(1, {1, 2, 3, 1, 0, 0, 0});
    std::vector<std::string> bad{record(2, {0, 0, 0, 1, 0, 0, 0}), record(1, {0, 0, 0, 0, 0, 0, 0}),
                                 record(1, {0, 0, 0, kNan, 0, 0, 0})};
    for (std::size_t size = 0; size < good.size(); ++size)
        bad.push_back(good.substr(0, size));
    const VisualCamera fresh;
    VisualCamera camera;
    int calls = 0;
    CountChanges(camera, calls);
    testing_support::LogCapture log;
    for (const std::string& bytes : bad) {
        std::istringstream badIn(bytes);
        EXPECT_FALSE(camera.ReadFromStream(badIn)) << bytes.size() << " bytes";
    }
    EXPECT_EQ(camera.GetPosition(), fresh.GetPosition());
    EXPECT_EQ(camera.GetOrientation(), fresh.GetOrientation());
    EXPECT_EQ(calls, 0);
    EXPECT_EQ(log.messages.size(), bad.size()); // every refusal says why

    std::istringstream scaled(record(1, {0, 0, 0, 0, 0, 2, 0}));
    ASSERT_TRUE(camera.ReadFromStream(scaled));
    EXPECT_TRUE(Near(camera.GetForward(), {0, 0, 1}));
    EXPECT_EQ(calls, 1);
}
