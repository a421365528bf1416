# shellcheck shell=bash
# The named steps of a check: each runs with its output in a log of its own and ends with one line
# that tells its result and how long it took. Needs log.sh.

STEP_LINES=()
FAILED_STEPS=()
STEP_STATUS=0
TESTS_PASSED=0
TESTS_FAILED=0
TESTS_SKIPPED=0

# begin_steps DIR - where the logs go; what an earlier check left there goes.
begin_steps() {
  LOG_DIR=$1
  rm -rf "$LOG_DIR"
  mkdir -p "$LOG_DIR"
}

end_step() {
  local line
  line=$(printf '%-12s %s (%d s)' "$1" "$2" "$3")
  STEP_LINES+=("$line")
  note "$line"
}

# run_step NAME COMMAND... - step_passed tells how it went; the end of the log of a failed one is
# shown. The command runs in a shell of its own that stops at its first error. That works only while
# run_step itself is no condition (of an if, && or ||), so it always returns 0.
run_step() {
  local name=$1 log=$LOG_DIR/$1.log start=$SECONDS status
  shift
  note "$name ..."
  set +e
  (set -e && "$@") >"$log" 2>&1 </dev/null
  status=$?
  set -e
  STEP_STATUS=$status
  if [[ $status -eq 0 ]]; then
    end_step "$name" "ok" $((SECONDS - start))
  else
    tail -n 200 "$log"
    FAILED_STEPS+=("$name")
    end_step "$name" "FAILED, see $log" $((SECONDS - start))
  fi
}

step_passed() { [[ $STEP_STATUS -eq 0 ]]; }

skip_step() { end_step "$1" "left out: $2" 0; }

# count_tests FILE RESULTS - adds up a JUnit file of CTest, and those of the programs that it ran.
count_tests() {
  local passed failed skipped
  read -r passed failed skipped < <(python3 "$ROOT/scripts/lib/count_tests.py" "$1" "$2")
  note "             $passed passed, $failed failed, $skipped skipped"
  TESTS_PASSED=$((TESTS_PASSED + passed))
  TESTS_FAILED=$((TESTS_FAILED + failed))
  TESTS_SKIPPED=$((TESTS_SKIPPED + skipped))
}

# Prints the summary; the last line is alone on its line and counts the tests. A step that failed
# without a failed test of its own counts as one. False when anything failed.
end_steps() {
  local skipped=""
  note "summary"
  printf '   %s\n' "${STEP_LINES[@]}"
  if [[ ${#FAILED_STEPS[@]} -gt 0 ]]; then
    note "failed: ${FAILED_STEPS[*]}"
    [[ $TESTS_FAILED -gt 0 ]] || TESTS_FAILED=${#FAILED_STEPS[@]}
  fi
  [[ $TESTS_SKIPPED -eq 0 ]] || skipped=", $TESTS_SKIPPED skipped"
  printf '%d passed, %d failed%s\n' "$TESTS_PASSED" "$TESTS_FAILED" "$skipped"
  [[ ${#FAILED_STEPS[@]} -eq 0 ]]
}
