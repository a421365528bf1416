# shellcheck shell=bash
# Where the Windows build keeps its things, and the tools it is made with. All of it is ignored by
# git and can be deleted at any time.
# shellcheck disable=SC2034  # for the scripts that source this file

WINDOWS_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
readonly WINDOWS_ROOT
# The toolchain file looks for libraries here, in one folder each.
readonly WINDOWS_DEPS=$WINDOWS_ROOT/build/deps/windows
readonly WINDOWS_TOOLCHAIN=$WINDOWS_ROOT/cmake/toolchains/mingw64.cmake
readonly MINGW_CXX=x86_64-w64-mingw32-g++-posix

# Debian installs wine's programs outside the search path unless a further package is installed.
# Linux may put a program's heap anywhere in the GiB behind the program. For wine that is now and then
# (once in some thousand starts) over an address that it cannot do without, and it ends at once with
# status 1. Without randomisation the heap lies right behind it, far from that address.
WINE=(/usr/lib/wine/wine64)
if setarch -R true 2>/dev/null; then  # a container may forbid it
  WINE=(setarch -R "${WINE[@]}")
fi
readonly WINE
readonly WINESERVER=/usr/lib/wine/wineserver64

# What every program under wine runs with.
set_wine_environment() {
  export WINEPREFIX=${STREAM_WINEPREFIX:-$WINDOWS_ROOT/build/wineprefix}
  # Wine's own remarks would mix with the program's output, but for those that say why it ended.
  export WINEDEBUG=-all,err+virtual
  # No questions about optional components, and no debugger for a program that crashes: with it the
  # program would end with status 0.
  export WINEDLLOVERRIDES="mscoree,mshtml=;winedbg.exe=d"
  export LC_ALL=${STREAM_WINE_LOCALE:-C.UTF-8}  # under C, paths with letters outside ASCII fail
  unset DISPLAY
  # A proxy has no way to the loopback servers of the tests.
  unset http_proxy https_proxy all_proxy no_proxy HTTP_PROXY HTTPS_PROXY ALL_PROXY NO_PROXY
}
