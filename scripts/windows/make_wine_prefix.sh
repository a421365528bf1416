#!/usr/bin/env bash
# Creates the wine prefix once, as Windows 10. Run it alone, before programs run under wine in parallel.
set -euo pipefail

HERE=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
readonly HERE
# shellcheck source=scripts/lib/log.sh
source "$HERE/../lib/log.sh"
# shellcheck source=scripts/windows/settings.sh
source "$HERE/settings.sh"

# The first program starts wine's services, which keep its output streams open for seconds.
quietly() { "$@" </dev/null >/dev/null 2>&1; }

main() {
  set_wine_environment
  [[ -f $WINEPREFIX/made ]] && return
  note "setting up wine in ${WINEPREFIX#"$WINDOWS_ROOT"/}"
  quietly "$WINESERVER" -k -w || true  # ends a server left by an earlier attempt
  rm -rf "$WINEPREFIX"
  mkdir -p "$WINEPREFIX"
  quietly "$WINESERVER" -p600 || die "wine's server does not start"
  quietly "${WINE[@]}" wineboot -i || die "wine cannot set itself up"
  quietly "${WINE[@]}" reg add 'HKCU\Software\Wine' /v Version /d win10 /f ||
    die "wine cannot be set to Windows 10"
  quietly "$WINESERVER" -k -w || true  # the last program may have ended it already
  touch "$WINEPREFIX/made"
}

main "$@"
