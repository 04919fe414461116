// Closing the window as a window manager does, and what a host may still call afterwards.

#include "HostCase.h"

namespace e2e {
namespace {

class Lifecycle : public HostCase {};

TEST_F(Lifecycle, WindowManagerCloseEndsTheLoopAndLaterCallsAreHarmless)
{
    ASSERT_NO_FATAL_FAILURE(OpenHost());
    x->RequestClose();

    ASSERT_TRUE(WaitForOutput(host::kLoopEndedLine, 15s)) << "the IsOpen loop did not end\n" << Output();
    const std::optional<int> status = program->WaitForExit(30s);
    ASSERT_TRUE(status.has_value()) << "the host did not end after the loop\n" << Output();
    EXPECT_EQ(*status, 0) << Output();
    EXPECT_EQ(CountLines(host::kDoneLine), 1u) << "the host did not get through Terminate\n" << Output();

    // The host printed each call after the close; the library must have stayed closed and
    // quiet through all of them.
    for (const char* line :
         {"after-close IsOpen false", "after-close IsOpen-after-Update false",
          "after-close IsOpen-at-end false", "after-close Initialize false",
          "after-close Initialize-with-look false", "after-close SaveScreenshot false file false"})
        EXPECT_EQ(CountLines(line), 1u) << "missing \"" << line << "\"\n" << Output();
    const std::string output = Output();
    const std::string afterClose = output.substr(output.find(host::kLoopEndedLine));
    EXPECT_EQ(afterClose.find("[CRASH]"), std::string::npos) << afterClose;
    // The only failures expected afterwards are the two refused second starts.
    std::size_t failures = 0;
    for (std::size_t at = afterClose.find("[FAIL]"); at != std::string::npos;
         at = afterClose.find("[FAIL]", at + 1))
        ++failures;
    EXPECT_LE(failures, 2u) << afterClose;
}

} // namespace
} // namespace e2e
