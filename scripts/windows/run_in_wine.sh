#!/usr/bin/env bash
# run_in_wine.sh PROGRAM ARGUMENT... - runs a Windows program. CMake and CTest start the tests with it.
set -euo pipefail

HERE=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
readonly HERE
# shellcheck source=scripts/lib/log.sh
source "$HERE/../lib/log.sh"
# shellcheck source=scripts/windows/settings.sh
source "$HERE/settings.sh"

# The first program that meets no server starts wine's services, which hold its streams open for
# seconds after it ended. So the server and the services are started here, with none, by the first of
# those that ask; the others wait for it.
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
  [[ $# -gt 0 ]] || die "which program?"
  set_wine_environment
  [[ -f $WINEPREFIX/made ]] || die "wine is not set up; run scripts/windows/prepare.sh"
  start_server_once
  exec "${WINE[@]}" "$@"
}

main "$@"
