#pragma once
// A program the end-to-end tests start: its own working directory and environment, standard
// output and error together in one file, and a guaranteed end (it dies with the test process
// and is killed at destruction if still running).

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace e2e {

class ChildProcess {
public:
    struct Options {
        std::string program;
        std::vector<std::string> arguments;
        /// Empty: the test's own. (Every member has an initializer, so that designated
        /// initializers may leave any out.)
        std::string workingDirectory{};
        /// Receives standard output and standard error.
        std::string outputFile;
        /// Set (or replaced) in the child's environment.
        std::vector<std::pair<std::string, std::string>> environment{};
        /// Variables removed from the child's environment.
        std::vector<std::string> unset{};
        /// A descriptor the child keeps open across exec (all others the test opened with
        /// close-on-exec are closed).
        int inheritedDescriptor = -1;
    };

    /// Throws std::runtime_error when the process cannot be created.
    explicit ChildProcess(const Options& options);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t Pid() const { return pid_; }
    bool IsRunning();
    /// The exit code, or 128 + signal number for a process killed by a signal; nothing when it
    /// is still running after `timeout`.
    std::optional<int> WaitForExit(std::chrono::milliseconds timeout);
    /// SIGTERM, then SIGKILL if it does not end within `grace`. Returns the exit status.
    int Stop(std::chrono::milliseconds grace = std::chrono::milliseconds(3000));

private:
    bool Reap(bool block);

    pid_t pid_ = -1;
    std::optional<int> status_;
};

} // namespace e2e
