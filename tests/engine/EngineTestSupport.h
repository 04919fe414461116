#pragma once
// Shared by the engine tests: each test starts real engines (a window under a display) in a
// directory of its own, so no state file leaks from one test into another.

#include "core/Engine.h"

#include <vexa/Gadget.h>
#include <vexa/Lifecycle.h>
#include <vexa/Platform.h>
#include <vexa/Resource.h>

#include <CEGUI/CEGUI.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace engine_test {

namespace fs = std::filesystem;

/// A resource whose gadget does nothing: enough for the list and the notifications.
class PlainResource final : public vexa::Resource {
public:
    explicit PlainResource(const std::string& name, const std::string& type = "PlainResource")
        : Resource(name, type)
    {
    }
    std::shared_ptr<vexa::Gadget> CreateGadget() override { return std::make_shared<vexa::Gadget>(this); }
};

/// Collects the message boxes instead of printing them.
struct MessageBoxes {
    std::vector<std::pair<std::string, std::string>> shown;
    MessageBoxes()
    {
        vexa::SetMessageBoxHandler([this](const std::string& caption, const std::string& text,
                                          vexa::MessageIcon) { shown.emplace_back(caption, text); });
    }
    ~MessageBoxes() { vexa::SetMessageBoxHandler({}); }
    MessageBoxes(const MessageBoxes&) = delete;
    MessageBoxes& operator=(const MessageBoxes&) = delete;
    bool Has(const std::string& caption, const std::string& text) const
    {
        return std::find(shown.begin(), shown.end(), std::pair(caption, text)) != shown.end();
    }
};

/// Every test runs in a process of its own (one CTest case each): the process-wide initialised
/// flag relies on it.
inline fs::path FreshDirectory(const std::string& name)
{
    const fs::path directory =
        fs::temp_directory_path() / ("vexa-engine-" + name + "-" + std::to_string(::getpid()));
    fs::remove_all(directory);
    fs::create_directories(directory);
    return directory;
}

/// Points the engine at `assets` (the source tree's by default) and at `state`, then starts it.
inline bool Start(vexa::Engine& engine, const fs::path& state, const std::string& lookFile = "",
                  const std::string& assets = VEXA_SOURCE_ASSET_DIR)
{
    engine.SetAssetDirectory(assets);
    engine.SetIntermediateDirectory(state.string());
    return engine.Initialize(lookFile);
}

/// A test that starts real engines: it needs a display, works in a fresh directory named
/// after itself and collects the message boxes of whatever it starts.
class EngineCase : public testing::Test {
protected:
    void SetUp() override
    {
        if (std::getenv("DISPLAY") == nullptr)
            GTEST_SKIP() << "needs a display";
        state = FreshDirectory(testing::UnitTest::GetInstance()->current_test_info()->name());
    }

    /// Writes `json` as a look file in the test's directory and returns its path.
    std::string WriteLook(const std::string& json, const std::string& name = "look.json") const
    {
        std::ofstream(state / name) << json;
        return (state / name).string();
    }

    /// Starts the library's own engine, as a host does through the public functions.
    bool StartLibrary() const
    {
        vexa::SetAssetDirectory(VEXA_SOURCE_ASSET_DIR);
        vexa::SetIntermediateDirectory(state.string());
        return vexa::Initialize();
    }

    fs::path state;
    MessageBoxes boxes;
};

/// Fires `event` on `window` as CEGUI does when the user acts on the widget.
inline void Fire(CEGUI::Window* window, const CEGUI::String& event, const CEGUI::String& eventNamespace)
{
    CEGUI::WindowEventArgs args(window);
    window->fireEvent(event, args, eventNamespace);
}

inline void Click(CEGUI::Window* button)
{
    Fire(button, CEGUI::PushButton::EventClicked, CEGUI::PushButton::EventNamespace);
}

/// Picks the item at `index` in the combo box's list and accepts it, as a click does.
inline void Choose(CEGUI::Combobox* combobox, std::size_t index)
{
    if (combobox == nullptr) {
        ADD_FAILURE() << "no drop list to choose from";
        return;
    }
    combobox->getDropList()->setItemSelectState(index, true);
    Fire(combobox->getDropList(), CEGUI::ComboDropList::EventListSelectionAccepted,
         CEGUI::ComboDropList::EventNamespace);
}

} // namespace engine_test
