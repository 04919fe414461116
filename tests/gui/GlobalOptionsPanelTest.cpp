#include "core/EngineServices.h"
#include "core/GeneralOptions.h"
#include "gui/GuiGlobalOptions.h"

#include "GuiTestSupport.h"

#include <CEGUI/CEGUI.h>

namespace {

// Stands in for the engine: its own options with hooks that record what would reach the
// render system and the camera controller, and counters for the two button requests.
class OptionsServices final : public vexa::EngineServices {
public:
    OptionsServices()
    {
        vexa::GeneralOptions::Hooks hooks;
        hooks.setAntiAliasing = [this](int method) { antiAliasing.push_back(method); };
        hooks.setBackground = [this](const tesk::Color3b& color) { background = color; };
        hooks.setSensitivity = [this](float value) { sensitivity = value; };
        options.SetHooks(std::move(hooks));
        options.SetBackgroundColor(tesk::Color3b{0x22, 0x33, 0x44});
        options.SetDirty(false);
        vexa::SetEngineServices(this);
    }
    ~OptionsServices() override { vexa::SetEngineServices(nullptr); }

    void RequestRedraw() override {}
    const std::string& GetIntermediateDirectory() const override { return directory_; }
    const std::string& GetAssetDirectory() const override { return directory_; }
    std::shared_ptr<vexa::Resource> FindResource(const vexa::ResourceId&) const override { return nullptr; }
    vexa::draw::RenderSystem* GetRenderSystem() override { return nullptr; }
    vexa::CameraController* GetCameraController() override { return nullptr; }
    std::vector<std::shared_ptr<vexa::draw::Light>> GetLights() const override { return {}; }
    vexa::GeneralOptions& GetGeneralOptions() override { return options; }
    void ShowLayoutChooser() override { ++chooserRequests; }
    void RequestShaderReload() override { ++reloadRequests; }

    vexa::GeneralOptions options;
    std::vector<int> antiAliasing;
    tesk::Color3b background{0, 0, 0};
    float sensitivity = 0.0f;
    int chooserRequests = 0;
    int reloadRequests = 0;

private:
    std::string directory_ = "./";
};

class GlobalOptionsPanelTest : public testing::Test {
protected:
    void TearDown() override
    {
        panel_.reset();
        CEGUI::WindowManager::getSingleton().cleanDeadPool();
    }

    vexa::GuiGlobalOptions& Build()
    {
        panel_ = std::make_unique<vexa::GuiGlobalOptions>(services_.GetGeneralOptions());
        gui_test::Root()->addChild(panel_->GetWindow());
        panel_->GetWindow()->setWidth(CEGUI::UDim(0, 263));
        return *panel_;
    }
    CEGUI::Window* Row(int index) const
    {
        return panel_->GetClientWindow()->getChild("generated_element_" + std::to_string(index));
    }
    CEGUI::ToggleButton* Box(int index) const
    {
        return static_cast<CEGUI::ToggleButton*>(Row(index)->getChild("dynamic_control"));
    }
    CEGUI::Slider* Slider() const { return static_cast<CEGUI::Slider*>(Row(1)->getChild("dynamic_control")); }
    CEGUI::Combobox* AntiAliasing() const
    {
        return static_cast<CEGUI::Combobox*>(Row(4)->getChild("dynamic_control/combo_element"));
    }

    OptionsServices services_;
    std::unique_ptr<vexa::GuiGlobalOptions> panel_;
};

TEST_F(GlobalOptionsPanelTest, RowsComeInOrderWithTheirCaptionsAndStartFromTheOptions)
{
    services_.options.SetShortcutsEnabled(false);
    services_.options.SetAntiAliasing(3);
    Build();
    EXPECT_EQ(panel_->GetHeader()->getChild("lab_title")->getText(), "Global Options");

    // The escapes stay in the text; CEGUI's markup parser turns them into printed brackets.
    EXPECT_EQ(gui_test::Texts(panel_->GetClientWindow()),
              (std::vector<std::string>{"White background", "Mouse sensitivity", "Optimized rendering",
                                        "Enable Shortcuts", "Anti-aliasing|Off|MSAA 2x|MSAA 4x|MSAA 8x|MSAA 16x|FXAA",
                                        "Select layout \\[Tab]", "Reload shaders \\[R]"}));

    EXPECT_FALSE(Box(0)->isSelected());
    EXPECT_TRUE(Box(2)->isSelected());
    EXPECT_FALSE(Box(3)->isSelected());
    EXPECT_EQ(AntiAliasing()->getText(), "MSAA 8x");
    // The panel is as tall as its seven rows, not the bare header.
    EXPECT_GT(panel_->GetExpandedHeight(), 7 * 20.0f);
}

TEST_F(GlobalOptionsPanelTest, WhiteBackgroundTogglesBetweenWhiteAndTheStoredColour)
{
    Build();
    Box(0)->setSelected(true);
    EXPECT_TRUE(services_.options.IsWhiteBackground());
    EXPECT_EQ(services_.background, (tesk::Color3b{255, 255, 255}));
    EXPECT_TRUE(services_.options.IsDirty());

    Box(0)->setSelected(false);
    EXPECT_FALSE(services_.options.IsWhiteBackground());
    EXPECT_EQ(services_.background, (tesk::Color3b{0x22, 0x33, 0x44}));

    // The flag already says so (another view area's panel set it): nothing to save.
    services_.options.SetDirty(false);
    services_.options.SetWhiteBackground(true);
    services_.options.SetDirty(false);
    Box(0)->setSelected(true);
    EXPECT_FALSE(services_.options.IsDirty());
}

TEST_F(GlobalOptionsPanelTest, SensitivityMapsOntoPointTwoToOnePointEightAndTheOtherControlsReachTheEngine)
{
    services_.options.SetStoredSensitivity(vexa::GeneralOptions::ToStoredSensitivity(1.0f));
    services_.options.SetDirty(false);
    Build();
    EXPECT_NEAR(Slider()->getCurrentValue(), 0.5f, 1e-6f);

    Slider()->setCurrentValue(Slider()->getMaxValue()); // dragged to the right end
    EXPECT_NEAR(services_.sensitivity, 1.8f, 1e-6f);
    EXPECT_NEAR(services_.options.GetSensitivity(), 1.8f, 1e-6f);
    EXPECT_TRUE(services_.options.IsDirty());
    Slider()->setCurrentValue(0.0f);
    EXPECT_NEAR(services_.sensitivity, 0.2f, 1e-6f);

    services_.options.SetDirty(false);
    services_.antiAliasing.clear();
    gui_test::Choose(AntiAliasing(), 5);
    ASSERT_FALSE(services_.antiAliasing.empty());
    EXPECT_EQ(services_.antiAliasing.back(), 5);
    EXPECT_EQ(services_.options.GetAntiAliasing(), 5);
    EXPECT_TRUE(services_.options.IsDirty());

    services_.options.SetDirty(false);
    Box(2)->setSelected(false);
    EXPECT_FALSE(services_.options.IsOptimizedRendering());
    EXPECT_TRUE(services_.options.IsDirty());
    services_.options.SetDirty(false);
    Box(3)->setSelected(false);
    EXPECT_FALSE(services_.options.IsShortcutsEnabled());
    EXPECT_TRUE(services_.options.IsDirty());

    for (int row : {5, 6, 6})
        gui_test::Click(Row(row)->getChild("dynamic_control"));
    EXPECT_EQ(services_.chooserRequests, 1);
    EXPECT_EQ(services_.reloadRequests, 2);
}

} // namespace
