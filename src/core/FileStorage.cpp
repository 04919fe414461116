#include "core/FileStorage.h"

#include <runa/BinaryStream.h>
#include <runa/rlog.h>

#include <exception>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>
#include <vector>

namespace vexa {

namespace {

constexpr const char* kLoadLabel = "vexa::FileStorage::Load";

struct CapturedMessage {
    rlog::Level level;
    std::string message;
    std::string label;
};

void ReportRejected(const std::string& path, const std::string& reason)
{
    rlog::Warn("Ignoring settings file \"" + path + "\": " + reason + ". The current values are kept.",
               kLoadLabel);
}

} // namespace

std::string FileStorage::GetFilePath(const std::string& directory) const
{
    return directory + GetFileName();
}

bool FileStorage::FileExists(const std::string& directory) const
{
    std::error_code error;
    return std::filesystem::exists(GetFilePath(directory), error);
}

bool FileStorage::Load(const std::string& directory)
{
    const std::string path = GetFilePath(directory);

    // Missing and unreadable files are the normal first run, not worth a message.
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
        return false;
    const std::uintmax_t size = std::filesystem::file_size(path, error);
    if (error)
        return false;
    if (size > kMaxFileSize) {
        ReportRejected(path, "it holds " + std::to_string(size) + " bytes, far more than any settings file");
        return false;
    }

    std::ifstream file(path, std::ios::binary);
    if (!file)
        return false;
    std::string content(static_cast<std::size_t>(size), '\0');
    file.read(content.data(), static_cast<std::streamsize>(content.size()));
    content.resize(static_cast<std::size_t>(file.gcount()));

    // Checked here rather than left to the reader, so that the only message is ours.
    if (content.size() < sizeof(std::uint32_t)) {
        ReportRejected(path, "it holds only " + std::to_string(content.size()) +
                                 " bytes, too few for a format version");
        return false;
    }

    std::istringstream in(std::move(content), std::ios::binary);
    runa::BinaryReader reader(in, kLoadLabel);
    std::uint32_t version = 0;
    reader.Read(version);
    if (version != GetFormatVersion()) {
        ReportRejected(path, "it has format version " + std::to_string(version) + ", expected " +
                                 std::to_string(GetFormatVersion()));
        return false;
    }

    // The payload reader reports its own findings (a truncation, say) without knowing the
    // file; they are folded into the single warning that names it.
    std::vector<CapturedMessage> captured;
    bool accepted = false;
    std::string failure;
    {
        rlog::ScopedSink sink(
            [&captured](rlog::Level level, const std::string& message, const std::string& label) {
                captured.push_back({level, message, label});
            });
        try {
            accepted = ReadPayload(in);
        } catch (const std::exception& exception) {
            failure = exception.what();
        }
    }

    if (accepted) {
        for (const auto& message : captured)
            rlog::Log(message.level, message.message, message.label);
        return true;
    }

    std::string reason = "its content is damaged or not ours";
    if (!failure.empty())
        reason += " (" + failure + ")";
    for (const auto& message : captured)
        reason += " (" + message.label + ": " + message.message + ")";
    ReportRejected(path, reason);
    return false;
}

bool FileStorage::Save(const std::string& directory)
{
    dirty_ = false;

    std::ostringstream buffer(std::ios::binary);
    runa::BinaryWriter writer(buffer);
    writer.WriteVersion(GetFormatVersion());
    WritePayload(buffer);
    const std::string bytes = buffer.str();

    // Written beside the target and renamed over it: a crash or a full disk mid-write leaves
    // the previous file intact instead of a truncated one.
    const std::string path = GetFilePath(directory);
    const std::string temporary = path + ".tmp";
    {
        std::ofstream file(temporary, std::ios::binary | std::ios::trunc);
        if (!file)
            return false;
        file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        file.close();
        if (!file) {
            std::error_code ignored;
            std::filesystem::remove(temporary, ignored);
            return false;
        }
    }
    std::error_code error;
    std::filesystem::rename(temporary, path, error);
    if (error) {
        std::error_code ignored;
        std::filesystem::remove(temporary, ignored);
        return false;
    }
    return true;
}

} // namespace vexa
