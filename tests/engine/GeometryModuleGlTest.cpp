#include "EngineTestSupport.h"

#include "core/Viewarea.h"
#include "scene/GadgetManager.h"

#include <vexa/Camera.h>
#include <vexa/modules/GeometryGadget.h>
#include <vexa/modules/GeometryResource.h>

#include <tesk/Image.h>

namespace {

using namespace engine_test;

float Brightness(const tesk::Image& image, std::uint32_t x, std::uint32_t y)
{
    return (image.At(x, y, 0) + image.At(x, y, 1) + image.At(x, y, 2)) / 3.0f;
}

// A matcap is the picture of a lit sphere seen from the camera: its top half must light the
// top of every surface. With a matcap that is white above its middle and black below, a sphere
// seen level must come out bright on top and dark underneath, not the other way round.
using GeometryModuleGl = EngineCase;

TEST_F(GeometryModuleGl, MatcapLightsFromWhereThePictureIsBright)
{
    // Assets of our own: the real shaders and GUI resources, and one matcap made here.
    const fs::path assets = state / "assets";
    fs::create_directories(assets / "matcaps");
    fs::create_directory_symlink(fs::path(VEXA_SOURCE_ASSET_DIR) / "shaders", assets / "shaders");
    fs::create_directory_symlink(fs::path(VEXA_SOURCE_ASSET_DIR) / "resources", assets / "resources");
    std::vector<std::uint8_t> pixels(64 * 64 * 3 / 2, 255); // the top half white
    pixels.resize(64 * 64 * 3, 0);
    tesk::Image picture;
    ASSERT_TRUE(picture.SetPixels(64, 64, 3, std::span<const std::uint8_t>(pixels)));
    for (const char* name : {"a", "b", "c", "d", "e", "f"})
        ASSERT_TRUE(picture.SavePng((assets / "matcaps" / (std::string(name) + ".png")).string()));

    vexa::Engine engine;
    ASSERT_TRUE(Start(engine, state, "", assets.string()));
    vexa::Viewarea& area = *engine.GetViewareas().front();
    area.SetSidebarVisible(false);
    area.SetAxesVisible(false);

    auto sphere = std::make_shared<vexa::modules::GeometryResource>("ball", vexa::draw::GeometryName::Sphere);
    engine.AddResource(sphere);
    ASSERT_TRUE(area.GetGadgetManager().HasGadget(sphere->GetId()));
    auto gadget = std::static_pointer_cast<vexa::modules::GeometryGadget>(
        area.GetGadgetManager().GetGadget(sphere->GetId()));
    gadget->GetStyle()->useMatcap = true;
    // The panel loads the matcap at the stored index (the sixth file) when it is built.
    area.SetSidebarVisible(true);
    engine.Update();
    ASSERT_NE(gadget->GetStyle()->matcap, nullptr);
    area.SetSidebarVisible(false);
    area.GetCamera()->SetTarget(glm::vec3(0.0f));
    area.GetCamera()->SetPosition(glm::vec3(0.0f, 0.0f, 4.0f));
    engine.Update();

    const fs::path shot = state / "matcap.png";
    ASSERT_TRUE(engine.SaveScreenshot(shot.string()));
    tesk::Image image;
    ASSERT_TRUE(image.LoadPng(shot.string()));
    const std::uint32_t x = image.GetWidth() / 2;
    const std::uint32_t mid = image.GetHeight() / 2;
    // The sphere (radius 1, 4 units away) covers well over a tenth of the height either way.
    const std::uint32_t offset = image.GetHeight() / 10;
    EXPECT_GT(Brightness(image, x, mid - offset), 0.8f) << "top of the sphere";
    EXPECT_LT(Brightness(image, x, mid + offset), 0.2f) << "bottom of the sphere";
}

} // namespace
