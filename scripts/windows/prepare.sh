#!/usr/bin/env bash
# Prepares a Debian 12 machine for the preset "windows": packages, libraries, wine. Does nothing for parts that
# exist already; if all exist, the network is not used.
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
