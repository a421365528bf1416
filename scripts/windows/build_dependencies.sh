#!/usr/bin/env bash
# Builds the libraries that the Windows build needs and Debian does not have for it: one recipe each,
# one folder each. A recipe that has not changed since, with the same versions, compiler and
# toolchain, is not built again, and then nothing is asked of the network.
set -euo pipefail

HERE=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
readonly HERE
# shellcheck source=scripts/lib/log.sh
source "$HERE/../lib/log.sh"
# shellcheck source=scripts/windows/settings.sh
source "$HERE/settings.sh"
# shellcheck source=scripts/windows/debian_source.sh
source "$HERE/debian_source.sh"

# For the recipes: "name version" of installed packages, a line each.
package_versions() {
  # shellcheck disable=SC2016  # dpkg-query fills this in
  dpkg-query -W -f '${Package} ${Version}\n' "$@"
}

# For the recipes: build_with_cmake SOURCE WORK OPTION... - installs into WORK/prefix.
build_with_cmake() {
  local source=$1 work=$2
  shift 2
  cmake -S "$source" -B "$work/build" -G Ninja --log-level=WARNING -Wno-dev \
    -DCMAKE_TOOLCHAIN_FILE="$WINDOWS_TOOLCHAIN" -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_INSTALL_PREFIX="$work/prefix" "$@" || die "$source cannot be configured"
  cmake --build "$work/build" || die "$source cannot be built"
  cmake --install "$work/build" >"$work/install.log" || die "$source cannot be installed"
}

stamp_of() {
  {
    recipe_version
    "$MINGW_CXX" --version
    cat "$1" "$WINDOWS_TOOLCHAIN"
  } | sha256sum | cut -d ' ' -f 1
}

# In a subshell each, since every recipe defines the same functions. The folder is made whole or not
# at all.
build_dependency() (
  name=$1
  # shellcheck source=/dev/null
  source "$HERE/recipes/$name.sh"
  target=$WINDOWS_DEPS/$name
  stamp=$(stamp_of "$HERE/recipes/$name.sh")
  [[ -f $target/stamp && $(<"$target/stamp") == "$stamp" ]] && exit
  note "making $name for Windows"
  work=$(mktemp -d "$WINDOWS_DEPS/$name-work.XXXXXX")
  trap 'rm -rf "$work"' EXIT
  mkdir "$work/prefix"
  recipe_build "$work"
  printf '%s\n' "$stamp" >"$work/prefix/stamp"
  rm -rf "$target"
  mv "$work/prefix" "$target"
)

mkdir -p "$WINDOWS_DEPS"
for recipe in "$HERE"/recipes/*.sh; do
  build_dependency "$(basename "$recipe" .sh)"
done
