#pragma once
// A whole file read into memory with one read. The readers parse straight from this buffer,
// so a large binary file is touched once on its way into the point arrays.

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace vexa::viewer {

class FileBytes {
public:
    /// Reads the file at `path`. On failure returns false and sets `error` to a one-line
    /// message that starts with the file name; the previous contents are kept.
    bool Load(const std::string& path, std::string& error);

    std::string_view View() const { return {data_.get(), size_}; }
    std::size_t Size() const { return size_; }

private:
    // Not a std::vector: resizing one would first clear hundreds of megabytes for nothing.
    std::unique_ptr<char[]> data_;
    std::size_t size_ = 0;
};

/// The last component of `path`, used to start every reader message ("cloud.ply: ...").
std::string DisplayName(const std::string& path);

} // namespace vexa::viewer
