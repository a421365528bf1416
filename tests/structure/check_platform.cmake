# Fails if a source tests for the operating system or for Visual C++: the build selects the sources instead. Only
# the public headers may test for them, because they refuse hosts of some compilers.
#
#   cmake -DSOURCE_DIR=... -P check_platform.cmake
cmake_minimum_required(VERSION 3.25)

include(${SOURCE_DIR}/cmake/Folders.cmake)

set(checked 0)
set(failures "")
stream_source_folders(${SOURCE_DIR} folders)
foreach(folder IN LISTS folders)
  file(GLOB_RECURSE sources RELATIVE ${SOURCE_DIR}
    ${SOURCE_DIR}/${folder}/*.h ${SOURCE_DIR}/${folder}/*.cc ${SOURCE_DIR}/${folder}/*.c)
  foreach(source ${sources})
    math(EXPR checked "${checked} + 1")
    file(STRINGS ${SOURCE_DIR}/${source} lines
      REGEX "^[ \t]*#.*(_WIN32|_WIN64|_MSC_VER|__MINGW|__linux|__unix|__APPLE__)")
    if(lines AND NOT source MATCHES "^public/stream_(downloader|player)\\.h$")
      list(APPEND failures "${source}: ${lines}")
    endif()
  endforeach()
endforeach()

if(checked EQUAL 0)
  message(FATAL_ERROR "no source was found below '${SOURCE_DIR}'")
endif()
if(failures)
  list(JOIN failures "\n  " text)
  message(FATAL_ERROR "sources that test for the operating system or for Visual C++:\n  ${text}")
endif()
message(STATUS "${checked} sources leave the operating system to common/platform.h")
