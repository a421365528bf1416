# Replaces Visual C++ and vcpkg's libraries if CMake only configures: with this file, MSVC is true. The calling
# process sets CLANG_CL and, separated by colons, LIBRARIES.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(CMAKE_CXX_COMPILER $ENV{CLANG_CL})
set(CMAKE_CXX_COMPILER_TARGET x86_64-pc-windows-msvc)
set(CMAKE_LINKER lld-link)
set(CMAKE_MT llvm-mt)
set(CMAKE_TRY_COMPILE_TARGET_TYPE STATIC_LIBRARY)  # there is nothing to link programs with

string(REPLACE ":" ";" CMAKE_FIND_ROOT_PATH "$ENV{LIBRARIES}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
# GCC's zlib is not found under the names that libraries have for this compiler. It is not linked.
set(ZLIB_LIBRARY zlib)
