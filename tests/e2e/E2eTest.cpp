#include "E2eTest.h"

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>

namespace e2e {

namespace {

// llvmpipe draws a small scene in 20-100 ms; with another test loading the second core a
// frame can take several times that. A picture that holds this long is finished.
constexpr auto kSettleTime = 300ms;
constexpr auto kPollInterval = 25ms;

// In the sanitizer build a fault in the program is reported in its output and ends it with an
// error, which a case judging only pixels (or one that stops the program itself) would miss.
void ExpectNoSanitizerReport(const std::string& output)
{
    for (const char* report : {"ERROR: AddressSanitizer", "ERROR: LeakSanitizer", "runtime error:"})
        EXPECT_EQ(output.find(report), std::string::npos)
            << "the program's output holds \"" << report << "\"";
}

} // namespace

void E2eTest::SetUp()
{
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    caseDirectory_ = fs::path(E2E_WORK_ROOT) / (std::string(info->test_suite_name()) + "." + info->name());
    workingDirectory_ = caseDirectory_ / "cwd";
    outputFile_ = caseDirectory_ / "program.log";
    std::error_code ignored;
    fs::remove_all(caseDirectory_, ignored);
    fs::create_directories(workingDirectory_);
    x = std::make_unique<XSession>((caseDirectory_ / "xvfb.log").string());
}

void E2eTest::TearDown()
{
    // Closed as a person closes it, the program ends through Terminate, and in the sanitizer
    // build LeakSanitizer checks what it left behind; one that does not end in time is stopped.
    if (program && program->IsRunning() && x && x->WindowArea().Width() > 0) {
        x->RequestClose();
        program->WaitForExit(15s);
    }
    if (program)
        program->Stop();
    program.reset();
    x.reset();
    ExpectNoSanitizerReport(Output());
    // VEXA_E2E_KEEP_PICTURES=1 keeps a passing case's pictures too, for a person to look at.
    const char* keepAll = std::getenv("VEXA_E2E_KEEP_PICTURES");
    if (!HasFailure() && (keepAll == nullptr || std::string(keepAll) != "1"))
        return;
    for (std::size_t i = 0; i < kept_.size(); ++i)
        kept_[i].second.SavePng(
            (caseDirectory_ / ((i < 10 ? "0" : "") + std::to_string(i) + "-" + kept_[i].first + ".png"))
                .string());
    std::cout << "[e2e] pictures and program output of this case: " << caseDirectory_.string()
              << "\n[e2e] program output:\n"
              << Output() << std::flush;
}

::testing::AssertionResult E2eTest::Launch(const std::string& path, const std::vector<std::string>& arguments)
{
    // A program started before in this case (to see what it kept) writes to the same file.
    if (program)
        ExpectNoSanitizerReport(Output());
    // The program must use our private server, whatever the test runner was started under.
    program =
        std::make_unique<ChildProcess>(ChildProcess::Options{.program = path,
                                                             .arguments = arguments,
                                                             .workingDirectory = workingDirectory_.string(),
                                                             .outputFile = outputFile_.string(),
                                                             .environment = {{"DISPLAY", x->DisplayName()}},
                                                             .unset = {"WAYLAND_DISPLAY", "XAUTHORITY"}});
    if (!x->AttachToWindowOf(program->Pid(), 30s))
        return ::testing::AssertionFailure() << path
                                             << (program->IsRunning() ? " showed no window within 30 s"
                                                                      : " ended before it showed a window")
                                             << "; output:\n"
                                             << Output();
    layout.area = {0, 0, x->WindowArea().Width(), x->WindowArea().Height()};
    return ::testing::AssertionSuccess();
}

::testing::AssertionResult E2eTest::LaunchViewer(const std::vector<std::string>& arguments)
{
    std::vector<std::string> all{"--assets", E2E_ASSET_DIR};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return Launch(E2E_VIEWER, all);
}

std::string E2eTest::ReadFile(const fs::path& file)
{
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

bool E2eTest::WaitFor(const std::function<bool()>& done, std::chrono::milliseconds timeout)
{
    const auto end = std::chrono::steady_clock::now() + timeout;
    while (!done()) {
        if (std::chrono::steady_clock::now() >= end)
            return false;
        XSession::Pause(kPollInterval);
    }
    return true;
}

Picture E2eTest::Keep(const std::string& label, const Picture& picture)
{
    kept_.emplace_back(label, picture.Empty() ? Grab() : picture);
    return picture;
}

Picture E2eTest::WaitUntil(const Accept& accept, std::chrono::milliseconds timeout)
{
    Picture picture;
    const auto passes = [&] { return !(picture = Grab()).Empty() && accept(picture); };
    return WaitFor(passes, timeout) ? picture : Picture();
}

Picture E2eTest::WaitForSettled(const Accept& accept, std::chrono::milliseconds timeout)
{
    Picture candidate;
    auto since = std::chrono::steady_clock::now();
    const auto settled = [&] {
        Picture picture = Grab();
        const auto now = std::chrono::steady_clock::now();
        if (picture.Empty() || !accept(picture))
            candidate = Picture();
        else if (!candidate.Empty() && picture == candidate)
            return now - since >= kSettleTime;
        else {
            candidate = std::move(picture);
            since = now;
        }
        return false;
    };
    return WaitFor(settled, timeout) ? candidate : Picture();
}

Picture E2eTest::WaitForNotice(Rect& strip, std::chrono::milliseconds timeout)
{
    const Picture before = start.Empty() ? Grab() : start;
    const int w = before.Width(), h = before.Height();
    strip = {w / 2 - 300, h - 80, w / 2 + 300, h};
    return Keep("notice", WaitUntil(
                              [&](const Picture& p) {
                                  return CountDifferences(before, p, strip) > 500 &&
                                         CountLightPixels(p, strip) > 30;
                              },
                              timeout));
}

} // namespace e2e
