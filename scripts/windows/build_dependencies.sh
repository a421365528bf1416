#!/usr/bin/env bash
# Builds the libraries that the Windows build needs and Debian does not provide for it. Each has one recipe and one
# directory. A recipe is built again only if the recipe, its versions, the compiler or the toolchain file has
# changed. If nothing has changed, the network is not used.
set -euo pipefail

HERE=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
readonly HERE
# shellcheck source=scripts/lib/log.sh
source "$HERE/../lib/log.sh"
# shellcheck source=scripts/windows/settings.sh
source "$HERE/settings.sh"
# shellcheck source=scripts/windows/debian_source.sh
source "$HERE/debian_source.sh"

# For the recipes: prints "name version" for each installed package, one per line.
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

# Runs in a subshell, since every recipe defines the same functions. The target directory is replaced only after a
# complete build.
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
