# shellcheck shell=bash
# The Debian packages that the project needs, by purpose, and their installation. Needs log.sh.
#
# Nothing is asked of a package registry while nothing is missing.
#
# shellcheck disable=SC2034  # the lists are for the scripts that read this file

# What brings npm: nothing where there is one already. Debian's cannot be installed beside one from
# elsewhere.
NPM_PACKAGES=()
[[ -n $(command -v npm) ]] || NPM_PACKAGES=(nodejs npm)
readonly NPM_PACKAGES

# To build the library and the console host with its report, and to play an address with them.
readonly BUILD_PACKAGES=(
  ca-certificates cmake g++ libcli11-dev libcurl4-openssl-dev ninja-build nlohmann-json3-dev
  pkg-config zlib1g-dev "${NPM_PACKAGES[@]}"
)
# To build the player with a window, too.
readonly PLAYER_PACKAGES=(
  libavcodec-dev libavutil-dev libsdl2-dev libswresample-dev libswscale-dev
)
# To make a sample and to serve it.
readonly SAMPLE_PACKAGES=(ffmpeg nginx)
# To build and run the tests.
readonly TEST_PACKAGES=(
  chromium googletest libcpp-httplib-dev libgmock-dev libgtest-dev libssl-dev locales openbox openssl
  python3 util-linux xdotool xvfb
)
# To check the sources, and to build the fuzzers, the benchmarks and what has sanitizers, whose reports name
# functions by a program of llvm. eslint comes from npm.
readonly CHECK_PACKAGES=(
  clang clang-format clang-tidy libavcodec-dev libavformat-dev libavutil-dev libbenchmark-dev
  libclang-rt-dev llvm pylint shellcheck
)
# To count which lines the tests run.
readonly COVERAGE_PACKAGES=(gcovr)

# as_root COMMAND... - runs it as root, with sudo where that is needed.
as_root() {
  if [[ $(id -u) -eq 0 ]]; then
    "$@"
  elif [[ -n $(command -v sudo) ]]; then
    sudo -- "$@"
  else
    return 1
  fi
}

is_installed() {
  [[ $(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null) == installed ]]
}

# Refuses, with one line, where the packages cannot be installed.
require_means_to_install() {
  local missing="$*"
  if [[ -z $(command -v apt-get) ]]; then
    die "apt-get is not here; install what these Debian packages hold, then try again: $missing"
  fi
  as_root true || die "root or sudo is needed to install: $missing"
}

# A policy for the time of the installation: the project runs nginx by itself, on a port of its own,
# so the service that comes with the package must not come up on port 80. A policy that the machine
# has already is respected.
readonly SERVICE_POLICY=/usr/sbin/policy-rc.d

keep_nginx_service_off() {
  [[ -e $SERVICE_POLICY ]] && return
  trap 'as_root rm -f "$SERVICE_POLICY"' EXIT
  as_root tee "$SERVICE_POLICY" >/dev/null <<'POLICY'
#!/bin/sh
# Made by stream_downloader for the time of an installation; may be removed.
[ "$1" = nginx ] && exit 101
exit 0
POLICY
  as_root chmod 755 "$SERVICE_POLICY"
}

forget_nginx_service() {
  if [[ -n $(command -v systemctl) ]]; then
    as_root systemctl disable --quiet nginx 2>/dev/null || true  # no running systemd: nothing to do
  fi
}

apt_get_install() {
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "$@"
}

# install_packages PACKAGE... - in a subshell, so that its trap is its own.
install_packages() (
  [[ " $* " == *" nginx "* ]] && keep_nginx_service_off
  as_root apt-get update -q || die "apt-get update failed; these packages are missing: $*"
  apt_get_install "$@" || die "apt-get could not install: $*"
  [[ " $* " == *" nginx "* ]] && forget_nginx_service
  return 0
)

# ensure_packages PACKAGE... - installs those that are missing and names them first.
ensure_packages() {
  local package
  local missing=()
  for package in "$@"; do
    is_installed "$package" || missing+=("$package")
  done
  [[ ${#missing[@]} -eq 0 ]] && return
  require_means_to_install "${missing[@]}"
  note "installing Debian packages: ${missing[*]}"
  install_packages "${missing[@]}" </dev/null || exit 1
}
