# shellcheck shell=bash
# The named steps of a check: each runs with its output in a log of its own and ends with one line
# that reports its result and how long it took. Needs log.sh.

STEP_LINES=()
FAILED_STEPS=()
STEP_STATUS=0
declare -A STEP_PIDS=()
TESTS_PASSED=0
TESTS_FAILED=0
TESTS_SKIPPED=0

# begin_steps DIR - where the logs go; the logs of an earlier check are removed.
begin_steps() {
  LOG_DIR=$1
  rm -rf "$LOG_DIR"
  mkdir -p "$LOG_DIR"
}

end_step() {
  local line
  line=$(printf '%-14s %s (%d s)' "$1" "$2" "$3")
  STEP_LINES+=("$line")
  note "$line"
}

# start_step NAME COMMAND... - the command runs beside what follows, in a shell of its own that stops
# at its first error. Each step that was started must be awaited.
start_step() {
  local name=$1
  shift
  note "$name ..."
  (
    start=$SECONDS
    set +e
    (set -e; "$@")  # no condition may stand around this: it would switch off the end at an error
    printf '%d %d\n' $? $((SECONDS - start)) >"$LOG_DIR/$name.result"
  ) >"$LOG_DIR/$name.log" 2>&1 </dev/null &
  STEP_PIDS[$name]=$!
}

# await_step NAME - step_passed reports how it went; the end of the log of a failed one is shown.
await_step() {
  local name=$1 log=$LOG_DIR/$1.log elapsed=0
  wait "${STEP_PIDS[$name]}" || true
  STEP_STATUS=1
  read -r STEP_STATUS elapsed <"$LOG_DIR/$name.result" || true
  if step_passed; then
    end_step "$name" "ok" "$elapsed"
  else
    tail -n 200 "$log"
    FAILED_STEPS+=("$name")
    end_step "$name" "FAILED, see $log" "$elapsed"
  fi
}

# run_step NAME COMMAND... - both in one.
run_step() {
  start_step "$@"
  await_step "$1"
}

step_passed() { [[ $STEP_STATUS -eq 0 ]]; }

skip_step() { end_step "$1" "skipped: $2" 0; }

# count_tests FILE RESULTS - adds up a JUnit file of CTest, and those of the programs that it ran.
count_tests() {
  local passed failed skipped
  read -r passed failed skipped < <(python3 -B "$(dirname "${BASH_SOURCE[0]}")/count_tests.py" "$1" "$2")
  note "             $passed passed, $failed failed, $skipped skipped"
  TESTS_PASSED=$((TESTS_PASSED + passed))
  TESTS_FAILED=$((TESTS_FAILED + failed))
  TESTS_SKIPPED=$((TESTS_SKIPPED + skipped))
}

# Prints the summary; the last line is alone on its line and counts the tests. A step that failed
# without a failed test of its own counts as one. False when anything failed.
end_steps() {
  local skipped=""
  note "summary, after $SECONDS s"
  printf '   %s\n' "${STEP_LINES[@]}"
  if [[ ${#FAILED_STEPS[@]} -gt 0 ]]; then
    note "failed: ${FAILED_STEPS[*]}"
    [[ $TESTS_FAILED -gt 0 ]] || TESTS_FAILED=${#FAILED_STEPS[@]}
  fi
  [[ $TESTS_SKIPPED -eq 0 ]] || skipped=", $TESTS_SKIPPED skipped"
  printf '%d passed, %d failed%s\n' "$TESTS_PASSED" "$TESTS_FAILED" "$skipped"
  [[ ${#FAILED_STEPS[@]} -eq 0 ]]
}
