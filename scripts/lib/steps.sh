# shellcheck shell=bash
# The named steps of a check. The output of each step goes to a log of its own. At its end one line reports the
# result and the duration. Needs log.sh.

STEP_LINES=()
FAILED_STEPS=()
STEP_STATUS=0
declare -A STEP_PIDS=()
TESTS_PASSED=0
TESTS_FAILED=0
TESTS_SKIPPED=0

# begin_steps DIR - sets the log directory and removes the logs of an earlier check.
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

# start_step NAME COMMAND... - runs the command in the background, in a shell that stops at the first error. Each
# started step must be awaited.
start_step() {
  local name=$1
  shift
  note "$name ..."
  (
    start=$SECONDS
    set +e
    (set -e; "$@")  # must not be part of a condition: that would disable set -e
    printf '%d %d\n' $? $((SECONDS - start)) >"$LOG_DIR/$name.result"
  ) >"$LOG_DIR/$name.log" 2>&1 </dev/null &
  STEP_PIDS[$name]=$!
}

# await_step NAME - waits for a step; step_passed then returns its result. Prints the end of the log if the step
# failed.
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

# run_step NAME COMMAND... - starts a step and awaits it.
run_step() {
  start_step "$@"
  await_step "$1"
}

step_passed() { [[ $STEP_STATUS -eq 0 ]]; }

skip_step() { end_step "$1" "skipped: $2" 0; }

# count_tests FILE RESULTS - adds the test counts of a JUnit file of CTest and of the result files of its programs.
count_tests() {
  local passed failed skipped
  read -r passed failed skipped < <(python3 -B "$(dirname "${BASH_SOURCE[0]}")/count_tests.py" "$1" "$2")
  note "             $passed passed, $failed failed, $skipped skipped"
  TESTS_PASSED=$((TESTS_PASSED + passed))
  TESTS_FAILED=$((TESTS_FAILED + failed))
  TESTS_SKIPPED=$((TESTS_SKIPPED + skipped))
}

# Prints the summary. Its last line contains nothing but the test counts. A failed step without a failed test
# counts as one failed test. Returns false if anything failed.
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
