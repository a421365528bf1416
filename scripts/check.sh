#!/usr/bin/env bash
# Installs what is missing and checks everything: format, words, shellcheck, pylint, eslint, clang-tidy, all tests
# without and with sanitizers, the release build with the benchmarks, and some seconds of each fuzzer. Prints a
# summary; its last line counts the tests. After a failed step, all steps that do not depend on it still run.
#
#   scripts/check.sh             everything for Linux
#   scripts/check.sh --fast      format, words, build and tests of the preset dev only
#   scripts/check.sh --windows   the Windows library, built by the cross compiler, tested under wine
#   scripts/check.sh --all       everything for Linux and for Windows
set -euo pipefail

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
readonly ROOT
readonly FUZZ_SECONDS=10
JOBS=$(nproc)
readonly JOBS
readonly TEST_JOBS=$((2 * JOBS))  # tests of streams mostly wait
PATH=$PATH:/usr/sbin:/sbin  # Debian's directory of nginx, which is not in every user's PATH

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

# own_files TEST... - the project's files that match these tests of find, separated by zero bytes.
own_files() {
  find . \( -path ./build -o -path ./out -o -path ./.git \) -prune -o -type f \( "$@" \) -print0
}

check_format() { own_files -name '*.cc' -o -name '*.h' -o -name '*.c' | xargs -0 clang-format --dry-run -Werror; }

check_shell() { own_files -name '*.sh' -o -path './.ci/*' | xargs -0 shellcheck; }

check_words() { python3 -B scripts/lib/words.py .; }

check_documents() {
  python3 -B scripts/lib/compatibility.py .
  scripts/draw.sh --check
}

# Sorted, because pylint itself fails on some orders.
check_python() { own_files -name '*.py' | sort -z | xargs -0 pylint; }

# npm installs eslint into the build directory, in the version and with the checksum in package-lock.json.
check_page_scripts() {
  local web=$ROOT/build/eslint
  mkdir -p "$web"
  rm -f "$web"/*.js
  cp host/report/web/*.{js,json,mjs} "$web"
  cd "$web"
  npm ci --ignore-scripts --prefer-offline --no-audit --no-fund --loglevel=error
  npx --no-install eslint --max-warnings 0 .
}

# Sources that are not compiled in the preset dev are compiled in one of the other presets.
check_tidy() {
  local preset
  for preset in dev release fuzz asan; do cmake --preset "$preset" >/dev/null; done
  python3 -B scripts/lib/tidy.py build/{dev,release,fuzz,asan}
}

# build PRESET [TARGET...]
build() {
  local preset=$1
  shift
  cmake --preset "$preset"
  # If the build tree was made with another compiler, the first run of CMake keeps only the preset's compiler and
  # loses its other settings.
  cmake --preset "$preset"
  cmake --build --preset "$preset" -j "$JOBS" ${1:+--target "$@"}
}

run_tests() {
  rm -rf "build/$1/test-results"
  run_sanitized ctest --preset "$1" -j "$TEST_JOBS" --output-junit "$LOG_DIR/tests-$1.xml"
}

declare -A BUILT=()

# build_step PRESET [TARGET...]
build_step() {
  run_step "build-$1" build "$@"
  ! step_passed || BUILT[$1]=1
}

# start_tests PRESET - starts the tests in the background, since they wait more than they compute.
start_tests() {
  if [[ -n ${BUILT[$1]-} ]]; then
    start_step "tests-$1" run_tests "$1"
  else
    skip_step "tests-$1" "the build failed"
  fi
}

# await_tests PRESET - counts the tests even if one failed, and prints the output of the failed ones.
await_tests() {
  local junit=$LOG_DIR/tests-$1.xml
  [[ -n ${BUILT[$1]-} ]] || return 0
  await_step "tests-$1"
  if [[ -s $junit ]]; then
    step_passed || python3 -B "$ROOT/scripts/lib/failed_tests.py" "$junit" "build/$1/test-results"
    count_tests "$junit" "build/$1/test-results"
  fi
}

# fuzz PROGRAM - runs it on a copy of its seeds, since the fuzzer adds to its corpus directory. Inputs that made it
# fail are stored in the log directory.
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

# Runs as many fuzzers at a time as there are cores.
fuzz_each() {
  local program names=()
  build_step fuzz
  if [[ -z ${BUILT[fuzz]-} ]]; then
    skip_step fuzz "the build failed"
    return
  fi
  for program in build/fuzz/bin/fuzz_*; do
    if [[ ${#names[@]} -ge $JOBS ]]; then
      await_step "${names[0]}"
      names=("${names[@]:1}")
    fi
    names+=("$(basename "$program")")
    start_step "${names[-1]}" fuzz "$program"
  done
  for program in "${names[@]}"; do await_step "$program"; done
}

check_sources() {
  run_step format check_format
  run_step words check_words
  run_step documents check_documents
}

# eslint runs in the background, since it waits for npm.
lint() {
  start_step eslint check_page_scripts
  run_step shellcheck check_shell
  run_step python-lint check_python
  await_step eslint
  run_step tidy check_tidy
}

check_fast() {
  check_sources
  build_step dev
  start_tests dev
  await_tests dev
}

# The last tests keep running in the background.
start_linux() {
  build_step dev
  start_tests dev
  build_step asan
  await_tests dev
  start_tests asan
  build_step tsan
  await_tests asan
  start_tests tsan
}

# The steps that run while the last tests are running.
check_rest() {
  lint
  run_step release build release stream_downloader stream_downloader_c stream_host stream_player bench/all
  fuzz_each
}

check_all() {
  check_sources
  start_linux
  check_rest
  await_tests tsan
}

# Builds the Windows library, its host and the tests with the cross compiler.
build_windows() {
  await_step windows-tools
  if step_passed; then
    build_step windows
  else
    skip_step build-windows "the tools for Windows are not ready"
  fi
}

end_windows() {
  await_tests windows
  scripts/windows/stop_wine.sh
}

check_windows() {
  start_step windows-tools scripts/windows/prepare.sh
  build_windows
  start_tests windows
  end_windows
}

check_both() {
  start_step windows-tools scripts/windows/prepare.sh
  check_sources
  start_linux
  build_windows
  await_tests tsan
  start_tests windows  # wine computes more than it waits, so no other step runs meanwhile
  end_windows
  check_rest
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
