#!/usr/bin/env bash
# Set-up, build and test driver: installs what is missing from Debian's
# packages, configures with CMake and Ninja, builds, and runs a job.
#
#   tools/dev.sh setup   install the Debian packages the build needs
#   tools/dev.sh build   set-up, configure and build (build/)
#   tools/dev.sh test    build and run every test with CTest
#   tools/dev.sh main    build and run the main job
#   tools/dev.sh bench   build and run every benchmark
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build="${BUILD_DIR:-$root/build}"
jobs=$(nproc 2>/dev/null || echo 2)

packages=(
  build-essential cmake ninja-build pkg-config
  qt6-base-dev qt6-base-dev-tools libgl-dev
  perl universal-ctags libxml2-utils
)

as_root() {
  if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

setup() {
  local missing=()
  for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
  done
  if [ ${#missing[@]} -gt 0 ]; then
    echo "installing: ${missing[*]}"
    as_root env DEBIAN_FRONTEND=noninteractive apt-get update -q
    as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}"
  fi
}

configure() {
  cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE="${BUILD_TYPE:-RelWithDebInfo}" >/dev/null
}

build() {
  setup
  configure
  cmake --build "$build" -j "$jobs"
}

case "${1:-}" in
  setup) setup ;;
  build) build ;;
  test)
    build
    export QT_QPA_PLATFORM=offscreen
    ctest --test-dir "$build" --output-on-failure -j "$jobs"
    ;;
  main)
    build
    "$build/bench/sdk110-bench"
    ;;
  bench)
    build
    shift
    "$build/bench/sdk110-bench" "$@"
    ;;
  *)
    sed -n '2,10p' "$0" | sed 's/^# \{0,1\}//'
    exit 2
    ;;
esac
