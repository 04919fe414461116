#!/usr/bin/env bash
# Installs what is missing, builds, and runs the main job: the viewer with its demo scene.
# Without a display it runs under Xvfb and saves a screenshot instead.
set -euo pipefail
cd "$(dirname "$0")/.."

bash scripts/install-deps.sh

BUILD_DIR=${VEXA_BUILD_DIR:-build}
cmake -S . -B "$BUILD_DIR" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build "$BUILD_DIR" -j"$(nproc)"

VIEWER="$BUILD_DIR/bin/vexa-viewer"
if [ -n "${DISPLAY:-}" ]; then
  exec "$VIEWER" --demo "$@"
fi
mkdir -p screenshots
SHOT="$(pwd)/screenshots/demo.png"
xvfb-run -a -s "-screen 0 1600x1000x24" "$VIEWER" --demo --screenshot "$SHOT" "$@"
echo "run: no display, so the demo ran under Xvfb; screenshot saved to $SHOT"
