#!/usr/bin/env bash
# run_in_wine.sh PROGRAM ARGUMENT... - runs a Windows program. CMake and CTest run the tests with it.
set -euo pipefail

HERE=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
readonly HERE
# shellcheck source=scripts/lib/log.sh
source "$HERE/../lib/log.sh"
# shellcheck source=scripts/windows/settings.sh
source "$HERE/settings.sh"

# If no server is running, the first program starts wine's services, and they keep its output streams open for
# seconds after it has ended. Therefore the first script to run starts the server and the services here, without
# streams; the others wait for it.
start_server_once() {
  exec 9>"$WINEPREFIX/starting"
  flock 9
  if ! "$WINESERVER" -k0 2>/dev/null 9>&-; then
    "$WINESERVER" -p600 </dev/null >/dev/null 2>&1 9>&- || die "wine's server does not start"
    "${WINE[@]}" wineboot </dev/null >/dev/null 2>&1 9>&- || die "wine does not start"
  fi
  exec 9>&-
}

main() {
  [[ $# -gt 0 ]] || die "no program was given"
  set_wine_environment
  [[ -f $WINEPREFIX/made ]] || die "wine is not set up; run scripts/windows/prepare.sh"
  start_server_once
  exec "${WINE[@]}" "$@"
}

main "$@"
