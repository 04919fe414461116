#include "core/Looks.h"

#include "LogCapture.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace vexa;
using testing_support::LogCapture;

namespace {

ViewareaLook SampleView()
{
    ViewareaLook view;
    view.position = {{0.5f, 5.0f}, {0.0f, -3.0f}};
    view.size = {{0.5f, -5.0f}, {0.75f, 12.0f}};
    view.gridMode = ViewareaLook::GridZX;
    view.gridUnits = 0.25f;
    view.nearPlane = 0.01f;
    view.farPlane = 500.0f;
    view.camera.position = {1.0f, -2.0f, 3.5f};
    view.camera.target = {0.5f, 0.5f, 0.0f};
    view.camera.up = {0.0f, 0.0f, 1.0f};
    view.camera.fixedRotationEnabled = true;
    view.camera.axis = {1.0f, 0.0f, 0.0f};
    ResourceLook cloud;
    cloud.id = ResourceId("scans/a", "PointCloudResource");
    cloud.permanent = cloud.autoSelect = true;
    cloud.guiEnabled = cloud.selectEnabled = false;
    ResourceLook odd;
    odd.id = ResourceId("name", "type:with:colons"); // the text form would not survive this
    view.resourceLooks = {cloud, odd};
    view.axes = view.sidebarEnabled = view.sidebarVisible = view.cameraAnimatorEnabled =
        view.settingsEnabled = false;
    return view;
}

std::string Serialize(const ViewareaLook& view)
{
    std::ostringstream out;
    view.WriteToStream(out);
    return out.str();
}

} // namespace

TEST(Looks, BinaryFormRoundTrips)
{
    const auto first = SampleView();
    const ViewareaLook second; // defaults
    std::stringstream stream;
    first.WriteToStream(stream);
    second.WriteToStream(stream);

    ViewareaLook readFirst = second;
    ViewareaLook readSecond = first;
    ASSERT_TRUE(readFirst.ReadFromStream(stream));
    ASSERT_TRUE(readSecond.ReadFromStream(stream));
    EXPECT_EQ(readFirst, first);
    EXPECT_EQ(readSecond, second);
    EXPECT_EQ(stream.peek(), std::char_traits<char>::eof()); // each record read exactly its own bytes
}

TEST(Looks, TruncatedOrUnknownRecordsAreRejectedWithoutChangingTarget)
{
    auto bytes = Serialize(SampleView());
    LogCapture quiet;
    for (std::size_t cut = 0; cut < bytes.size(); ++cut) {
        std::istringstream in(bytes.substr(0, cut));
        ViewareaLook target;
        EXPECT_FALSE(target.ReadFromStream(in)) << "cut at " << cut;
        EXPECT_EQ(target, ViewareaLook{}) << "cut at " << cut;
    }

    // {offset, value}: an unknown version; grid mode (after the version word, eight floats and
    // the axes byte); camera record (after the view's own scalars).
    const auto original = SampleView();
    bytes = Serialize(ViewareaLook{});
    for (const auto& [offset, value] :
         {std::pair<std::size_t, char>{0, 2}, {4 + 8 * 4 + 1, 4}, {4 + 8 * 4 + 1 + 4 + 4 + 2 + 4 + 4, 9}}) {
        auto corrupt = bytes;
        corrupt[offset] = value;
        LogCapture log;
        std::istringstream in(corrupt);
        ViewareaLook target = original;
        EXPECT_FALSE(target.ReadFromStream(in));
        EXPECT_EQ(target, original);
        EXPECT_EQ(log.messages.size(), 1u);
    }
}
