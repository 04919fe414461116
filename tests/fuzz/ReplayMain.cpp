// Stands in for libFuzzer where it is not linked (the GCC build): runs LLVMFuzzerTestOneInput
// once on every file named on the command line or found (recursively) in a folder named there,
// so the committed corpus of each fuzz program is a regression test of the normal suite.

#include "FuzzSupport.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

int main(int argc, char** argv)
{
    std::vector<fs::path> files;
    for (int i = 1; i < argc; ++i) {
        const fs::path argument = argv[i];
        if (fs::is_directory(argument)) {
            for (const auto& entry : fs::recursive_directory_iterator(argument))
                if (entry.is_regular_file())
                    files.push_back(entry.path());
        } else if (fs::is_regular_file(argument)) {
            files.push_back(argument);
        } else {
            std::cerr << argv[0] << ": no such file or folder: " << argument.string() << '\n';
            return 2;
        }
    }
    if (files.empty()) {
        std::cerr << "usage: " << argv[0] << " <corpus folder or file>...\n";
        return 2;
    }
    // A fixed order, so that a failure names the same file on every machine.
    std::sort(files.begin(), files.end());
    for (const fs::path& file : files) {
        // Through a string stream: GCC 12 at -O3 takes the iterator pair for a null dereference
        // inside the standard library.
        std::ostringstream read;
        read << std::ifstream(file, std::ios::binary).rdbuf();
        const std::string bytes = read.str();
        // Printed before the run, so the last line names the input when it crashes.
        std::cerr << "replaying " << file.string() << '\n';
        const auto start = std::chrono::steady_clock::now();
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
        const auto seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        // libFuzzer's -timeout=5 would call this a hang.
        if (seconds > 5.0) {
            std::cerr << file.string() << ": took " << seconds << " s\n";
            return 1;
        }
    }
    std::cerr << "replayed " << files.size() << " inputs\n";
    return 0;
}
