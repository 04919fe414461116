#!/usr/bin/env bash
# Installs what is missing, builds everything and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh

BUILD_DIR=${VEXA_BUILD_DIR:-build}
cmake -S . -B "$BUILD_DIR" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVEXA_WERROR=ON
cmake --build "$BUILD_DIR" -j"$(nproc)"
cd "$BUILD_DIR"
# GL and GUI tests need a display; without one they run inside a virtual X server with
# Mesa's software OpenGL. "-noreset" matters: by default the server resets whenever its last
# client disconnects, and a test process that connects during that reset gets "Failed to open
# display" (with -j2, one test often ends just as the next one starts).
if [ -n "${DISPLAY:-}" ]; then
  ctest --output-on-failure -j"$(nproc)"
else
  xvfb-run -a -s "-noreset -screen 0 1600x1200x24" ctest --output-on-failure -j"$(nproc)"
fi
