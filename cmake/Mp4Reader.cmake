# Who answers behind <mp4v2/mp4v2.h>: the installed libmp4v2 where there is one, else the bundled reader in
# isobmff/, which offers a header of the same name.
#
#   -DMP4_READER=auto|installed|bundled     -DCMAKE_PREFIX_PATH=...  where to look besides
#
# Defines the target mp4_reader, which whatever is made of stream_core links, and STREAM_MP4_READER, the
# reader that was taken.
include(CheckCXXSourceCompiles)

set(MP4_READER auto CACHE STRING "The MP4 reader: auto, installed (libmp4v2) or bundled")
set_property(CACHE MP4_READER PROPERTY STRINGS auto installed bundled)
if(NOT MP4_READER MATCHES "^(auto|installed|bundled)$")
  message(FATAL_ERROR "MP4_READER is '${MP4_READER}': it must be auto, installed or bundled")
endif()

# stream_find_mp4v2(TARGET) - a target to link that stands for the installed libmp4v2; empty where there is
# none.
function(stream_find_mp4v2 result)
  set(${result} "" PARENT_SCOPE)
  if(NOT CMAKE_CROSSCOMPILING)  # pkg-config would tell of the machine that builds
    find_package(PkgConfig QUIET)
    if(PkgConfig_FOUND)
      pkg_check_modules(mp4v2 QUIET IMPORTED_TARGET GLOBAL mp4v2)
    endif()
  endif()
  if(TARGET PkgConfig::mp4v2)
    set(${result} PkgConfig::mp4v2 PARENT_SCOPE)
    return()
  endif()
  find_path(MP4V2_INCLUDE_DIR mp4v2/mp4v2.h)
  find_library(MP4V2_LIBRARY NAMES mp4v2 libmp4v2)
  mark_as_advanced(MP4V2_INCLUDE_DIR MP4V2_LIBRARY)
  if(MP4V2_INCLUDE_DIR AND MP4V2_LIBRARY)
    add_library(mp4v2_found INTERFACE IMPORTED GLOBAL)
    target_include_directories(mp4v2_found SYSTEM INTERFACE ${MP4V2_INCLUDE_DIR})
    target_link_libraries(mp4v2_found INTERFACE ${MP4V2_LIBRARY})
    set(${result} mp4v2_found PARENT_SCOPE)
  endif()
endfunction()

# stream_mp4v2_compiles(RESULT TARGET BODY) - whether a program that does that builds with the library. What
# was found may have changed since the last time, so nothing is remembered.
function(stream_mp4v2_compiles result target body)
  set(CMAKE_REQUIRED_LIBRARIES ${target})
  set(CMAKE_REQUIRED_QUIET ON)
  unset(stream_mp4v2_check CACHE)
  check_cxx_source_compiles(
    "#include <mp4v2/mp4v2.h>\nint main() { ${body} return 0; }" stream_mp4v2_check)
  set(${result} ${stream_mp4v2_check} PARENT_SCOPE)
  unset(stream_mp4v2_check CACHE)
endfunction()

add_library(mp4_reader INTERFACE)
set(STREAM_MP4_READER bundled)
set(mp4v2_target "")
if(NOT MP4_READER STREQUAL "bundled")
  stream_find_mp4v2(mp4v2_target)
endif()
if(mp4v2_target)
  stream_mp4v2_compiles(mp4v2_works ${mp4v2_target} "MP4Close(MP4Read(\"\"));")
  if(mp4v2_works)
    set(STREAM_MP4_READER installed)
  else()
    message(STATUS "MP4 reader: a program with the installed libmp4v2 (${mp4v2_target}) does not build")
  endif()
endif()

if(STREAM_MP4_READER STREQUAL "installed")
  target_link_libraries(mp4_reader INTERFACE ${mp4v2_target})
  # The library as it is published has no such function: the adapter then adds it.
  stream_mp4v2_compiles(mp4v2_has_offset ${mp4v2_target}
    "return MP4GetSampleFileOffset(MP4Read(\"\"), 1, 1) != 0;")
  if(mp4v2_has_offset)
    message(STATUS "MP4 reader: installed libmp4v2 (${mp4v2_target})")
  else()
    message(STATUS "MP4 reader: installed libmp4v2 (${mp4v2_target}), with file offsets by the adapter")
    target_compile_definitions(mp4_reader INTERFACE STREAM_MP4_OFFSETS_BY_ADAPTER)
    target_sources(stream_core PRIVATE ${PROJECT_SOURCE_DIR}/mp4/mp4_installed_offset.cc)
  endif()
  # The library logs to the console by itself, and where it can be silenced it is.
  stream_mp4v2_compiles(mp4v2_logs ${mp4v2_target} "MP4LogSetLevel(MP4_LOG_NONE);")
  if(mp4v2_logs)
    target_compile_definitions(mp4_reader INTERFACE STREAM_MP4_READER_LOGS)
  endif()
elseif(MP4_READER STREQUAL "installed")
  message(FATAL_ERROR "MP4_READER is installed, but libmp4v2 was not found: see CMAKE_PREFIX_PATH")
else()
  message(STATUS "MP4 reader: bundled")
  target_compile_definitions(mp4_reader INTERFACE STREAM_MP4_READER_BUNDLED)
  # As that of an installed library: its C is not held to the rules of our C++.
  target_include_directories(mp4_reader SYSTEM INTERFACE ${PROJECT_SOURCE_DIR}/isobmff/include)
endif()
target_link_libraries(stream_core PUBLIC mp4_reader)
