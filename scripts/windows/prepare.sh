#!/usr/bin/env bash
# Makes a Debian 12 machine ready for the preset "windows": packages, libraries, wine. What is there
# already is left alone, and then nothing is asked of the network.
set -euo pipefail

HERE=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
readonly HERE
# shellcheck source=scripts/lib/log.sh
source "$HERE/../lib/log.sh"
# shellcheck source=scripts/lib/packages.sh
source "$HERE/../lib/packages.sh"
# shellcheck source=scripts/windows/packages.sh
source "$HERE/packages.sh"

ensure_packages "${BUILD_PACKAGES[@]}" "${TEST_PACKAGES[@]}" "${WINDOWS_PACKAGES[@]}"
"$HERE/build_dependencies.sh"
"$HERE/make_wine_prefix.sh"
