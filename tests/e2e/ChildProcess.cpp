#include "ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <thread>

extern char** environ;

namespace e2e {

namespace {

std::vector<std::string> BuildEnvironment(const ChildProcess::Options& options)
{
    std::vector<std::string> dropped = options.unset, result;
    for (const auto& [key, value] : options.environment)
        dropped.push_back(key);
    for (char** entry = environ; *entry != nullptr; ++entry)
        if (std::ranges::find(dropped, std::string(*entry, std::strcspn(*entry, "="))) == dropped.end())
            result.emplace_back(*entry);
    for (const auto& [key, value] : options.environment)
        result.push_back(key + "=" + value);
    return result;
}

std::vector<char*> Pointers(std::vector<std::string>& strings)
{
    std::vector<char*> pointers;
    for (std::string& s : strings)
        pointers.push_back(s.data());
    pointers.push_back(nullptr);
    return pointers;
}

} // namespace

ChildProcess::ChildProcess(const Options& options)
{
    // Everything the child needs is prepared before the fork: after it only calls that are
    // safe in a forked child remain.
    std::vector<std::string> arguments{options.program};
    arguments.insert(arguments.end(), options.arguments.begin(), options.arguments.end());
    std::vector<char*> argv = Pointers(arguments);
    std::vector<std::string> environment = BuildEnvironment(options);
    std::vector<char*> envp = Pointers(environment);
    const pid_t parent = getpid();

    pid_ = fork();
    if (pid_ < 0)
        throw std::runtime_error(std::string("fork failed: ") + std::strerror(errno));
    if (pid_ == 0) {
        // A test that crashes or is killed by its timeout must not leave programs behind.
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent)
            _exit(125);
        setpgid(0, 0);
        // Close-on-exec: only the duplicates stay open in the program.
        const int fd = open(options.outputFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
        if (fd < 0)
            _exit(126);
        dup2(fd, STDOUT_FILENO);
        dup2(fd, STDERR_FILENO);
        dup2(open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
        if (options.inheritedDescriptor >= 0)
            fcntl(options.inheritedDescriptor, F_SETFD, 0);
        if (!options.workingDirectory.empty() && chdir(options.workingDirectory.c_str()) != 0)
            _exit(126);
        execve(argv[0], argv.data(), envp.data());
        _exit(127);
    }
}

ChildProcess::~ChildProcess()
{
    if (pid_ > 0 && !status_)
        Stop(std::chrono::milliseconds(2000));
}

bool ChildProcess::Reap(bool block)
{
    if (status_)
        return true;
    int raw = 0;
    const pid_t result = waitpid(pid_, &raw, block ? 0 : WNOHANG);
    if (result == pid_)
        status_ = WIFEXITED(raw) ? WEXITSTATUS(raw) : WIFSIGNALED(raw) ? 128 + WTERMSIG(raw) : -1;
    else if (result < 0 && errno == ECHILD)
        status_ = -1;
    return status_.has_value();
}

bool ChildProcess::IsRunning()
{
    return !Reap(false);
}

std::optional<int> ChildProcess::WaitForExit(std::chrono::milliseconds timeout)
{
    const auto end = std::chrono::steady_clock::now() + timeout;
    while (!Reap(false)) {
        if (std::chrono::steady_clock::now() >= end)
            return std::nullopt;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return status_;
}

int ChildProcess::Stop(std::chrono::milliseconds grace)
{
    if (Reap(false))
        return *status_;
    kill(pid_, SIGTERM);
    if (WaitForExit(grace))
        return *status_;
    kill(pid_, SIGKILL);
    Reap(true);
    return *status_;
}

} // namespace e2e
