#!/usr/bin/env bash
# Installs every Debian package that building, running and testing VEXA needs.
# Idempotent: when everything is present it only asks dpkg and returns.
set -euo pipefail

PACKAGES=(
  build-essential cmake ninja-build pkg-config
  libglfw3-dev libglbinding-dev libglm-dev libglew-dev
  libcegui-mk2-dev libcegui-mk2-data
  libjansson-dev nlohmann-json3-dev libfreetype-dev libstb-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  xvfb xauth libxtst-dev
  libgl1-mesa-dri libgl1-mesa-dev libglx-mesa0 libegl-mesa0 mesa-utils
  # The sanitizer and fuzz builds: clang, its sanitizer and libFuzzer runtimes (only recommended
  # by clang, so not pulled in without recommends) and llvm-symbolizer for readable reports.
  clang libclang-rt-14-dev llvm
  # The layout check of the test command.
  clang-format
)

missing=()
for p in "${PACKAGES[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  echo "install-deps: all ${#PACKAGES[@]} packages present"
  exit 0
fi

echo "install-deps: installing ${missing[*]}"
SUDO=""
if [ "$(id -u)" -ne 0 ]; then SUDO="sudo"; fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
