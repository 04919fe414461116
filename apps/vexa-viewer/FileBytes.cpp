#include "FileBytes.h"

#include <runa/HugePages.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace vexa::viewer {

namespace {

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

} // namespace

std::string DisplayName(const std::string& path)
{
    std::string name = std::filesystem::path(path).filename().string();
    return name.empty() ? path : name;
}

bool FileBytes::Load(const std::string& path, std::string& error)
{
    const std::string name = DisplayName(path);
    std::error_code code;
    if (std::filesystem::is_directory(path, code)) {
        error = name + ": is a folder, not a file";
        return false;
    }
    const std::uintmax_t size = std::filesystem::file_size(path, code);
    if (code) {
        error = name + ": cannot open file (" + code.message() + ")";
        return false;
    }

    std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
    if (!file) {
        error = name + ": cannot open file (" + std::strerror(errno) + ")";
        return false;
    }
    std::unique_ptr<char[]> data;
    try {
        data = std::make_unique_for_overwrite<char[]>(static_cast<std::size_t>(size));
    } catch (const std::bad_alloc&) {
        error = name + ": not enough memory to read " + std::to_string(size) + " bytes";
        return false;
    }
    runa::AdviseHugePages(data.get(), static_cast<std::size_t>(size));
    const std::size_t got = std::fread(data.get(), 1, static_cast<std::size_t>(size), file.get());
    if (got != size) {
        error = name + ": read " + std::to_string(got) + " of " + std::to_string(size) + " bytes";
        return false;
    }
    data_ = std::move(data);
    size_ = static_cast<std::size_t>(size);
    return true;
}

} // namespace vexa::viewer
