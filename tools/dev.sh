#!/usr/bin/env bash
# Set-up, build and test driver: installs what is missing from Debian's
# packages, configures with CMake and Ninja, builds, and runs a job.
#
#   tools/dev.sh setup   install the Debian packages the build needs
#   tools/dev.sh build   set-up, configure and build everything (build/)
#   tools/dev.sh test    build and run every test with CTest, then the
#                        instrumented build and its tests, then a short fuzz
#                        run of every reader (FUZZ_SECONDS each, 15)
#   tools/dev.sh sanitize  build everything with clang, ASan+UBSan and
#                        libFuzzer's coverage hooks (build-san) and run
#                        every test there
#   tools/dev.sh fuzz [SECONDS]  build the fuzz targets in build-san and run
#                        each for SECONDS (60); crash inputs are kept in
#                        build-san/crashes
#   tools/dev.sh main    build the library and korvil, run the main job
#   tools/dev.sh bench   build and run every benchmark
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build="${BUILD_DIR:-$root/build}"
jobs=$(nproc 2>/dev/null || echo 2)

packages=(
  build-essential cmake ninja-build pkg-config
  qt6-base-dev qt6-base-dev-tools libgl-dev
  perl universal-ctags libxml2-utils lcov
  xvfb xauth
  clang libclang-rt-dev llvm
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

# Builds the given targets of build/ (everything when none is given). One
# tree serves every job: the main job builds only what it runs, the tests
# then build the rest on top of it.
build() {
  setup
  configure
  cmake --build "$build" -j "$jobs" ${1:+--target "$@"}
}

# The instrumented tree: clang with AddressSanitizer,
# UndefinedBehaviorSanitizer and libFuzzer's coverage hooks. The same
# library serves the whole test suite and the fuzz targets.
san_build="${SAN_BUILD_DIR:-$root/build-san}"

# Sanitizer reports end the process with a failure; leaks are checked, with
# the suppressions of tools/lsan.supp (Qt's and the system's own only).
sanitizer_env() {
  export ASAN_OPTIONS="detect_leaks=1:abort_on_error=1:check_initialization_order=1:strict_init_order=1"
  export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
  export LSAN_OPTIONS="suppressions=$root/tools/lsan.supp:print_suppressions=0"
}

instrumented_build() {
  setup
  CC=clang CXX=clang++ cmake -S "$root" -B "$san_build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -gline-tables-only -DNDEBUG" \
    -DSDK110_SANITIZE=ON -DSDK110_FUZZ=ON -DSDK110_BUILD_BENCH=OFF >/dev/null
  cmake --build "$san_build" -j "$jobs" ${1:+--target "$@"}
}

# Every test in the instrumented tree; the installed-package test is left
# out (its consumer is not instrumented).
sanitize() {
  instrumented_build
  sanitizer_env
  QT_QPA_PLATFORM=offscreen ctest --test-dir "$san_build" --output-on-failure -j "$jobs" -LE package
}

# Every fuzz target for the given seconds each. New inputs go to
# build-san/corpus/<reader> (the seeds of fuzz/corpus stay as they are),
# crashes, leaks and inputs slower than a second to
# build-san/crashes/<reader>-*, each run's log to build-san/logs.
fuzz() {
  local seconds="${1:-60}" failed=() source name reader log
  instrumented_build fuzzers
  sanitizer_env
  mkdir -p "$san_build/crashes" "$san_build/logs"
  for source in "$root"/fuzz/fuzz_*.cpp; do
    name=$(basename "$source" .cpp)
    reader=${name#fuzz_}
    log="$san_build/logs/$reader.log"
    mkdir -p "$san_build/corpus/$reader"
    if "$san_build/fuzz/$name" -max_total_time="$seconds" -timeout=1 -rss_limit_mb=2048 \
         -max_len=65536 -print_final_stats=1 -artifact_prefix="$san_build/crashes/$reader-" \
         "$san_build/corpus/$reader" "$root/fuzz/corpus/$reader" >"$log" 2>&1; then
      printf '%-14s %s; %s\n' "$reader" "$(grep -a '^Done ' "$log" | tail -1)" \
        "$(grep -aE '^#[0-9]+' "$log" | tail -1 | grep -oE 'cov: [0-9]+ ft: [0-9]+ corp: [0-9]+')"
    else
      failed+=("$reader")
      printf '%-14s FAILED, see %s\n' "$reader" "$log"
      tail -30 "$log"
    fi
  done
  if [ ${#failed[@]} -gt 0 ]; then
    echo "fuzzing found faults in: ${failed[*]} (inputs in $san_build/crashes)"
    return 1
  fi
}

# Runs a stage and tells how long it took, in wall and processor time
# (its child processes included).
stage() {
  local TIMEFORMAT="== $1: %0R s wall, %0U s user, %0S s system"
  echo "== $1"
  time "${@:2}"
}

unit_tests() {
  build
  QT_QPA_PLATFORM=offscreen ctest --test-dir "$build" --output-on-failure -j "$jobs"
}

case "${1:-}" in
  setup) setup ;;
  build) build ;;
  test)
    stage "build and tests" unit_tests
    stage "instrumented build and tests" sanitize
    stage "fuzzing" fuzz "${FUZZ_SECONDS:-15}"
    ;;
  sanitize) sanitize ;;
  fuzz) fuzz "${2:-60}" ;;
  main)
    build korvil
    # The example project, copied to a scratch directory of the build tree
    # (examples/ is never written), run by korvil with the installation
    # it finds beside itself or in the source tree.
    work="$build/main-job"
    rm -rf "$work"
    mkdir -p "$work"
    cp -R "$root/examples/calculator" "$work/"
    rm -rf "$work/calculator/build" "$work/calculator/.korvil" \
           "$work/calculator/sub/printer/build" "$work/calculator/sub/printer/.korvil"
    korvil() { (cd "$work/calculator" && env -u ZELTAHOME -u KORVILDIR "$build/apps/korvil" "$@"); }
    step() { printf '\n== korvil %s\n' "$*"; korvil "$@"; }
    echo "example project: $work/calculator"
    step info calculator.rtp
    step build calculator.rtp
    step execute calculator.rtp
    step report results calculator.rtp
    step report coverage calculator.rtp
    step tags calculator.rtp --layout file
    step metrics calculator.rtp
    ;;
  bench)
    build sdk110-bench
    shift
    "$build/bench/sdk110-bench" "$@"
    ;;
  *)
    sed -n '2,17p' "$0" | sed 's/^# \{0,1\}//'
    exit 2
    ;;
esac
