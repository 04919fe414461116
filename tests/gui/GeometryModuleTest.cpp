#include <vexa/GuiGenerator.h>
#include <vexa/modules/GeometryGadget.h>
#include <vexa/modules/GeometryResource.h>

#include <vexa/draw/GeometryRenderer.h>
#include <vexa/draw/GeometryStyle.h>

#include <plor/Texture.h>
#include <tesk/Image.h>

#include "FakeEngine.h"
#include "GuiTestSupport.h"

#include <CEGUI/CEGUI.h>

#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;
using vexa::modules::GeometryGadget;
using vexa::modules::GeometryResource;
namespace draw = vexa::draw;

// Exposes the state stream to the test; nothing else changes.
class OpenGeometryGadget : public GeometryGadget {
public:
    using GeometryGadget::GeometryGadget;
    using GeometryGadget::ReadFromStream;
    using GeometryGadget::WriteToStream;
};

class GeometryModuleTest : public gui_test::PanelTest {
protected:
    void SetUp() override
    {
        PanelTest::SetUp();
        assets_ = fs::path(engine_.GetIntermediateDirectory()) / "assets";
        fs::create_directories(assets_ / "matcaps");
        engine_.assetDirectory = assets_.string() + "/";
    }

    void WriteMatcaps(const std::vector<std::string>& names)
    {
        tesk::Image image;
        image.Create(2, 2, 3, tesk::PixelFormat::UInt8);
        for (const std::string& name : names)
            ASSERT_TRUE(image.SavePng((assets_ / "matcaps" / (name + ".png")).string()));
        std::ofstream(assets_ / "matcaps" / "notes.txt") << "not an image";
    }

    std::shared_ptr<OpenGeometryGadget> MakeGadget()
    {
        auto gadget = std::make_shared<OpenGeometryGadget>(&resource_, resource_.GetRenderer());
        testing_support::LogCapture quiet; // no view area to add the renderer to
        gadget->Initialize();
        return gadget;
    }

    /// Hidden through the row itself or through the group it sits in, or not there at all.
    bool Shown(const std::string& label) const
    {
        CEGUI::Window* row = gui_test::FindRow(panel_, label);
        for (CEGUI::Window* w = row; w != nullptr && w != panel_; w = w->getParent())
            if (!w->isVisible() || w->getPixelSize().d_height <= 0.0f)
                return false;
        return row != nullptr;
    }

    testing_support::FakeEngine engine_;
    fs::path assets_;
    GeometryResource resource_{"probe", draw::GeometryName::Sphere};
};

TEST_F(GeometryModuleTest, RowsFollowTheRenderMode)
{
    auto gadget = MakeGadget();
    draw::GeometryStyle& style = *gadget->GetStyle();
    vexa::GuiGenerator generator(resource_.GetId(), panel_);
    gadget->GenerateGui(generator);
    generator.SetAutoTestConditionsEnabled(true);

    const auto check = [&](int mode, bool pointSize, bool normals, bool wires, bool useMatcap, bool pointMaterial) {
        style.renderMode = mode;
        generator.TestElementConditions();
        EXPECT_EQ(Shown("Point size"), pointSize) << "mode " << mode;
        EXPECT_EQ(Shown("Normals"), normals) << "mode " << mode;
        EXPECT_EQ(Shown("Thickness"), wires) << "mode " << mode;
        EXPECT_EQ(Shown("Use matcap"), useMatcap) << "mode " << mode;
        EXPECT_EQ(Shown("Point Material"), pointMaterial) << "mode " << mode;
        EXPECT_TRUE(Shown("Face Material")) << "mode " << mode;
    };
    check(draw::RenderMode::Points, true, false, false, false, true);
    // With wires the point size is not offered: the wire thickness is what shows.
    check(draw::RenderMode::PointsAndWires, false, false, true, false, true);
    check(draw::RenderMode::Wires, false, false, true, false, false);
    check(draw::RenderMode::Solid, false, true, false, true, false);
    check(draw::RenderMode::SolidAndWires, false, true, true, true, false);

    EXPECT_FALSE(Shown("Matcap sampler"));
    style.useMatcap = true;
    generator.TestElementConditions();
    EXPECT_TRUE(Shown("Matcap sampler"));
    EXPECT_FALSE(Shown("Length"));
    style.showNormals = true;
    generator.TestElementConditions();
    EXPECT_TRUE(Shown("Length"));
}

