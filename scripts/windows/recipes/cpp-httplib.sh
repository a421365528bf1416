# shellcheck shell=bash
# The web server of the pipeline tests, from Debian's source, with a pkg-config file like that of Debian's package.

recipe_version() { package_versions libcpp-httplib-dev; }

recipe_build() {
  fetch_debian_source cpp-httplib "$1"
  build_with_cmake "$1/source" "$1" -DHTTPLIB_COMPILE=ON -DHTTPLIB_USE_OPENSSL_IF_AVAILABLE=OFF \
    -DHTTPLIB_USE_ZLIB_IF_AVAILABLE=OFF -DHTTPLIB_USE_BROTLI_IF_AVAILABLE=OFF
  mkdir -p "$1/prefix/lib/pkgconfig"
  # shellcheck disable=SC2016  # pkg-config fills these in
  printf '%s\n' 'prefix=${pcfiledir}/../..' 'Name: cpp-httplib' 'Description: web server for tests' \
    "Version: $(recipe_version | cut -d ' ' -f 2 | cut -d + -f 1)" 'Cflags: -I${prefix}/include' \
    'Libs: -L${prefix}/lib -lhttplib -lws2_32' >"$1/prefix/lib/pkgconfig/cpp-httplib.pc"
}
