#pragma once
// Operating-system glue the engine calls: message boxes, a tick clock, the rules for the
// directories a host hands in, the GPU recommendation text and screenshot file names. All of
// it is free of the engine so that it can be exercised on its own.

#include <vexa/Platform.h>

#include <runa/Version.h>

#include <cstdint>
#include <string>

namespace vexa {

// ---- message boxes ----

inline constexpr const char* kInitializationErrorCaption = "VEXA Initialization Error";
inline constexpr const char* kAssetDirectoryInvalidText = "Asset directory is invalid.";
inline constexpr const char* kInitializationCaption = "VEXA Initialization";
inline constexpr const char* kLookParseErrorText =
    "Errors occurred when parsing look json. See log for more info.";
inline constexpr const char* kGpuWarningCaption = "VEXA GPU Warning";

/// Tells the user about a problem. Logged under "vexa::MessageBox" (a warning icon as a
/// warning, an error icon as a failure), then handed to the handler of SetMessageBoxHandler:
/// by default a task-modal box without owner window on Windows, standard error elsewhere.
void ShowMessageBox(const std::string& caption, const std::string& text, MessageIcon icon);

// ---- time ----

/// Ticks are 100 ns.
inline constexpr std::uint64_t kTicksPerSecond = 10'000'000;
/// A monotonic tick count from the steady clock; only differences mean anything.
std::uint64_t GetTicks();

// ---- directories ----

/// The rule for the intermediate directory (state files, screenshots): one "/" is appended
/// unless the path already ends in "/" (a trailing backslash is not taken as a separator
/// here), and a missing directory is created, one level only. `directory` receives the
/// result even when the directory could not be created; the return value says whether it
/// exists now. An empty path stays empty, leaving the engine its default, rather than
/// becoming "/", the file-system root.
bool NormalizeIntermediateDirectory(const std::string& path, std::string& directory);

/// The rule for the asset directory: a path that is not an existing directory is refused
/// with a warning under "vexa::SetAssetDirectory" and `directory` keeps its previous value;
/// otherwise `directory` becomes the path with "/" appended unless it ends in "/" or "\".
bool NormalizeAssetDirectory(const std::string& path, std::string& directory);

// ---- graphics driver check ----

inline constexpr runa::Version kRecommendedGlVersion{4, 6, 0};

/// The warning for a graphics driver the viewer is not tuned for, or an empty text when
/// there is nothing to warn about. The findings are separated by line breaks and followed by
/// what was detected.
std::string ComposeGpuWarning(const std::string& vendor, const std::string& renderer,
                              const std::string& versionText, const runa::Version& version);

// ---- screenshots ----

inline constexpr const char* kScreenshotDirectory = "./screenshots/";
inline constexpr const char* kScreenshotBaseName = "Screenshot";

/// The file for the next screenshot: directory + baseName + "-YYYYMMDD-HHMMSS-mmm.png" in
/// local time, e.g. "./screenshots/Screenshot-20240131-174502-083.png". The directory is
/// created when missing (a failure is logged; the screenshot writer then reports the file).
/// A name field left at its placeholder "-- using timestamp --" means exactly this name.
std::string MakeScreenshotPath(const std::string& directory = kScreenshotDirectory,
                               const std::string& baseName = kScreenshotBaseName);

} // namespace vexa
