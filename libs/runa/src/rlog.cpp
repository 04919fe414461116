#include "runa/rlog.h"

#include <cstdio>
#include <utility>

namespace rlog {
namespace {

void WriteToStandardError(Level level, const std::string& message, const std::string& label)
{
    std::fprintf(stderr, "[%s] %s: %s\n", LevelName(level), label.c_str(), message.c_str());
    std::fflush(stderr);
}

Sink& CurrentSink()
{
    static Sink sink = WriteToStandardError;
    return sink;
}

} // namespace

const char* LevelName(Level level)
{
    switch (level) {
    case Level::Info:
        return "INFO";
    case Level::Warning:
        return "WARN";
    case Level::Failure:
        return "FAIL";
    case Level::Crash:
        return "CRASH";
    }
    return "?";
}

Sink SetSink(Sink sink)
{
    Sink previous = std::move(CurrentSink());
    CurrentSink() = sink ? std::move(sink) : Sink(WriteToStandardError);
    return previous;
}

void Log(Level level, const std::string& message, const std::string& label)
{
    const Sink& sink = CurrentSink();
    sink(level, message, label);
}

void Info(const std::string& message, const std::string& label)
{
    Log(Level::Info, message, label);
}
void Warn(const std::string& message, const std::string& label)
{
    Log(Level::Warning, message, label);
}
void Fail(const std::string& message, const std::string& label)
{
    Log(Level::Failure, message, label);
}
void Crash(const std::string& message, const std::string& label)
{
    Log(Level::Crash, message, label);
}

ScopedSink::ScopedSink(Sink sink) : previous_(SetSink(std::move(sink))) {}
ScopedSink::~ScopedSink()
{
    SetSink(std::move(previous_));
}

} // namespace rlog
