#include "core/Notifications.h"
#include "core/Viewarea.h"
#include "scene/GadgetManager.h"

#include <vexa/Camera.h>
#include <vexa/GuiGenerator.h>
#include <vexa/modules/ColoringChoice.h>
#include <vexa/modules/PointCloudGadget.h>
#include <vexa/modules/PointCloudResource.h>
#include <vexa/modules/ScanGadget.h>

#include <vexa/draw/PointCloudRenderer.h>
#include <vexa/draw/PointCloudStyle.h>
#include <vexa/draw/Scene.h>

#include <tesk/ColorMap.h>
#include <tesk/PointCloud.h>

#include <runa/SpaceDefinition.h>

#include "FakeEngine.h"
#include "GuiTestSupport.h"

#include <CEGUI/CEGUI.h>

#include <glm/geometric.hpp>
#include <glm/gtc/matrix_transform.hpp>

#include <cmath>
#include <limits>
#include <optional>
#include <stdexcept>

namespace {

using vexa::modules::ColoringChoice;
using vexa::modules::ColoringData;
using vexa::modules::PointCloudGadget;
using vexa::modules::PointCloudResource;
using vexa::modules::ScanGadget;

tesk::PointCloud Line(std::size_t count)
{
    std::vector<glm::vec3> positions(count);
    for (std::size_t i = 0; i < count; ++i)
        positions[i] = glm::vec3(static_cast<float>(i), 0.0f, 0.0f);
    return tesk::PointCloud(std::move(positions));
}

// A small cloud with everything the panel can offer: normals, two colour sets, float data.
tesk::PointCloud RichCloud()
{
    tesk::PointCloud cloud = Line(4);
    cloud.SetNormals(std::vector<glm::vec3>(4, glm::vec3(0.0f, 0.0f, 1.0f)));
    cloud.AddColorProperty("RGB", std::vector<tesk::Color3f>(4, tesk::Color3f(1.0f, 0.0f, 0.0f)));
    cloud.AddFloatProperty("Intensity", std::vector<float>{5.0f, 7.5f, 10.0f, 6.0f});
    cloud.AddColorProperty("Labels", std::vector<tesk::Color3f>(4, tesk::Color3f(0.0f, 1.0f, 0.0f)));
    return cloud;
}

std::shared_ptr<PointCloudGadget> MakeGadget(const std::shared_ptr<PointCloudResource>& resource)
{
    return gui_test::InitializedGadget<PointCloudGadget>(resource);
}

TEST(PointCloudResource, SamplesAboutAThousandPointsForCentreAndRadius)
{
    // 2500 points: samples 0, 2, ..., 2498 (1250 of them), divided by 2500 / 2 = 1250.
    PointCloudResource large("large", Line(2500));
    EXPECT_FLOAT_EQ(large.GetCenterOfMass().x, 1249.0f);
    // Root-mean-square distance of the even numbers 0..2498 from 1249.
    double squares = 0.0;
    for (int i = 0; i < 2500; i += 2)
        squares += (i - 1249.0) * (i - 1249.0);
    EXPECT_NEAR(large.GetApproxRadius(), std::sqrt(squares / 1250.0), 1e-2);

    // One bad point does not poison the frame; an empty cloud frames the origin.
    tesk::PointCloud withNan = Line(3);
    withNan.GetMutablePositions()[1].y = std::numeric_limits<float>::quiet_NaN();
    testing_support::LogCapture log;
    PointCloudResource nan("nan", withNan);
    EXPECT_FLOAT_EQ(nan.GetCenterOfMass().x, 1.0f);
    PointCloudResource empty("empty", tesk::PointCloud());
    EXPECT_EQ(empty.GetCenterOfMass(), glm::vec3(0.0f));
    EXPECT_EQ(empty.GetApproxRadius(), 0.0f);
}

TEST(PointCloudResource, CopiesColourSetsAndFloatDataWithRangesThatIncludeZero)
{
    tesk::PointCloud cloud = RichCloud();
    cloud.AddUVProperty("uv", std::vector<glm::vec2>(4));
    cloud.AddFloatProperty("Depth",
                           std::vector<float>{-3.0f, -1.0f, std::numeric_limits<float>::infinity(), -2.0f});
    cloud.AddColorProperty("Scanner", std::vector<tesk::Color3b>(4, tesk::Color3b(255, 0, 128)));
    PointCloudResource resource("rich", cloud);

    EXPECT_TRUE(resource.HasNormals());
    EXPECT_EQ(resource.GetColoringNames(), (std::vector<std::string>{"RGB", "Labels", "Scanner"}));
    EXPECT_EQ(resource.GetFDataNames(), (std::vector<std::string>{"Intensity", "Depth"}));
    EXPECT_EQ(ColoringData::ColorAt(resource.GetColoringOption(1), 0), tesk::Color3f(0.0f, 1.0f, 0.0f));
    // Byte colours stay bytes: a quarter of the memory of floats, and uploaded as they are.
    const auto* bytes = std::get_if<std::vector<tesk::Color3b>>(&resource.GetColoringOption(2));
    ASSERT_NE(bytes, nullptr);
    EXPECT_EQ(bytes->at(3), tesk::Color3b(255, 0, 128));
    // Values in 5..10 get the range 0..10; all-negative data gets -3..0; infinities stay out.
    EXPECT_EQ(glm::vec2(resource.GetFDataOption(0).minimum, resource.GetFDataOption(0).maximum),
              glm::vec2(0, 10));
    EXPECT_EQ(glm::vec2(resource.GetFDataOption(1).minimum, resource.GetFDataOption(1).maximum),
              glm::vec2(-3, 0));
    EXPECT_THROW(resource.GetColoringOption(3), std::out_of_range);
    EXPECT_THROW(resource.GetFDataOption(2), std::out_of_range);

    // Without a space: "N/A" (PointCloudPanelTest).
    cloud.SetSpace(runa::SpaceDefinition::TeskCamera);
    PointCloudResource withSpace("spaced", cloud);
    EXPECT_EQ(withSpace.GetSpaceId(), "TESK Camera");
}

TEST(PointCloudGadget, DataMappingScalesByTheCorrectionAndSaturates)
{
    EXPECT_FLOAT_EQ(ColoringChoice::MapParameter(5.0f, 0.0f, 10.0f, 1.0f), 0.5f);
    EXPECT_FLOAT_EQ(ColoringChoice::MapParameter(2.0f, 0.0f, 10.0f, 4.0f), 0.8f);
    EXPECT_FLOAT_EQ(ColoringChoice::MapParameter(5.0f, 0.0f, 10.0f, 4.0f), 1.0f);
    EXPECT_FLOAT_EQ(ColoringChoice::MapParameter(-1.0f, -3.0f, 0.0f, 1.0f), 2.0f / 3.0f);
    EXPECT_FLOAT_EQ(ColoringChoice::MapParameter(0.0f, 0.0f, 0.0f, 1.0f), 0.0f)
        << "no range, no division by zero";

    // Data mapping itself reaching the screen is the engine tier's case.
    testing_support::FakeEngine engine;
    auto gadget = MakeGadget(std::make_shared<PointCloudResource>("rich", RichCloud()));
    gadget->SetColorSource(PointCloudGadget::Normals);
    gadget->OnColorSourceChange();
    EXPECT_EQ(gadget->GetStyle()->colorMode, vexa::draw::ColorMode::Normals);
}

TEST(PointCloudGadget, StateFallsBackWhenTheCloudLacksWhatWasChosen)
{
    testing_support::FakeEngine engine;
    auto rich = std::make_shared<PointCloudResource>("rich", RichCloud());
    auto gadget = MakeGadget(rich);
    gadget->SetColorSource(PointCloudGadget::DataMapping);
    gadget->SetDataOption(0);
    gadget->SetColoringOption(1);
    gadget->SetCorrection(3.0f);
    gadget->SetColorMap(static_cast<int>(tesk::ColorMap::Thermal));
    gadget->GetStyle()->pointSize = 7.0f;
    ASSERT_TRUE(gadget->SaveState());

    // The same type in the same view area starts from that file.
    auto again = MakeGadget(std::make_shared<PointCloudResource>("other", RichCloud()));
    EXPECT_EQ(again->GetColorSource(), PointCloudGadget::DataMapping);
    EXPECT_EQ(again->GetColoringOption(), 1);
    EXPECT_FLOAT_EQ(again->GetCorrection(), 3.0f);
    EXPECT_EQ(again->GetColorMap(), static_cast<int>(tesk::ColorMap::Thermal));
    EXPECT_FLOAT_EQ(again->GetStyle()->pointSize, 7.0f);

    // A bare cloud cannot map data nor pick colour sets: material, options back to 0, and no
    // normals to show.
    auto bare = MakeGadget(std::make_shared<PointCloudResource>("bare", Line(3)));
    EXPECT_EQ(bare->GetColorSource(), PointCloudGadget::Material);
    EXPECT_EQ(bare->GetColoringOption(), 0);
    EXPECT_EQ(bare->GetDataOption(), 0);
    EXPECT_EQ(bare->GetStyle()->colorMode, vexa::draw::ColorMode::Material);
    EXPECT_FALSE(bare->GetStyle()->useNormals);
    EXPECT_FLOAT_EQ(bare->GetStyle()->pointSize, 7.0f) << "the style is still restored";

    // The user changes something on the bare cloud's panel (which saves the shared file): a
    // later cloud with normals is still lit and still shows its normals. What a cloud lacks
    // is not the user's choice.
    rich = std::make_shared<PointCloudResource>("lit", RichCloud());
    auto lit = MakeGadget(rich);
    lit->GetStyle()->showNormals = true;
    ASSERT_TRUE(lit->SaveState());
    bare = MakeGadget(std::make_shared<PointCloudResource>("bare", Line(3)));
    bare->GetStyle()->pointSize = 5.0f;
    ASSERT_TRUE(bare->SaveState());
    auto next = MakeGadget(std::make_shared<PointCloudResource>("next", RichCloud()));
    EXPECT_TRUE(next->GetStyle()->useNormals);
    EXPECT_TRUE(next->GetStyle()->showNormals);
    EXPECT_FLOAT_EQ(next->GetStyle()->pointSize, 5.0f) << "the change made on the bare cloud's panel stays";
}

TEST(PointCloudGadget, PickReportsThePointAndItsValuesWhileTheCloudIsShown)
{
    testing_support::FakeEngine engine;
    tesk::PointCloud cloud(std::vector<glm::vec3>{
        {0.0f, 0.0f, 0.0f}, {1.23456f, -0.3f, 2.0f}, {5.0f, 0.0f, 0.0f}, {12345.678f, 1e-5f, -0.00004f}});
    cloud.AddColorProperty("RGB", std::vector<tesk::Color3f>(4, tesk::Color3f(0.3f, 0.5f, 1.0f)));
    cloud.AddColorProperty("Labels", std::vector<tesk::Color3f>(4, tesk::Color3f(0.0f, 0.1f, 0.0f)));
    cloud.AddFloatProperty("Intensity", std::vector<float>{1.0f, 7.25f, 0.0f, -2.0f});
    auto resource = std::make_shared<PointCloudResource>("scans/room", cloud);
    engine.Register(resource);
    vexa::Viewarea area(0, gui_test::Root());
    area.ApplyLook(vexa::ViewareaLook{});
    vexa::GetNotifications().Notify(vexa::kResourceAdded, &resource->id);
    const auto gadget =
        std::dynamic_pointer_cast<PointCloudGadget>(area.GetGadgetManager().GetGadget(resource->id));
    ASSERT_NE(gadget, nullptr);

    // The camera 5 units in front of point 1, which lands in the middle of the view area.
    vexa::draw::Scene& scene = *area.GetScene();
    vexa::PickRequest request;
    const auto aim = [&](const glm::vec3& eye) {
        scene.GetCamera()->SetPosition(eye);
        scene.GetCamera()->LookAt(eye - glm::vec3(0.0f, 0.0f, 5.0f), {0.0f, 1.0f, 0.0f});
        request.viewProjection = scene.GetProjectionMatrix() * scene.GetCamera()->GetViewMatrix();
        request.cameraPosition = eye;
    };
    aim({1.23456f, -0.3f, 7.0f});
    request.viewport = scene.GetViewport();
    request.cursor =
        glm::vec2(request.viewport.x + request.viewport.z, request.viewport.y + request.viewport.w) * 0.5f +
        glm::vec2(2.0f, 1.0f);

    std::optional<vexa::PickHit> hit = gadget->Pick(request);
    ASSERT_TRUE(hit.has_value());
    EXPECT_EQ(hit->report, "scans/room point 1 at (1.2346, -0.3, 2); RGB (0.3, 0.5, 1); Labels (0, 0.1, 0); "
                           "Intensity 7.25");
    EXPECT_NEAR(hit->distance, 5.0f, 1e-4f);
    // Values too small for four decimals keep their digits; nothing trails a float's noise.
    EXPECT_EQ(gadget->DescribePoint(3, {12345.678f, 1e-5f, -0.00004f}),
              "scans/room point 3 at (12345.6777, 1e-05, -4e-05); RGB (0.3, 0.5, 1); Labels (0, 0.1, 0); "
              "Intensity -2");

    // The style's transform moves what is drawn, and the pick follows it.
    gadget->GetStyle()->transform.SetPosition({10.0f, 0.0f, 0.0f});
    EXPECT_FALSE(gadget->Pick(request).has_value());
    aim({11.23456f, -0.3f, 7.0f});
    hit = gadget->Pick(request);
    ASSERT_TRUE(hit.has_value());
    EXPECT_EQ(hit->report.rfind("scans/room point 1 at (1.2346, -0.3, 2);", 0), 0u) << hit->report;
    EXPECT_NEAR(hit->distance, 5.0f, 1e-4f);

    // Nothing is picked where nothing is drawn: off the points, or with the cloud hidden.
    vexa::PickRequest aside = request;
    aside.cursor += glm::vec2(40.0f, 0.0f);
    EXPECT_FALSE(gadget->Pick(aside).has_value());
    gadget->GetStyle()->visible = false;
    EXPECT_FALSE(gadget->Pick(request).has_value());
    gadget->GetStyle()->visible = true;
    const int handle = *area.GetGadgetManager().GetRendererHandles(resource->id).begin();
    scene.SetInstanceFlags(handle, vexa::draw::InstanceFlags::Hidden);
    EXPECT_FALSE(gadget->Pick(request).has_value());
    scene.SetInstanceFlags(handle, vexa::draw::InstanceFlags::None);
    EXPECT_TRUE(gadget->Pick(request).has_value());
    // A gadget outside any view area draws nothing.
    EXPECT_FALSE(MakeGadget(resource)->Pick(request).has_value());
}

using PointCloudPanelTest = gui_test::PanelTest;

TEST_F(PointCloudPanelTest, HeaderAndColourSourcesFollowTheCloud)
{
    testing_support::FakeEngine engine;
    tesk::PointCloud bare = Line(2500);
    bare.GetMutablePositions()[0].x = 2000.0f;
    auto resource = std::make_shared<PointCloudResource>("bare", bare);
    auto gadget = MakeGadget(resource);
    {
        vexa::GuiGenerator generator(resource->GetId(), panel_);
        gadget->GenerateGui(generator);
        const std::string all = gui_test::Joined(panel_);
        EXPECT_NE(all.find("Point count: 2500"), std::string::npos) << all;
        EXPECT_NE(all.find("Point space: N/A"), std::string::npos) << all;
        // Twice the radius with two significant digits, and no unit after the blank.
        EXPECT_NE(all.find("Approx size: 1.4e+03 \n"), std::string::npos) << all;
        EXPECT_EQ(all.find("Display normals"), std::string::npos) << "no normals, no normal rows";
    }

    // With everything on offer the colour source lists all four, in order.
    Renew();
    auto richResource = std::make_shared<PointCloudResource>("rich", RichCloud());
    vexa::GuiGenerator generator(richResource->GetId(), panel_);
    MakeGadget(richResource)->GenerateGui(generator);
    EXPECT_NE(gui_test::Joined(panel_).find("Color source|Material|Normals|Colors|Data Mapping\n"),
              std::string::npos)
        << gui_test::Joined(panel_);
}

TEST(ScanGadget, MarkerTurnFollowsTheScansCameraBasis)
{
    // Every branch of the conversion (largest w, x, y or z) gives back the same rotation.
    for (const glm::vec3& axis :
         {glm::vec3(1, 0, 0), glm::vec3(0, 1, 0), glm::vec3(0, 0, 1), glm::vec3(1, 1, 1)})
        for (float angle : {0.5f, 2.0f, 3.1f}) {
            const glm::mat3 basis(glm::rotate(glm::mat4(1.0f), angle, axis));
            const glm::mat3 back = glm::mat3_cast(ScanGadget::BasisToRotation(basis));
            for (int c = 0; c < 3; ++c)
                EXPECT_LT(glm::distance(back[c], basis[c]), 1e-5f) << angle;
        }
}

} // namespace
