#pragma once
// The two readings every benchmark here takes: a duration in seconds, and the process's
// resident memory.

#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <fstream>

namespace bench {

inline double Seconds(std::chrono::steady_clock::duration d)
{
    return std::chrono::duration<double>(d).count();
}

/// Resident set size of this process in bytes (from /proc/self/statm).
inline std::size_t ResidentBytes()
{
    std::ifstream statm("/proc/self/statm");
    std::size_t total = 0;
    std::size_t resident = 0;
    statm >> total >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

} // namespace bench
