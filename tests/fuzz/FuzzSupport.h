#pragma once
// What every fuzz program shares: the entry point's declaration, a quiet log that still
// insists on a message for every failure, and the checks that turn a broken promise of a
// reader (changed state after a refusal, a record that does not read back) into a crash the
// fuzzer reports.

#include <runa/rlog.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace vexa::fuzz {

/// Stops the program with `what` on standard error; the fuzzer keeps the input.
[[noreturn]] inline void Broken(const char* what)
{
    std::fprintf(stderr, "fuzz check failed: %s\n", what);
    std::abort();
}

inline void Check(bool condition, const char* what)
{
    if (!condition)
        Broken(what);
}

/// Installs, once, a log sink that drops messages (millions of runs would flood the terminal)
/// but fails on an empty one: every refusal must tell the user something.
inline void QuietLog()
{
    static const bool installed = [] {
        rlog::SetSink([](rlog::Level, const std::string& message, const std::string& label) {
            Check(!message.empty() && !label.empty(), "a log message without text or label");
        });
        return true;
    }();
    (void)installed;
}

inline std::string_view AsText(const std::uint8_t* data, std::size_t size)
{
    return {reinterpret_cast<const char*>(data), size};
}

/// The bytes as a binary stream, as a state file would be opened.
inline std::istringstream AsStream(const std::uint8_t* data, std::size_t size)
{
    return std::istringstream(std::string(AsText(data, size)), std::ios::binary);
}

/// What `object.WriteToStream` (or `WritePayload`) writes, as bytes to compare.
template <class Write>
std::string Written(Write&& write)
{
    std::ostringstream out(std::ios::binary);
    write(out);
    return out.str();
}

} // namespace vexa::fuzz
