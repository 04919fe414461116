#include "core/Notifications.h"
#include "gui/GuiResourceBrowser.h"

#include "GuiTestSupport.h"

#include <CEGUI/CEGUI.h>

namespace {

using vexa::GuiResourceInspector;
using vexa::ResourceId;

class ResourceInspectorTest : public testing::Test {
protected:
    void SetUp() override
    {
        inspector_ = std::make_unique<GuiResourceInspector>();
        gui_test::Root()->addChild(inspector_->GetWindow());
        inspector_->GetWindow()->setWidth(CEGUI::UDim(0, 263));
        inspector_->SetSelectionCallback([this](const ResourceId& id) { picked_.push_back(id); });
    }
    void TearDown() override
    {
        inspector_.reset();
        CEGUI::WindowManager::getSingleton().cleanDeadPool();
    }

    CEGUI::Window* Child(const char* path) const { return inspector_->GetClientWindow()->getChild(path); }
    /// The list's texts, top to bottom, after the update that follows the changes.
    std::vector<std::string> Shown()
    {
        inspector_->Update();
        std::vector<std::string> texts;
        CEGUI::ItemListbox* list = inspector_->GetList();
        for (std::size_t i = 0; i < list->getItemCount(); ++i)
            texts.emplace_back(list->getItemFromIndex(i)->getText().c_str());
        return texts;
    }
    std::string Location() const { return Child("LabLocation")->getText().c_str(); }
    CEGUI::ItemEntry* Item(const std::string& text) const
    {
        return inspector_->GetList()->findItemWithText(text, nullptr);
    }
    void Pick(const std::string& text)
    {
        CEGUI::ItemEntry* item = Item(text);
        ASSERT_NE(item, nullptr) << text;
        item->setSelected(true);
        inspector_->Update();
    }
    void Click(const char* button) const { gui_test::Click(Child(button)); }

