#include "EngineTestSupport.h"

#include "core/Viewarea.h"
#include "gui/GuiStylingPanel.h"
#include "gui/Sidebar.h"
#include "scene/GadgetManager.h"

#include <vexa/modules/PointCloudGadget.h>
#include <vexa/modules/PointCloudResource.h>

#include <tesk/ColorMap.h>
#include <tesk/Image.h>

namespace {

using namespace engine_test;

// A dense sheet of points through the origin, facing the default camera, with one float
// property whose values all sit at the top of its range.
tesk::PointCloud Sheet()
{
    std::vector<glm::vec3> positions;
    for (int i = -150; i <= 150; ++i)
        for (int j = -150; j <= 150; ++j)
            positions.emplace_back(i * 0.02f, j * 0.02f, -(i + j) * 0.02f);
    tesk::PointCloud cloud(std::move(positions));
    cloud.AddFloatProperty("Temperature", std::vector<float>(cloud.Size(), 10.0f));
    return cloud;
}

tesk::Color3f ProbePixel(vexa::Engine& engine, const fs::path& file)
{
    EXPECT_TRUE(engine.SaveScreenshot(file.string()));
    tesk::Image image;
    EXPECT_TRUE(image.LoadPng(file.string()));
    // Left of the sidebar, below the middle: covered by the sheet whatever the panel shows.
    const std::uint32_t x = image.GetWidth() / 4;
    const std::uint32_t y = image.GetHeight() * 2 / 3;
    return {image.At(x, y, 0), image.At(x, y, 1), image.At(x, y, 2)};
}

using PointCloudModuleGl = EngineCase;

TEST_F(PointCloudModuleGl, ChoosingDataMappingColoursTheCloudByTheMap)
{
    vexa::Engine engine;
    ASSERT_TRUE(Start(engine, state));
    vexa::Viewarea& area = *engine.GetViewareas().front();
    area.SetSidebarVisible(true);
    area.SetAxesVisible(false);

    auto cloud = std::make_shared<vexa::modules::PointCloudResource>("sheet", Sheet());
    engine.AddResource(cloud);
    for (int i = 0; i < 3; ++i)
        engine.Update();
    ASSERT_TRUE(area.GetGadgetManager().HasGadget(cloud->GetId()));
    auto gadget = std::static_pointer_cast<vexa::modules::PointCloudGadget>(
        area.GetGadgetManager().GetGadget(cloud->GetId()));
    gadget->GetStyle()->pointSize = 8.0f;

    const tesk::Color3f before = ProbePixel(engine, state / "material.png");
    const tesk::Color3f material = gadget->GetStyle()->material.color;
    EXPECT_NEAR(before.r, material.r, 0.05f);
    EXPECT_NEAR(before.b, material.b, 0.05f);

    // Through the panel, as a user does it: the colour source list, then the colour map.
    vexa::GuiStylingPanel* panel = area.GetSidebar()->GetResourcePanel(cloud->GetId());
    ASSERT_NE(panel, nullptr);
    const auto list = [&](const CEGUI::String& caption) -> CEGUI::Combobox* {
        for (int n = 0; CEGUI::Window* row = panel->GetWindow()->getChildRecursive(
                            "generated_element_" + CEGUI::PropertyHelper<std::int32_t>::toString(n));
             ++n)
            if (CEGUI::Window* label = row->getChildRecursive("dynamic_label");
                label && label->getText() == caption)
                return static_cast<CEGUI::Combobox*>(row->getChildRecursive("combo_element"));
        return nullptr;
    };
    // Material, Normals, then Data Mapping (no colour sets in this cloud).
    Choose(list("Color source"), 2);
    ASSERT_EQ(gadget->GetColorSource(), vexa::modules::PointCloudGadget::DataMapping);
    // "Rainbow" is the second map in the list.
    Choose(list("Color map"), 1);
    ASSERT_EQ(gadget->GetColorMap(), static_cast<int>(tesk::ColorMap::Rainbow));
    area.SetSidebarVisible(false);
    engine.Update();

    const tesk::Color3f mapped = ProbePixel(engine, state / "mapped.png");
    const tesk::Color3f expected = tesk::MapValueToColor(1.0f, tesk::ColorMap::Rainbow);
    EXPECT_NEAR(mapped.r, expected.r, 0.05f);
    EXPECT_NEAR(mapped.g, expected.g, 0.05f);
    EXPECT_NEAR(mapped.b, expected.b, 0.05f);

    // The choice is kept for the next cloud of this view area.
    EXPECT_TRUE(fs::exists(state / "PointCloudResourceState0.bin"));
}

} // namespace
