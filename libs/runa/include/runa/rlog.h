#pragma once
// Logging for the whole VEXA stack. Every failure is reported with a message and the
// qualified name of the function that found it ("vexa::LookParser"), so that a host can
// route messages into its own log and tests can assert on them.

#include <functional>
#include <string>
#include <string_view>

namespace rlog {

enum class Level { Info, Warning, Failure, Crash };

/// "INFO", "WARN", "FAIL" or "CRASH".
const char* LevelName(Level level);

/// Receives every message. Called on the thread that logged it.
using Sink = std::function<void(Level level, const std::string& message, const std::string& label)>;

/// Replaces the sink and returns the previous one. An empty sink restores the default,
/// which writes "[LEVEL] label: message" to standard error.
Sink SetSink(Sink sink);

void Info(const std::string& message, const std::string& label);
void Warn(const std::string& message, const std::string& label);
void Fail(const std::string& message, const std::string& label);
/// Reports an unrecoverable fault. It only logs: the library never ends its host.
void Crash(const std::string& message, const std::string& label);

void Log(Level level, const std::string& message, const std::string& label);

/// Installs a sink for the lifetime of the object and restores the previous one after.
class ScopedSink {
public:
    explicit ScopedSink(Sink sink);
    ~ScopedSink();
    ScopedSink(const ScopedSink&) = delete;
    ScopedSink& operator=(const ScopedSink&) = delete;

private:
    Sink previous_;
};

} // namespace rlog
