#pragma once
// Shared by the GUI tests: CEGUI runs once per test program on its null renderer (it is a
// process-wide singleton); every test builds its own panel under the root and drops it after.

#include <vexa/Gadget.h>
#include <vexa/Resource.h>

#include "LogCapture.h"

#include <CEGUI/Window.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace CEGUI {
class Combobox;
}

namespace gui_test {

/// The GUI root of the running test program.
CEGUI::Window* Root();

/// Fires `event` on `window` as CEGUI itself would when the user acts on the widget.
void Fire(CEGUI::Window* window, const CEGUI::String& event, const CEGUI::String& eventNamespace);

/// A click on a push button.
void Click(CEGUI::Window* button);

/// Picks the item at `index` in the combo box's list and accepts it, as a click does.
void Choose(CEGUI::Combobox* combobox, std::size_t index);

/// The pixel height the layout gave `window`.
float Height(const CEGUI::Window* window);

/// Generated row `n` of `panel`, also inside a group; null past the last row.
CEGUI::Window* Row(const CEGUI::Window* panel, int n);

/// One line per generated row: its label, else the control's own text (label and button
/// rows), then "|" and each item of a drop list.
std::vector<std::string> Texts(const CEGUI::Window* panel);

/// Texts() with every line ended by "\n", for looking for runs of rows.
std::string Joined(const CEGUI::Window* panel);

/// The row captioned `caption` (its label, else its control's text); null if there is none.
CEGUI::Window* FindRow(const CEGUI::Window* panel, const std::string& caption);

/// The child `name` of the row captioned `caption`; fails the test and gives null without that row.
template <class T = CEGUI::Window>
T* Control(const CEGUI::Window* panel, const std::string& caption,
           const CEGUI::String& name = "dynamic_control")
{
    CEGUI::Window* row = FindRow(panel, caption);
    EXPECT_NE(row, nullptr) << "no row \"" << caption << "\"";
    return row == nullptr ? nullptr : static_cast<T*>(row->getChildRecursive(name));
}

/// The row captioned `caption` is there, and neither it nor a group it sits in is hidden or
/// collapsed.
bool Shown(const CEGUI::Window* panel, const std::string& caption);

/// The resource's gadget, initialised outside any view area: adding its renderer fails there,
/// which is expected and kept out of the log.
template <class GadgetType>
std::shared_ptr<GadgetType> InitializedGadget(vexa::Resource& resource)
{
    auto gadget = std::static_pointer_cast<GadgetType>(resource.CreateGadget());
    testing_support::LogCapture quiet;
    gadget->Initialize();
    return gadget;
}

/// As above, and the gadget returned keeps its resource alive: a gadget only points at its
/// resource (in the library the engine's list owns both), so one made from a temporary would
/// outlive it.
template <class GadgetType, class ResourceType>
std::shared_ptr<GadgetType> InitializedGadget(const std::shared_ptr<ResourceType>& resource)
{
    // Members go in reverse order: the gadget before its resource.
    struct Kept {
        std::shared_ptr<ResourceType> resource;
        std::shared_ptr<GadgetType> gadget;
    };
    auto kept = std::make_shared<Kept>(Kept{resource, InitializedGadget<GadgetType>(*resource)});
    return std::shared_ptr<GadgetType>(kept, kept->gadget.get());
}

/// A fresh "DarkVexa/ArrayPanel", 300 px wide, under the root for the test's lifetime.
class PanelTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
    /// Drops the panel and starts over with an empty one.
    void Renew()
    {
        PanelTest::TearDown();
        PanelTest::SetUp();
    }

    CEGUI::Window* panel_ = nullptr;
};

} // namespace gui_test
