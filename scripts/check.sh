#!/usr/bin/env bash
# Sets up and checks everything: format, clang-tidy, all tests plain and under the sanitizers, the
# release build with the benchmarks, and half a minute of each fuzzer. Ends with the summary; the last
# line counts the tests. All steps that can run do run, also after one that failed.
#
#   scripts/check.sh             everything for Linux
#   scripts/check.sh --fast      format, build and tests of the preset dev only
#   scripts/check.sh --windows   the Windows library, built by the cross compiler, tested under wine
#   scripts/check.sh --all       everything for Linux and for Windows
set -euo pipefail

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
readonly ROOT
readonly FUZZ_SECONDS=20
JOBS=$(nproc)
readonly JOBS
readonly TEST_JOBS=$((2 * JOBS))  # most of a test of a stream is waiting
PATH=$PATH:/usr/sbin:/sbin  # where Debian keeps nginx; not every user looks there

# shellcheck source=scripts/lib/log.sh
source "$ROOT/scripts/lib/log.sh"
# shellcheck source=scripts/lib/packages.sh
source "$ROOT/scripts/lib/packages.sh"
# shellcheck source=scripts/windows/packages.sh
source "$ROOT/scripts/windows/packages.sh"
# shellcheck source=scripts/lib/steps.sh
source "$ROOT/scripts/lib/steps.sh"
# shellcheck source=scripts/lib/sanitizers.sh
source "$ROOT/scripts/lib/sanitizers.sh"

# The sources of the project, separated by zeros.
own_sources() {
  find . \( -path ./build -o -path ./out -o -path ./.git \) -prune -o \
    -type f \( -name '*.cc' -o -name '*.h' \) -print0
}

check_format() { own_sources | xargs -0 clang-format --dry-run -Werror; }

# What is compiled for the library and the host: nothing of the tests, and nothing of another system.
tidy_sources() {
  sed -n 's/^ *"file": "\(.*\)",\?$/\1/p' build/dev/compile_commands.json | sort -u |
    grep -E "^$ROOT/(public|common|ts|hls|flv|mp4|isobmff|host)/"
}

check_tidy() {
  local sources
  sources=$(tidy_sources)
  xargs -d '\n' -n 1 -P "$JOBS" clang-tidy --quiet -p build/dev <<<"$sources"
}

# build PRESET [TARGET...]
build() {
  local preset=$1
  shift
  cmake --preset "$preset"
  cmake --build --preset "$preset" -j "$JOBS" ${1:+--target "$@"}
}

run_tests() {
  rm -rf "build/$1/test-results"
  run_sanitized ctest --preset "$1" -j "$TEST_JOBS" --output-junit "$LOG_DIR/tests-$1.xml"
}

# build_and_test PRESET - two steps; the totals count also where a test failed, and what the failed
# ones wrote is shown.
build_and_test() {
  local junit=$LOG_DIR/tests-$1.xml
  run_step "build-$1" build "$1"
  if ! step_passed; then
    skip_step "tests-$1" "the build failed"
    return
  fi
  run_step "tests-$1" run_tests "$1"
  if [[ -s $junit ]]; then
    step_passed || python3 -B "$ROOT/scripts/lib/failed_tests.py" "$junit"
    count_tests "$junit" "build/$1/test-results"
  fi
}

# fuzz PROGRAM - on a copy of its seeds, since the fuzzer adds to what it is given. What made it fail
# stays in the folder of the logs.
fuzz() {
  local name seeds
  [[ -x $1 ]] || die "no fuzzer was built: $1"
  name=$(basename "$1")
  seeds=$ROOT/fuzz/corpus/${name#fuzz_}
  [[ -d $seeds ]] || die "no seeds for $name in $seeds"
  FUZZ_CORPUS=$(mktemp -d)
  trap 'rm -rf "$FUZZ_CORPUS"' EXIT
  cp -r "$seeds/." "$FUZZ_CORPUS"
  run_sanitized "$1" -max_total_time="$FUZZ_SECONDS" -timeout=10 -rss_limit_mb=2048 \
    -print_final_stats=1 -close_fd_mask=1 -artifact_prefix="$LOG_DIR/$name-" "$FUZZ_CORPUS"
}

fuzz_each() {
  local program
  run_step build-fuzz build fuzz
  if ! step_passed; then
    skip_step fuzz "the build failed"
    return
  fi
  for program in build/fuzz/bin/fuzz_*; do
    run_step "$(basename "$program")" fuzz "$program"
  done
}

check_fast() {
  run_step format check_format
  build_and_test dev
}

check_all() {
  check_fast
  if [[ -s build/dev/compile_commands.json ]]; then
    run_step tidy check_tidy
  fi
  build_and_test asan
  build_and_test tsan
  run_step release build release stream_downloader stream_host stream_player bench/all
  fuzz_each
}

# The Windows library, its host and the tests, built by the cross compiler and run under wine.
check_windows() {
  run_step windows-tools scripts/windows/prepare.sh
  if ! step_passed; then
    skip_step build-windows "the tools for Windows are not ready"
    return
  fi
  build_and_test windows
  scripts/windows/stop_wine.sh
}

check_both() {
  check_all
  check_windows
}

main() {
  cd "$ROOT"
  local checks=check_all packages=()
  case ${1-} in
    "") ;;
    --fast) checks=check_fast ;;
    --windows) checks=check_windows packages=("${WINDOWS_PACKAGES[@]}") ;;
    --all) checks=check_both packages=("${WINDOWS_PACKAGES[@]}") ;;
    *) die "unknown option: $1 (there are: --fast, --windows, --all)" ;;
  esac
  ensure_packages "${BUILD_PACKAGES[@]}" "${PLAYER_PACKAGES[@]}" "${SAMPLE_PACKAGES[@]}" \
    "${TEST_PACKAGES[@]}" "${CHECK_PACKAGES[@]}" "${packages[@]}"
  begin_steps "$ROOT/build/check"
  "$checks"
  end_steps
}

main "$@"
