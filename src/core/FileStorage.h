#pragma once
// Settings that survive between runs: each FileStorage object owns one small binary file in
// the intermediate directory. The file opens with a 32-bit little-endian format version, then
// the object's payload. A file that is missing, from another version, cut short or not ours
// at all leaves the object exactly as it was, so the user never loses the defaults (or the
// values of the look) to a damaged file.

#include <cstdint>
#include <istream>
#include <ostream>
#include <string>

namespace vexa {

/// Something with a binary form that can be read back.
class Exportable {
public:
    virtual ~Exportable() = default;

    /// Reads what WritePayload wrote. Must be transactional: on false nothing has changed.
    virtual bool ReadPayload(std::istream& in) = 0;
    virtual void WritePayload(std::ostream& out) const = 0;
};

class FileStorage : public Exportable {
public:
    /// Files larger than this are not settings of ours and are not read into memory.
    static constexpr std::uintmax_t kMaxFileSize = 16u << 20;

    /// Name of the file inside the intermediate directory, e.g. "window.bin".
    virtual std::string GetFileName() const = 0;
    /// Written before the payload; a file holding another version is ignored.
    virtual std::uint32_t GetFormatVersion() const = 0;

    bool IsDirty() const { return dirty_; }
    void SetDirty(bool dirty = true) { dirty_ = dirty; }

    /// `directory` is the intermediate directory, which ends in "/".
    std::string GetFilePath(const std::string& directory) const;
    bool FileExists(const std::string& directory) const;

    /// Reads the file if there is one. Returns true when it was read and taken over.
    /// A missing or unopenable file is silent; a file that is present but unusable (wrong
    /// version, truncated, corrupt) is reported with one warning naming it. Either way the
    /// object keeps its current values.
    bool Load(const std::string& directory);

    /// Writes the version and the payload, replacing the file only once the new content is
    /// completely on disk. Returns false when the file cannot be written. The dirty flag is
    /// cleared in both cases: the caller saves every update step while dirty, and a failing
    /// directory should not cost a file-system round trip per frame; the next change retries.
    bool Save(const std::string& directory);

protected:
    FileStorage() = default;
    FileStorage(const FileStorage&) = default;
    FileStorage& operator=(const FileStorage&) = default;

private:
    bool dirty_ = false;
};

} // namespace vexa
