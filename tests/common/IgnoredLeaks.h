#pragma once
// A scope whose allocations LeakSanitizer leaves out of its report, for a test that takes a
// library outside the project down a path where the library itself loses memory, when no line
// of tests/sanitizer/lsan.supp can name that library. Keep it round the one call that goes
// there. Without the sanitizer it does nothing.

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VEXA_TEST_LEAK_CHECKS 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__)
#define VEXA_TEST_LEAK_CHECKS 1
#endif

#ifdef VEXA_TEST_LEAK_CHECKS
#include <sanitizer/lsan_interface.h>
#endif

namespace testing_support {

#ifdef VEXA_TEST_LEAK_CHECKS
using IgnoredLeaks = __lsan::ScopedDisabler;
#else
struct IgnoredLeaks {
    IgnoredLeaks() {}
};
#endif

} // namespace testing_support
