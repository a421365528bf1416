#!/usr/bin/env bash
# Runs the tests of the component and prints how many of its lines and branches they cover, for each folder. Fails
# if a test fails or if line coverage is below REQUIRED_LINES percent. The report in build/coverage/report shows
# the lines that were not covered.
set -euo pipefail

ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
readonly ROOT
readonly REQUIRED_LINES=95
readonly REPORT=build/coverage/report
JOBS=$(nproc)
readonly JOBS

# shellcheck source=scripts/lib/log.sh
source "$ROOT/scripts/lib/log.sh"
# shellcheck source=scripts/lib/packages.sh
source "$ROOT/scripts/lib/packages.sh"

counted_folders() {
  sed -n 's/^set(STREAM_\(COMPONENT\|INTERFACE\)_FOLDERS \(.*\))$/\2/p' cmake/Folders.cmake | xargs
}

build_and_test() {
  cmake --preset coverage
  cmake --build --preset coverage -j "$JOBS"
  find build/coverage -name '*.gcda' -delete  # counts of an earlier run
  ctest --preset coverage -L 'unit|pipeline|golden' -R '_test' -j $((2 * JOBS))
}

# Excludes branches that only an exception takes and branches that the compiler generated.
count_lines() {
  local folder filters=()
  for folder in $(counted_folders); do filters+=(--filter "$folder/"); done
  mkdir -p "$REPORT"
  gcovr --root . "${filters[@]}" --exclude-throw-branches --exclude-unreachable-branches \
    --csv "$REPORT/files.csv" --txt "$REPORT/lines.txt" --html-details "$REPORT/index.html" \
    build/coverage >/dev/null
}

main() {
  cd "$ROOT"
  ensure_packages "${BUILD_PACKAGES[@]}" "${SAMPLE_PACKAGES[@]}" "${TEST_PACKAGES[@]}" \
    "${COVERAGE_PACKAGES[@]}"
  build_and_test
  count_lines
  python3 -B scripts/lib/coverage_table.py "$REPORT/files.csv" "$REQUIRED_LINES" \
    "$(counted_folders)"
}

main "$@"
