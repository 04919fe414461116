#pragma once
// Shared by the engine tests: each test starts real engines (a window under a display) in a
// directory of its own, so no state file leaks from one test into another.

#include "core/Engine.h"

#include <vexa/Gadget.h>
#include <vexa/Platform.h>
#include <vexa/Resource.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
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
        vexa::SetMessageBoxHandler([this](const std::string& caption, const std::string& text, vexa::MessageIcon) {
            shown.emplace_back(caption, text);
        });
    }
    ~MessageBoxes() { vexa::SetMessageBoxHandler({}); }
    MessageBoxes(const MessageBoxes&) = delete;
    MessageBoxes& operator=(const MessageBoxes&) = delete;
    bool Has(const std::string& caption, const std::string& text) const
    {
        for (const auto& [c, t] : shown)
            if (c == caption && t == text)
                return true;
        return false;
    }
};

/// Every test runs in a process of its own (one CTest case each), which the process-wide
/// initialised flag relies on; the directory is fresh per test so no state file carries over.
inline fs::path FreshDirectory(const std::string& name)
{
    const fs::path directory = fs::temp_directory_path() / ("vexa-engine-" + name + "-" + std::to_string(::getpid()));
    fs::remove_all(directory);
    fs::create_directories(directory);
    return directory;
}

inline bool HasDisplay()
{
    return std::getenv("DISPLAY") != nullptr;
}

/// Points the engine at the source tree's assets and at `state`, then starts it.
inline bool Start(vexa::Engine& engine, const fs::path& state, const std::string& lookFile = "")
{
    engine.SetAssetDirectory(VEXA_SOURCE_ASSET_DIR);
    engine.SetIntermediateDirectory(state.string());
    return engine.Initialize(lookFile);
}

} // namespace engine_test
