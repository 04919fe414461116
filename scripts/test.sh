#!/usr/bin/env bash
# Installs what is missing, builds everything and runs every test, in four parts:
#
#   format    every C++ file of the repository is as .clang-format lays it out (Debian's
#             clang-format; `clang-format -i <file>` mends one);
#   normal    the Release build in build/ (VEXA_BUILD_DIR names another folder), warnings as
#             errors, the whole CTest suite;
#   sanitize  a clang build in build-asan/ with AddressSanitizer, UndefinedBehaviorSanitizer and
#             LeakSanitizer (VEXA_SANITIZE=ON), the whole CTest suite again, the end-to-end
#             cases' programs included;
#   fuzz      a short libFuzzer pass over every fuzz program's corpus (scripts/fuzz.sh, built
#             in build-asan/ too).
#
# Usage: scripts/test.sh [--only format|normal|sanitize|fuzz]
# Without --only all four run in that order; the packages are checked first either way.
set -euo pipefail
cd "$(dirname "$0")/.."
REPO=$(pwd)

ONLY=""
while [ $# -gt 0 ]; do
  case "$1" in
    --only)
      ONLY=${2:-}
      shift 2 || { echo "test.sh: --only needs format, normal, sanitize or fuzz" >&2; exit 2; }
      ;;
    --only=*) ONLY=${1#--only=}; shift ;;
    -h|--help) sed -n '2,15p' "$0" | sed 's/^# \{0,1\}//'; exit 0 ;;
    *) echo "test.sh: unknown argument '$1' (try --help)" >&2; exit 2 ;;
  esac
done
case "$ONLY" in
  ""|format|normal|sanitize|fuzz) ;;
  *) echo "test.sh: --only takes format, normal, sanitize or fuzz, not '$ONLY'" >&2; exit 2 ;;
esac
runs() { [ -z "$ONLY" ] || [ "$ONLY" = "$1" ]; }

# GL and GUI tests need a display; without one they run inside a virtual X server with
# Mesa's software OpenGL. "-noreset" matters: by default the server resets whenever its last
# client disconnects, and a test process that connects during that reset gets "Failed to open
# display" (with -j2, one test often ends just as the next one starts).
run_ctest() {
  if [ -n "${DISPLAY:-}" ]; then
    ctest --output-on-failure -j"$(nproc)" "$@"
  else
    xvfb-run -a -s "-noreset -screen 0 1600x1200x24" ctest --output-on-failure -j"$(nproc)" "$@"
  fi
}

section() { printf '\n=== test.sh: %s ===\n' "$*"; }

bash scripts/install-deps.sh

if runs format; then
  section "format (clang-format $(clang-format --version | grep -o '[0-9][0-9.]*' | head -n 1))"
  # The fuzz corpora hold inputs, not our code.
  git ls-files -z '*.cpp' '*.h' ':!tests/fuzz/corpus/**' | xargs -0 clang-format --dry-run --Werror
fi

if runs normal; then
  section "normal suite (Release, warnings as errors)"
  BUILD_DIR=${VEXA_BUILD_DIR:-build}
  cmake -S . -B "$BUILD_DIR" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVEXA_WERROR=ON
  cmake --build "$BUILD_DIR" -j"$(nproc)"
  (cd "$BUILD_DIR" && run_ctest)
fi

# The sanitizer build serves the fuzz pass too, so its settings live here once.
SAN_DIR=build-asan
# The environment reaches every program the tests start (the end-to-end cases pass theirs on to
# the viewer and the hosts), and the build too: test discovery runs the test programs.
# What the libraries outside the project lose on their own is suppressed in lsan.supp, ours
# never; a report fails the program that made it. (Not fast_unwind_on_malloc=0, for all the
# longer stacks it records: its unwinder deadlocks against the GL driver's threads loading
# code, and the viewer hangs at start.)
sanitizer_environment() {
  # intercept_tls_get_addr=0: with this glibc, clang 14's leak checker follows the dynamic TLS
  # of the GL driver's threads into freed memory and its tracer dies ("Tracer caught signal
  # 11") at the end of GL cases that passed; without the interception it scans static TLS only.
  export ASAN_OPTIONS="detect_leaks=1:abort_on_error=0:detect_stack_use_after_return=1:check_initialization_order=1:intercept_tls_get_addr=0"
  export LSAN_OPTIONS="suppressions=$REPO/tests/sanitizer/lsan.supp:print_suppressions=0"
  export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
}
build_sanitized() {
  sanitizer_environment
  # Debug (assertions on) at -O1 -g, as the sanitizers' own guide advises: reports keep their
  # lines, and the checked programs run fast enough for the end-to-end cases.
  cmake -S . -B "$SAN_DIR" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
    "-DCMAKE_C_FLAGS_DEBUG=-O1 -g" "-DCMAKE_CXX_FLAGS_DEBUG=-O1 -g" \
    -DVEXA_WERROR=ON -DVEXA_SANITIZE=ON -DVEXA_FUZZ=ON
  cmake --build "$SAN_DIR" -j"$(nproc)"
}

if runs sanitize; then
  section "sanitizer suite (clang, ASan + UBSan + LSan, $SAN_DIR)"
  build_sanitized
  (cd "$SAN_DIR" && run_ctest)
fi

if runs fuzz; then
  if [ -f scripts/fuzz.sh ]; then
    section "fuzz pass ($SAN_DIR, 60 s in all)"
    # After the sanitize part the build is there; alone, this part builds it.
    if [ "$ONLY" = fuzz ]; then build_sanitized; else sanitizer_environment; fi
    bash scripts/fuzz.sh "$SAN_DIR" 60
  else
    section "fuzz pass skipped: there is no scripts/fuzz.sh"
  fi
fi
