#include "core/EngineServices.h"
#include "core/GeneralOptions.h"
#include "gui/GuiGlobalOptions.h"

#include "GuiTestSupport.h"

#include <CEGUI/CEGUI.h>

#include <functional>

namespace {

// Stands in for the engine: its own options (whose effects are the settings tier's) and
// counters for the two button requests.
class OptionsServices final : public vexa::EngineServices {
public:
    OptionsServices() { vexa::SetEngineServices(this); }
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

TEST_F(GlobalOptionsPanelTest, RowsStartFromTheOptionsAndEveryControlChangesItsOptionForSaving)
{
    services_.options.SetShortcutsEnabled(false);
    services_.options.SetAntiAliasing(3);
    Build();
    // The escapes stay in the text; CEGUI's markup parser turns them into printed brackets.
    EXPECT_EQ(gui_test::Texts(panel_->GetClientWindow()),
              (std::vector<std::string>{"White background", "Mouse sensitivity", "Optimized rendering",
                                        "Enable Shortcuts",
                                        "Anti-aliasing|Off|MSAA 2x|MSAA 4x|MSAA 8x|MSAA 16x|FXAA",
                                        "Select layout \\[Tab]", "Reload shaders \\[R]"}));
    EXPECT_EQ(std::vector<bool>({Box(0)->isSelected(), Box(2)->isSelected(), Box(3)->isSelected()}),
              std::vector<bool>({false, true, false}));
    EXPECT_EQ(AntiAliasing()->getText(), "MSAA 8x");
    EXPECT_NEAR(Slider()->getCurrentValue(), 0.5f, 1e-6f);
    // The panel is as tall as its seven rows, not the bare header.
    EXPECT_GT(panel_->GetExpandedHeight(), 7 * 20.0f);

    const auto dirtied = [&](const std::function<void()>& act) {
        services_.options.SetDirty(false);
        act();
        return services_.options.IsDirty();
    };
    EXPECT_TRUE(dirtied([&] { Box(0)->setSelected(true); }));
    EXPECT_TRUE(services_.options.IsWhiteBackground());
    EXPECT_TRUE(dirtied([&] { Slider()->setCurrentValue(Slider()->getMaxValue()); }));
    EXPECT_NEAR(services_.options.GetSensitivity(), 1.8f, 1e-6f);
    Slider()->setCurrentValue(0.0f);
    EXPECT_NEAR(services_.options.GetSensitivity(), 0.2f, 1e-6f);
    EXPECT_TRUE(dirtied([&] { Box(2)->setSelected(false); }));
    EXPECT_FALSE(services_.options.IsOptimizedRendering());
    EXPECT_TRUE(dirtied([&] { Box(3)->setSelected(true); }));
    EXPECT_TRUE(services_.options.IsShortcutsEnabled());
    EXPECT_TRUE(dirtied([&] { gui_test::Choose(AntiAliasing(), 5); }));
    EXPECT_EQ(services_.options.GetAntiAliasing(), 5);

    // Unticked, then ticked while the flag already says so (another view area's panel set
    // it): nothing to save.
    Box(0)->setSelected(false);
    EXPECT_FALSE(services_.options.IsWhiteBackground());
    services_.options.SetWhiteBackground(true);
    EXPECT_FALSE(dirtied([&] { Box(0)->setSelected(true); }));

    for (int row : {5, 6, 6})
        gui_test::Click(Row(row)->getChild("dynamic_control"));
    EXPECT_EQ(services_.chooserRequests, 1);
    EXPECT_EQ(services_.reloadRequests, 2);
}

} // namespace
