#include "core/Platform.h"

#include <runa/rlog.h>

#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <system_error>
#include <utility>

#ifdef _WIN32
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>
#endif

namespace vexa {

namespace {

void DefaultMessageBox(const std::string& caption, const std::string& text, MessageIcon icon)
{
#ifdef _WIN32
    // Task-modal and without owner: start-up problems are shown before (or without) a window.
    const UINT style = MB_OK | MB_TASKMODAL | (icon == MessageIcon::Error ? MB_ICONERROR : MB_ICONWARNING);
    MessageBoxA(nullptr, text.c_str(), caption.c_str(), style);
#else
    (void)icon;
    std::fprintf(stderr, "%s: %s\n", caption.c_str(), text.c_str());
    std::fflush(stderr);
#endif
}

MessageBoxHandler& CurrentMessageBoxHandler()
{
    static MessageBoxHandler handler = DefaultMessageBox;
    return handler;
}

bool EndsWith(const std::string& text, char character)
{
    return !text.empty() && text.back() == character;
}

std::tm LocalTime(std::time_t time)
{
    std::tm local{};
#ifdef _WIN32
    localtime_s(&local, &time);
#else
    localtime_r(&time, &local);
#endif
    return local;
}

} // namespace

MessageBoxHandler SetMessageBoxHandler(MessageBoxHandler handler)
{
    MessageBoxHandler previous = std::move(CurrentMessageBoxHandler());
    CurrentMessageBoxHandler() = handler ? std::move(handler) : MessageBoxHandler(DefaultMessageBox);
    return previous;
}

void* GetWindowHandle()
{
    return nullptr;
}

void ShowMessageBox(const std::string& caption, const std::string& text, MessageIcon icon)
{
    if (icon == MessageIcon::Error)
        rlog::Fail(text, "vexa::MessageBox");
    else
        rlog::Warn(text, "vexa::MessageBox");
    // A copy, so that a handler replacing itself does not destroy the function it runs in.
    const MessageBoxHandler handler = CurrentMessageBoxHandler();
    handler(caption, text, icon);
}

std::uint64_t GetTicks()
{
    using Ticks = std::chrono::duration<std::uint64_t, std::ratio<1, kTicksPerSecond>>;
    return std::chrono::duration_cast<Ticks>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

bool NormalizeIntermediateDirectory(const std::string& path, std::string& directory)
{
    if (path.empty()) {
        directory.clear();
        return false;
    }
    directory = EndsWith(path, '/') ? path : path + "/";
    std::error_code error;
    std::filesystem::create_directory(directory, error);
    return std::filesystem::is_directory(directory, error);
}

bool NormalizeAssetDirectory(const std::string& path, std::string& directory)
{
    std::error_code error;
    if (path.empty() || !std::filesystem::is_directory(path, error)) {
        rlog::Warn("Specified asset directory does not exist. Assets will not be loaded. \nPath: " + path,
                   "vexa::SetAssetDirectory");
        return false;
    }
    directory = EndsWith(path, '/') || EndsWith(path, '\\') ? path : path + "/";
    return true;
}

std::string ComposeGpuWarning(const std::string& vendor, const std::string& renderer,
                              const std::string& versionText, const runa::Version& version)
{
    std::string warning;
    if (vendor != "NVIDIA Corporation")
        warning += "Graphics card vendor is not supported. Errors may occur.";
    // Joined without a break: the wording of this box is fixed to the letter.
    if (version < kRecommendedGlVersion) {
        warning += "OpenGl version on your system is lower then the recommended version " +
                   kRecommendedGlVersion.ToString() + ".";
    }
    if (!warning.empty())
        warning += "\n\nDetected:\n" + vendor + "\n" + renderer + "\nOpenGl version " + versionText;
    return warning;
}

std::string MakeScreenshotPath(const std::string& directory, const std::string& baseName)
{
    const std::string folder = directory.empty() || EndsWith(directory, '/') ? directory : directory + "/";
    if (!folder.empty()) {
        std::error_code error;
        std::filesystem::create_directories(folder, error);
        if (error)
            rlog::Warn("Cannot create the screenshot directory \"" + folder + "\": " + error.message(),
                       "vexa::MakeScreenshotPath");
    }

    const auto now = std::chrono::system_clock::now();
    const std::tm local = LocalTime(std::chrono::system_clock::to_time_t(now));
    const auto milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
    char stamp[80];
    std::snprintf(stamp, sizeof(stamp), "-%04d%02d%02d-%02d%02d%02d-%03d", local.tm_year + 1900,
                  local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec,
                  static_cast<int>(milliseconds));
    return folder + baseName + stamp + ".png";
}

} // namespace vexa
