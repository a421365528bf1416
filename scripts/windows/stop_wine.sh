#!/usr/bin/env bash
# Ends wine's server and all programs that run under it. Otherwise it ends by itself ten minutes after the last
# program.
set -euo pipefail

HERE=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
readonly HERE
# shellcheck source=scripts/windows/settings.sh
source "$HERE/settings.sh"

set_wine_environment
[[ ! -d $WINEPREFIX ]] && exit
"$WINESERVER" -k -w 2>/dev/null || true  # fails if no server is running
