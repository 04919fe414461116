#pragma once
// Shared by the GUI tests: CEGUI runs once per test program on its null renderer (it is a
// process-wide singleton); every test builds its own panel under the root and drops it after.

#include <CEGUI/Window.h>

#include <cstddef>

#include <gtest/gtest.h>

#include <string>

namespace CEGUI {
class Combobox;
}

namespace gui_test {

/// The GUI root of the running test program.
CEGUI::Window* Root();

/// Fires `event` on `window` as CEGUI itself would when the user acts on the widget.
void Fire(CEGUI::Window* window, const CEGUI::String& event, const CEGUI::String& eventNamespace);

/// Picks the item at `index` in the combo box's list and accepts it, as a click does.
void Choose(CEGUI::Combobox* combobox, std::size_t index);

/// A fresh "DarkVexa/ArrayPanel", 300 px wide, under the root for the test's lifetime.
class PanelTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    CEGUI::Window* panel_ = nullptr;
};

} // namespace gui_test
