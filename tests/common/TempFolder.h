#pragma once
// A fresh folder under the system temp folder, removed with everything in it at the end of
// the test, for readers that take a file path.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

namespace testing_support {

class TempFolder {
public:
    TempFolder()
    {
        const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
        std::string name = "vexa-viewer-io-";
        if (test != nullptr)
            name += std::string(test->test_suite_name()) + "-" + test->name();
        path_ = std::filesystem::temp_directory_path() / name;
        std::filesystem::remove_all(path_);
        std::filesystem::create_directories(path_);
    }
    ~TempFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    /// Writes `bytes` verbatim into the file `name` and returns its full path.
    std::string Write(const std::string& name, std::string_view bytes) const
    {
        const std::filesystem::path file = path_ / name;
        std::ofstream out(file, std::ios::binary);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        return file.string();
    }

    std::string PathOf(const std::string& name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

} // namespace testing_support
