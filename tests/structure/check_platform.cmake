# Fails if a source outside platform/ depends on the operating system: if it includes a header of the system, or
# tests for the system or for Visual C++. The build selects the sources of platform/ instead.
#
#   cmake -DSOURCE_DIR=... -P check_platform.cmake
cmake_minimum_required(VERSION 3.25)

include(${SOURCE_DIR}/cmake/Folders.cmake)

# Headers with a dot or a slash in their name belong to the system unless they belong to one of these: to C, or to a
# library that exists on every system.
set(c_headers "(stdbool|stddef|stdint|stdio|stdlib|string|time)\\.h")
set(library_headers "(CLI|curl|libavcodec|libavutil|libswresample|libswscale|mp4v2|nlohmann)/.*|SDL\\.h|zlib\\.h")
# Folders that may use the system: tests, benchmarks and fuzzers run on known systems, an example is one host's code.
set(may_use_system platform tests bench fuzz examples)
# The public headers may test for Visual C++, because they refuse hosts of some compilers.
set(may_test "^public/stream_(downloader|player)\\.h$")

set(checked 0)
set(failures "")
stream_source_folders(${SOURCE_DIR} folders)
foreach(folder IN LISTS folders)
  file(GLOB_RECURSE sources RELATIVE ${SOURCE_DIR}
    ${SOURCE_DIR}/${folder}/*.h ${SOURCE_DIR}/${folder}/*.cc ${SOURCE_DIR}/${folder}/*.c)
  foreach(source IN LISTS sources)
    math(EXPR checked "${checked} + 1")
    file(STRINGS ${SOURCE_DIR}/${source} tests
      REGEX "^[ \t]*#.*(_WIN32|_WIN64|_MSC_VER|__MINGW|__linux|__unix|__APPLE__)")
    if(tests AND NOT source MATCHES "${may_test}")
      list(APPEND failures "${source}: ${tests}")
    endif()
    if(folder IN_LIST may_use_system)
      continue()
    endif()
    file(STRINGS ${SOURCE_DIR}/${source} includes REGEX "^[ \t]*#[ \t]*include[ \t]*<[^>]*[./]")
    list(FILTER includes EXCLUDE REGEX "<(${c_headers}|${library_headers})>")
    if(includes)
      list(APPEND failures "${source}: ${includes}")
    endif()
  endforeach()
endforeach()

if(checked EQUAL 0)
  message(FATAL_ERROR "no source was found below '${SOURCE_DIR}'")
endif()
if(failures)
  list(JOIN failures "\n  " text)
  message(FATAL_ERROR "sources that depend on the operating system or on Visual C++:\n  ${text}")
endif()
message(STATUS "${checked} sources leave the operating system to platform/")
