#!/usr/bin/env bash
# Builds vexa-bench and runs it inside a virtual X server (Mesa's software OpenGL), printing
# JSON. Extra arguments go to the benchmark, e.g.
#   bench/run.sh --benchmark_filter=BuildRenderer
#   bench/run.sh --benchmark_out=bench.json --benchmark_out_format=json
set -euo pipefail
cd "$(dirname "$0")/.."

BUILD_DIR=${VEXA_BUILD_DIR:-build}
cmake -S . -B "$BUILD_DIR" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVEXA_BUILD_BENCH=ON
cmake --build "$BUILD_DIR" -j"$(nproc)" --target vexa-bench

if [ -n "${DISPLAY:-}" ]; then
  exec "$BUILD_DIR/bench/vexa-bench" --benchmark_format=json "$@"
else
  exec xvfb-run -a -s "-screen 0 1280x1024x24" "$BUILD_DIR/bench/vexa-bench" --benchmark_format=json "$@"
fi
