# shellcheck shell=bash
# The Debian packages that the project needs, grouped by purpose, and functions to install them. Needs log.sh.
#
# No package registry is contacted if nothing is missing.
#
# shellcheck disable=SC2034  # the lists are for the scripts that read this file

# The packages of npm; empty if npm is installed already. Debian's npm conflicts with one from another source.
NPM_PACKAGES=()
[[ -n $(command -v npm) ]] || NPM_PACKAGES=(nodejs npm)
readonly NPM_PACKAGES

# For building the library and the console host with its report, and for playing an address.
readonly BUILD_PACKAGES=(
  ca-certificates cmake g++ libcli11-dev libcurl4-openssl-dev ninja-build nlohmann-json3-dev
  pkg-config zlib1g-dev "${NPM_PACKAGES[@]}"
)
# For building the player with a window.
readonly PLAYER_PACKAGES=(
  libavcodec-dev libavutil-dev libsdl2-dev libswresample-dev libswscale-dev
)
# For making and serving a sample.
readonly SAMPLE_PACKAGES=(ffmpeg nginx)
# For building and running the tests.
readonly TEST_PACKAGES=(
  chromium googletest libcpp-httplib-dev libgmock-dev libgtest-dev libssl-dev locales openbox openssl
  python3 util-linux xdotool xvfb
)
# For checking the sources and for building the fuzzers, the benchmarks and the sanitizer presets; llvm has the
# program that finds the function names in sanitizer reports. npm installs eslint.
readonly CHECK_PACKAGES=(
  clang clang-format clang-tidy libavcodec-dev libavformat-dev libavutil-dev libbenchmark-dev
  libclang-rt-dev llvm pylint shellcheck
)
# For measuring which lines the tests cover.
readonly COVERAGE_PACKAGES=(gcovr)

# as_root COMMAND... - runs the command as root, with sudo if necessary.
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

# Ends the script with one line if the packages cannot be installed.
require_means_to_install() {
  local missing="$*"
  if [[ -z $(command -v apt-get) ]]; then
    die "apt-get was not found; install the contents of these Debian packages and try again: $missing"
  fi
  as_root true || die "root or sudo is needed to install: $missing"
}

# A service policy that is in place only during the installation. The project runs nginx itself on its own port, so
# the package must not start its service on port 80. An existing policy of the machine is kept.
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
    as_root systemctl disable --quiet nginx 2>/dev/null || true  # no systemd is running
  fi
}

apt_get_install() {
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "$@"
}

# install_packages PACKAGE... - runs in a subshell, so that its trap is local.
install_packages() (
  [[ " $* " == *" nginx "* ]] && keep_nginx_service_off
  as_root apt-get update -q || die "apt-get update failed; these packages are missing: $*"
  apt_get_install "$@" || die "apt-get could not install: $*"
  [[ " $* " == *" nginx "* ]] && forget_nginx_service
  return 0
)

# ensure_packages PACKAGE... - names and installs those that are missing.
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
