#include "core/Notifications.h"
#include "core/Viewarea.h"
#include "scene/GadgetManager.h"

#include <vexa/Camera.h>
#include <vexa/GuiGenerator.h>
#include <vexa/modules/ScanGadget.h>
#include <vexa/modules/ScanResource.h>

#include <vexa/draw/GeometryStyle.h>
#include <vexa/draw/Scene.h>

#include <tesk/Scan.h>

#include "FakeEngine.h"
#include "GuiTestSupport.h"

#include <CEGUI/CEGUI.h>

#include <glm/geometric.hpp>
#include <glm/gtc/matrix_transform.hpp>

namespace {

using vexa::modules::ScanGadget;
using vexa::modules::ScanResource;

// A square of points around the origin seen by a camera 10 units up the Z axis.
tesk::Scan SquareScan()
{
    std::vector<glm::vec3> points;
    for (int y = -2; y <= 2; ++y)
        for (int x = -2; x <= 2; ++x)
            points.emplace_back(static_cast<float>(x), static_cast<float>(y), 0.0f);
    tesk::Scan scan{tesk::PointCloud(std::move(points))};
    scan.SetResolution(640, 480);
    scan.SetCameraPosition({0.0f, 0.0f, 10.0f});
    scan.SetCameraUp({1.0f, 0.0f, 0.0f});
    return scan;
}

class ScanModuleTest : public gui_test::PanelTest {};

TEST_F(ScanModuleTest, MarkerSizeAndTurnFollowTheScansCamera)
{
    EXPECT_FLOAT_EQ(ScanGadget::MarkerScale({0.0f, 0.0f, 10.0f}, glm::vec3(0.0f)), 2.0f);
    const glm::quat identity = ScanGadget::BasisToRotation(glm::mat3(1.0f));
    EXPECT_FLOAT_EQ(identity.w, 1.0f);
    EXPECT_FLOAT_EQ(identity.x, 0.0f);
    // Every branch of the conversion (largest w, x, y or z) gives back the same rotation.
    for (const glm::vec3& axis : {glm::vec3(1, 0, 0), glm::vec3(0, 1, 0), glm::vec3(0, 0, 1), glm::vec3(1, 1, 1)})
        for (float angle : {0.5f, 2.0f, 3.1f})
        {
            const glm::mat3 basis(glm::rotate(glm::mat4(1.0f), angle, axis));
            const glm::mat3 back = glm::mat3_cast(ScanGadget::BasisToRotation(basis));
            for (int c = 0; c < 3; ++c)
                EXPECT_LT(glm::distance(back[c], basis[c]), 1e-5f) << angle;
        }
}

TEST_F(ScanModuleTest, ShowsTheMarkerLooksFromTheCameraAndListsTheCameraInThePanel)
{
    testing_support::FakeEngine engine;
    tesk::Scan scan = SquareScan();
    const glm::mat3 basis(glm::rotate(glm::mat4(1.0f), 0.5f, glm::vec3(0.0f, 1.0f, 0.0f)));
    scan.SetCameraBasis(basis);
    auto resource = std::make_shared<ScanResource>("scans/square", scan);
    engine.Register(resource);
    vexa::Viewarea area(0, gui_test::Root());
    area.ApplyLook(vexa::ViewareaLook{});
    vexa::GetNotifications().Notify(vexa::kResourceAdded, &resource->id);
    auto gadget = std::dynamic_pointer_cast<ScanGadget>(area.GetGadgetManager().GetGadget(resource->id));
    ASSERT_NE(gadget, nullptr);

    // The cloud and the marker are both in the scene.
    EXPECT_EQ(area.GetGadgetManager().GetRendererHandles(resource->id).size(), 2u);
    const tesk::Transform& marker = gadget->GetMarkerStyle()->transform;
    EXPECT_EQ(marker.GetPosition(), glm::vec3(0.0f, 0.0f, 10.0f));
    EXPECT_FLOAT_EQ(marker.GetScale().x, 2.0f);

    ASSERT_TRUE(area.GetGadgetManager().FocusCamera(resource->id));
    vexa::Camera& camera = *area.GetCamera();
    EXPECT_LT(glm::distance(camera.GetPosition(), glm::vec3(0.0f, 0.0f, 10.0f)), 1e-4f);
    EXPECT_LT(glm::distance(camera.GetUp(), glm::vec3(1.0f, 0.0f, 0.0f)), 1e-4f) << "upright as the scan's camera";

    vexa::GuiGenerator generator(resource->GetId(), panel_);
    gadget->GenerateGui(generator);
    // The point count is the cloud's: a scan is a point cloud.
    const std::string all = gui_test::Joined(panel_);
    EXPECT_EQ(all.rfind("Resolution: 640 x 480\nCamera basis: custom\nPoint count: 25\n", 0), 0u) << all;
    EXPECT_NE(all.find("Display Camera"), std::string::npos) << all;
}

} // namespace
