#!/usr/bin/env bash
# Builds a benchmark program and runs it inside a virtual X server (Mesa's software OpenGL),
# printing JSON. Extra arguments go to the benchmark, e.g.
#   bench/run.sh --benchmark_filter=BuildRenderer
#   bench/run.sh --benchmark_out=bench.json --benchmark_out_format=json
#   bench/run.sh sidebyside                                  # the library beside a bare GL program
#   bench/run.sh sidebyside --benchmark_filter='FirstFrame/1000000'
#   bench/run.sh sidebyside --pictures /tmp/sidebyside       # what both show, instead of timing
# Build and run each take /tmp/vexa-build.lock, so that no build shares the cores with a run.
set -euo pipefail
cd "$(dirname "$0")/.."

PROGRAM=vexa-bench
if [ "${1:-}" = sidebyside ]; then
  PROGRAM=vexa-sidebyside
  shift
fi

BUILD_DIR=${VEXA_BUILD_DIR:-build}
LOCK=/tmp/vexa-build.lock
flock "$LOCK" cmake -S . -B "$BUILD_DIR" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVEXA_BUILD_BENCH=ON
flock "$LOCK" cmake --build "$BUILD_DIR" -j"$(nproc)" --target "$PROGRAM"

if [ -n "${DISPLAY:-}" ]; then
  exec flock "$LOCK" "$BUILD_DIR/bench/$PROGRAM" --benchmark_format=json "$@"
else
  exec flock "$LOCK" xvfb-run -a -s "-screen 0 1280x1024x24" "$BUILD_DIR/bench/$PROGRAM" --benchmark_format=json "$@"
fi
