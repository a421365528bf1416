# shellcheck shell=bash
# Runs programs that were built with sanitizers.

# The sanitizers of these compilers need certain address ranges to be free. Kernels that randomise mappings over
# more than 28 bits sometimes occupy them, so on such kernels programs run without randomisation, if that is
# permitted.
run_sanitized() {
  local limit=28 bits=0
  [[ -r /proc/sys/vm/mmap_rnd_bits ]] && bits=$(</proc/sys/vm/mmap_rnd_bits)
  if { [[ $bits -gt $limit ]] || ! [[ -r /proc/sys/vm/mmap_rnd_bits ]]; } &&
    setarch "$(uname -m)" -R true 2>/dev/null; then
    setarch "$(uname -m)" -R "$@"
  else
    "$@"
  fi
}

export ASAN_OPTIONS=${ASAN_OPTIONS-detect_stack_use_after_return=1:strict_string_checks=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS-print_stacktrace=1}
