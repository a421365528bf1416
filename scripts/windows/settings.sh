# shellcheck shell=bash
# The directories and tools of the Windows build. git ignores these directories, and they can be deleted at any
# time.
# shellcheck disable=SC2034  # for the scripts that source this file

WINDOWS_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
readonly WINDOWS_ROOT
# The toolchain file searches for libraries here, one directory each.
readonly WINDOWS_DEPS=$WINDOWS_ROOT/build/deps/windows
readonly WINDOWS_TOOLCHAIN=$WINDOWS_ROOT/cmake/toolchains/mingw64.cmake
readonly MINGW_CXX=x86_64-w64-mingw32-g++-posix

# Debian's wine programs are outside PATH unless a further package is installed. Linux may place a program's heap
# anywhere in the GiB after the program. Occasionally (once in several thousand starts) the heap then covers an
# address that wine needs, and wine ends at once with status 1. Without randomisation the heap directly follows the
# program, far from that address.
WINE=(/usr/lib/wine/wine64)
if setarch -R true 2>/dev/null; then  # a container may forbid it
  WINE=(setarch -R "${WINE[@]}")
fi
readonly WINE
readonly WINESERVER=/usr/lib/wine/wineserver64

# The environment of every program under wine.
set_wine_environment() {
  export WINEPREFIX=${STREAM_WINEPREFIX:-$WINDOWS_ROOT/build/wineprefix}
  # Wine's own messages would mix with the program's output, except those that explain why it ended.
  export WINEDEBUG=-all,err+virtual
  # No questions about optional components, and no debugger for a crashed program: with a debugger the program
  # would end with status 0.
  export WINEDLLOVERRIDES="mscoree,mshtml=;winedbg.exe=d"
  export LC_ALL=${STREAM_WINE_LOCALE:-C.UTF-8}  # under C, paths with characters outside ASCII fail
  unset DISPLAY
  # A proxy cannot reach the loopback servers of the tests.
  unset http_proxy https_proxy all_proxy no_proxy HTTP_PROXY HTTPS_PROXY ALL_PROXY NO_PROXY
}
