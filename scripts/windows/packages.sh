# shellcheck shell=bash
# The Debian packages that the Windows build needs in addition to BUILD_PACKAGES.

# libgnutls30: without it no TLS handshake succeeds under wine. dpkg-dev, patch and xz-utils unpack Debian's source
# of curl. googletest is the source of the test framework. libz is for the host. llvm makes import libraries for
# link.exe. clang and lld build a host like those of Visual C++.
# shellcheck disable=SC2034  # for the scripts that source this file
readonly WINDOWS_PACKAGES=(
  clang dpkg-dev g++-mingw-w64-x86-64-posix googletest libgnutls30 libz-mingw-w64-dev lld llvm patch wine64
  xz-utils
)
