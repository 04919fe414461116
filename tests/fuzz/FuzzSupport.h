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

/// The promise of every stored block: a refused input leaves a fresh `make()` as it was, and
/// what is taken, written again, reads back to the same bytes. `read(object, in)` reads,
/// `write(object, out)` writes.
template <class Make, class Read, class Write>
void CheckReadsBack(const Make& make, const Read& read, const Write& write, const std::uint8_t* data,
                    std::size_t size)
{
    const auto bytes = [&write](const auto& object) {
        return Written([&](std::ostream& out) { write(object, out); });
    };
    auto object = make();
    const std::string before = bytes(object);
    std::istringstream in = AsStream(data, size);
    if (!read(object, in)) {
        Check(bytes(object) == before, "a refused input changed what it was read into");
        return;
    }
    const std::string taken = bytes(object);
    auto again = make();
    std::istringstream back(taken, std::ios::binary);
    Check(read(again, back), "what was read cannot be read back");
    Check(bytes(again) == taken, "what was read reads back differently");
}

} // namespace vexa::fuzz
