#pragma once
// What the library asks of the operating system beyond its window: telling the user about
// a problem that stops or degrades start-up, and the native window handle.

#include <vexa/Export.h>

#include <functional>
#include <string>

namespace vexa {

enum class MessageIcon { Warning, Error };

/// Receives every message box the library raises (an unusable asset directory, a look file
/// that did not parse, a graphics driver below the recommendation).
using MessageBoxHandler =
    std::function<void(const std::string& caption, const std::string& text, MessageIcon icon)>;

/// Replaces the message-box handler and returns the previous one. An empty handler restores
/// the default: a task-modal box on Windows, "<caption>: <text>" on standard error elsewhere.
/// Hosts that run unattended replace it so that nothing waits for a click. The message is
/// also logged through rlog whatever the handler does.
VEXA_API MessageBoxHandler SetMessageBoxHandler(MessageBoxHandler handler);

/// The native handle of the viewer's window. Not provided by this build: always null, so
/// hosts must not rely on it.
VEXA_API void* GetWindowHandle();

} // namespace vexa
