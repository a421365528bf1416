# 64-bit Windows with Debian's cross compiler, in its variant with POSIX threads, which std::thread needs.
# scripts/windows/prepare.sh must build the libraries first. Programs are run under wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

get_filename_component(stream_root ${CMAKE_CURRENT_LIST_DIR} DIRECTORY)
get_filename_component(stream_root ${stream_root} DIRECTORY)

set(stream_deps ${stream_root}/build/deps/windows)
set(CMAKE_FIND_ROOT_PATH
  /usr/x86_64-w64-mingw32 ${stream_deps}/cpp-httplib ${stream_deps}/curl ${stream_deps}/googletest
  ${stream_deps}/headers)
set(ENV{PKG_CONFIG_LIBDIR} ${stream_deps}/cpp-httplib/lib/pkgconfig)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# Otherwise the import library of a DLL would be found first.
set(ZLIB_USE_STATIC_LIBS ON)

set(CMAKE_CROSSCOMPILING_EMULATOR ${stream_root}/scripts/windows/run_in_wine.sh)

# GCC 12, when optimising for this target, reports a false null dereference in CLI11. It stays a warning here; in
# native builds such a warning is an error.
set(CMAKE_CXX_FLAGS_INIT "-Wno-error=null-dereference")

# Links the compiler's run-time libraries statically, since Windows does not have them. The output is reproducible:
# it contains no timestamp, and no base address that depends on the path of the output.
set(stream_link_flags "-static -Wl,--no-insert-timestamp -Wl,--disable-auto-image-base")
set(CMAKE_EXE_LINKER_FLAGS_INIT "${stream_link_flags}")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${stream_link_flags}")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "${stream_link_flags}")
