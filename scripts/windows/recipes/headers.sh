# shellcheck shell=bash
# Libraries that are headers only, copied to where the cross build finds them. It cannot look into
# /usr/include itself: the headers of the machine's own C library lie there too.

readonly HEADER_PACKAGES=(libcli11-dev nlohmann-json3-dev)

recipe_version() { package_versions "${HEADER_PACKAGES[@]}"; }

recipe_build() {
  local package
  for package in "${HEADER_PACKAGES[@]}"; do
    copy_package "$package" "$1/prefix"
  done
}

# The headers and CMake packages of a Debian package, without the /usr before them.
copy_package() {
  local file
  while read -r file; do
    [[ ! -f $file ]] || install -D -m 644 "$file" "$2/${file#/usr/}"
  done < <(dpkg -L "$1" | grep -E '^/usr/(include|share/cmake)/')
}
