#pragma once
// Runs one state file (version word and payload, as on disk) through FileStorage::Load and
// checks the promise of every settings file: a file that is refused changes nothing, and a
// file that is taken reads back to the same bytes once written again.

#include "FuzzSupport.h"

#include "core/FileStorage.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace vexa::fuzz {

/// A private folder for the state files of this process, removed when it ends.
inline const std::string& StateFolder()
{
    // Never destroyed, so that the exit handler below still finds it.
    static const std::string* const folder = [] {
        std::string pattern = (std::filesystem::temp_directory_path() / "vexa-fuzz-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr)
            Broken("cannot make a temporary folder");
        return new std::string(pattern + "/");
    }();
    static const bool cleanup = std::atexit([] {
                                    std::error_code ignored;
                                    std::filesystem::remove_all(*folder, ignored);
                                }) == 0;
    (void)cleanup;
    return *folder;
}

template <class Storage>
void CheckStateFile(const std::uint8_t* data, std::size_t size)
{
    QuietLog();
    Storage storage;
    {
        std::ofstream file(storage.GetFilePath(StateFolder()), std::ios::binary | std::ios::trunc);
        file.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    }
    const auto payload = [](const Storage& object) {
        return Written([&object](std::ostream& out) { object.WritePayload(out); });
    };
    const std::string before = payload(storage);
    if (!storage.Load(StateFolder())) {
        Check(payload(storage) == before, "a refused state file changed the settings");
        return;
    }
    const std::string taken = payload(storage);
    Storage again;
    std::istringstream in(taken, std::ios::binary);
    Check(again.ReadPayload(in), "settings that were read cannot be read back");
    Check(payload(again) == taken, "settings read back differently");
}

} // namespace vexa::fuzz