    std::unique_ptr<GuiResourceInspector> inspector_;
    std::vector<ResourceId> picked_;
};

TEST_F(ResourceInspectorTest, FoldersComeFromThePathComponentsAndAreBrowsed)
{
    EXPECT_EQ(Location(), "/Location");
    inspector_->InsertResource(ResourceId("a/c", "Cloud"));
    inspector_->InsertResource(ResourceId("a/b", "Cloud"));
    inspector_->InsertResource(ResourceId("z", "Mesh"));
    inspector_->InsertResource(ResourceId("a/b", "Cloud")); // already there
    EXPECT_EQ(inspector_->GetResourceCount(), 3u);

    EXPECT_EQ(Shown(), (std::vector<std::string>{"a/", "z"}));
    EXPECT_EQ(Location(), "/");
    EXPECT_EQ(Item("a/")->getProperty("TextColour"), "FF797979");
    EXPECT_NE(Item("z")->getProperty("TextColour"), "FF797979");

    Pick("a/");
    EXPECT_EQ(Shown(), (std::vector<std::string>{"b", "c"}));
    EXPECT_EQ(Location(), "/a");
    EXPECT_TRUE(picked_.empty());

    Click("BtnUp");
    EXPECT_EQ(Shown(), (std::vector<std::string>{"a/", "z"}));
    Click("BtnUp"); // at the root already
    EXPECT_EQ(Location(), "/");

    Pick("a/");
    Click("BtnHome");
    EXPECT_EQ(Shown(), (std::vector<std::string>{"a/", "z"}));
}

TEST_F(ResourceInspectorTest, ErasingFollowsTheResourcesAndEmptyFoldersGo)
{
    // A resource named like a folder gets an item of its own beside the folder's.
    inspector_->InsertResource(ResourceId("scans/left/c0", "Scan"));
    inspector_->InsertResource(ResourceId("scans/left/c1", "Scan"));
    inspector_->InsertResource(ResourceId("scans", "Mesh"));
    EXPECT_EQ(Shown(), (std::vector<std::string>{"scans", "scans/"}));

    Pick("scans/");
    Pick("left/");
    EXPECT_EQ(Shown(), (std::vector<std::string>{"c0", "c1"}));
    EXPECT_EQ(Location(), "/scans/left");

    // The library's notifications drive the tree once it follows them.
    inspector_->FollowResources({});
    const ResourceId c0("scans/left/c0", "Scan"), c1("scans/left/c1", "Scan");
    vexa::GetNotifications().Notify(vexa::kResourceRemoved, &c0);
    EXPECT_EQ(Shown(), (std::vector<std::string>{"c1"}));
    // The folder that held the last one goes, and the view moves out of it.
    vexa::GetNotifications().Notify(vexa::kResourceRemoved, &c1);
    EXPECT_EQ(Shown(), (std::vector<std::string>{"scans"}));
    EXPECT_EQ(Location(), "/") << "scans/ is no folder any more";
    const ResourceId d("scans/right/d", "Scan");
    vexa::GetNotifications().Notify(vexa::kResourceAdded, &d);
    EXPECT_EQ(Shown(), (std::vector<std::string>{"scans", "scans/"}));
    EXPECT_EQ(inspector_->GetResourceCount(), 2u);
}

TEST_F(ResourceInspectorTest, PickingAResourceOnlyReportsItAndTheSelectionBlinks)
{
    inspector_->InsertResource(ResourceId("a/b", "Cloud"));
    inspector_->InsertResource(ResourceId("a/c", "Cloud"));
    Child("EditSearch")->setText("c");
    Shown();

    Pick("c");
    ASSERT_EQ(picked_, std::vector<ResourceId>{ResourceId("a/c", "Cloud")});

    // The sidebar answers with the selection: the item shows selected and blinks three times.
    Child("EditSearch")->setText("");
    Shown();
    Pick("a/");
    inspector_->SetSelected(ResourceId("a/c", "Cloud"));
    Shown();
    ASSERT_NE(Item("c"), nullptr);
    EXPECT_TRUE(Item("c")->isSelected());
    EXPECT_FALSE(Item("b")->isSelected());
    EXPECT_EQ(picked_.size(), 1u) << "showing the selection is no new pick";

    // The first pulse is the frame that built the list.
    for (const auto& [pulse, alpha] : {std::pair{0.5f, 1.0f}, {0.2f, 0.1f}, {0.2f, 1.0f}, {0.6f, 0.1f}}) {
        CEGUI::System::getSingleton().injectTimePulse(pulse);
        EXPECT_NEAR(Item("c")->getAlpha(), alpha, 0.02f);
    }
    EXPECT_TRUE(inspector_->Update()) << "a blinking item needs frames";
    CEGUI::System::getSingleton().injectTimePulse(0.3f);
    EXPECT_NEAR(Item("c")->getAlpha(), 1.0f, 0.02f);
    EXPECT_FALSE(inspector_->Update());
}

TEST_F(ResourceInspectorTest, OnlyChangesRebuildTheList)
{
    for (int i = 0; i < 50; ++i)
        inspector_->InsertResource(
            ResourceId("group" + std::to_string(i % 5) + "/item" + std::to_string(i), "Cloud"));
    Shown();
    const std::size_t rebuilds = inspector_->GetRebuildCount();
    for (int i = 0; i < 10; ++i)
        EXPECT_FALSE(inspector_->Update());
    inspector_->InsertResource(ResourceId("group0/item0", "Cloud"));
    inspector_->EraseResource(ResourceId("missing", "Cloud"));
    inspector_->Update();
    EXPECT_EQ(inspector_->GetRebuildCount(), rebuilds);

    // A search matching more than a thousand resources lists the first thousand and says so.
    for (int i = 0; i < 1200; ++i)
        inspector_->InsertResource(ResourceId("many/mm" + std::to_string(i), "Cloud"));
    Child("EditSearch")->setText("MM");
    EXPECT_EQ(Shown().size(), 1000u);
    EXPECT_EQ(Location(), "Search Results (first 1000 of 1200)");
    Child("EditSearch")->setText("");
    Shown();
    const std::size_t rebuilt = inspector_->GetRebuildCount();

    Click("BtnHome"); // browsing at the root: nothing to do
    inspector_->Update();
    EXPECT_EQ(inspector_->GetRebuildCount(), rebuilt);
    inspector_->EraseResource(ResourceId("group0/item0", "Cloud"));
    inspector_->Update();
    EXPECT_EQ(inspector_->GetRebuildCount(), rebuilt + 1);
}

} // namespace
