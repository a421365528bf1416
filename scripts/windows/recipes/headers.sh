# shellcheck shell=bash
# Header-only libraries, copied to where the cross build finds them. It cannot search /usr/include, which also
# contains the headers of the machine's own C library.

readonly HEADER_PACKAGES=(libcli11-dev nlohmann-json3-dev)

recipe_version() { package_versions "${HEADER_PACKAGES[@]}"; }

recipe_build() {
  local package
  for package in "${HEADER_PACKAGES[@]}"; do
    copy_package "$package" "$1/prefix"
  done
}

# Copies the headers and CMake packages of a Debian package, without the leading /usr.
copy_package() {
  local file
  while read -r file; do
    [[ ! -f $file ]] || install -D -m 644 "$file" "$2/${file#/usr/}"
  done < <(dpkg -L "$1" | grep -E '^/usr/(include|share/cmake)/')
}
