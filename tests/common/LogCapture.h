#pragma once
// Collects every rlog message for the lifetime of the object, so tests can assert on the
// exact message and label a failure produced.

#include <runa/rlog.h>

#include <string>
#include <vector>

namespace testing_support {

struct LoggedMessage {
    rlog::Level level;
    std::string message;
    std::string label;
};

class LogCapture {
public:
    LogCapture()
        : sink_([this](rlog::Level level, const std::string& message, const std::string& label) {
              messages.push_back({level, message, label});
          })
    {
    }

    /// True when some message has exactly this text and label.
    bool Contains(const std::string& message, const std::string& label) const
    {
        for (const auto& m : messages)
            if (m.message == message && m.label == label)
                return true;
        return false;
    }

    std::vector<LoggedMessage> messages;

private:
    rlog::ScopedSink sink_;
};

} // namespace testing_support