TEST_F(GeometryModuleTest, MatcapIndexPicksFromTheSortedFolderOrNothing)
{
    WriteMatcaps({"Gamma", "Alpha", "Foxtrot", "Beta", "Echo", "Delta", "Golf"});
    EXPECT_EQ(GeometryGadget::ListMatcaps(),
              (std::vector<std::string>{"Alpha", "Beta", "Delta", "Echo", "Foxtrot", "Gamma", "Golf"}));

    auto gadget = MakeGadget();
    {
        vexa::GuiGenerator generator(resource_.GetId(), panel_);
        gadget->GenerateGui(generator);
        ASSERT_NE(gadget->GetStyle()->matcap, nullptr) << "index 5 (Gamma) is loaded as the panel is built";
        EXPECT_TRUE(gadget->GetStyle()->matcap->HasImage());

        // The user's choice is what the state file holds, not the one before it. Changes are
        // reported once the panel is built, as in a sidebar.
        generator.SetAutoTestConditionsEnabled(true);
        CEGUI::Window* row = gui_test::FindRow(panel_, "Matcap sampler");
        ASSERT_NE(row, nullptr) << "no matcap list";
        gui_test::Choose(static_cast<CEGUI::Combobox*>(row->getChildRecursive("combo_element")), 6);
        EXPECT_EQ(gadget->GetMatcapIndex(), 6);
        EXPECT_EQ(MakeGadget()->GetMatcapIndex(), 6) << "read back from the file the change wrote";
    }

    // Fewer files than the stored index (6, "Golf"): no selection, no matcap, the rest of the
    // panel works.
    for (const char* name : {"Gamma", "Golf", "Foxtrot"})
        fs::remove(assets_ / "matcaps" / (std::string(name) + ".png"));
    Renew();
    auto other = MakeGadget();
    vexa::GuiGenerator generator(resource_.GetId(), panel_);
    other->GenerateGui(generator);
    EXPECT_EQ(other->GetStyle()->matcap, nullptr);
    EXPECT_TRUE(Shown("Render mode"));
}

TEST_F(GeometryModuleTest, StateStreamRoundTripsAndRefusesForeignRecords)
{
    auto gadget = MakeGadget();
    gadget->GetStyle()->renderMode = draw::RenderMode::Wires;
    gadget->GetStyle()->wireThickness = 2.5f;
    std::stringstream stream;
    gadget->WriteToStream(stream);
    const std::string bytes = stream.str();

    auto fresh = MakeGadget();
    std::stringstream in(bytes);
    ASSERT_TRUE(fresh->ReadFromStream(in));
    EXPECT_EQ(fresh->GetStyle()->renderMode, draw::RenderMode::Wires);
    EXPECT_FLOAT_EQ(fresh->GetStyle()->wireThickness, 2.5f);
    EXPECT_EQ(fresh->GetMatcapIndex(), GeometryGadget::kDefaultMatcapIndex);

    // Bytes 4..7 are the style block's outer version (0); the fields' version (1) comes
    // right before the last word. Either one changed, or the record cut short, keeps defaults.
    std::string badStyleVersion = bytes;
    badStyleVersion[4] = 1;
    std::string badFieldsVersion = bytes;
    badFieldsVersion[bytes.size() - 8] = 2;
    testing_support::LogCapture log;
    for (const std::string& broken : {badStyleVersion, badFieldsVersion, bytes.substr(0, bytes.size() - 2)})
    {
        auto target = MakeGadget();
        std::stringstream brokenIn(broken);
        EXPECT_FALSE(target->ReadFromStream(brokenIn));
        EXPECT_EQ(target->GetStyle()->renderMode, draw::GeometryStyle().renderMode);
        EXPECT_FLOAT_EQ(target->GetStyle()->wireThickness, draw::GeometryStyle().wireThickness);
    }
}

TEST_F(GeometryModuleTest, FocusFramesTheShapeWhereItsTransformPutsIt)
{
    auto gadget = MakeGadget();
    gadget->GetStyle()->transform.SetPosition(glm::vec3(10.0f, 0.0f, 0.0f));
    glm::vec3 target, eye;
    ASSERT_TRUE(gadget->FocusCamera(target, eye));
    EXPECT_NEAR(target.x, 10.0f, 1e-4f);
    // The unit sphere's box has a half diagonal of sqrt(3): far enough to see all of it.
    EXPECT_NEAR(glm::length(eye - target), 3.0f, 1e-3f);
}

TEST(GeometryResource, SetGeometrySwapsTheRenderer)
{
    GeometryResource resource("marker", vexa::draw::GeometryName::Box);
    auto before = resource.GetRenderer();
    resource.SetGeometry(vexa::draw::GeometryName::Camera);
    EXPECT_NE(resource.GetRenderer(), before);
    EXPECT_EQ(resource.GetRenderer()->GetGeometryName(), vexa::draw::GeometryName::Camera);
}

} // namespace
